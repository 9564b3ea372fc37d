// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <type_traits>

/// One decoded frame of the wire protocol, and the form in which a request is prepared. Copied by value.
///
/// A received record keeps the length that the wire said, which a hostile sender may set above what the record
/// holds: whoever copies or reads payload goes by payloadLength().
struct TzVciProtocolData
{
    static constexpr std::size_t maxPayload = 122;

    std::uint8_t protocol = 0;                      ///< TzVciProtocolId
    std::uint8_t command = 0;                       ///< TzVciCommand
    std::uint8_t channel = 0;                       ///< counted from 0; 0 for commands to the device itself
    std::uint8_t param = 0;                         ///< sub-command, TzVciParam
    std::uint16_t length = 0;                       ///< bytes of payload as on the wire
    std::array<std::uint8_t, maxPayload> payload{}; ///< bytes past the payload are 0

    /// Bytes of payload that may be read: length, at most 122.
    std::size_t payloadLength() const noexcept { return length > maxPayload ? maxPayload : length; }
};
static_assert(std::is_trivially_copyable_v<TzVciProtocolData>, "records are copied through batches");
static_assert(sizeof(TzVciProtocolData) == 128 && alignof(TzVciProtocolData) == 2, "the layout is fixed");
static_assert(offsetof(TzVciProtocolData, payload) == 6);
