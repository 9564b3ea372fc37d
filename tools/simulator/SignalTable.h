// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tools/simulator/BusFrame.h"

#include <chrono>
#include <cstdint>
#include <span>

namespace tzsim {

/// How a value in a message moves.
struct SignalShape
{
    enum class Kind
    {
        counter,  ///< one more with each message
        ramp,     ///< low to high within a period, then from low again
        sine,     ///< between low and high, one wave a period
        toggle,   ///< low and high, half a period each
        checksum, ///< exclusive or of the bytes before it
    };
    Kind kind = Kind::counter;
    std::uint8_t firstByte = 0;
    std::uint8_t bytes = 1; ///< 1 to 4, little-endian
    double low = 0;         ///< raw values; negative ones in two's complement
    double high = 0;
    double periodSeconds = 1;
};

/// One message of the simulated vehicle. Bytes that no shape fills are zero.
struct SignalMessage
{
    Family family = Family::can;
    std::uint32_t id = 0;
    std::uint8_t flags = 0; ///< CanFlag values; for LIN the checksum type
    std::uint8_t length = 8;
    std::chrono::milliseconds cycle{100};
    std::span<const SignalShape> shapes;
};

/// All messages that a channel carries, CAN and LIN.
std::span<const SignalMessage> signalMessages();

/// Fills the @p count -th message sent (from 0) at a time since the start of the traffic.
void fillSignals(const SignalMessage &message, std::uint64_t count, double seconds, std::span<std::uint8_t> data);

} // namespace tzsim
