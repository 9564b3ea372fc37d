// SPDX-License-Identifier: GPL-3.0-or-later
#include "vci/TzVciDatagramParser.h"

#include "vci/TzVciByteOrder.h"
#include "vci/TzVciProtocol.h"

#include <cstring>

namespace {

constexpr std::uint16_t deviceSync = 0xAA55; // bytes 0x55, 0xAA: the reverse of what the host sends

void copyRecord(const std::uint8_t *frame, std::uint16_t length, TzVciProtocolData &record) noexcept
{
    record.protocol = frame[2];
    record.command = frame[3];
    record.channel = frame[4];
    record.param = frame[5];
    record.length = length;
    std::memcpy(record.payload.data(), frame + TzVciWire::headerBytes, record.payloadLength());
}

} // namespace

bool TzVciDatagramParser::fillBatch(Cursor &cursor)
{
    m_batch.clear();
    while (m_batch.size() < batchSize && cursor.expectedBytes == 0) {
        const std::size_t remaining = cursor.datagram.size() - cursor.position;
        if (remaining < TzVciWire::overheadBytes)
            break;
        const std::uint8_t *frame = cursor.datagram.data() + cursor.position;
        if (TzVciByteOrder::load<std::uint16_t>(frame) != deviceSync) {
            ++cursor.position; // junk between frames
            continue;
        }
        const auto length = TzVciByteOrder::load<std::uint16_t>(frame + 6);
        const std::size_t frameBytes = TzVciWire::overheadBytes + length;
        if (remaining < frameBytes) {
            cursor.expectedBytes = frameBytes;
            break;
        }
        copyRecord(frame, length, m_batch.emplace_back());
        cursor.position += frameBytes;
    }
    return !m_batch.empty();
}
