// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <atomic>
#include <concepts>
#include <mutex>
#include <type_traits>
#include <utility>

/// One value of a settings record that is edited in place through a pointer while another thread reads it, for example
/// a rate that the user changes while a channel is being opened. Reads and writes like a plain T and never tears; it
/// orders nothing beside itself. Numbers are lock-free.
template <typename T> class TzVciSetting
{
public:
    TzVciSetting() = default;
    TzVciSetting(T value) // NOLINT(google-explicit-constructor): reads like a plain T
        : m_value(std::move(value))
    {
    }
    TzVciSetting(const TzVciSetting &other)
        : m_value(other.value())
    {
    }
    TzVciSetting &operator=(const TzVciSetting &other)
    {
        setValue(other.value());
        return *this;
    }
    template <typename U>
    requires(std::constructible_from<T, U> && !std::same_as<std::remove_cvref_t<U>, TzVciSetting>) TzVciSetting &
    operator=(U &&value)
    {
        setValue(T(std::forward<U>(value)));
        return *this;
    }
    ~TzVciSetting() = default;

    operator T() const { return value(); } // NOLINT(google-explicit-constructor): reads like a plain T

    T value() const
    {
        if constexpr (isAtomic) {
            return m_value.load(std::memory_order_relaxed);
        } else {
            const std::lock_guard lock(m_mutex);
            return m_value;
        }
    }

    void setValue(T value)
    {
        if constexpr (isAtomic) {
            m_value.store(value, std::memory_order_relaxed);
        } else {
            const std::lock_guard lock(m_mutex);
            std::swap(m_value, value); // the old value dies outside the lock
        }
    }

private:
    static constexpr bool isAtomic = std::is_arithmetic_v<T>;
    struct NoMutex
    {
    };

    std::conditional_t<isAtomic, std::atomic<T>, T> m_value{};
    [[no_unique_address]] mutable std::conditional_t<isAtomic, NoMutex, std::mutex> m_mutex; // protects m_value
};

/// Texts compare with texts; numbers do by their own conversion.
template <typename T>
requires(!std::is_arithmetic_v<T>) bool operator==(const TzVciSetting<T> &setting, const std::type_identity_t<T> &value)
{
    return setting.value() == value;
}
