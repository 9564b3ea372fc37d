// SPDX-License-Identifier: GPL-3.0-or-later
#include "tools/simulator/BoxProtocol.h"

#include <algorithm>

namespace tzsim {

namespace {

constexpr std::size_t maxLoggedRequests = 10'000;
constexpr std::uint32_t maxTimingValue = 255;

Request toRequest(const wire::HostFrame &frame)
{
    return {frame.protocol,
            frame.command,
            frame.channel,
            frame.param,
            {frame.payload.begin(), frame.payload.end()},
            std::chrono::steady_clock::now()};
}

void log(std::deque<Request> &requests, Request request)
{
    if (requests.size() == maxLoggedRequests)
        requests.pop_front();
    requests.push_back(std::move(request));
}

bool fits(const std::optional<std::uint8_t> &wanted, std::uint8_t value)
{
    return !wanted || *wanted == value;
}

} // namespace

bool RequestMatch::matches(const Request &request) const
{
    return fits(protocol, request.protocol) && fits(command, request.command) && fits(channel, request.channel) &&
           fits(param, request.param) &&
           (!firstByte || (!request.payload.empty() && request.payload.front() == *firstByte));
}

BoxProtocol::BoxProtocol(const BoxConfig &config)
    : can(static_cast<std::size_t>(std::clamp(config.canChannels, 0, maxChannels)))
    , lin(static_cast<std::size_t>(std::clamp(config.linChannels, 0, maxChannels)))
    , m_config(config)
{
}

void BoxProtocol::logTransmit(const wire::HostFrame &frame)
{
    log(transmits, toRequest(frame));
}

void BoxProtocol::closeAllChannels()
{
    for (CanChannelState &channel : can)
        channel = {.resistor = channel.resistor};
    std::fill(lin.begin(), lin.end(), LinChannelState());
}

std::optional<BoxProtocol::Reply> BoxProtocol::handle(const wire::HostFrame &frame, std::uint64_t ticks)
{
    const Request request = toRequest(frame);
    log(requests, request);
    Reply reply;
    reply.delay = replyDelay;
    Bytes payload;
    bool drop = false;
    applyFaults(request, payload, reply, drop);
    if (drop)
        return std::nullopt;
    const bool refused = !payload.empty();
    if (!refused)
        payload = answer(request, ticks);
    for (ReplyFault &fault : faults) { // after the answer is known, so that its length can be spoilt
        if (fault.kind == ReplyFault::Kind::resize && fault.times != 0 && fault.match.matches(request)) {
            payload.resize(fault.length);
            fault.times -= fault.times > 0 ? 1 : 0;
        }
    }
    reply.datagram = wire::deviceFrame(request.protocol, request.command, request.channel, request.param, payload);
    return reply;
}

void BoxProtocol::applyFaults(const Request &request, Bytes &payload, Reply &reply, bool &drop)
{
    for (ReplyFault &fault : faults) {
        if (fault.kind == ReplyFault::Kind::resize || fault.times == 0 || !fault.match.matches(request))
            continue;
        fault.times -= fault.times > 0 ? 1 : 0;
        if (fault.kind == ReplyFault::Kind::refuse)
            payload = {fault.code};
        else if (fault.kind == ReplyFault::Kind::delay)
            reply.delay = fault.delay;
        else
            drop = true;
    }
}

BoxProtocol::Bytes BoxProtocol::answer(const Request &request, std::uint64_t ticks)
{
    if (request.protocol == wire::Protocol::device && request.payload == Bytes{1}) {
        if (request.command == wire::Command::firmwareVersion)
            return {m_config.firmwareVersion.begin(), m_config.firmwareVersion.end()};
        if (request.command == wire::Command::baseTime) {
            Bytes payload(8);
            wire::writeU64(payload.data(), ticks);
            return payload;
        }
    }
    return {status(request)};
}

std::uint8_t BoxProtocol::status(const Request &request)
{
    using namespace wire;
    if (request.protocol == Protocol::device) {
        if (request.command == Command::terminalResistor)
            return terminalResistor(request);
        const bool known = request.command == Command::firmwareVersion || request.command == Command::baseTime;
        return known ? DeviceStatus::badLength : DeviceStatus::unknownCommand;
    }
    const bool isCan = request.protocol == Protocol::can;
    if (!isCan && request.protocol != Protocol::lin)
        return DeviceStatus::unknownCommand;
    if (request.channel >= (isCan ? can.size() : lin.size()))
        return DeviceStatus::noSuchChannel;
    if (request.command == Command::open)
        return isCan ? openCan(request) : openLin(request);
    if (request.command == Command::close)
        return close(request);
    if (isCan && request.command == Command::parameter)
        return canParameter(request);
    return DeviceStatus::unknownCommand;
}

std::uint8_t BoxProtocol::openCan(const Request &request)
{
    if (request.payload.size() != 4)
        return DeviceStatus::badLength;
    const std::uint32_t rate = wire::readU32(request.payload.data());
    if (rate == 0)
        return DeviceStatus::badValue;
    CanChannelState &channel = can[request.channel];
    channel = {.open = true, .nominalRate = rate, .resistor = channel.resistor};
    ratesChanged = request.channel;
    return DeviceStatus::ok;
}

std::uint8_t BoxProtocol::openLin(const Request &request)
{
    if (request.payload.size() != 5)
        return DeviceStatus::badLength;
    const std::uint32_t rate = wire::readU32(&request.payload[1]);
    if (request.payload[0] > 1 || rate == 0)
        return DeviceStatus::badValue;
    lin[request.channel] = {.open = true, .master = request.payload[0] == 0, .rate = rate};
    return DeviceStatus::ok;
}

std::uint8_t BoxProtocol::close(const Request &request)
{
    if (!request.payload.empty())
        return DeviceStatus::badLength;
    if (request.protocol == wire::Protocol::can)
        can[request.channel] = {.resistor = can[request.channel].resistor};
    else
        lin[request.channel] = {};
    return DeviceStatus::ok; // also of a channel that was not open
}

std::uint8_t BoxProtocol::canParameter(const Request &request)
{
    CanChannelState &channel = can[request.channel];
    if (request.param == wire::Param::apply) {
        if (!request.payload.empty())
            return DeviceStatus::badLength;
        if (!channel.open)
            return DeviceStatus::notOpen;
        channel.applied = true;
        return DeviceStatus::ok;
    }
    if (request.param != wire::Param::set)
        return DeviceStatus::unknownCommand;
    if (request.payload.size() != 5)
        return DeviceStatus::badLength;
    if (!channel.open)
        return DeviceStatus::notOpen;
    using namespace wire::CanParameter;
    const std::uint8_t id = request.payload[0];
    const std::uint32_t value = wire::readU32(&request.payload[1]);
    const bool isRate = id == nominalRate || id == dataRate;
    const bool isTiming = id >= firstTiming && id <= lastTiming;
    if (!isRate && !isTiming)
        return DeviceStatus::unknownParameter;
    if (value == 0 || (isTiming && value > maxTimingValue))
        return DeviceStatus::badValue;
    if (isTiming)
        channel.timing[id - firstTiming] = static_cast<std::uint8_t>(value);
    else
        (id == nominalRate ? channel.nominalRate : channel.dataRate) = value;
    channel.applied = false;
    ratesChanged = request.channel;
    return DeviceStatus::ok;
}

std::uint8_t BoxProtocol::terminalResistor(const Request &request)
{
    if (request.channel >= can.size())
        return DeviceStatus::noSuchChannel;
    if (request.payload.size() != 1)
        return DeviceStatus::badLength;
    if (request.payload[0] > 1)
        return DeviceStatus::badValue;
    can[request.channel].resistor = request.payload[0] == 1;
    return DeviceStatus::ok;
}

} // namespace tzsim
