// SPDX-License-Identifier: GPL-3.0-or-later
#include "vci/TzVciTrafficDecoder.h"

#include "common/Log.h"
#include "vci/TzVciByteOrder.h"
#include "vci/TzVciDatagramParser.h"
#include "vci/TzVciProtocol.h"
#include "vci/TzVciTypes.h"

#include <algorithm>
#include <cstring>

namespace {

// Both frame records begin with 8 bytes of header and the time stamp; data follows.
constexpr std::size_t timestampOffset = 8;
constexpr std::size_t minimumBytes = 16;

template <typename Frame> Frame frameOf(const TzVciProtocolData &record) noexcept
{
    Frame frame;
    std::memcpy(&frame, record.payload.data(), std::min(record.payloadLength(), sizeof(frame)));
    return frame;
}

} // namespace

TzVciTrafficDecoder::TzVciTrafficDecoder(int deviceIndex)
    : m_deviceIndex(static_cast<std::uint8_t>(deviceIndex))
{
    m_can.reserve(TzVciDatagramParser::batchSize);
    m_lin.reserve(TzVciDatagramParser::batchSize);
}

bool TzVciTrafficDecoder::isTraffic(const TzVciProtocolData &record) noexcept
{
    return record.command == TzVciCommand::receive &&
           (record.protocol == TzVciProtocolId::can || record.protocol == TzVciProtocolId::lin);
}

void TzVciTrafficDecoder::decode(const TzVciProtocolData &record)
{
    if (record.protocol == TzVciProtocolId::can) {
        if (record.length < minimumBytes || record.length > sizeof(TzVciCanDataType))
            Common::logError("The size of the received CAN data is abnormal: {}", record.length);
        else
            m_can.push_back(makeMessage(record));
    } else {
        if (record.length < minimumBytes || record.length > sizeof(TzVciLinDataType))
            Common::logError("The size of the received LIN data is abnormal: {}", record.length);
        else
            m_lin.push_back(makeMessage(record));
    }
}

void TzVciTrafficDecoder::clear() noexcept
{
    m_can.clear();
    m_lin.clear();
}

// The payload is the front of the family's frame record; what it does not reach stays zero.
TzVciMessage TzVciTrafficDecoder::makeMessage(const TzVciProtocolData &record) const noexcept
{
    TzVciMessage message;
    message.deviceIndex = m_deviceIndex;
    message.channelIndex = record.channel;
    if (record.protocol == TzVciProtocolId::lin)
        message.setLin(frameOf<TzVciLinDataType>(record));
    else
        message.frame.can = frameOf<TzVciCanDataType>(record);
    message.timestamp = TzVciByteOrder::load<std::uint64_t>(record.payload.data() + timestampOffset);
    return message;
}
