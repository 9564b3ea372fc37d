// SPDX-License-Identifier: GPL-3.0-or-later
#include "common/platform/WakeEvent.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstdint>
#include <system_error>

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

namespace Common::platform {

namespace {
constexpr std::size_t maxEvents = 8;                       // of one waitAny()
constexpr std::chrono::milliseconds longestLimit{INT_MAX}; // of one poll(): some 24 days
} // namespace

WakeEvent::WakeEvent()
    : m_descriptor(::eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC))
{
    if (m_descriptor < 0)
        throw std::system_error(errno, std::generic_category(), "eventfd");
}

WakeEvent::~WakeEvent()
{
    ::close(m_descriptor);
}

void WakeEvent::set() noexcept
{
    const int interrupted = errno; // a signal handler must leave it as it was
    const std::uint64_t one = 1;
    // It fails only where the event is set a great many times already.
    [[maybe_unused]] const auto written = ::write(m_descriptor, &one, sizeof one);
    errno = interrupted;
}

bool WakeEvent::take() noexcept
{
    std::uint64_t count = 0;
    return ::read(m_descriptor, &count, sizeof count) == static_cast<ssize_t>(sizeof count);
}

bool WakeEvent::wait(std::chrono::milliseconds limit) noexcept
{
    WakeEvent *const self = this;
    return waitAny({&self, 1}, limit) == 0;
}

int WakeEvent::waitAny(std::span<WakeEvent *const> events, std::chrono::milliseconds limit) noexcept
{
    using Clock = std::chrono::steady_clock;
    if (limit != noLimit)
        limit = std::clamp(limit, std::chrono::milliseconds::zero(), longestLimit);
    const auto end = Clock::now() + limit;
    std::array<pollfd, maxEvents> polled{};
    const std::size_t count = std::min(events.size(), maxEvents);
    for (std::size_t i = 0; i < count; ++i)
        polled[i] = {events[i]->m_descriptor, POLLIN, 0};
    for (;;) {
        int rest = -1;
        if (limit != noLimit) {
            const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now());
            rest = static_cast<int>(std::max<std::chrono::milliseconds::rep>(left.count(), 0));
        }
        const int ready = ::poll(polled.data(), count, rest);
        if (ready == 0 || (ready < 0 && errno != EINTR))
            return -1;
        for (std::size_t i = 0; ready > 0 && i < count; ++i) {
            if (polled[i].revents != 0 && events[i]->take())
                return static_cast<int>(i);
        }
    }
}

} // namespace Common::platform
