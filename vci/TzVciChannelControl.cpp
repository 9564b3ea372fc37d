// SPDX-License-Identifier: GPL-3.0-or-later
#include "vci/TzVciChannelControl.h"

#include "common/EmergencyStop.h"
#include "common/Log.h"
#include "common/PeriodSender.h"
#include "vci/TzVciCanChannelConfig.h"
#include "vci/TzVciCommunication.h"
#include "vci/TzVciDeviceStore.h"
#include "vci/TzVciLinChannelConfig.h"
#include "vci/TzVciProtocol.h"
#include "vci/TzVciRequestExchange.h"
#include "vci/TzVciTypes.h"

#include <QByteArray>

#include <utility>

namespace {

constexpr std::uint8_t linModeMaster = 0;
constexpr std::uint8_t linModeSlave = 1;

// Members of the CAN family without channel settings of their own.
bool isReservedCan(std::uint8_t protocol)
{
    return protocol == TzVciProtocolId::can3 || protocol == TzVciProtocolId::can6;
}

bool isCanFamily(std::uint8_t protocol)
{
    return protocol == TzVciProtocolId::can || isReservedCan(protocol);
}

std::uint8_t closedStatus(std::uint8_t protocol)
{
    switch (protocol) {
    case TzVciProtocolId::can: return VciStatus::canChannelClosed;
    case TzVciProtocolId::lin: return VciStatus::linChannelClosed;
    default: return VciStatus::otherChannelChanged;
    }
}

void armEmergencyStop(int slot, std::uint8_t protocol, std::uint8_t channel)
{
    const QByteArray datagram = encodeProtocolData(makeCloseChannel(protocol, channel));
    Common::EmergencyStop::arm(slot, protocol, channel,
                               {datagram.constData(), static_cast<std::size_t>(datagram.size())});
}

} // namespace

TzVciChannelControl::TzVciChannelControl(Parts parts)
    : m_parts(std::move(parts))
{
}

int TzVciChannelControl::open(int deviceIndex, std::uint8_t protocol, int channelIndex)
{
    if (!m_parts.link.isConnected())
        return TzVciResult::linkDown;
    const std::vector<std::uint32_t> indices = channelList(deviceIndex, protocol, channelIndex);
    if (indices.empty())
        return TzVciResult::noChannel;
    const std::lock_guard lock(m_mutex);
    if (!m_parts.link.isConnected()) // it went while this call waited for its turn
        return TzVciResult::linkDown;
    for (const std::uint32_t index : indices) {
        const int result = openOne({deviceIndex, protocol, static_cast<std::uint8_t>(index)});
        if (result != TzVciResult::ok)
            return result;
    }
    return TzVciResult::ok;
}

std::vector<std::uint32_t> TzVciChannelControl::channelList(int deviceIndex, std::uint8_t protocol,
                                                            int channelIndex) const
{
    const std::vector<std::uint32_t> indices = m_parts.store.channelIndices(deviceIndex, protocol, channelIndex);
    if (isReservedCan(protocol))
        m_parts.store.channelConfig(deviceIndex, protocol, channelIndex); // tells in the log that there are no settings
    return indices;
}

int TzVciChannelControl::openOne(const Channel &channel)
{
    if (!isCanFamily(channel.protocol) && channel.protocol != TzVciProtocolId::lin) {
        Common::logWarning("The current device {} channel {} does not support this protocol(id {})",
                           channel.deviceIndex, channel.index + 1, channel.protocol);
        return TzVciResult::ok;
    }
    const TzVciChannelConfig *config =
        m_parts.store.channelConfig(channel.deviceIndex, channel.protocol, channel.index);
    if (!config)
        return TzVciResult::ok;
    const bool isLin = channel.protocol == TzVciProtocolId::lin;
    const int result = isLin ? openLin(channel, static_cast<const TzVciLinChannelConfig &>(*config))
                             : openCan(channel, static_cast<const TzVciCanChannelConfig &>(*config));
    if (result != TzVciResult::ok)
        return result;
    m_parts.store.setChannelOpen(channel.deviceIndex, channel.protocol, channel.index, true);
    m_parts.notifyStatus(isLin ? VciStatus::linChannelOpened : VciStatus::canChannelOpened);
    Common::logInfo("Opened device {} channel {}: id {}.", channel.deviceIndex, channel.index + 1, channel.protocol);
    return TzVciResult::ok;
}

int TzVciChannelControl::openCan(const Channel &channel, const TzVciCanChannelConfig &config)
{
    const int result = sendOpen(channel, makeOpenCanChannel(channel.index, config.baudRate));
    return result == TzVciResult::ok && config.isFd() ? configureFd(channel, config) : result;
}

int TzVciChannelControl::openLin(const Channel &channel, const TzVciLinChannelConfig &config)
{
    const std::uint8_t mode = config.isMaster() ? linModeMaster : linModeSlave;
    return sendOpen(channel, makeOpenLinChannel(channel.index, mode, config.baudRate));
}

