// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "common/SendFrame.h"

#include <atomic>
#include <chrono>
#include <map>
#include <mutex>
#include <numeric>
#include <vector>

namespace tztest {

/// Counts what a sender hands over: each byte of a datagram stands for one frame. All functions from any thread.
class FrameCounter
{
public:
    Common::SendCallback callback()
    {
        return [this](const std::vector<char> &bytes, int frameCount) {
            const auto now = std::chrono::steady_clock::now();
            const std::lock_guard lock(m_mutex);
            if (bytes.size() != static_cast<std::size_t>(frameCount))
                m_countsMatch = false;
            for (const char letter : bytes)
                m_times[letter].push_back(now);
            return m_result.load();
        };
    }
    std::size_t count(char letter) const { return times(letter).size(); }
    std::vector<std::chrono::steady_clock::time_point> times(char letter) const
    {
        const std::lock_guard lock(m_mutex);
        const auto found = m_times.find(letter);
        return found == m_times.end() ? std::vector<std::chrono::steady_clock::time_point>{} : found->second;
    }
    std::size_t total() const
    {
        const std::lock_guard lock(m_mutex);
        return std::accumulate(m_times.begin(), m_times.end(), std::size_t{0},
                               [](std::size_t sum, const auto &entry) { return sum + entry.second.size(); });
    }
    bool countsMatch() const { return m_countsMatch; }
    void setResult(int result) { m_result = result; }

private:
    mutable std::mutex m_mutex; // protects m_times
    std::map<char, std::vector<std::chrono::steady_clock::time_point>> m_times;
    std::atomic<bool> m_countsMatch{true};
    std::atomic<int> m_result{0};
};

} // namespace tztest
