// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/dbc/DbcOverlapCheck.h"

#include "common/Log.h"
#include "database/dbc/DbcMessage.h"
#include "database/dbc/DbcOccupiedBits.h"
#include "database/text/LogText.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstddef>
#include <limits>
#include <string>

namespace {

constexpr std::uint32_t nobody = std::numeric_limits<std::uint32_t>::max();
constexpr std::size_t classicBits = 64;

// Signals begin in the 64 bytes of a frame, but some may be thousands of bits long. Two that share a bit further on
// than the byte behind the frame both have the whole of that byte, so nothing need be looked at beyond it.
constexpr std::uint32_t comparedBits = 65 * 8;

// A signal of thousands of bits, as a damaged file may hold, is not worth a line of their numbers.
constexpr std::uint16_t mostBitsShown = 64;

std::string bitsText(const DbcSignal &signal)
{
    std::string text;
    const auto append = [&text](std::uint16_t bit) {
        fmt::format_to(std::back_inserter(text), "{}{}", text.empty() ? "" : ", ", bit);
    };
    DbcOccupiedBits::forEach(signal.startBit, std::min(signal.size, mostBitsShown), signal.isBigEndian, append);
    return signal.size > mostBitsShown ? text + ", ..." : text;
}

std::string signalText(const DbcSignal &signal)
{
    return fmt::format("[{}, start bit:{}, size:{}, multiplexor:{}, multiplexed:{}, muxVal:{}] {}: {}",
                       Common::LogText(signal.name), signal.startBit, signal.size, signal.isMultiplexor,
                       signal.isMultiplexed, signal.multiplexValue, signal.isBigEndian ? "BigEndian" : "LittleEndian",
                       bitsText(signal));
}

} // namespace

DbcOverlapCheck::DbcOverlapCheck(const DbcMessage &message)
    : m_message(message)
{
    for (const DbcSignal &signal : message.signals) {
        std::uint32_t ignored = nobody;
        take(signal, ignored);
    }
}

void DbcOverlapCheck::add(const DbcSignal &signal)
{
    std::uint32_t firstShared = nobody;
    take(signal, firstShared);
    if (firstShared != nobody && Common::shouldLogLevel(Common::LogLevel::warning))
        logOverlap(signal, m_message.signals[firstShared]);
}

void DbcOverlapCheck::take(const DbcSignal &signal, std::uint32_t &firstShared)
{
    const auto takeBit = [&](std::uint16_t bit) {
        if (bit >= m_owners.size())
            m_owners.resize(std::max<std::size_t>({classicBits, bit + 1U, m_owners.size() * 2}), {nobody, nobody});
        Owners &owners = m_owners[bit];
        firstShared = std::min(firstShared, owners.plain);
        if (!signal.isMultiplexed)
            firstShared = std::min(firstShared, owners.multiplexed);
        std::uint32_t &own = signal.isMultiplexed ? owners.multiplexed : owners.plain;
        own = std::min(own, m_count);
    };
    DbcOccupiedBits::forEach(signal.startBit, signal.size, signal.isBigEndian, takeBit, comparedBits);
    ++m_count;
}

void DbcOverlapCheck::logOverlap(const DbcSignal &signal, const DbcSignal &older) const
{
    Common::logWarning("Overlap signal in message {} ({}):\n{}\n{}", Common::LogText(m_message.name), m_message.id,
                       signalText(signal), signalText(older));
}
