// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "common/Log.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <shared_mutex>
#include <utility>

/// The subscribers of one kind of event of a device, each under a 64-bit key, by convention its own address.
///
/// Threads: any. Subscribers are called with the lock held for reading, so that remove() returns only when no call to
/// the one removed is running; hence they neither add nor remove from within a call. The delivering thread waits for
/// nothing longer than the insertion of one entry.
template <typename... Args> class TzVciSubscriberTable
{
public:
    using Callback = std::function<void(Args...)>;

    /// The words of the log lines.
    struct Names
    {
        const char *event;       ///< e.g. "CAN data"
        const char *subscribers; ///< e.g. "CAN subscribers"
    };

    TzVciSubscriberTable(int deviceIndex, Names names)
        : m_deviceIndex(deviceIndex)
        , m_names(names)
    {
    }

    /// Adds a subscriber, or replaces the one with the same key.
    void add(std::uint64_t key, Callback callback)
    {
        bool isReplaced = false;
        std::size_t total = 0;
        {
            const std::unique_lock lock(m_mutex);
            const auto [position, isNew] = m_callbacks.try_emplace(key);
            position->second.swap(callback); // a replaced one dies outside the lock
            isReplaced = !isNew;
            total = m_callbacks.size();
        }
        if (isReplaced)
            Common::logWarning("Device{}: Subscriber {} is re-subscribing to {}. Overwriting previous subscription.",
                               m_deviceIndex, key, m_names.event);
        Common::logInfo("Device{}: Subscriber {} subscribed to {}. Total {}: {}.", m_deviceIndex, key, m_names.event,
                        m_names.subscribers, total);
    }

    /// Removes a subscriber; after the return it is not called any more.
    void remove(std::uint64_t key)
    {
        typename std::map<std::uint64_t, Callback>::node_type removed; // dies outside the lock
        std::size_t total = 0;
        {
            const std::unique_lock lock(m_mutex);
            removed = m_callbacks.extract(key);
            total = m_callbacks.size();
        }
        if (removed)
            Common::logInfo("Device{}: Subscriber {} unsubscribed from {}. Total {} remaining: {}.", m_deviceIndex, key,
                            m_names.event, m_names.subscribers, total);
        else
            Common::logWarning(
                "Device{}: Subscriber {} attempted to unsubscribe from {} but was not found. Total {}: {}.",
                m_deviceIndex, key, m_names.event, m_names.subscribers, total);
    }

    /// Calls every subscriber in key order.
    void notify(Args... args) const
    {
        const std::shared_lock lock(m_mutex);
        for (const auto &[key, callback] : m_callbacks) {
            if (callback)
                callback(args...);
        }
    }

private:
    const int m_deviceIndex;
    const Names m_names;
    mutable std::shared_mutex m_mutex; // protects m_callbacks
    std::map<std::uint64_t, Callback> m_callbacks;
};