int TzVciChannelControl::sendOpen(const Channel &channel, const TzVciProtocolData &request)
{
    // Armed first: the box may be open from the moment that the request has left.
    armEmergencyStop(m_parts.link.emergencySlot(), channel.protocol, channel.index);
    const int result = send(request);
    if (result == TzVciResult::ok)
        return TzVciResult::ok;
    // A refusal leaves the box as it was. After a time-out nobody knows, so the datagram stays until the channel is
    // closed after a later opening, or the link ends.
    if (result == TzVciResult::requestRefused && !isOpen(channel))
        disarm(channel);
    Common::logError("Open device {} channel {} failed: id {}.", channel.deviceIndex, channel.index + 1,
                     channel.protocol);
    return TzVciResult::openChannelRefused;
}

int TzVciChannelControl::configureFd(const Channel &channel, const TzVciCanChannelConfig &config)
{
    const std::uint8_t index = channel.index;
    const TzVciProtocolData requests[] = {
        makeSetCanParameter(index, TzVciCanParameter::nominalBitRate, config.baudRate),
        makeSetCanParameter(index, TzVciCanParameter::timingByte1, config.nominalSeg1),
        makeSetCanParameter(index, TzVciCanParameter::timingByte2, config.nominalSeg2),
        makeSetCanParameter(index, TzVciCanParameter::dataBitRate, config.fdBaudRate),
        makeSetCanParameter(index, TzVciCanParameter::timingByte3, config.dataSeg1),
        makeSetCanParameter(index, TzVciCanParameter::timingByte4, config.dataSeg2),
        makeTerminalResistor(index, config.terminalResistorEnabled),
        makeApplyCanParameters(index),
    };
    for (const TzVciProtocolData &request : requests) {
        if (send(request) == TzVciResult::ok)
            continue;
        const unsigned parameter = request.length > 0 ? request.payload[0] : 0;
        Common::logError("Configure device {} channel {} failed: id {}, param 0x{:X} ", channel.deviceIndex,
                         channel.index + 1, channel.protocol, parameter);
        closeHalfConfigured(channel);
        return TzVciResult::parameterRefused;
    }
    return TzVciResult::ok;
}

// The box has the channel open with parameters that are not the user's: it must not stay on the bus like that. One that
// was open before this opening is closed for everybody, which has to be told.
void TzVciChannelControl::closeHalfConfigured(const Channel &channel)
{
    const bool wasOpen = isOpen(channel);
    if (wasOpen)
        m_parts.periodSender.clear(channel.protocol, channel.index);
    send(makeCloseChannel(channel.protocol, channel.index));
    markClosed(channel);
    if (wasOpen)
        m_parts.notifyStatus(closedStatus(channel.protocol));
}

int TzVciChannelControl::close(int deviceIndex, std::uint8_t protocol, int channelIndex)
{
    const std::vector<std::uint32_t> indices = channelList(deviceIndex, protocol, channelIndex);
    if (indices.empty())
        return TzVciResult::noChannel;
    const std::lock_guard lock(m_mutex);
    const bool isConnected = m_parts.link.isConnected();
    int result = TzVciResult::ok;
    for (const std::uint32_t index : indices) {
        const Channel channel{deviceIndex, protocol, static_cast<std::uint8_t>(index)};
        if (!isConnected)
            forceClosed(channel);
        else if (const int closeResult = closeOne(channel); closeResult != TzVciResult::ok)
            result = closeResult;
    }
    m_parts.notifyStatus(closedStatus(protocol));
    return result;
}

int TzVciChannelControl::closeOne(const Channel &channel)
{
    m_parts.periodSender.clear(channel.protocol, channel.index);
    if (!isOpen(channel))
        return TzVciResult::ok;
    const bool refused = send(makeCloseChannel(channel.protocol, channel.index)) != TzVciResult::ok;
    if (refused)
        Common::logError("Close device {} channel {} failed: id {}", channel.deviceIndex, channel.index + 1,
                         channel.protocol);
    else
        Common::logInfo("Closed device {} channel {}: id {}", channel.deviceIndex, channel.index + 1, channel.protocol);
    markClosed(channel);
    return refused ? TzVciResult::closeChannelRefused : TzVciResult::ok;
}

void TzVciChannelControl::forceClosed(const Channel &channel)
{
    if (!isOpen(channel))
        return;
    Common::logWarning("The device {} is not connected and is forced to close channel {}: id {}", channel.deviceIndex,
                       channel.index + 1, channel.protocol);
    markClosed(channel);
}

void TzVciChannelControl::markClosed(const Channel &channel)
{
    disarm(channel);
    m_parts.store.setChannelOpen(channel.deviceIndex, channel.protocol, channel.index, false);
}

bool TzVciChannelControl::isOpen(const Channel &channel) const
{
    return m_parts.store.isChannelOpen(channel.deviceIndex, channel.protocol, channel.index);
}

void TzVciChannelControl::disarm(const Channel &channel)
{
    Common::EmergencyStop::disarm(m_parts.link.emergencySlot(), channel.protocol, channel.index);
}

int TzVciChannelControl::send(const TzVciProtocolData &request)
{
    TzVciProtocolData response;
    return m_parts.exchange.request(request, response, tzVciRequestTimeoutMs);
}
