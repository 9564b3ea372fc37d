// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tests/logging/readback/RecordingReader.h"
#include "tools/simulator/BusFrame.h"

#include <random>
#include <vector>

namespace tztest {

/// Makes frames of every kind from a fixed seed.
class FrameMaker
{
public:
    enum class Kinds
    {
        All,
        Classic ///< no CAN FD
    };

    explicit FrameMaker(std::uint32_t seed)
        : m_random(seed)
    {
    }
    tzsim::CanFrame can(Kinds kinds = Kinds::All);
    tzsim::LinFrame lin();

private:
    unsigned below(unsigned limit) { return static_cast<unsigned>(m_random() % limit); }

    std::mt19937 m_random;
};

/// What a record of a frame that a channel received must tell in a file with extra information.
RecordedFrame expectedRecord(const tzsim::ChannelRef &channel, const tzsim::CanFrame &frame, RecordFormat format);
/// @param direction  of CSV
RecordedFrame expectedRecord(const tzsim::ChannelRef &channel, const tzsim::LinFrame &frame, RecordFormat format,
                             const std::string &direction = "Tx,Master Read");

} // namespace tztest
