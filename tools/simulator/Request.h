// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <vector>

namespace tzsim {

/// One protocol frame as a box received it.
struct Request
{
    std::uint8_t protocol = 0;
    std::uint8_t command = 0;
    std::uint8_t channel = 0;
    std::uint8_t param = 0;
    std::vector<std::uint8_t> payload{};
    std::chrono::steady_clock::time_point at{};

    /// Compares what was asked, not when.
    bool operator==(const Request &other) const
    {
        return protocol == other.protocol && command == other.command && channel == other.channel &&
               param == other.param && payload == other.payload;
    }
};

/// Which requests a fault is for; an empty field fits all.
struct RequestMatch
{
    std::optional<std::uint8_t> protocol{};
    std::optional<std::uint8_t> command{};
    std::optional<std::uint8_t> channel{};
    std::optional<std::uint8_t> param{};
    std::optional<std::uint8_t> firstByte{}; ///< of the payload: the parameter id of a CAN parameter request

    bool matches(const Request &request) const;
};

/// One disturbance of replies. All that match a request act on its reply.
struct ReplyFault
{
    enum class Kind
    {
        refuse, ///< answer with a status of `code`
        drop,   ///< do not act on the request, do not answer
        delay,  ///< act at once, answer after `delay`
        resize, ///< answer with a payload cut or filled with zeroes to `length` bytes
    };
    RequestMatch match{};
    Kind kind = Kind::refuse;
    std::uint8_t code = 1;
    std::chrono::milliseconds delay{0};
    std::uint16_t length = 0;
    int times = -1; ///< how often it acts; -1 for ever
};

/// Status bytes that a box answers with by itself.
namespace DeviceStatus {
inline constexpr std::uint8_t ok = 0;
inline constexpr std::uint8_t badLength = 1;
inline constexpr std::uint8_t noSuchChannel = 2;
inline constexpr std::uint8_t badValue = 3;
inline constexpr std::uint8_t notOpen = 4;
inline constexpr std::uint8_t unknownParameter = 5;
inline constexpr std::uint8_t unknownCommand = 6;
} // namespace DeviceStatus

} // namespace tzsim
