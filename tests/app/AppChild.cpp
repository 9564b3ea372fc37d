// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/app/AppChild.h"

#include "app/TZBenchWindow.h"
#include "app/TzApplication.h"
#include "app/TzBenchWindowHelper.h"
#include "app/TzStartup.h"
#include "logging/blf/BLFParser.h"
#include "logging/ui/BLFConverterDialog.h"
#include "logging/ui/LoggerWindow.h"
#include "vci/TzVciDeviceConfig.h"
#include "vci/TzVciDeviceManager.h"
#include "vci/TzVciDeviceStore.h"
#include "vci/TzVciNetwork.h"
#include "vci/TzVciTypes.h"
#include "views/ui/TzRawViewWindow.h"

#include <QAction>
#include <QLineEdit>
#include <QTimer>

#include <cstdio>
#include <functional>
#include <string_view>
#include <thread>
#include <utility>

#include <sys/resource.h>

namespace tztest {

namespace {

constexpr int openFailed = 3;
constexpr int notLoopback = 4;

class HangingWindow : public QWidget
{
public:
    explicit HangingWindow(QWidget *parent)
        : QWidget(parent, Qt::Window)
    {
        show();
    }

protected:
    void closeEvent(QCloseEvent *) override { std::this_thread::sleep_for(std::chrono::hours(1)); }
};

int hangOnClosing(int argc, char **argv)
{
    constexpr rlimit noCore{0, 0};
    ::setrlimit(RLIMIT_CORE, &noCore);
    TzStartup::prepareToolkit();
    TzApplication application(argc, argv);
    const auto window = TzStartup::showMainWindow(application, hangingCloseLimit);
    const HangingWindow tool(window.get());
    QTimer::singleShot(0, &application, &QCoreApplication::quit);
    return application.run();
}

/// Plays the program from its start to its end. @param begin  what the role does before the event loop runs
int play(int argc, char **argv, const std::function<void(TZBenchWindow &)> &begin)
{
    TzStartup::installCrashHandling();
    TzStartup::prepareToolkit();
    TzApplication application(argc, argv);
    std::unique_ptr<TZBenchWindow> window;
    const int result = TzStartup::runGuarded([&] {
        window = TzStartup::showMainWindow(application);
        begin(*window);
        return application.run();
    });
    TzStartup::finish();
    return result;
}

void tell(const char *line)
{
    std::puts(line);
    std::fflush(stdout);
}

bool openChannel()
{
    TzVciDeviceStore::instance().addDevice(0, TzVciDeviceConfig(2, 1));
    TzVciDeviceManager &manager = TzVciDeviceManager::instance();
    return manager.openDevice(0) == TzVciResult::ok &&
           manager.openChannel(0, TzVciProtocolId::can, 0) == TzVciResult::ok;
}

int openChannelUnderDialog(int argc, char **argv)
{
    bool opened = false;
    const int result = play(argc, argv, [&](TZBenchWindow &window) {
        QTimer::singleShot(0, qApp, [&] { // the dialog's loop is the first that runs
            opened = openChannel();
            tell(opened ? channelOpenLine : "failed");
        });
        window.openFirstWindows();
    });
    return opened ? result : openFailed;
}

bool startRecording(TZBenchWindow &window)
{
    TzBenchWindowHelper &helper = *window.helper();
    helper.newView(TzVciViewKind::can, TzBenchWindowHelper::Request::ByProgram);
    auto *view = qobject_cast<TzRawViewWindow *>(helper.views().views().back());
    auto *path = view->logger()->findChild<QLineEdit *>(QStringLiteral("lineEditPath"));
    path->setText(QString::fromLatin1(recordingPath));
    view->logger()->startRecording();
    return view->logger()->isRecording() && openChannel();
}

int record(int argc, char **argv)
{
    bool recording = false;
    const int result = play(argc, argv, [&](TZBenchWindow &window) {
        recording = startRecording(window);
        tell(recording ? recordingLine : "failed");
    });
    return recording ? result : openFailed;
}

// The dialog's own loop runs this.
void convertSlowly(TZBenchWindow &window)
{
    auto *dialog = window.findChild<BLFConverterDialog *>();
    dialog->findChild<QLineEdit *>(QStringLiteral("lineEditInput"))->setText(QString::fromLatin1(conversionInput));
    dialog->findChild<QLineEdit *>(QStringLiteral("lineEditOutput"))->setText(QString::fromLatin1(conversionOutput));
    bool first = true;
    const auto delay = [&first] {
        if (std::exchange(first, false))
            tell(conversionLine);
        std::this_thread::sleep_for(std::chrono::microseconds(100));
    };
    QObject::connect(dialog->findChild<BLF::BLFParser *>(),
                     qOverload<const QString &>(&BLF::BLFParser::sigProcessReport), dialog, delay);
    dialog->onProcessFile();
}

int convert(int argc, char **argv)
{
    return play(argc, argv, [](TZBenchWindow &window) {
        QTimer::singleShot(0, &window, [&window] {
            QTimer::singleShot(0, &window, [&window] { convertSlowly(window); });
            window.findChild<QAction *>(QStringLiteral("actionBLF_Converter"))->trigger();
        });
    });
}

} // namespace

std::optional<int> runAsChild(int argc, char **argv)
{
    const std::string_view role = argc > 1 ? argv[1] : "";
    if (role != hangingCloseRole && role != channelUnderDialogRole && role != recordingRole && role != conversionRole)
        return std::nullopt;
    if (!TzVciNetwork::current().isLoopback())
        return notLoopback; // nothing is ever sent to a real interface
    if (role == hangingCloseRole)
        return hangOnClosing(argc, argv);
    if (role == recordingRole)
        return record(argc, argv);
    if (role == conversionRole)
        return convert(argc, argv);
    return openChannelUnderDialog(argc, argv);
}

} // namespace tztest
