// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>

/// Drops what the user does with mouse, pen, touch, keys and window frames while it lives, so that a local event loop
/// may paint and run timers without a window being used or closed by the user under it. Drops, rather than holds back:
/// a click that was made while nothing could be clicked must not act seconds later. UI thread.
class TzVciInputBlocker : public QObject
{
    Q_OBJECT
public:
    TzVciInputBlocker();
    ~TzVciInputBlocker() override;

    bool eventFilter(QObject *watched, QEvent *event) override;
};
