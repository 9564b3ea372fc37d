// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QRect>

#include <vector>

class QMdiArea;
class QMdiSubWindow;

/// Lays the sub-windows of an area out by TzViewTiler, and does so again when the area changes its size, for as long as
/// the user has not moved, resized, maximised or minimised a sub-window since. UI thread only.
class TzViewArrangement : public QObject
{
    Q_OBJECT
public:
    /// @param area  must outlive this object
    explicit TzViewArrangement(QMdiArea *area, QObject *parent = nullptr);

    /// Tiles these sub-windows of the area, in this order. The area itself is not asked: for a moment it still lists
    /// sub-windows that are being destroyed.
    void tile(const std::vector<QMdiSubWindow *> &windows);

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
