// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QGroupBox>

class QListWidget;
class QPushButton;
class TzVciDeviceScanner;
class TzVciDeviceStore;

/// The list of known devices with the buttons that find more. The list follows the store: it is brought up to date
/// whenever a device is added and after every scan. UI thread.
class TzVciDeviceWidget : public QGroupBox
{
    Q_OBJECT
public:
    TzVciDeviceWidget(TzVciDeviceStore *store, TzVciDeviceScanner *scanner, QWidget *parent = nullptr);

    /// Brings the rows, their lamps and tool tips into line with the store. Keeps the selection; where there is none,
    /// selects the store's current device, or row 0.
    void refreshDevices();
    int selectedDevice() const; ///< -1 when none is selected

Q_SIGNALS:
    void deviceSelected(int deviceIndex); ///< -1 when none is selected any more

public Q_SLOTS:
    void onScanDeviceClicked();
    void onAddDeviceClicked();
    void onDeviceListCurrentRowChanged(int row);

private:
    void buildLayout();
    void rebuildRows();
    void showDeviceState(int row, int deviceIndex);
    int rowOf(int deviceIndex) const;
    void setScanning(bool scanning);

    TzVciDeviceStore *const m_store;
    TzVciDeviceScanner *const m_scanner;
    QListWidget *m_list;
    QPushButton *m_scanButton;
    QPushButton *m_addButton;
};
