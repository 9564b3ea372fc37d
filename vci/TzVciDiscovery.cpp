// SPDX-License-Identifier: GPL-3.0-or-later
#include "vci/TzVciDiscovery.h"

#include "vci/TzVciByteOrder.h"
#include "vci/TzVciTypes.h"

#include <cstddef>

namespace {

// Replies bear the host's order of the sync bytes, unlike the frames of the wire protocol's own port.
constexpr std::uint8_t syncByte0 = 0xAA;
constexpr std::uint8_t syncByte1 = 0x55;
constexpr std::size_t lengthOffset = 6;
constexpr std::size_t payloadOffset = 8;
constexpr std::size_t typeBytes = 2;
constexpr std::uint16_t replyType = 2;
constexpr std::size_t recordBytes = 4; // a 16-bit key, which is a protocol id, and a 16-bit count
constexpr std::uint16_t endKey = 0;

std::uint16_t read16(std::span<const std::uint8_t> bytes, std::size_t offset) noexcept
{
    return TzVciByteOrder::load<std::uint16_t>(bytes.data() + offset);
}

// The payload of a datagram, empty unless it is a whole discovery reply.
std::span<const std::uint8_t> replyPayload(std::span<const std::uint8_t> datagram) noexcept
{
    if (datagram.size() < payloadOffset || datagram[0] != syncByte0 || datagram[1] != syncByte1)
        return {};
    const std::size_t length = read16(datagram, lengthOffset);
    if (length < typeBytes || datagram.size() < payloadOffset + length)
        return {};
    const std::span<const std::uint8_t> payload = datagram.subspan(payloadOffset, length);
    return read16(payload, 0) == replyType ? payload : std::span<const std::uint8_t>();
}

} // namespace

std::optional<TzVciDiscoveryReply> parseDiscoveryReply(std::span<const std::uint8_t> datagram) noexcept
{
    const std::span<const std::uint8_t> payload = replyPayload(datagram);
    if (payload.empty())
        return std::nullopt;
    TzVciDiscoveryReply reply;
    for (std::size_t offset = typeBytes; offset + recordBytes <= payload.size(); offset += recordBytes) {
        const std::uint16_t key = read16(payload, offset);
        const std::uint16_t value = read16(payload, offset + sizeof(key));
        if (key == endKey)
            break;
        if (key == TzVciProtocolId::can)
            reply.canChannels = value;
        else if (key == TzVciProtocolId::lin)
            reply.linChannels = value;
    }
    return reply;
}
