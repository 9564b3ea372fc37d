// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "vci/TzVciMessage.h"
#include "vci/TzVciProtocolData.h"

#include <cstdint>
#include <vector>

/// Turns the traffic records of one device into messages, sorted by family. Allocates at construction alone, as long as
/// a batch holds at most 32 records. The link's receive thread owns one.
class TzVciTrafficDecoder
{
public:
    explicit TzVciTrafficDecoder(int deviceIndex);

    /// Whether the record is CAN or LIN traffic, which decode() takes.
    static bool isTraffic(const TzVciProtocolData &record) noexcept;
    /// Appends the frame to its family; one of an impossible size is logged and dropped.
    void decode(const TzVciProtocolData &record);

    const std::vector<TzVciMessage> &canMessages() const noexcept { return m_can; }
    const std::vector<TzVciMessage> &linMessages() const noexcept { return m_lin; }
    void clear() noexcept; ///< keeps the capacity

private:
    TzVciMessage makeMessage(const TzVciProtocolData &record) const noexcept;

    const std::uint8_t m_deviceIndex;
    std::vector<TzVciMessage> m_can;
    std::vector<TzVciMessage> m_lin;
};
