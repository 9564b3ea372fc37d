// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

/// Watches over an end that must not hang: calls a function, on the thread "tz-end-limit", unless the object is
/// destroyed within the limit.
class TzEndLimit
{
public:
    TzEndLimit(std::chrono::milliseconds limit, std::function<void()> onExpired);
    ~TzEndLimit();
    TzEndLimit(const TzEndLimit &) = delete;
    TzEndLimit &operator=(const TzEndLimit &) = delete;

private:
    void watch(std::chrono::steady_clock::time_point deadline);

    const std::function<void()> m_onExpired;
    std::mutex m_mutex; // protects m_ended
    std::condition_variable m_condition;
    bool m_ended = false;
    std::thread m_thread; // last: it uses all of the above
};
