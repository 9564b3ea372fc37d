// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>

#include <cstdint>

class QGroupBox;
class QLineEdit;
class QPushButton;
class TzVciChannelTable;
class TzVciDeviceManager;
class TzVciDeviceScanner;
class TzVciDeviceStore;
class TzVciDeviceWidget;

/// The one place where the user finds devices, edits the settings of channels, and opens and closes both. Loads the
/// saved settings when it is made and saves them when it closes. UI thread.
class TzVciConfigDialog : public QDialog
{
    Q_OBJECT
public:
    TzVciConfigDialog(TzVciDeviceManager *manager, TzVciDeviceStore *store, TzVciDeviceScanner *scanner,
                      QWidget *parent = nullptr);
    ~TzVciConfigDialog() override;

    void done(int result) override;

public Q_SLOTS:
    void onDeviceSelected(int deviceIndex);
    void onToggleDeviceClicked();
    void onCanChannelClicked();
    void onLinChannelClicked();
    void onAdvancedButtonClicked();

protected:
    void keyPressEvent(QKeyEvent *event) override; ///< Enter and Return click the focused button

private:
    QGroupBox *makeControlGroup();
    QGroupBox *makeTableGroup(const QString &title, TzVciChannelTable *table);
    void buildLayout();
    void connectAll();
    void storeLocalIp();
    std::int32_t openCurrentDevice();
    void toggleChannel(TzVciChannelTable *table);
    void showChannelError(bool opening, const QString &family, std::int32_t code);
    void refresh();
    void showDeviceState();

    TzVciDeviceManager *const m_manager;
    TzVciDeviceStore *const m_store;
    int m_currentDevice = -1; // none selected
    TzVciDeviceWidget *m_deviceWidget;
    QPushButton *m_toggleButton;
    QLineEdit *m_localIpEdit;
    TzVciChannelTable *m_canTable;
    TzVciChannelTable *m_linTable;
};
