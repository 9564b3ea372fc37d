// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/app/AppFixture.h"

#include "views/ui/TzVciBaseViewWindow.h"

namespace tztest {

AppFixture::AppFixture(int boxes)
{
    for (int i = 0; i < boxes; ++i) {
        tzsim::BoxConfig config;
        config.index = i;
        config.canChannels = canChannels;
        config.linChannels = linChannels;
        simulator.addBox(config);
        store.addDevice(i, TzVciDeviceConfig(canChannels, linChannels));
    }
    simulatorStarted = boxes == 0 || simulator.start(&simulatorError);
    window = std::make_unique<TZBenchWindow>(&manager, &store, &scanner);
    window->resize(1000, 800);
    window->show();
}

AppFixture::~AppFixture()
{
    window->closeWithoutQuestion();
}

std::vector<QString> AppFixture::titles() const
{
    std::vector<QString> result;
    for (const TzVciBaseViewWindow *view : window->helper()->views().views())
        result.push_back(view->windowTitle());
    return result;
}

std::vector<QRect> AppFixture::geometries()
{
    std::vector<QRect> result;
    const QList<QMdiSubWindow *> windows = area().subWindowList();
    for (const QMdiSubWindow *subWindow : windows)
        result.push_back(subWindow->geometry());
    return result;
}

TzViewIntake::Counters AppFixture::countersOf(std::size_t view) const
{
    return window->helper()->views().views().at(view)->intake().counters();
}

void AppFixture::openViews(int canViews, int linViews)
{
    constexpr auto byUser = TzBenchWindowHelper::Request::ByUser;
    for (int i = 0; i < canViews; ++i)
        helper().newView(TzVciViewKind::can, byUser);
    for (int i = 0; i < linViews; ++i)
        helper().newView(TzVciViewKind::lin, byUser);
}

void AppFixture::startLoad(int box, double framesPerSecond)
{
    tzsim::LoadSpec load;
    load.framesPerSecond = framesPerSecond;
    simulator.box(box).startLoad(load);
}

bool AppFixture::openDevice(int deviceIndex)
{
    return simulatorStarted && manager.openDevice(deviceIndex) == TzVciResult::ok;
}

bool AppFixture::openChannel(int deviceIndex, std::uint8_t protocol, int channel)
{
    return manager.openChannel(deviceIndex, protocol, channel) == TzVciResult::ok;
}

bool AppFixture::openAll(int deviceIndex, std::uint8_t protocol, int channel)
{
    return openDevice(deviceIndex) && openChannel(deviceIndex, protocol, channel) &&
           waitFor([&] { return helper().isDraining(protocol) && helper().views().hasFamily(protocol); });
}

} // namespace tztest
