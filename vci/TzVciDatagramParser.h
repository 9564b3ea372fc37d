// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "vci/TzVciProtocolData.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

/// Splits datagrams from a device into protocol records and hands them on in batches of at most 32, in order.
///
/// Does no input or output and logs nothing: the outcome tells the caller what to report. Every byte may be hostile.
/// Allocates at construction alone. One thread at a time; the link's receive thread owns one.
class TzVciDatagramParser
{
public:
    static constexpr std::size_t batchSize = 32;

    struct Outcome
    {
        std::size_t records = 0;       ///< delivered
        std::size_t expectedBytes = 0; ///< size of a frame that the datagram's end cuts off; 0 if there is none
        std::size_t leftoverBytes = 0; ///< bytes at the end that belong to no complete frame
    };

    TzVciDatagramParser() { m_batch.reserve(batchSize); }

    /// Splits one datagram. A batch never spans two datagrams.
    /// @param deliver  called as deliver(const std::vector<TzVciProtocolData> &) with 1 to 32 records, valid for the
    /// call
    template <typename Deliver> Outcome parse(std::span<const std::uint8_t> datagram, Deliver &&deliver)
    {
        Cursor cursor{datagram};
        std::size_t records = 0;
        while (fillBatch(cursor)) {
            records += m_batch.size();
            deliver(static_cast<const std::vector<TzVciProtocolData> &>(m_batch));
        }
        return {records, cursor.expectedBytes, datagram.size() - cursor.position};
    }

private:
    struct Cursor
    {
        std::span<const std::uint8_t> datagram;
        std::size_t position = 0;
        std::size_t expectedBytes = 0;
    };

    // Refills the batch from the cursor on; false when there is no further record.
    bool fillBatch(Cursor &cursor);

    std::vector<TzVciProtocolData> m_batch; // capacity kept: the steady state allocates nothing
};
