// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/TZBenchWindow.h"

#include "app/DebugLogDialog.h"
#include "app/TZVciTimeDialog.h"
#include "app/TzBenchWindowHelper.h"
#include "app/TzQuickButtonState.h"
#include "app/TzVciVersionDialog.h"
#include "app/VciBuildInfo.h"
#include "common/ConfigManager.h"
#include "common/Log.h"
#include "common/ui/UiUtils.h"
#include "logging/ui/BLFConverterDialog.h"
#include "ui_TZBenchWindow.h"
#include "vci/TzVciDeviceManager.h"
#include "vci/TzVciDeviceStore.h"
#include "vci/TzVciTypes.h"
#include "vci/ui/TzVciBusLoadView.h"
#include "vci/ui/TzVciConfigDialog.h"

#include <QCloseEvent>
#include <QMessageBox>

#include <algorithm>
#include <array>
#include <utility>

namespace {

constexpr int allDevices = -1;

/// Shows a tool window of which there is one, wherever it was left: hidden, minimised or behind the others.
void bringToFront(QWidget *toolWindow)
{
    toolWindow->showNormal();
    toolWindow->raise();
    toolWindow->activateWindow();
}

} // namespace

TZBenchWindow::TZBenchWindow(TzVciDeviceManager *manager, TzVciDeviceStore *store, TzVciDeviceScanner *scanner,
                             QWidget *parent)
    : QMainWindow(parent)
    , m_manager(manager)
    , m_store(store)
    , m_scanner(scanner)
    , m_ui(std::make_unique<Ui::TZBenchWindow>())
    , m_helper(nullptr)
{
    m_ui->setupUi(this);
    m_ui->areaVCI->setOption(QMdiArea::DontMaximizeSubWindowOnActivation);
    m_ui->areaVCI->setBackground(palette().brush(QPalette::Window)); // the toolkit's own is a dark grey
    m_ui->tabWidget->tabBar()->setDrawBase(false);                   // the menu bar ends with a line of its own
    setUpToolRow();
    m_helper = new TzBenchWindowHelper(m_manager, m_store, m_ui->areaVCI, this);
    connect(m_helper, &TzBenchWindowHelper::sigVciStatusChanged, this, &TZBenchWindow::onVciStatusChanged);
}

TZBenchWindow::~TZBenchWindow()
{
    delete m_helper; // before the area with the views, which the drain threads would otherwise meet half destroyed
}

void TZBenchWindow::setUpToolRow()
{
    const std::array<std::pair<QToolButton *, QMenu *>, 7> menus{{
        {m_ui->toolVCIView, m_ui->menuVCI_View},
        {m_ui->toolVCISend, m_ui->menuVCI_Send},
        {m_ui->toolVCIDiagnose, m_ui->menuVCI_Diagnose},
        {m_ui->toolVCIAnalysis, m_ui->menuVCI_Analysis},
        {m_ui->toolVCITester, m_ui->menuVCI_Test},
        {m_ui->toolVCITools, m_ui->menuVCI_Tools},
        {m_ui->toolVCISettings, m_ui->menuVCI_Settings},
    }};
    for (const auto &[button, menu] : menus)
        button->setMenu(menu);
}

void TZBenchWindow::openFirstWindows()
{
    m_helper->newView(TzVciViewKind::can, TzBenchWindowHelper::Request::ByUser);
    runDeviceSettings();
}

void TZBenchWindow::on_toolVCIDevice_clicked()
{
    if (m_ui->toolVCIDevice->isCheckable())
        askToCloseAllDevices();
    else
        runDeviceSettings();
}

void TZBenchWindow::askToCloseAllDevices()
{
    const auto answer = QMessageBox::question(this, tr("Warnning"),
                                              tr("Are you sure to close all devices and corresponding channels?"));
    if (answer == QMessageBox::Yes)
        m_manager->closeAllDevices();
    onVciStatusChanged(); // the click has toggled the button, whatever the answer
}

void TZBenchWindow::onVciStatusChanged()
{
    TzQuickButtonState::forChannels(m_store->anyChannelOpen(allDevices)).applyTo(*m_ui->toolVCIDevice);
}

void TZBenchWindow::runDeviceSettings()
{
    TzVciConfigDialog dialog(m_manager, m_store, m_scanner, this);
    dialog.exec();
}

void TZBenchWindow::on_toolVCIView_clicked()
{
    on_actionNew_CAN_View_triggered();
}

