// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "views/TzViewIntake.h"

#include "vci/TzVciMessage.h"

#include <QWidget>

#include <cstdint>
#include <span>
#include <unordered_map>
#include <unordered_set>
#include <vector>

class QAbstractItemView;
class QTimer;
class TzVciDeviceManager;

/// A traffic view: a window that shows one stream of traffic. The base decides which frames enter, counts them and
/// drives the derived view's model on two timers. It deletes itself when closed.
///
/// Threads: onReceivedMessages() is called on the thread that delivers, one call at a time, and touches no widget. The
/// owner takes the view out of its list before it closes, or, where it is destroyed unclosed, on sigLeaveDelivery():
/// so the destructor of every class that can be made begins with leaveDelivery(). All else belongs to the UI thread.
class TzVciBaseViewWindow : public QWidget
{
    Q_OBJECT
public:
    ~TzVciBaseViewWindow() override;

    std::uint8_t viewKind() const { return m_viewKind; } ///< TzVciViewKind
    /// While paused no frame enters and no tick does anything.
    bool isPaused() const { return m_intake.isPaused(); }
    const TzViewIntake &intake() const { return m_intake; } ///< channels chosen, counters

    virtual void setTimersStopped(bool stopped);
    virtual void stopRecording(); ///< called when the view closes; a view that records nothing has nothing to do
    virtual void onReceivedMessages(const std::vector<TzVciMessage> &messages) = 0;

Q_SIGNALS:
    void sigResetUi(); ///< the view begins afresh
    void sigUpdateVisibleRow(int firstRow, int lastRow);
    void sigPausedChanged(bool paused);
    /// The view is about to be destroyed and still whole. Whoever delivers to it from another thread must have ended
    /// that when the slot returns.
    void sigLeaveDelivery();

public Q_SLOTS:
    /// Empties the view and its counters if @p windowType is a kind of the view's own family.
    virtual void onClearViewWindow(std::uint8_t windowType);
    virtual void onUpdateData() = 0; ///< tick of 20 ms
    virtual void onUpdateUi() = 0;   ///< tick of 500 ms
    /// Times are written in another form or from another reference now: shows them so, paused or not.
    virtual void onTimesChanged();
    /// The device and channel indexes whose frames may enter.
    void onUpdateFilters(std::unordered_map<std::uint8_t, std::unordered_set<std::uint8_t>> devices);

protected:
    static constexpr int rowHeight = 16; ///< pixels of a table row

    /// @param deviceManager  must outlive the view
    TzVciBaseViewWindow(TzVciDeviceManager *deviceManager, std::uint8_t viewKind, QWidget *parent);

    /// Announces the end by sigLeaveDelivery(), once; what follows does nothing.
    void leaveDelivery();
    TzVciDeviceManager *deviceManager() const { return m_deviceManager; }
    /// The frames of a batch that enter, counted; for onReceivedMessages(). @see TzViewIntake::accept
    std::span<const TzVciMessage> accept(const std::vector<TzVciMessage> &messages)
    {
        return m_intake.accept(messages);
    }
    void setPaused(bool paused);
    /// Makes @p view the one whose visible rows are told by sigUpdateVisibleRow(), from now on whenever it scrolls or
    /// the window is resized. To be called once; the view is a child of this window and has rows of rowHeight.
    void watchVisibleRows(QAbstractItemView *view);
    /// Tells the visible rows anew, for rows that came without a movement of the scroll bar.
    void updateVisibleRows();
    /// Whether the view stood at its end at the bar's last movement, so that it should follow new rows. A window made
    /// smaller, as when another view opens beside it, keeps following.
    bool isAtBottom() const { return m_atBottom; }

    void closeEvent(QCloseEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    void onScrolled();

    TzVciDeviceManager *const m_deviceManager;
    const std::uint8_t m_viewKind;
    QTimer *const m_dataTimer; // a child of this window, as is the next
    QTimer *const m_uiTimer;
    TzViewIntake m_intake;
    QAbstractItemView *m_view = nullptr; // a child of this window
    bool m_atBottom = false;
    bool m_leftDelivery = false;
};
