// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/logging/readback/SentFrames.h"

#include <array>

namespace tztest {
namespace {

// Parity bits as the LIN standard has them: P0 even over bits 0, 1, 2, 4; P1 odd over bits 1, 3, 4, 5.
std::uint8_t protectedId(std::uint8_t id)
{
    const auto bit = [id](int number) { return (id >> number) & 1; };
    const int p0 = bit(0) ^ bit(1) ^ bit(2) ^ bit(4);
    const int p1 = 1 ^ bit(1) ^ bit(3) ^ bit(4) ^ bit(5);
    return static_cast<std::uint8_t>(id | p0 << 6 | p1 << 7);
}

std::uint8_t checksum(const tzsim::LinFrame &frame)
{
    const bool isDiagnostic = frame.id == 0x3C || frame.id == 0x3D; // always of the classic form, whatever is set
    const bool enhanced = frame.checksumType == tzsim::LinChecksum::enhanced && !isDiagnostic;
    unsigned sum = enhanced ? protectedId(frame.id) : 0;
    for (int i = 0; i < frame.length; ++i) {
        sum += frame.data[static_cast<std::size_t>(i)];
        sum = sum > 0xFF ? sum - 0xFF : sum; // the carry comes in again
    }
    return static_cast<std::uint8_t>(~sum);
}

template <typename Frame> std::vector<std::uint8_t> payloadOf(const Frame &frame)
{
    return {frame.data.begin(), frame.data.begin() + frame.length};
}

} // namespace

tzsim::CanFrame FrameMaker::can(Kinds kinds)
{
    constexpr std::array<std::uint8_t, 16> fdLengths{0, 1, 2, 3, 4, 5, 6, 7, 8, 12, 16, 20, 24, 32, 48, 64};
    if (below(16) == 0)
        return tzsim::CanFrame::makeError(below(0x1000));
    const bool extended = below(2) == 0;
    const bool fd = kinds == Kinds::All && below(3) == 0;
    tzsim::CanFrame frame;
    frame.id = static_cast<std::uint32_t>(m_random()) & (extended ? 0x1FFFFFFF : 0x7FF);
    frame.flags = extended ? tzsim::CanFlag::extended : std::uint8_t{0};
    frame.length = fd ? fdLengths[below(fdLengths.size())] : static_cast<std::uint8_t>(below(9));
    if (fd)
        frame.flags |= tzsim::CanFlag::fd | (below(2) == 0 ? tzsim::CanFlag::bitRateSwitch : std::uint8_t{0});
    else if (below(8) == 0)
        frame.flags |= tzsim::CanFlag::remote;
    if ((frame.flags & tzsim::CanFlag::remote) == 0) {
        for (int i = 0; i < frame.length; ++i)
            frame.data[static_cast<std::size_t>(i)] = static_cast<std::uint8_t>(below(256));
    }
    return frame;
}

tzsim::LinFrame FrameMaker::lin()
{
    std::array<std::uint8_t, 8> data{};
    for (std::uint8_t &byte : data)
        byte = static_cast<std::uint8_t>(below(256));
    const auto type = below(2) == 0 ? tzsim::LinChecksum::classic : tzsim::LinChecksum::enhanced;
    return tzsim::LinFrame::make(static_cast<std::uint8_t>(below(0x40)), {data.data(), 1 + below(8)}, type);
}

RecordedFrame expectedRecord(const tzsim::ChannelRef &channel, const tzsim::CanFrame &frame, RecordFormat format)
{
    RecordedFrame record;
    record.device = channel.box;
    record.channel = channel.channel;
    if (frame.isError() && format == RecordFormat::Asc) {
        record.isError = true;
        return record;
    }
    record.id = frame.id;
    record.isExtended = (frame.flags & tzsim::CanFlag::extended) != 0;
    record.isRemote = (frame.flags & tzsim::CanFlag::remote) != 0;
    record.isFd = (frame.flags & tzsim::CanFlag::fd) != 0;
    record.isBitRateSwitched = (frame.flags & tzsim::CanFlag::bitRateSwitch) != 0;
    record.direction = "Rx";
    record.length = frame.length;
    if (!record.isRemote)
        record.data = payloadOf(frame);
    return record;
}

RecordedFrame expectedRecord(const tzsim::ChannelRef &channel, const tzsim::LinFrame &frame, RecordFormat format,
                             const std::string &direction)
{
    RecordedFrame record;
    record.device = channel.box;
    record.channel = channel.channel;
    record.id = frame.id;
    record.length = frame.length;
    record.data = payloadOf(frame);
    record.protectedId = protectedId(frame.id);
    record.checksum = checksum(frame);
    if (format == RecordFormat::Csv) {
        record.direction = direction;
        record.checksumType = frame.checksumType == tzsim::LinChecksum::enhanced ? "Enhanced" : "Standard";
    }
    return record;
}

} // namespace tztest
