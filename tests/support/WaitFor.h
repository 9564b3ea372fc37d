// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QCoreApplication>
#include <QEventLoop>

#include <chrono>
#include <thread>

namespace tztest {

/// Runs the event loop until @p condition holds; false if it did not within @p limit. The limit is for a broken
/// program only: a passing test returns as soon as the condition holds.
template <typename Condition>
[[nodiscard]] bool waitFor(Condition condition, std::chrono::milliseconds limit = std::chrono::seconds(20))
{
    const auto end = std::chrono::steady_clock::now() + limit;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end)
            return false;
        if (QCoreApplication::instance())
            QCoreApplication::processEvents(QEventLoop::AllEvents, 1);
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

/// The same without the event loop: for threads of a test's own, and for what has to happen before the loop turns.
template <typename Condition>
[[nodiscard]] bool waitBlocking(Condition condition, std::chrono::milliseconds limit = std::chrono::seconds(20))
{
    const auto end = std::chrono::steady_clock::now() + limit;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

} // namespace tztest
