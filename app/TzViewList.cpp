// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/TzViewList.h"

#include "vci/TzVciTypes.h"
#include "views/ui/TzVciBaseViewWindow.h"

#include <QCoreApplication>

#include <algorithm>
#include <mutex>
#include <shared_mutex>

void TzViewList::append(TzVciBaseViewWindow *view)
{
    const std::unique_lock lock(m_mutex);
    m_views.push_back(view);
}

bool TzViewList::remove(const QObject *view)
{
    const std::unique_lock lock(m_mutex);
    return std::erase_if(m_views, [view](const TzVciBaseViewWindow *listed) { return listed == view; }) > 0;
}

std::vector<TzVciBaseViewWindow *> TzViewList::views() const
{
    const std::shared_lock lock(m_mutex);
    return m_views;
}

bool TzViewList::hasFamily(std::uint8_t protocol) const
{
    const std::shared_lock lock(m_mutex);
    return std::any_of(m_views.begin(), m_views.end(), [protocol](const TzVciBaseViewWindow *view) {
        return TzVciViewKind::familyProtocol(view->viewKind()) == protocol;
    });
}

void TzViewList::deliver(std::uint8_t protocol, const std::vector<TzVciMessage> &batch) const
{
    const std::shared_lock lock(m_mutex);
    for (TzVciBaseViewWindow *view : m_views) {
        if (TzVciViewKind::familyProtocol(view->viewKind()) == protocol)
            view->onReceivedMessages(batch);
    }
}

void TzViewList::renumber() const
{
    int number = 0;
    for (TzVciBaseViewWindow *view : views())
        view->setWindowTitle(title(++number, view->viewKind()));
}

QString TzViewList::title(int number, std::uint8_t kind)
{
    const auto translated = [](const char *text) { return QCoreApplication::translate("TzViewList", text); };
    switch (kind) {
    case TzVciViewKind::can: return translated("View%1 For CAN").arg(number);
    case TzVciViewKind::lin: return translated("View%1 For LIN").arg(number);
    case TzVciViewKind::dbc: return translated("View%1 For DBC").arg(number);
    case TzVciViewKind::ldf: return translated("View%1 For LDF").arg(number);
    default: return translated("View%1").arg(number);
    }
}
