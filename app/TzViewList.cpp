// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/TzViewList.h"

#include "vci/TzVciTypes.h"
#include "views/ui/TzVciBaseViewWindow.h"

#include <QCoreApplication>

#include <algorithm>

void TzViewList::append(TzVciBaseViewWindow *view, std::uint8_t kind)
{
    const QWriteLocker lock(&m_lock);
    m_entries.push_back({view, kind});
}

bool TzViewList::remove(const QObject *view)
{
    const QWriteLocker lock(&m_lock);
    return std::erase_if(m_entries, [view](const Entry &entry) { return entry.view == view; }) > 0;
}

std::vector<TzViewList::Entry> TzViewList::entries() const
{
    const QReadLocker lock(&m_lock);
    return m_entries;
}

bool TzViewList::hasFamily(std::uint8_t protocol) const
{
    const QReadLocker lock(&m_lock);
    return std::any_of(m_entries.begin(), m_entries.end(), [protocol](const Entry &entry) {
        return TzVciViewKind::familyProtocol(entry.kind) == protocol;
    });
}

void TzViewList::deliver(std::uint8_t protocol, const std::vector<TzVciMessage> &batch) const
{
    const QReadLocker lock(&m_lock);
    for (const Entry &entry : m_entries) {
        if (TzVciViewKind::familyProtocol(entry.kind) == protocol)
            entry.view->onReceivedMessages(batch);
    }
}

void TzViewList::renumber() const
{
    int number = 0;
    for (const Entry &entry : entries())
        entry.view->setWindowTitle(title(++number, entry.kind));
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
