// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <functional>
#include <vector>

namespace Common {

/// One frame that a PeriodSender repeats or that a SequenceSender sends in its turn. It carries a finished datagram, so
/// that the timing threads encode nothing.
struct SendFrame
{
    std::uint64_t key = 0;     ///< from Utils::makeUtilsKey(); identity of the frame in its sender
    std::vector<char> bytes;   ///< the complete datagram that is handed to the send callback
    std::uint32_t period = 50; ///< milliseconds
    std::uint32_t delay = 0;   ///< milliseconds; what it delays is told by the sender
};

/// Sends a datagram that holds @p frameCount frames, on the sender's thread. Returns 0 or more, or a negative error.
using SendCallback = std::function<int(const std::vector<char> &bytes, int frameCount)>;

} // namespace Common
