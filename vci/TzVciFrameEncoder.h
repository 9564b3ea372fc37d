// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "vci/TzVciCanDataType.h"
#include "vci/TzVciLinDataType.h"

#include <cstdint>
#include <vector>

/// The datagram that transmits one CAN frame: payload cut to 16 + dataLength bytes. A dataLength above the 64 bytes
/// that a record holds is written as 64; the reserved byte is written as zero. Pure; any thread.
std::vector<char> encodeCanFrame(std::uint8_t channel, const TzVciCanDataType &frame);

/// The datagram that transmits one LIN frame: always 24 bytes of payload. A dataLength above 8 is written as 8, the
/// reserved byte as zero. Pure; any thread.
std::vector<char> encodeLinFrame(std::uint8_t channel, const TzVciLinDataType &frame);
