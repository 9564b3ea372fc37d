// SPDX-License-Identifier: GPL-3.0-or-later
#include "vci/TzVciFrameEncoder.h"

#include "vci/TzVciByteOrder.h"
#include "vci/TzVciProtocol.h"
#include "vci/TzVciTypes.h"

#include <cstddef>
#include <cstring>
#include <span>

namespace {

constexpr std::size_t frameHeaderBytes = 16; // of both frame records: everything in front of their data

// Lays a frame out for TzVciCommand::transmit; the last byte stays 0.
std::vector<char> transmitFrame(std::uint8_t protocol, std::uint8_t channel,
                                const std::uint8_t (&header)[frameHeaderBytes], std::span<const std::uint8_t> data)
{
    const std::size_t length = frameHeaderBytes + data.size();
    std::uint8_t wire[TzVciWire::headerBytes] = {0xAA, 0x55, protocol, TzVciCommand::transmit, channel};
    TzVciByteOrder::store(wire + 6, static_cast<std::uint16_t>(length));

    std::vector<char> bytes(TzVciWire::overheadBytes + length);
    std::memcpy(bytes.data(), wire, sizeof(wire));
    std::memcpy(bytes.data() + sizeof(wire), header, sizeof(header));
    if (!data.empty())
        std::memcpy(bytes.data() + sizeof(wire) + sizeof(header), data.data(), data.size());
    return bytes;
}

} // namespace

std::vector<char> encodeCanFrame(std::uint8_t channel, const TzVciCanDataType &frame)
{
    std::uint8_t header[frameHeaderBytes] = {};
    TzVciByteOrder::store(header, frame.canId);
    header[4] = frame.payloadLength();
    header[5] = frame.flags;
    header[7] = frame.frameType;
    TzVciByteOrder::store(header + 8, frame.timestampLow);
    TzVciByteOrder::store(header + 12, frame.timestampHigh);
    return transmitFrame(TzVciProtocolId::can, channel, header, {frame.data.data(), frame.payloadLength()});
}

std::vector<char> encodeLinFrame(std::uint8_t channel, const TzVciLinDataType &frame)
{
    std::uint8_t header[frameHeaderBytes] = {frame.linId,       frame.payloadLength(), frame.checksumType,
                                             frame.linAction,   frame.protectedId,     frame.checksum,
                                             frame.linDirection};
    TzVciByteOrder::store(header + 8, frame.timestampLow);
    TzVciByteOrder::store(header + 12, frame.timestampHigh);
    return transmitFrame(TzVciProtocolId::lin, channel, header, frame.data);
}
