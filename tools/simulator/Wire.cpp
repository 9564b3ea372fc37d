// SPDX-License-Identifier: GPL-3.0-or-later
#include "tools/simulator/Wire.h"

#include "tools/simulator/LinMath.h"

#include <cstring>

namespace tzsim::wire {

namespace {

// The fourth byte of a discovery request and reply; the placeholder of both has the same value.
constexpr std::uint8_t discoveryCommand = 0xFF;
constexpr std::uint16_t discoveryReplyType = 2;

void writeHeader(std::uint8_t *out, std::uint8_t protocol, std::uint8_t command, std::uint8_t channel,
                 std::uint8_t param, std::size_t length)
{
    out[0] = 0x55;
    out[1] = 0xAA;
    out[2] = protocol;
    out[3] = command;
    out[4] = channel;
    out[5] = param;
    writeU16(out + 6, static_cast<std::uint16_t>(length));
    out[headerSize + length] = 0;
}

} // namespace

std::uint16_t readU16(const std::uint8_t *bytes)
{
    return static_cast<std::uint16_t>(bytes[0] | bytes[1] << 8);
}

std::uint32_t readU32(const std::uint8_t *bytes)
{
    return static_cast<std::uint32_t>(readU16(bytes)) | static_cast<std::uint32_t>(readU16(bytes + 2)) << 16;
}

void writeU16(std::uint8_t *bytes, std::uint16_t value)
{
    bytes[0] = static_cast<std::uint8_t>(value);
    bytes[1] = static_cast<std::uint8_t>(value >> 8);
}

void writeU32(std::uint8_t *bytes, std::uint32_t value)
{
    for (unsigned i = 0; i < 4; ++i)
        bytes[i] = static_cast<std::uint8_t>(value >> (8 * i));
}

void writeU64(std::uint8_t *bytes, std::uint64_t value)
{
    for (unsigned i = 0; i < 8; ++i)
        bytes[i] = static_cast<std::uint8_t>(value >> (8 * i));
}

std::optional<HostFrame> HostFrameReader::next()
{
    while (m_rest.size() >= overhead) {
        if (m_rest[0] != 0xAA || m_rest[1] != 0x55) {
            m_malformed = true;
            m_rest = m_rest.subspan(1);
            continue;
        }
        const std::size_t length = readU16(&m_rest[6]);
        if (m_rest.size() < length + overhead)
            break;
        const HostFrame frame{m_rest[2], m_rest[3], m_rest[4], m_rest[5], m_rest.subspan(headerSize, length)};
        m_malformed |= m_rest[headerSize + length] != 0;
        m_rest = m_rest.subspan(length + overhead);
        return frame;
    }
    m_malformed |= !m_rest.empty();
    m_rest = {};
    return std::nullopt;
}

std::vector<std::uint8_t> deviceFrame(std::uint8_t protocol, std::uint8_t command, std::uint8_t channel,
                                      std::uint8_t param, std::span<const std::uint8_t> payload)
{
    payload = payload.first(std::min<std::size_t>(payload.size(), 0xFFFF));
    std::vector<std::uint8_t> bytes(payload.size() + overhead);
    writeHeader(bytes.data(), protocol, command, channel, param, payload.size());
    std::copy(payload.begin(), payload.end(), bytes.begin() + headerSize);
    return bytes;
}

std::optional<CanFrame> parseCanTransmit(std::span<const std::uint8_t> payload)
{
    if (payload.size() < recordHeaderSize)
        return std::nullopt;
    CanFrame frame;
    frame.id = readU32(&payload[0]);
    frame.length = payload[4];
    frame.flags = payload[5];
    const bool fd = (frame.flags & CanFlag::fd) != 0;
    const std::uint32_t maxId = (frame.flags & CanFlag::extended) != 0 ? 0x1FFFFFFF : 0x7FF;
    if (frame.length > (fd ? 64 : 8) || payload.size() != recordHeaderSize + frame.length || frame.id > maxId)
        return std::nullopt;
    std::copy_n(payload.begin() + recordHeaderSize, frame.length, frame.data.begin());
    return frame;
}

std::optional<LinTransmit> parseLinTransmit(std::span<const std::uint8_t> payload)
{
    if (payload.size() != recordHeaderSize + 8 || payload[0] > 0x3F || payload[1] > 8)
        return std::nullopt;
    LinTransmit transmit;
    transmit.frame = LinFrame::make(payload[0], payload.subspan(recordHeaderSize, payload[1]), payload[2]);
    transmit.action = payload[3];
    return transmit;
}

void writeCanRecord(std::uint8_t *out, std::uint8_t channel, const CanFrame &frame, std::uint8_t type,
                    std::uint64_t ticks)
{
    writeHeader(out, Protocol::can, Command::traffic, channel, 0, recordHeaderSize + frame.length);
    std::uint8_t *record = out + headerSize;
    writeU32(record, frame.id);
    record[4] = frame.length;
    record[5] = frame.flags;
    record[6] = 0;
    record[7] = type;
    writeU64(record + 8, ticks); // low half first
    std::memcpy(record + recordHeaderSize, frame.data.data(), frame.length);
}

void writeLinRecord(std::uint8_t *out, std::uint8_t channel, const LinFrame &frame, std::uint8_t direction,
                    std::uint64_t ticks)
{
    writeHeader(out, Protocol::lin, Command::traffic, channel, 0, recordHeaderSize + frame.length);
    std::uint8_t *record = out + headerSize;
    record[0] = frame.id;
    record[1] = frame.length;
    record[2] = frame.checksumType;
    record[3] = 0; // an action is for transmit requests only
    record[4] = frame.protectedId.value_or(linProtectedId(frame.id));
    record[5] = frame.checksum.value_or(linChecksum(frame));
    record[6] = direction;
    record[7] = 0;
    writeU64(record + 8, ticks);
    std::memcpy(record + recordHeaderSize, frame.data.data(), frame.length);
}

bool isDiscoveryRequest(std::span<const std::uint8_t> datagram)
{
    constexpr std::array<std::uint8_t, 11> request = {0xAA, 0x55, 0, discoveryCommand, 0, 0, 2, 0, 0, 0, 0xFF};
    return std::equal(datagram.begin(), datagram.end(), request.begin(), request.end());
}

std::vector<std::uint8_t> discoveryReply(int canChannels, int linChannels)
{
    // Key and value: the key is the protocol id of the channels that the value counts; key 0 ends the list.
    const std::array<std::array<int, 2>, 3> records = {
        {{Protocol::can, canChannels}, {Protocol::lin, linChannels}, {0, 0}}};
    constexpr std::size_t length = 2 + 4 * records.size();
    std::vector<std::uint8_t> bytes(length + overhead);
    writeHeader(bytes.data(), 0, discoveryCommand, 0, 0, length);
    std::swap(bytes[0], bytes[1]); // discovery alone is answered in the host's sync order
    writeU16(&bytes[headerSize], discoveryReplyType);
    std::size_t at = headerSize + 2;
    for (const auto &[key, value] : records) {
        writeU16(&bytes[at], static_cast<std::uint16_t>(key));
        writeU16(&bytes[at + 2], static_cast<std::uint16_t>(value));
        at += 4;
    }
    bytes.back() = discoveryCommand;
    return bytes;
}

} // namespace tzsim::wire
