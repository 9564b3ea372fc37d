// SPDX-License-Identifier: GPL-3.0-or-later
#include "vci/TzVciProtocol.h"

#include "vci/TzVciByteOrder.h"
#include "vci/TzVciTypes.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace {

TzVciProtocolData request(std::uint8_t protocol, std::uint8_t command, std::uint8_t channel,
                          std::span<const std::uint8_t> payload = {}) noexcept
{
    TzVciProtocolData record;
    record.protocol = protocol;
    record.command = command;
    record.channel = channel;
    setProtocolPayload(record, payload);
    return record;
}

// Reads of the device itself carry one byte, 1.
TzVciProtocolData deviceRead(std::uint8_t command) noexcept
{
    constexpr std::array<std::uint8_t, 1> payload{1};
    return request(TzVciProtocolId::device, command, 0, payload);
}

} // namespace

void setProtocolPayload(TzVciProtocolData &record, std::span<const std::uint8_t> payload) noexcept
{
    const std::size_t size = std::min(payload.size(), TzVciProtocolData::maxPayload);
    record.payload.fill(0);
    std::copy_n(payload.begin(), size, record.payload.begin());
    record.length = static_cast<std::uint16_t>(size);
}

QByteArray encodeProtocolData(const TzVciProtocolData &record)
{
    const std::size_t length = record.payloadLength();
    QByteArray frame(static_cast<int>(TzVciWire::overheadBytes + length), '\0'); // the last byte stays 0
    std::array<std::uint8_t, TzVciWire::headerBytes> header{0xAA,           0x55,           record.protocol,
                                                            record.command, record.channel, record.param};
    TzVciByteOrder::store(&header[6], static_cast<std::uint16_t>(length));
    std::memcpy(frame.data(), header.data(), header.size());
    std::memcpy(frame.data() + header.size(), record.payload.data(), length);
    return frame;
}

TzVciProtocolData makeReadFirmwareVersion() noexcept
{
    return deviceRead(TzVciCommand::readFirmwareVersion);
}

TzVciProtocolData makeReadBaseTime() noexcept
{
    return deviceRead(TzVciCommand::readBaseTime);
}

TzVciProtocolData makeTerminalResistor(std::uint8_t channel, bool on) noexcept
{
    const std::array<std::uint8_t, 1> payload{static_cast<std::uint8_t>(on ? 1 : 0)};
    return request(TzVciProtocolId::device, TzVciCommand::terminalResistor, channel, payload);
}

TzVciProtocolData makeOpenCanChannel(std::uint8_t channel, std::uint32_t bitRate) noexcept
{
    std::array<std::uint8_t, 4> payload{};
    TzVciByteOrder::store(payload.data(), bitRate);
    return request(TzVciProtocolId::can, TzVciCommand::openChannel, channel, payload);
}

TzVciProtocolData makeOpenLinChannel(std::uint8_t channel, std::uint8_t mode, std::uint32_t bitRate) noexcept
{
    std::array<std::uint8_t, 5> payload{mode};
    TzVciByteOrder::store(&payload[1], bitRate);
    return request(TzVciProtocolId::lin, TzVciCommand::openChannel, channel, payload);
}

TzVciProtocolData makeCloseChannel(std::uint8_t protocol, std::uint8_t channel) noexcept
{
    return request(protocol, TzVciCommand::closeChannel, channel);
}

TzVciProtocolData makeSetCanParameter(std::uint8_t channel, std::uint8_t id, std::uint32_t value) noexcept
{
    std::array<std::uint8_t, 5> payload{id};
    TzVciByteOrder::store(&payload[1], value);
    TzVciProtocolData record = request(TzVciProtocolId::can, TzVciCommand::channelParameter, channel, payload);
    record.param = TzVciParam::setParameter;
    return record;
}

TzVciProtocolData makeApplyCanParameters(std::uint8_t channel) noexcept
{
    TzVciProtocolData record = request(TzVciProtocolId::can, TzVciCommand::channelParameter, channel);
    record.param = TzVciParam::applyParameters;
    return record;
}

std::vector<char> encodeDiscoveryRequest()
{
    constexpr std::array<std::uint8_t, 2> payload{};
    const QByteArray frame = encodeProtocolData(request(0, TzVciCommand::discovery, 0, payload));
    std::vector<char> datagram(frame.begin(), frame.end());
    datagram.back() = static_cast<char>(0xFF); // this one frame alone; devices look for it
    return datagram;
}
