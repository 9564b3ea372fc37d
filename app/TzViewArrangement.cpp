// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/TzViewArrangement.h"

#include "app/TzViewTiler.h"

#include <QEvent>
#include <QMdiArea>
#include <QMdiSubWindow>

#include <algorithm>

TzViewArrangement::TzViewArrangement(QMdiArea *area, QObject *parent)
    : QObject(parent)
    , m_area(area)
{
    m_area->viewport()->installEventFilter(this);
}

void TzViewArrangement::tile(const std::vector<QMdiSubWindow *> &windows)
{
    m_placed.clear();
    for (QMdiSubWindow *window : windows)
        m_placed.push_back({window, QRect()});
    place();
}

void TzViewArrangement::place()
{
    const std::vector<QRect> tiles = TzViewTiler::tiles(static_cast<int>(m_placed.size()), m_area->viewport()->size());
    for (std::size_t i = 0; i < tiles.size(); ++i) {
        Placed &placed = m_placed[i];
        placed.window->showNormal(); // a maximised or minimised sub-window takes no geometry
        placed.window->setGeometry(tiles[i]);
        placed.geometry = placed.window->geometry(); // its minimum size may have the last word
    }
}

bool TzViewArrangement::untouched() const
{
    const QList<QMdiSubWindow *> windows = m_area->subWindowList();
    return std::all_of(m_placed.begin(), m_placed.end(), [&](const Placed &placed) {
        return windows.contains(placed.window) && !placed.window->isMaximized() && !placed.window->isMinimized() &&
               placed.window->geometry() == placed.geometry;
    });
}

bool TzViewArrangement::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::Resize && watched == m_area->viewport() && !m_placed.empty() && untouched())
        place();
    return QObject::eventFilter(watched, event);
}
