// SPDX-License-Identifier: GPL-3.0-or-later
#include "common/Utils.h"

#include "common/platform/LocalTime.h"

#include <fmt/format.h>

#include <array>
#include <chrono>
#include <cstdint>
#include <ctime>
#include <limits>

namespace Common {

namespace {

// A time text of the calling thread: all but the milliseconds is made once a second.
struct TimeText
{
    std::int64_t second = std::numeric_limits<std::int64_t>::min();
    std::array<char, 64> text{};
    std::size_t millisAt = 0; // where the three digits stand
};

void writeMillis(char *at, std::int64_t millis)
{
    at[0] = static_cast<char>('0' + millis / 100);
    at[1] = static_cast<char>('0' + millis / 10 % 10);
    at[2] = static_cast<char>('0' + millis % 10);
}

template <typename Write> const char *updated(TimeText &cache, Write write)
{
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    const std::int64_t millis = std::chrono::floor<std::chrono::milliseconds>(now).count();
    const std::int64_t second = std::chrono::floor<std::chrono::seconds>(now).count();
    if (second != cache.second) {
        write(platform::localTime(second), cache);
        cache.second = second;
    }
    writeMillis(cache.text.data() + cache.millisAt, millis - second * 1000);
    return cache.text.data();
}

void writeLogTime(const std::tm &time, TimeText &cache)
{
    const auto end =
        fmt::format_to_n(cache.text.data(), cache.text.size() - 1, "{:04}-{:02}-{:02} {:02}:{:02}:{:02}.000",
                         time.tm_year + 1900, time.tm_mon + 1, time.tm_mday, time.tm_hour, time.tm_min, time.tm_sec);
    *end.out = '\0';
    cache.millisAt = end.size - 3;
}

void writeAscTime(const std::tm &time, TimeText &cache)
{
    static constexpr std::array<const char *, 7> days{"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
    static constexpr std::array<const char *, 12> months{"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                                         "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    const auto head =
        fmt::format_to_n(cache.text.data(), cache.text.size() - 1, "{} {} {:02} {:02}:{:02}:{:02}.",
                         days[static_cast<std::size_t>(time.tm_wday)], months[static_cast<std::size_t>(time.tm_mon)],
                         time.tm_mday, time.tm_hour, time.tm_min, time.tm_sec);
    cache.millisAt = head.size;
    const auto tail = fmt::format_to_n(head.out, cache.text.size() - 1 - head.size, "000 {:04}", time.tm_year + 1900);
    *tail.out = '\0';
}

} // namespace

unsigned long long Utils::getCurrentMillisecondsFast()
{
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return static_cast<unsigned long long>(std::chrono::duration_cast<std::chrono::milliseconds>(now).count());
}

const char *Utils::getCurrentTimeStringFast()
{
    thread_local TimeText cache;
    return updated(cache, writeLogTime);
}

const char *Utils::getASCHeaderDateString()
{
    thread_local TimeText cache;
    return updated(cache, writeAscTime);
}

std::string Utils::bytesToHexStringUpper(const unsigned char *data, unsigned long long size)
{
    static constexpr std::array<char, 16> digits{'0', '1', '2', '3', '4', '5', '6', '7',
                                                 '8', '9', 'A', 'B', 'C', 'D', 'E', 'F'};
    if (!data || size == 0)
        return {};
    std::string text(3 * size - 1, ' ');
    for (unsigned long long i = 0; i < size; ++i) {
        text[3 * i] = digits[data[i] >> 4];
        text[3 * i + 1] = digits[data[i] & 0x0F];
    }
    return text;
}

} // namespace Common
