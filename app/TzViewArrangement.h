// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QRect>

#include <vector>

class QMdiArea;
class QMdiSubWindow;
class QWidget;

/// Lays the sub-windows of an area out by TzViewTiler, and does so again when the area changes its size, for as long as
/// the user has not moved, resized, maximised or minimised a sub-window since. UI thread only.
class TzViewArrangement : public QObject
{
    Q_OBJECT
public:
    /// @param area  must outlive this object
    explicit TzViewArrangement(QMdiArea *area, QObject *parent = nullptr);

    /// Tiles the sub-windows that hold one of @p views, in the area's order. A sub-window that is about to go is
    /// still in the area for a moment; it is left out because its view is no longer among them.
    void tile(const std::vector<const QWidget *> &views);

    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    struct Placed
    {
        QMdiSubWindow *window = nullptr; // compared, and used only while the area still lists it
        QRect geometry;
    };

    void place();
    bool untouched() const;

    QMdiArea *m_area;
    std::vector<Placed> m_placed; // what the last tiling did, in its order
};
