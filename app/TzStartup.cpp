// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/TzStartup.h"

#include "app/TZBenchWindow.h"
#include "app/TzApplication.h"
#include "app/TzCrashHook.h"
#include "app/TzEndLimit.h"
#include "app/VciBuildInfo.h"
#include "common/ConfigManager.h"
#include "common/CrashHandler.h"
#include "common/Log.h"
#include "common/Utils.h"
#include "common/ui/PlainMessageBox.h"
#include "common/ui/WorkbenchStyle.h"
#include "database/dbc/DbcFileManager.h"
#include "database/ldf/LdfFileManager.h"
#include "vci/TzVciCanDataType.h"
#include "vci/TzVciDeviceManager.h"
#include "vci/TzVciDeviceScanner.h"
#include "vci/TzVciDeviceStore.h"
#include "vci/TzVciNetwork.h"
#include "vci/TzVciTypes.h"

#include <QIcon>
#include <QMetaType>

#include <cstdlib>
#include <exception>

namespace TzStartup {

namespace {

QString translated(const char *text)
{
    return QCoreApplication::translate("TzStartup", text);
}

void showFailure(const QString &title, const QString &text)
{
    Common::PlainMessageBox(QMessageBox::Critical, title, text, QMessageBox::Ok).exec();
}

/// The ways to an end that nobody asked the user about.
void watchForEnd(TzApplication &application, TZBenchWindow &window, std::chrono::milliseconds endLimit)
{
    QObject::connect(&application, &QCoreApplication::aboutToQuit, &window, [&application, &window, endLimit] {
        if (application.hasFailed())
            return; // the crash hook closes the devices
        const TzEndLimit limit(endLimit, [] {
            Common::logError("The program did not end in time");
            std::abort();
        });
        window.closeWithoutQuestion();
    });
    QObject::connect(&application, &TzApplication::endRequested, &window, &TZBenchWindow::closeWithoutQuestion);
    Common::CrashHandler::setTerminationCallback([&application] { application.requestEnd(); }, endLimit);
}

} // namespace

void installCrashHandling()
{
    Common::Utils::registerCrashHandler(tzCrashHook);
    Common::Utils::setupCrashHandler();
}

void prepareToolkit()
{
    QCoreApplication::setAttribute(Qt::AA_EnableHighDpiScaling, true);
    QCoreApplication::setAttribute(Qt::AA_UseHighDpiPixmaps, true);
    qRegisterMetaType<TzVciCanDataType>("TzVciCanDataType");
}

void dressApplication(TzApplication &application)
{
    Common::applyWorkbenchStyle(application); // first: it makes the icons known
    application.setWindowIcon(QIcon(QString::fromLatin1(VciBuildInfo::applicationIcon)));
}

void startLog()
{
    const Common::ConfigManager &config = Common::ConfigManager::getInstance();
    Common::logInit(config.getLogFilePath().toStdString(), config.logLevel, config.logFileSizeMb, config.maxLogFiles);
    try {
        Common::logStart(config.logConsoleOnly);
        Common::logSoftwareInfo(VciBuildInfo::programName, VciBuildInfo::programVersion, VciBuildInfo::creator,
                                VciBuildInfo::platform);
    } catch (const std::exception &failure) {
        showFailure(translated("error"), QString::fromUtf8(failure.what()));
    }
}

void startBackgroundLoad()
{
    const TzVciNetwork &network = TzVciNetwork::current();
    if (network.isLoopback())
        Common::Utils::setLoopbackNetwork(network.prefix);
    TzVciDeviceScanner::instance().scanAsync(tzVciScanTimeoutMs);
    LdfFileManager::getInstance().startHistoryLoad();
    DbcFileManager::getInstance().startHistoryLoad();
}

std::unique_ptr<TZBenchWindow> showMainWindow(TzApplication &application, std::chrono::milliseconds endLimit)
{
    auto window = std::make_unique<TZBenchWindow>(&TzVciDeviceManager::instance(), &TzVciDeviceStore::instance(),
                                                  &TzVciDeviceScanner::instance());
    watchForEnd(application, *window, endLimit);
    window->showMaximized();
    return window;
}

int runGuarded(const std::function<int()> &work)
{
    try {
        return work();
    } catch (const std::exception &failure) {
        tzCrashHook();
        showFailure(translated("异常"), QString::fromUtf8(failure.what()));
        return -1;
    } catch (...) {
        tzCrashHook();
        showFailure(translated("未知异常"), translated("程序发生了未知异常并即将退出。"));
        return -2;
    }
}

void finish()
{
    Common::CrashHandler::setTerminationCallback({});
    TzVciDeviceScanner::instance().cancel();
    LdfFileManager::getInstance().requestHistoryEnd(); // both, so that neither goes on while the other is waited for
    DbcFileManager::getInstance().requestHistoryEnd();
    LdfFileManager::getInstance().endHistoryLoad();
    DbcFileManager::getInstance().endHistoryLoad();
    Common::Utils::registerCrashHandler(nullptr); // it uses objects that end after main()
}

} // namespace TzStartup
