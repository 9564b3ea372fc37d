// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>

class QGroupBox;
class QLabel;
class QListWidget;
class QPushButton;
class QTimer;
class TzVciBusLoadTable;
class TzVciDeviceManager;
class TzVciDeviceStore;

/// Shows once a second how busy the open CAN channels of one device are, beside the byte counters of the link. UI
/// thread.
///
/// The list holds the devices that had an open CAN channel when it was filled: at the start, when the window is shown
/// again and at "Refresh Devices". A device that opens meanwhile is not added, one that closes shows as empty. The
/// device is looked up anew at every update, so it may close or die at any time.
class TzVciBusLoadView : public QDialog
{
    Q_OBJECT
public:
    /// The pointers must outlive the window.
    TzVciBusLoadView(TzVciDeviceManager *manager, TzVciDeviceStore *store, QWidget *parent = nullptr);
    ~TzVciBusLoadView() override;

public Q_SLOTS:
    void updateDeviceList();
    void updateBusLoadInfo();
    void onDeviceSelected(int row); ///< a row of the list, -1 for none
    void updateCurrentTime();

protected:
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override; ///< a hidden window does no work

private:
    QGroupBox *makeDeviceGroup();
    QGroupBox *makeLoadGroup();
    void buildLayout();
    void clearDisplay();

    TzVciDeviceManager *const m_manager;
    TzVciDeviceStore *const m_store;
    int m_deviceIndex = -1; // none selected
    bool m_wasHidden = false;
    QListWidget *m_deviceList;
    QPushButton *m_refreshButton;
    QLabel *m_timeLabel;
    QLabel *m_pcLabel;
    QLabel *m_deviceLabel;
    TzVciBusLoadTable *m_table;
    QTimer *m_timer;
};
