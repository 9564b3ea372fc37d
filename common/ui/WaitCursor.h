// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QGuiApplication>

namespace Common {

/// Shows the wait cursor in all windows while it lives. UI thread.
class WaitCursor
{
public:
    WaitCursor() { QGuiApplication::setOverrideCursor(Qt::WaitCursor); }
    ~WaitCursor() { QGuiApplication::restoreOverrideCursor(); }
    WaitCursor(const WaitCursor &) = delete;
    WaitCursor &operator=(const WaitCursor &) = delete;
};

} // namespace Common
