// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "vci/TzVciProtocolData.h"

#include <QByteArray>

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

/// Values of TzVciProtocolData::command: a class, which the protocol id applies to channels or to the device.
namespace TzVciCommand {
inline constexpr std::uint8_t openChannel = 0x10;         ///< CAN, LIN
inline constexpr std::uint8_t closeChannel = 0x20;        ///< CAN, LIN
inline constexpr std::uint8_t transmit = 0x30;            ///< CAN, LIN: one frame, not answered
inline constexpr std::uint8_t receive = 0x40;             ///< CAN, LIN, from the device: traffic and echoes
inline constexpr std::uint8_t channelParameter = 0x60;    ///< CAN: set or apply, by TzVciParam
inline constexpr std::uint8_t busLoad = 0x70;             ///< CAN, from the device: periodic report
inline constexpr std::uint8_t terminalResistor = 0x30;    ///< device
inline constexpr std::uint8_t readBaseTime = 0x40;        ///< device
inline constexpr std::uint8_t readFirmwareVersion = 0x60; ///< device
inline constexpr std::uint8_t discovery = 0xFF;           ///< protocol 0, on the discovery port
} // namespace TzVciCommand

/// Values of TzVciProtocolData::param beside 0.
namespace TzVciParam {
inline constexpr std::uint8_t setParameter = 2;    ///< of TzVciCommand::channelParameter
inline constexpr std::uint8_t applyParameters = 5; ///< of TzVciCommand::channelParameter
} // namespace TzVciParam

/// Ids of CAN channel parameters, the first payload byte of TzVciParam::setParameter.
namespace TzVciCanParameter {
inline constexpr std::uint8_t nominalBitRate = 1;
inline constexpr std::uint8_t dataBitRate = 0x26;
inline constexpr std::uint8_t timingByte1 = 0x27; ///< first of four timing bytes with ids that follow on each other
inline constexpr std::uint8_t timingByte2 = 0x28;
inline constexpr std::uint8_t timingByte3 = 0x29;
inline constexpr std::uint8_t timingByte4 = 0x2A;
} // namespace TzVciCanParameter

/// Sizes of a frame on the wire: sync word, four header bytes, length, payload, one placeholder byte.
namespace TzVciWire {
inline constexpr std::size_t headerBytes = 8;                 ///< from the sync word to the length
inline constexpr std::size_t overheadBytes = headerBytes + 1; ///< all but the payload
inline constexpr std::size_t maxFrameBytes = overheadBytes + TzVciProtocolData::maxPayload;
} // namespace TzVciWire

/// Puts a payload into a record and sets its length; what is beyond 122 bytes is cut off.
void setProtocolPayload(TzVciProtocolData &record, std::span<const std::uint8_t> payload) noexcept;

/// The host-to-device frame of a record. A length above the 122 bytes that a record holds counts as 122.
QByteArray encodeProtocolData(const TzVciProtocolData &record);

/// Asks for the firmware version: a reply of 4 bytes, the most significant part first.
TzVciProtocolData makeReadFirmwareVersion() noexcept;
/// Asks for the device time: a reply of 8 bytes, in 0.1 microsecond.
TzVciProtocolData makeReadBaseTime() noexcept;
/// Switches the terminal resistor of a CAN channel; answered by a status.
TzVciProtocolData makeTerminalResistor(std::uint8_t channel, bool on) noexcept;
/// @param bitRate  nominal bit rate in bit/s; answered by a status, like the other requests below
TzVciProtocolData makeOpenCanChannel(std::uint8_t channel, std::uint32_t bitRate) noexcept;
/// @param mode  0 master, 1 slave
/// @param bitRate  in bit/s
TzVciProtocolData makeOpenLinChannel(std::uint8_t channel, std::uint8_t mode, std::uint32_t bitRate) noexcept;
/// @param protocol  TzVciProtocolId::can or lin
TzVciProtocolData makeCloseChannel(std::uint8_t protocol, std::uint8_t channel) noexcept;
/// Sets one CAN parameter; it takes effect with the next makeApplyCanParameters.
/// @param id  TzVciCanParameter
TzVciProtocolData makeSetCanParameter(std::uint8_t channel, std::uint8_t id, std::uint32_t value) noexcept;
TzVciProtocolData makeApplyCanParameters(std::uint8_t channel) noexcept;

/// The complete datagram of the discovery broadcast, whose placeholder byte is 0xFF.
std::vector<char> encodeDiscoveryRequest();
