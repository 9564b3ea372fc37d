// SPDX-License-Identifier: GPL-3.0-or-later
#include "common/ui/PendingEvents.h"

#include <QEventLoop>

#include <limits>

namespace Common {

// A loop of its own, rather than processEvents(), since it knows whether the program was told to end.
bool handlePendingEvents()
{
    constexpr int handled = std::numeric_limits<int>::max(); // no exit code of a program
    QEventLoop loop;
    // Queued, so that it comes behind all that waits, an order to quit among it.
    const auto end = [&loop] {
        if (loop.isRunning())
            loop.exit(handled);
    };
    QMetaObject::invokeMethod(&loop, end, Qt::QueuedConnection);
    return loop.exec() == handled;
}

} // namespace Common
