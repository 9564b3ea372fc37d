// SPDX-License-Identifier: GPL-3.0-or-later
// Shows the workbench on simulated boxes without anybody at the keyboard: for documentation, for machines without a
// display, and as a test that the whole road of a frame works. Everything stays on loopback.
#include "app/TZBenchWindow.h"
#include "app/TzApplication.h"
#include "app/TzStartup.h"
#include "common/Log.h"
#include "tools/demo/DemoDriver.h"
#include "tools/simulator/Simulator.h"
#include "vci/TzVciDeviceStore.h"
#include "vci/TzVciNetwork.h"

#include <QCommandLineParser>
#include <QDir>
#include <QTemporaryDir>

#include <cstdio>

namespace {

constexpr int boxCount = 2;
const char *const defaultSize = "1760x1000";

bool startSimulator(tzsim::Simulator &simulator)
{
    for (int index = 0; index < boxCount; ++index)
        simulator.addBox({.index = index, .canChannels = 4, .linChannels = 2});
    std::string error;
    if (!simulator.start(&error)) {
        std::fprintf(stderr, "demo: %s\n", error.c_str());
        return false;
    }
    for (tzsim::Box *box : simulator.boxes())
        box->startSignals({.canChannels = {0, 1}, .linChannels = {0}, .fd = true, .errors = true});
    return true;
}

// "1760x1000"; an empty size for anything else.
QSize sizeFromText(const QString &text)
{
    const QSize size(text.section(QLatin1Char('x'), 0, 0).toInt(), text.section(QLatin1Char('x'), 1).toInt());
    return size.isEmpty() ? QSize() : size;
}

int runDemo(TzApplication &application, const QSize &size, const QDir &out)
{
    TzStartup::dressApplication(application);
    TzStartup::startLog();
    TzStartup::startBackgroundLoad();
    const auto window = TzStartup::showMainWindow(application);
    window->showNormal();
    window->resize(size);
    DemoDriver driver(window.get(), &TzVciDeviceStore::instance(), out);
    driver.start();
    window->openFirstWindows();
    const int code = application.run();
    TzStartup::finish();
    Common::logStop();
    return code != 0 ? code : driver.succeeded() ? 0 : 1;
}

} // namespace

int main(int argc, char **argv)
{
    if (qEnvironmentVariableIsEmpty("TZVCI_NETWORK"))
        qputenv("TZVCI_NETWORK", "127.201.2");
    if (!TzVciNetwork::current().isLoopback())
        return 2;
    TzStartup::prepareToolkit();
    TzApplication application(argc, argv);

    QCommandLineParser parser;
    const QCommandLineOption outOption(QStringLiteral("out"), QStringLiteral("Folder for the pictures."),
                                       QStringLiteral("folder"), QStringLiteral("screenshots"));
    const QCommandLineOption sizeOption(QStringLiteral("size"), QStringLiteral("Size of the main window."),
                                        QStringLiteral("WxH"), QLatin1String(defaultSize));
    parser.addOptions({outOption, sizeOption});
    parser.addHelpOption();
    parser.process(application);
    const QSize size = sizeFromText(parser.value(sizeOption));
    if (size.isEmpty()) {
        std::fprintf(stderr, "demo: %s is not a size\n", qPrintable(parser.value(sizeOption)));
        return 2;
    }
    const QDir out(QDir::current().absoluteFilePath(parser.value(outOption)));
    if (!QDir().mkpath(out.path())) {
        std::fprintf(stderr, "demo: cannot make the folder %s\n", qPrintable(out.path()));
        return 1;
    }

    const QTemporaryDir work; // config/ and logs/ of the demonstration
    QDir::setCurrent(work.path());
    tzsim::Simulator simulator;
    if (!startSimulator(simulator))
        return 1;
    return TzStartup::runGuarded([&] { return runDemo(application, size, out); });
}
