// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "views/ui/TzVciBaseViewWindow.h"

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace Common {
class LoggerWindow;
}
class QMenu;
class TzRawViewModel;
class TzVciDeviceStore;
class TzVciViewFilterWidget;

namespace Ui {
class TzRawViewWindow;
}

/// A raw view: every frame of one bus family in a table, with a filter bar, folding, pause and a status line.
/// TzCanViewWindow and TzLinViewWindow are its two forms. Threads as in TzVciBaseViewWindow.
class TzRawViewWindow : public TzVciBaseViewWindow
{
    Q_OBJECT
public:
    ~TzRawViewWindow() override;

    TzRawViewModel *model() const { return m_model; }
    TzVciViewFilterWidget *filterWidget() const { return m_filterWidget; }
    Common::LoggerWindow *logger() const { return m_logger; }

    void stopRecording() override;
    void onReceivedMessages(const std::vector<TzVciMessage> &messages) override;

public Q_SLOTS:
    void onTimesChanged() override;

protected:
    struct ColumnWidth
    {
        int column = 0;
        int pixels = 0;
    };

    /// @param model         becomes the window's
    /// @param logger        becomes the window's
    /// @param columnWidths  columns that are not listed keep the width of the table
    TzRawViewWindow(TzVciDeviceManager *deviceManager, TzVciDeviceStore *deviceStore, TzRawViewModel *model,
                    Common::LoggerWindow *logger, std::span<const ColumnWidth> columnWidths, QWidget *parent);

private Q_SLOTS:
    void onUpdateData() override;
    void onUpdateUi() override;
    void onShowContextMenu(QPoint pos);
    void on_buttonDevices_clicked();
    void on_checkBoxFold_stateChanged(int state);
    void on_buttonPause_clicked();
    void on_buttonRecord_clicked();
    void on_buttonSave_clicked();
    void on_buttonClear_clicked();
    void on_buttonFilter_clicked();

private:
    void setUpTable(std::span<const ColumnWidth> columnWidths);
    void setUpFilter();
    void reservePauseButtonWidth();
    void widenTimeColumn();
    void showPaused(bool paused);
    void setUpCopying();
    void fillContextMenu(QMenu *menu, const QModelIndex &clicked);
    void addCopyEntries(QMenu *menu, const QModelIndex &clicked);
    void copySelected();
    void askLater(void (TzRawViewWindow::*ask)());
    void askForDevices();
    void askForClear();
    void askForSave();

    TzVciDeviceStore *const m_deviceStore;
    const std::unique_ptr<Ui::TzRawViewWindow> m_ui;
    TzRawViewModel *const m_model;               // a child of this window
    Common::LoggerWindow *const m_logger;        // a child of this window, shown as a window of its own
    TzVciViewFilterWidget *const m_filterWidget; // a child of this window
    bool m_asking = false;                       // a dialog of this window shows or is about to
    bool m_wasPausedBeforeSave = false;
};
