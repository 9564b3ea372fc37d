// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>
#include <QMainWindow>
#include <QPointer>

#include <memory>

class TzBenchWindowHelper;
class TzVciBusLoadView;
class TzVciDeviceManager;
class TzVciDeviceScanner;
class TzVciDeviceStore;

namespace Ui {
class TZBenchWindow;
}

/// The main window: tool row, menus and the area of the traffic views. UI thread only.
///
/// Tool windows are child windows of it. Closing the program closes them first, each through its own close event.
class TZBenchWindow : public QMainWindow
{
    Q_OBJECT
public:
    /// The pointers must outlive the window.
    TZBenchWindow(TzVciDeviceManager *manager, TzVciDeviceStore *store, TzVciDeviceScanner *scanner,
                  QWidget *parent = nullptr);
    ~TZBenchWindow() override;

    /// A CAN view, then the device settings dialog until the user has closed it: what each start shows.
    void openFirstWindows();
    /// Closes tool windows, views and devices and then the window, as the user's own closing does but without asking
    /// and whatever a tool window answers. For a program that is told to end. May be repeated.
    void closeWithoutQuestion();

    TzBenchWindowHelper *helper() const { return m_helper; }

protected:
    void closeEvent(QCloseEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private Q_SLOTS:
    void on_toolVCIDevice_clicked();
    void on_toolVCIView_clicked();
    void on_toolVCISettings_clicked();
    void on_actionNew_CAN_View_triggered();
    void on_actionNew_LIN_View_triggered();
    void on_actionBusLoad_View_triggered();
    void on_actionReset_View_triggered();
    void on_actionClose_View_triggered();
    void on_actionBLF_Converter_triggered();
    void on_actionSwitch_Test_triggered();
    void on_actionDevice_Settings_triggered();
    void on_actionDisplayTime_Settings_triggered();
    void on_actionDebugLog_Settings_triggered();
    void on_actionDevice_Version_triggered();

private:
    void setUpToolRow();
    void onVciStatusChanged();
    void runDeviceSettings();
    void askToCloseAllDevices();
    QList<QPointer<QWidget>> openToolWindows() const;
    bool closeToolWindows(); // stops at the first that refuses, with false
    bool endIfUserAgrees();
    void endWork();

    TzVciDeviceManager *m_manager;
    TzVciDeviceStore *m_store;
    TzVciDeviceScanner *m_scanner;
    std::unique_ptr<Ui::TZBenchWindow> m_ui;
    TzBenchWindowHelper *m_helper;
    TzVciBusLoadView *m_busLoadView = nullptr; // made when it is first asked for, then kept
    bool m_painted = false;                    // the window has been on the screen
    bool m_ended = false;                      // the close steps have been taken
};
