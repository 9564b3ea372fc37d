// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tools/simulator/BusFrame.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

/// The box protocol as a box reads and writes it.
///
/// Each frame: two sync bytes, protocol, command, channel, param, 16-bit payload length, payload, one placeholder byte.
/// A host begins a frame with 0xAA 0x55, a box with 0x55 0xAA. Numbers are little-endian.
namespace tzsim::wire {

inline constexpr std::size_t headerSize = 8;
inline constexpr std::size_t overhead = headerSize + 1;
inline constexpr std::size_t maxDatagram = 1472;    ///< what one Ethernet frame holds
inline constexpr std::size_t recordHeaderSize = 16; ///< of a CAN or LIN record, before its data
inline constexpr std::uint8_t heartbeat = 0xFF;     ///< a datagram of this one byte

namespace Protocol {
inline constexpr std::uint8_t can = 1;
inline constexpr std::uint8_t lin = 5;
inline constexpr std::uint8_t device = 15;
} // namespace Protocol

/// The command classes; what a class means depends on the protocol.
namespace Command {
inline constexpr std::uint8_t open = 0x10;
inline constexpr std::uint8_t close = 0x20;
inline constexpr std::uint8_t transmit = 0x30;
inline constexpr std::uint8_t traffic = 0x40;
inline constexpr std::uint8_t parameter = 0x60;
inline constexpr std::uint8_t busLoad = 0x70;
inline constexpr std::uint8_t terminalResistor = 0x30; ///< of Protocol::device
inline constexpr std::uint8_t baseTime = 0x40;         ///< of Protocol::device
inline constexpr std::uint8_t firmwareVersion = 0x60;  ///< of Protocol::device
} // namespace Command

/// The param byte of CAN parameter requests.
namespace Param {
inline constexpr std::uint8_t set = 2;
inline constexpr std::uint8_t apply = 5;
} // namespace Param

/// Ids of CAN parameters.
namespace CanParameter {
inline constexpr std::uint8_t nominalRate = 1;
inline constexpr std::uint8_t dataRate = 38;
inline constexpr std::uint8_t firstTiming = 39; ///< to 42
inline constexpr std::uint8_t lastTiming = 42;
} // namespace CanParameter

/// Values of the direction byte of a LIN record.
namespace LinDirection {
inline constexpr std::uint8_t masterRead = 0;
inline constexpr std::uint8_t slaveRead = 1;
inline constexpr std::uint8_t masterWrite = 16;
inline constexpr std::uint8_t slaveWrite = 17;
} // namespace LinDirection

/// Values of the action byte of a LIN transmit request.
namespace LinAction {
inline constexpr std::uint8_t headerAndResponse = 1;
inline constexpr std::uint8_t header = 2;
inline constexpr std::uint8_t response = 3;
inline constexpr std::uint8_t headerAndResponse4 = 4;
inline constexpr std::uint8_t clearResponse = 12;
} // namespace LinAction

std::uint16_t readU16(const std::uint8_t *bytes);
std::uint32_t readU32(const std::uint8_t *bytes);
void writeU16(std::uint8_t *bytes, std::uint16_t value);
void writeU32(std::uint8_t *bytes, std::uint32_t value);
void writeU64(std::uint8_t *bytes, std::uint64_t value);

/// One frame of a host, pointing into its datagram.
struct HostFrame
{
    std::uint8_t protocol = 0;
    std::uint8_t command = 0;
    std::uint8_t channel = 0;
    std::uint8_t param = 0;
    std::span<const std::uint8_t> payload;
};

/// Walks over the frames of one datagram from a host.
class HostFrameReader
{
public:
    explicit HostFrameReader(std::span<const std::uint8_t> datagram)
        : m_rest(datagram)
    {
    }
    std::optional<HostFrame> next();
    /// The datagram held bytes outside frames, a cut frame or a placeholder other than 0. Final after the last next().
    bool malformed() const { return m_malformed; }

private:
    std::span<const std::uint8_t> m_rest;
    bool m_malformed = false;
};

/// One frame in the sync order of a box.
std::vector<std::uint8_t> deviceFrame(std::uint8_t protocol, std::uint8_t command, std::uint8_t channel,
                                      std::uint8_t param, std::span<const std::uint8_t> payload);

/// A CAN transmit request's payload; nothing for one that is cut, too long or says another length than it has.
std::optional<CanFrame> parseCanTransmit(std::span<const std::uint8_t> payload);

struct LinTransmit
{
    LinFrame frame;
    std::uint8_t action = 0;
};
/// A LIN transmit request's payload; nothing unless it has 24 bytes, a length up to 8 and an identifier up to 0x3F.
std::optional<LinTransmit> parseLinTransmit(std::span<const std::uint8_t> payload);

/// Size on the wire, header and placeholder included.
inline std::size_t canRecordSize(const CanFrame &frame)
{
    return overhead + recordHeaderSize + frame.length;
}
/// Writes canRecordSize() bytes. @p ticks is the time stamp in 0.1 microsecond.
void writeCanRecord(std::uint8_t *out, std::uint8_t channel, const CanFrame &frame, std::uint8_t type,
                    std::uint64_t ticks);

inline std::size_t linRecordSize(const LinFrame &frame)
{
    return overhead + recordHeaderSize + frame.length;
}
/// Writes linRecordSize() bytes; identifier parity and checksum are computed unless the frame brings its own.
void writeLinRecord(std::uint8_t *out, std::uint8_t channel, const LinFrame &frame, std::uint8_t direction,
                    std::uint64_t ticks);

/// Exactly the discovery request of a host.
bool isDiscoveryRequest(std::span<const std::uint8_t> datagram);
std::vector<std::uint8_t> discoveryReply(int canChannels, int linChannels);

} // namespace tzsim::wire
