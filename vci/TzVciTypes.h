// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

/// Protocol ids: they select a channel family in every call of the VCI layer and stand in each protocol frame.
namespace TzVciProtocolId {
inline constexpr std::uint8_t can = 1;     ///< CAN and CAN FD channels
inline constexpr std::uint8_t can3 = 3;    ///< reserved member of the CAN family, has no channel settings
inline constexpr std::uint8_t lin = 5;     ///< LIN channels
inline constexpr std::uint8_t can6 = 6;    ///< reserved member of the CAN family, has no channel settings
inline constexpr std::uint8_t device = 15; ///< the device itself
} // namespace TzVciProtocolId

/// Kinds of views and send windows. The raw kinds equal the protocol id of their family.
namespace TzVciViewKind {
inline constexpr std::uint8_t can = 1;
inline constexpr std::uint8_t lin = 5;
inline constexpr std::uint8_t dbc = 16; ///< CAN, decoded through a DBC database
inline constexpr std::uint8_t ldf = 17; ///< LIN, decoded through an LDF database

constexpr bool isCanFamily(std::uint8_t kind) noexcept { return kind == can || kind == dbc; }
constexpr bool isLinFamily(std::uint8_t kind) noexcept { return kind == lin || kind == ldf; }
/// The protocol id of the family that a kind belongs to: LIN for 5 and 17, CAN for everything else.
constexpr std::uint8_t familyProtocol(std::uint8_t kind) noexcept
{
    return isLinFamily(kind) ? TzVciProtocolId::lin : TzVciProtocolId::can;
}
} // namespace TzVciViewKind

/// Event given to status subscribers as `cmd`.
namespace VciStatus {
inline constexpr std::uint8_t deviceOpened = 0;
inline constexpr std::uint8_t canChannelOpened = 1;
inline constexpr std::uint8_t linChannelOpened = 2;
inline constexpr std::uint8_t canChannelClosed = 3;
inline constexpr std::uint8_t linChannelClosed = 4;
inline constexpr std::uint8_t deviceClosed = 5;
inline constexpr std::uint8_t deviceDestroyed = 6;
inline constexpr std::uint8_t otherChannelChanged = 7;
} // namespace VciStatus

/// Result codes of the VCI layer: 0 for success, negative for failure. Shown to the user as numbers only.
namespace TzVciResult {
inline constexpr std::int32_t ok = 0;
inline constexpr std::int32_t deviceClosed = -101;        ///< the device object has no index: it is closed already
inline constexpr std::int32_t noSuchDevice = -102;        ///< not open, or unknown to the store
inline constexpr std::int32_t invalidSend = -103;         ///< link: no socket or empty data
inline constexpr std::int32_t openFailed = -401;          ///< no link, or no answer to the version request
inline constexpr std::int32_t linkDown = -402;            ///< channel operation on a device whose link is down
inline constexpr std::int32_t sendFailed = -411;          ///< link: the socket refused the datagram
inline constexpr std::int32_t requestTimedOut = -412;     ///< no reply in time
inline constexpr std::int32_t requestRefused = -413;      ///< non-zero status, or woken without an answer
inline constexpr std::int32_t noChannel = -601;           ///< the selection names no channel
inline constexpr std::int32_t openChannelRefused = -602;  ///< the device refused to open a channel
inline constexpr std::int32_t closeChannelRefused = -603; ///< the device refused to close a channel
inline constexpr std::int32_t parameterRefused = -612;    ///< the device refused a channel parameter
} // namespace TzVciResult

inline constexpr int tzVciMaxDevices = 16;          ///< device indexes are 0 to 15
inline constexpr int tzVciMaxChannels = 8;          ///< channels of one family that a view knows
inline constexpr int tzVciRequestTimeoutMs = 500;   ///< every request of the system waits this long
inline constexpr int tzVciScanTimeoutMs = 2000;     ///< every scan of the system lasts this long
