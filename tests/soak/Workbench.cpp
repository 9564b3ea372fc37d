// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/soak/Workbench.h"

#include "app/TzBenchWindowHelper.h"
#include "tests/soak/SoakPlan.h"
#include "vci/TzVciCanChannelConfig.h"
#include "vci/TzVciTypes.h"

#include <QAction>

namespace tzsoak {

namespace {

constexpr int windowWidth = 1600;
constexpr int windowHeight = 1000;
constexpr int allChannels = -1;

} // namespace

Workbench::Workbench()
{
    for (int box = 0; box < boxCount; ++box) {
        m_store.addDevice(box, TzVciDeviceConfig(canChannels, linChannels));
        m_store.canChannelConfig(box, classicChannel)->type = QStringLiteral("CAN");
        m_store.canChannelConfig(box, fdChannel)->type = QStringLiteral("CANFDBRS");
    }
    m_window.resize(windowWidth, windowHeight);
    m_window.show();
    for (const std::uint8_t kind : {TzVciViewKind::can, TzVciViewKind::lin, TzVciViewKind::can, TzVciViewKind::lin})
        newView(kind);
    m_canReference = views().at(0);
    m_linReference = views().at(1);
}

Workbench::~Workbench()
{
    m_window.closeWithoutQuestion();
}

bool Workbench::open(int box)
{
    if (m_manager.openDevice(box) != TzVciResult::ok)
        return false;
    m_ledger.watch(*m_manager.getDevice(box));
    return m_manager.openChannel(box, TzVciProtocolId::can, allChannels) == TzVciResult::ok &&
           m_manager.openChannel(box, TzVciProtocolId::lin, allChannels) == TzVciResult::ok;
}

bool Workbench::hasLost(int box) const
{
    const auto device = m_manager.getDevice(box);
    return device && device->deviceIndex() == -1;
}

bool Workbench::isOpen(int box) const
{
    return m_manager.getDevice(box) != nullptr;
}

std::vector<TzVciBaseViewWindow *> Workbench::views() const
{
    return m_window.helper()->views().views();
}

std::vector<TzVciBaseViewWindow *> Workbench::freeViews() const
{
    std::vector<TzVciBaseViewWindow *> result = views();
    std::erase_if(result,
                  [this](const TzVciBaseViewWindow *view) { return view == m_canReference || view == m_linReference; });
    return result;
}

void Workbench::newView(std::uint8_t kind)
{
    const char *name = kind == TzVciViewKind::lin ? "actionNew_LIN_View" : "actionNew_CAN_View";
    m_window.findChild<QAction *>(QLatin1String(name))->trigger();
}

bool Workbench::isDrained()
{
    TzFrameInlet &inlet = m_window.helper()->inlet();
    return inlet.canQueue().waiting() == 0 && inlet.linQueue().waiting() == 0;
}

} // namespace tzsoak
