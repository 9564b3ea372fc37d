// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/TzFrameDrain.h"
#include "app/TzFrameInlet.h"
#include "app/TzViewArrangement.h"
#include "app/TzViewList.h"

#include <QWidget>

#include <cstdint>
#include <memory>

class QMdiArea;
class TzVciBaseViewWindow;
class TzVciDeviceManager;
class TzVciDeviceStore;

/// The working half of the main window: the list of traffic views and the road of the frames to them.
///
/// Receive threads put batches into the inlet's queues and go on; two drains (threads "drain-can" and "drain-lin",
/// owned and joined here) give them to the views while a channel of their family is open. All else runs on the UI
/// thread. It shows nothing itself and stays hidden.
class TzBenchWindowHelper : public QWidget
{
    Q_OBJECT
public:
    /// Who asks for a view: at the limit of four the user gets a message box, the program a log line.
    enum class Request
    {
        ByUser,
        ByProgram
    };

    /// Registers the default callbacks of @p manager. The three pointers must outlive the helper.
    TzBenchWindowHelper(TzVciDeviceManager *manager, TzVciDeviceStore *store, QMdiArea *area,
                        QWidget *parent = nullptr);
    ~TzBenchWindowHelper() override;

    /// Opens a view of a kind (TzVciViewKind) and tiles. A kind without a window opens nothing.
    void newView(std::uint8_t kind, Request request);
    /// Takes @p view in, which becomes the area's: lists it, numbers and shows it, and tiles.
    void addView(TzVciBaseViewWindow *view);
    void closeViews();
    void tileViews();
    const TzViewList &views() const { return m_views; }
    /// Where the frames and events of the devices come in.
    TzFrameInlet &inlet() { return *m_inlet; }
    /// Whether the drain of the family with that protocol id runs.
    bool isDraining(std::uint8_t protocol) const;

    /// Lets go of the devices: no more callbacks, all views and devices closed, the drains ended. May be repeated.
    /// Waits for the devices to close.
    void shutdown();

    bool eventFilter(QObject *watched, QEvent *event) override;

Q_SIGNALS:
    /// A device or channel was opened or closed; cmd is a VciStatus. Emitted on the UI thread.
    void sigVciStatusChanged(int deviceIndex, std::uint8_t cmd);
    /// The views of the family of this kind begin afresh.
    void sigClearViewWindow(std::uint8_t windowType);
    /// All views show their times anew.
    void sigTimesChanged();

public Q_SLOTS:
    /// Takes a view out of the list, numbers the others and tiles them.
    void onCloseViewWindow(TzVciBaseViewWindow *viewWindow);

private:
    TzVciBaseViewWindow *createView(std::uint8_t kind);
    bool hasRoomForView(std::uint8_t kind, Request request);
    void arrangeViews();
    void connectDevices();
    void disconnectDevices();
    void onVciStatus(int deviceIndex, std::uint8_t cmd);
    void onChannelOpened(TzFrameDrain &drain);
    void onChannelClosed(TzFrameDrain &drain);
    bool anyChannelOpen(std::uint8_t protocol) const;

    TzVciDeviceManager *m_manager;
    TzVciDeviceStore *m_store;
    QMdiArea *m_area;
    TzViewList m_views;
    TzViewArrangement m_arrangement;
    std::shared_ptr<TzFrameInlet> m_inlet; // shared with the callbacks of the open devices
    TzFrameDrain m_canDrain;               // the drains last: their threads end before what they use
    TzFrameDrain m_linDrain;
};