void TZBenchWindow::on_toolVCISettings_clicked()
{
    runDeviceSettings();
}

void TZBenchWindow::on_actionNew_CAN_View_triggered()
{
    m_helper->newView(TzVciViewKind::can, TzBenchWindowHelper::Request::ByUser);
}

void TZBenchWindow::on_actionNew_LIN_View_triggered()
{
    m_helper->newView(TzVciViewKind::lin, TzBenchWindowHelper::Request::ByUser);
}

void TZBenchWindow::on_actionBusLoad_View_triggered()
{
    if (!m_busLoadView)
        m_busLoadView = new TzVciBusLoadView(m_manager, m_store, this);
    bringToFront(m_busLoadView);
}

void TZBenchWindow::on_actionReset_View_triggered()
{
    m_helper->tileViews();
}

void TZBenchWindow::on_actionClose_View_triggered()
{
    m_helper->closeViews();
}

void TZBenchWindow::on_actionBLF_Converter_triggered()
{
    BLFConverterDialog dialog(this);
    dialog.exec();
}

void TZBenchWindow::on_actionSwitch_Test_triggered()
{
    Common::UiUtils::openHelpFile(QStringLiteral("doc/Switch_CAN.pdf"), nullptr);
}

void TZBenchWindow::on_actionDevice_Settings_triggered()
{
    runDeviceSettings();
}

void TZBenchWindow::on_actionDisplayTime_Settings_triggered()
{
    TZVciTimeDialog dialog(m_manager, this);
    // No tick does it in a view that is paused or gets no frames.
    connect(&dialog, &TZVciTimeDialog::sigTimesChanged, m_helper, &TzBenchWindowHelper::sigTimesChanged);
    dialog.exec();
}

void TZBenchWindow::on_actionDebugLog_Settings_triggered()
{
    DebugLogDialog dialog(&Common::ConfigManager::getInstance(), QString::fromLatin1(VciBuildInfo::programName),
                          QString::fromLatin1(VciBuildInfo::programVersion), this);
    dialog.exec();
}

void TZBenchWindow::on_actionDevice_Version_triggered()
{
    TzVciVersionDialog dialog(m_manager, m_store, QString::fromLatin1(VciBuildInfo::programName),
                              QString::fromLatin1(VciBuildInfo::programVersion), this);
    dialog.exec();
}

void TZBenchWindow::closeEvent(QCloseEvent *event)
{
    event->setAccepted(m_ended || endIfUserAgrees());
}

bool TZBenchWindow::endIfUserAgrees()
{
    const auto answer = QMessageBox::question(this, tr("Tips"), tr("Are you sure to close the program?"));
    if (m_ended)
        return true; // the program was told to end while the question stood
    if (answer != QMessageBox::Yes)
        return false;
    const bool closed = closeToolWindows();
    if (m_ended)
        return true; // or while a tool window closed
    if (!closed)
        return false;
    endWork();
    return true;
}

QList<QPointer<QWidget>> TZBenchWindow::openToolWindows() const
{
    const QList<QWidget *> children = findChildren<QWidget *>(QString(), Qt::FindDirectChildrenOnly);
    QList<QPointer<QWidget>> windows;
    for (QWidget *child : children) {
        if (child->isWindow() && child->isVisible())
            windows.append(child);
    }
    return windows;
}

bool TZBenchWindow::closeToolWindows()
{
    const QList<QPointer<QWidget>> windows = openToolWindows();
    return std::all_of(windows.begin(), windows.end(),
                       [](const QPointer<QWidget> &toolWindow) { return !toolWindow || toolWindow->close(); });
}

void TZBenchWindow::endWork()
{
    m_ended = true;
    m_helper->shutdown();
}

void TZBenchWindow::closeWithoutQuestion()
{
    if (m_ended)
        return;
    for (const QPointer<QWidget> &toolWindow : openToolWindows()) {
        if (toolWindow)
            toolWindow->close();
    }
    endWork();
    close();
}

void TZBenchWindow::paintEvent(QPaintEvent *event)
{
    QMainWindow::paintEvent(event);
    if (std::exchange(m_painted, true))
        return;
    // Queued, so that the children have been painted too; the start-up time is read off this line.
    QMetaObject::invokeMethod(
        this, [] { Common::logDebug("Main window painted"); }, Qt::QueuedConnection);
}
