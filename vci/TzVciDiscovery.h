// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <optional>
#include <span>

/// What a device tells about itself when it answers the discovery broadcast.
struct TzVciDiscoveryReply
{
    std::uint16_t canChannels = 0; ///< as told, which may be more than a device can have
    std::uint16_t linChannels = 0;

    bool operator==(const TzVciDiscoveryReply &) const = default;
};

/// Reads a discovery reply; every byte may be hostile. Pure: no input or output, logs nothing.
/// @return nothing if it is no discovery reply
std::optional<TzVciDiscoveryReply> parseDiscoveryReply(std::span<const std::uint8_t> datagram) noexcept;
