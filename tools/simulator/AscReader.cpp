// SPDX-License-Identifier: GPL-3.0-or-later
#include "tools/simulator/AscReader.h"

#include "tools/simulator/LogText.h"

#include <algorithm>
#include <span>

namespace tzsim {

namespace {

using logtext::number;
using Words = std::span<const std::string_view>;

constexpr std::uint32_t protocolError = 0x8000000; // as boxes report an error on the bus

struct AscFrame
{
    int channel = 0;
    std::variant<CanFrame, LinFrame> frame;
};

std::string_view at(Words words, std::size_t i)
{
    return i < words.size() ? words[i] : std::string_view();
}
Words behind(Words words, std::size_t count)
{
    return words.subspan(std::min(count, words.size()));
}
bool isDirection(std::string_view text)
{
    return text == "Rx" || text == "Tx";
}

// Channels are written counted from 1; LIN channels as "L2", or "Li" for the first.
std::optional<int> readChannel(std::string_view text)
{
    if (text == "Li")
        return 0;
    if (text.starts_with('L'))
        text.remove_prefix(1);
    const auto channel = number<int>(text, 10);
    return channel && *channel >= 1 ? std::optional(*channel - 1) : std::nullopt;
}

// "1F3" or "18FEF100x".
bool readId(std::string_view text, int base, CanFrame &frame)
{
    if (text.ends_with('x')) {
        frame.flags |= CanFlag::extended;
        text.remove_suffix(1);
    }
    const auto id = number<std::uint32_t>(text, base);
    frame.id = id.value_or(0);
    return id && *id <= ((frame.flags & CanFlag::extended) != 0 ? 0x1FFFFFFFU : 0x7FFU);
}

template <typename Frame> bool readBytes(Words words, std::size_t count, int base, Frame &frame)
{
    if (count > words.size() || count > frame.data.size())
        return false;
    for (std::size_t i = 0; i < count; ++i) {
        const auto byte = number<std::uint8_t>(words[i], base);
        if (!byte)
            return false;
        frame.data[i] = *byte;
    }
    frame.length = static_cast<std::uint8_t>(count);
    return true;
}

// channel id direction d|r length bytes
std::optional<AscFrame> readClassic(Words words, int base)
{
    const auto channel = readChannel(at(words, 0));
    CanFrame frame;
    if (!channel || !readId(at(words, 1), base, frame) || !isDirection(at(words, 2)))
        return std::nullopt;
    const auto dlc = number<std::uint8_t>(at(words, 4), base);
    if (at(words, 3) == "r") {
        frame.flags |= CanFlag::remote;
        frame.length = std::min<std::uint8_t>(dlc.value_or(0), 8); // the length may be missing
        return AscFrame{*channel, frame};
    }
    if (at(words, 3) != "d" || !dlc)
        return std::nullopt;
    // DLC codes 9 to 15 stand for 8 bytes. A larger number can only be the byte count of a CAN FD frame.
    if (*dlc > 15)
        frame.flags |= CanFlag::fd;
    const std::size_t count = *dlc > 15 ? *dlc : std::min<std::size_t>(*dlc, 8);
    if (!readBytes(behind(words, 5), count, base, frame))
        return std::nullopt;
    return AscFrame{*channel, frame};
}

// channel direction id [name] BRS ESI DLC length bytes, or channel id direction BRS ESI d DLC length bytes
std::optional<AscFrame> readFd(Words words, int base)
{
    const auto channel = readChannel(at(words, 0));
    const bool directionFirst = isDirection(at(words, 1));
    CanFrame frame;
    if (!channel || !readId(at(words, directionFirst ? 2 : 1), base, frame) ||
        !isDirection(at(words, directionFirst ? 1 : 2)))
        return std::nullopt;
    words = behind(words, 3);
    if (at(words, 0) != "0" && at(words, 0) != "1") // a symbolic name
        words = behind(words, 1);
    const std::string_view brs = at(words, 0);
    if (brs != "0" && brs != "1")
        return std::nullopt;
    frame.flags |= brs == "1" ? CanFlag::fd | CanFlag::bitRateSwitch : CanFlag::fd;
    words = behind(words, 2); // BRS and ESI
    if (at(words, 0) == "d")
        words = behind(words, 1);
    const auto length = number<std::size_t>(at(words, 1), 10); // decimal in both bases
    if (!length || !readBytes(behind(words, 2), *length, base, frame))
        return std::nullopt;
    return AscFrame{*channel, frame};
}

// [CANFD] channel [direction] ErrorFrame ..., or ErrorFrame channel
std::optional<AscFrame> readError(Words words)
{
    if (at(words, 0) == "CANFD" || at(words, 0) == "ErrorFrame")
        words = behind(words, 1);
    const auto channel = readChannel(at(words, 0));
    if (!channel)
        return std::nullopt;
    return AscFrame{*channel, CanFrame::makeError(protocolError)};
}

std::optional<LinFrame> readLinData(Words words, std::string_view id, std::string_view length, int base)
{
    LinFrame frame;
    const auto idValue = number<std::uint8_t>(id, base);
    const auto count = number<std::size_t>(length, 10);
    if (!idValue || *idValue > 0x3F || !count || !readBytes(words, *count, base, frame))
        return std::nullopt;
    frame.id = *idValue;
    return frame;
}

// L1 id direction length bytes checksum = xx ... [CSM = classic|enhanced]
std::optional<AscFrame> readLin(Words words, int base)
{
    const auto channel = readChannel(at(words, 0));
    auto frame = readLinData(behind(words, 4), at(words, 1), at(words, 3), base);
    if (!channel || !frame || !isDirection(at(words, 2)))
        return std::nullopt;
    for (std::size_t i = 0; i + 2 < words.size(); ++i) {
        if (words[i] == "checksum" && words[i + 1] == "=")
            frame->checksum = number<std::uint8_t>(words[i + 2], base);
        if (words[i] == "CSM" && words[i + 1] == "=")
            frame->checksumType = words[i + 2] == "classic" ? LinChecksum::classic : LinChecksum::enhanced;
    }
    return AscFrame{*channel, *frame};
}

// channel LIN Frame id length bytes checksum
std::optional<AscFrame> readRecordedLin(Words words)
{
    constexpr int hexadecimal = 16; // whatever the base line says
    const auto channel = readChannel(at(words, 0));
    auto frame = readLinData(behind(words, 5), at(words, 3), at(words, 4), hexadecimal);
    if (!channel || !frame)
        return std::nullopt;
    frame->checksum = number<std::uint8_t>(at(words, 5U + frame->length), hexadecimal);
    return AscFrame{*channel, *frame};
}

std::optional<AscFrame> readEvent(Words words, int base)
{
    const std::string_view first = at(words, 0);
    if (std::find(words.begin(), words.end(), "ErrorFrame") != words.end())
        return readError(words);
    if (first == "CANFD")
        return readFd(behind(words, 1), base);
    if (at(words, 1) == "LIN" && at(words, 2) == "Frame")
        return readRecordedLin(words);
    if (first.starts_with('L'))
        return readLin(words, base);
    return readClassic(words, base);
}

} // namespace

ReplayLog readAsc(std::string_view text)
{
    ReplayLog log;
    int base = 16;
    bool relative = false;
    std::int64_t lastNs = 0;
    while (!text.empty()) {
        const std::string_view line = logtext::takeLine(text);
        const auto words = logtext::words(line.substr(0, line.find("//")));
        const auto timeNs = words.empty() ? std::nullopt : logtext::seconds(words[0]);
        if (!words.empty() && words[0] == "base") {
            base = at(words, 1) == "dec" ? 10 : 16;
            relative = at(words, 3) == "relative";
        }
        if (!timeNs || words.size() < 2)
            continue;
        lastNs = relative ? lastNs + *timeNs : *timeNs;
        if (auto event = readEvent(Words(words).subspan(1), base))
            log.entries.push_back({lastNs, event->channel, std::move(event->frame)});
        else if (words[1] != "Start")
            ++log.skippedLines;
    }
    return log;
}

} // namespace tzsim
