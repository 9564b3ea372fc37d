// SPDX-License-Identifier: GPL-3.0-or-later
#include "tools/simulator/CandumpReader.h"

#include "tools/simulator/LogText.h"

#include <algorithm>

namespace tzsim {

namespace {

using logtext::number;

// Bits of an identifier in a log of SocketCAN (linux/can.h, linux/can/error.h).
constexpr std::uint32_t errorFlag = 0x20000000;
constexpr std::uint32_t errorTxTimeout = 0x1;
constexpr std::uint32_t errorLostArbitration = 0x2;
constexpr std::uint32_t standardMask = 0x7FF;
constexpr std::uint32_t extendedMask = 0x1FFFFFFF;

// Codes of error frames as boxes report them.
constexpr std::uint32_t timeoutError = 0x1;
constexpr std::uint32_t protocolError = 0x8000000;

bool readBytes(std::string_view hex, std::size_t maxBytes, CanFrame &frame)
{
    std::size_t count = 0;
    while (!hex.empty()) {
        if (hex.front() == '.') { // candump may put dots between the bytes
            hex.remove_prefix(1);
            continue;
        }
        const auto byte = number<std::uint8_t>(hex.substr(0, 2), 16);
        if (!byte || hex.size() < 2 || count == maxBytes)
            return false;
        frame.data[count++] = *byte;
        hex.remove_prefix(2);
    }
    frame.length = static_cast<std::uint8_t>(count);
    return true;
}

// What follows the first '#'.
bool readContent(std::string_view content, CanFrame &frame)
{
    if (content.starts_with('#')) {
        const auto flags = content.size() > 1 ? number<std::uint8_t>(content.substr(1, 1), 16) : std::nullopt;
        if (!flags)
            return false;
        frame.flags |= CanFlag::fd;
        if ((*flags & 1) != 0)
            frame.flags |= CanFlag::bitRateSwitch;
        return readBytes(content.substr(2), 64, frame);
    }
    if (content.starts_with('R') || content.starts_with('r')) {
        frame.flags |= CanFlag::remote;
        content.remove_prefix(1);
        const auto length = content.empty() ? std::uint8_t{0} : number<std::uint8_t>(content.substr(0, 1), 16);
        frame.length = std::min<std::uint8_t>(length.value_or(0), 8);
        return length.has_value();
    }
    return readBytes(content.substr(0, content.find('_')), 8, frame); // behind '_' stands a raw DLC
}

std::optional<CanFrame> readFrame(std::string_view text)
{
    const std::size_t hash = text.find('#');
    if (hash == std::string_view::npos)
        return std::nullopt;
    const std::string_view idText = text.substr(0, hash);
    const auto id = number<std::uint32_t>(idText, 16);
    if (!id)
        return std::nullopt;
    if ((*id & errorFlag) != 0) {
        const bool timeout = (*id & (errorTxTimeout | errorLostArbitration)) != 0;
        return CanFrame::makeError(timeout ? timeoutError : protocolError);
    }
    CanFrame frame;
    const bool extended = idText.size() > 3;
    if (*id > (extended ? extendedMask : standardMask))
        return std::nullopt;
    frame.id = *id;
    frame.flags = extended ? CanFlag::extended : std::uint8_t{0};
    if (!readContent(text.substr(hash + 1), frame))
        return std::nullopt;
    return frame;
}

int channelOf(std::string_view interface)
{
    const std::size_t lastOther = interface.find_last_not_of("0123456789");
    const std::string_view digits = interface.substr(lastOther == std::string_view::npos ? 0 : lastOther + 1);
    return number<int>(digits, 10).value_or(0);
}

} // namespace

ReplayLog readCandump(std::string_view text)
{
    ReplayLog log;
    while (!text.empty()) {
        const auto words = logtext::words(logtext::takeLine(text));
        if (words.empty())
            continue;
        std::string_view time = words[0];
        const bool bracketed = time.size() > 2 && time.starts_with('(') && time.ends_with(')');
        const auto timeNs = bracketed ? logtext::seconds(time.substr(1, time.size() - 2)) : std::nullopt;
        const auto frame = timeNs && words.size() >= 3 ? readFrame(words[2]) : std::nullopt;
        if (frame)
            log.entries.push_back({*timeNs, channelOf(words[1]), *frame});
        else
            ++log.skippedLines;
    }
    return log;
}

} // namespace tzsim
