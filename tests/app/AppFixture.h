// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/TZBenchWindow.h"
#include "app/TzBenchWindowHelper.h"
#include "tests/support/TempWorkDir.h"
#include "tests/support/WaitFor.h"
#include "tools/simulator/Simulator.h"
#include "vci/TzVciDeviceManager.h"
#include "vci/TzVciDeviceScanner.h"
#include "vci/TzVciDeviceStore.h"
#include "vci/TzVciTypes.h"
#include "views/TzViewIntake.h"

#include <QAction>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QString>

#include <memory>
#include <string>
#include <vector>

namespace tztest {

/// The main window on a store, manager and scanner of its own, with simulated boxes behind them.
class AppFixture
{
public:
    static constexpr int canChannels = 2;
    static constexpr int linChannels = 1;

    /// @param boxes  boxes with the indexes 0 to boxes - 1, known to the store
    explicit AppFixture(int boxes = 0);
    ~AppFixture();

    TzBenchWindowHelper &helper() { return *window->helper(); }
    QMdiArea &area() { return *window->findChild<QMdiArea *>(QStringLiteral("areaVCI")); }
    QAction &action(const char *name) { return *window->findChild<QAction *>(QString::fromLatin1(name)); }
    std::vector<QString> titles() const;
    std::vector<QRect> geometries();
    /// The counters of a view, counted from 0.
    TzViewIntake::Counters countersOf(std::size_t view) const;

    void openViews(int canViews, int linViews = 0);
    /// Lets the box send that many frames a second on the first CAN channel, until the simulator ends.
    void startLoad(int box, double framesPerSecond);
    bool openDevice(int deviceIndex);
    bool openChannel(int deviceIndex, std::uint8_t protocol, int channel);
    /// Opens the device and the channel and waits until the window has heard of it.
    bool openAll(int deviceIndex, std::uint8_t protocol, int channel);

    TempWorkDir workDir;
    tzsim::Simulator simulator;
    TzVciDeviceStore store;
    TzVciDeviceManager manager{&store};
    TzVciDeviceScanner scanner{&store};
    std::unique_ptr<TZBenchWindow> window;
    bool simulatorStarted = false;
    std::string simulatorError;
};

} // namespace tztest
