// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QGuiApplication>

/// Shows the wait cursor in all windows while it lives. UI thread.
class TzVciWaitCursor
{
public:
    TzVciWaitCursor() { QGuiApplication::setOverrideCursor(Qt::WaitCursor); }
    ~TzVciWaitCursor() { QGuiApplication::restoreOverrideCursor(); }
    TzVciWaitCursor(const TzVciWaitCursor &) = delete;
    TzVciWaitCursor &operator=(const TzVciWaitCursor &) = delete;
};
