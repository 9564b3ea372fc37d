// SPDX-License-Identifier: GPL-3.0-or-later
#include "tools/simulator/Box.h"

#include "tools/simulator/BoxEngine.h"
#include "tools/simulator/Delivery.h"
#include "tools/simulator/LoadSource.h"
#include "tools/simulator/ReplaySource.h"
#include "tools/simulator/SignalSource.h"

#include <random>

namespace tzsim {

namespace {

std::chrono::steady_clock::time_point now()
{
    return std::chrono::steady_clock::now();
}

template <typename Channel> Channel channelAt(const std::vector<Channel> &channels, int channel)
{
    const auto n = static_cast<std::size_t>(channel);
    return n < channels.size() ? channels[n] : Channel();
}

// 33 bytes on the wire.
CanFrame sampleFrame(std::uint32_t number)
{
    CanFrame frame = CanFrame::make(0x7E5, {});
    frame.length = 8;
    wire::writeU32(frame.data.data(), number);
    return frame;
}

} // namespace

Box::Box(BoxEngine &engine)
    : m_engine(engine)
{
}

int Box::index() const
{
    return m_engine.config().index;
}
std::string Box::address() const
{
    return m_engine.options().boxAddress(index());
}
const BoxConfig &Box::config() const
{
    return m_engine.config();
}

CanChannelState Box::canChannel(int channel) const
{
    return m_engine.access([&](const BoxState &s) { return channelAt(s.protocol.can, channel); });
}

LinChannelState Box::linChannel(int channel) const
{
    return m_engine.access([&](const BoxState &s) { return channelAt(s.protocol.lin, channel); });
}

int Box::openChannels() const
{
    return m_engine.access([](const BoxState &s) { return s.openChannels(); });
}

ChannelCounters Box::counters(Family family, int channel) const
{
    return m_engine.access(
        [&](const BoxState &s) { return channelAt(family == Family::can ? s.canCounters : s.linCounters, channel); });
}

BoxCounters Box::counters() const
{
    return m_engine.access([](const BoxState &s) { return s.allCounters(); });
}

bool Box::hasHost() const
{
    return m_engine.access([](const BoxState &s) { return s.link.host().has_value(); });
}

std::vector<Request> Box::requests() const
{
    return m_engine.access(
        [](const BoxState &s) { return std::vector(s.protocol.requests.begin(), s.protocol.requests.end()); });
}

std::vector<Request> Box::transmits() const
{
    return m_engine.access(
        [](const BoxState &s) { return std::vector(s.protocol.transmits.begin(), s.protocol.transmits.end()); });
}

void Box::clearRequests()
{
    m_engine.access([](BoxState &s) {
        s.protocol.requests.clear();
        s.protocol.transmits.clear();
    });
}

std::uint64_t Box::deviceTime() const
{
    return m_engine.access([](const BoxState &s) { return s.clock.at(now()); });
}

void Box::setClockOffset(std::uint64_t ticks)
{
    m_engine.access([&](BoxState &s) { s.setClock(ticks, now()); });
}

void Box::setBusLoadPeriod(std::chrono::milliseconds period)
{
    m_engine.access([&](BoxState &s) {
        s.busLoadPeriod = period;
        s.reportDue = now() + period;
        s.meter.restart(now());
    });
    m_engine.wake();
}

void Box::setHeartbeatTimeout(std::chrono::milliseconds timeout)
{
    m_engine.access([&](BoxState &s) {
        s.heartbeatTimeout = timeout;
        s.hostHeardAt = now();
    });
    m_engine.wake();
}

void Box::injectCan(int channel, const CanFrame &frame)
{
    injectCan(channel, std::span(&frame, 1));
}

void Box::injectCan(int channel, std::span<const CanFrame> frames)
{
    Delivery delivery(m_engine.buses());
    for (const CanFrame &frame : frames)
        delivery.canFromNode({index(), Family::can, channel}, frame, now());
}

void Box::injectCanError(int channel, std::uint32_t code, std::uint8_t type)
{
    injectCan(channel, CanFrame::makeError(code, type));
}

void Box::injectLin(int channel, const LinFrame &frame)
{
    Delivery(m_engine.buses()).linFromNode({index(), Family::lin, channel}, frame, now());
}

void Box::injectLinHeader(int channel, std::uint8_t id)
{
    Delivery(m_engine.buses()).linHeaderFromNode({index(), Family::lin, channel}, id, now());
}

void Box::setLinNodeResponse(int channel, const LinFrame &frame)
{
    m_engine.buses().setNodeResponse({index(), Family::lin, channel}, frame);
}

void Box::clearLinNodeResponse(int channel, std::uint8_t id)
{
    m_engine.buses().clearNodeResponse({index(), Family::lin, channel}, id);
}

void Box::startLoad(const LoadSpec &spec)
{
    m_engine.traffic().add(std::make_unique<LoadSource>(index(), spec, now()));
    m_engine.wake();
}

void Box::startSignals(const SignalSpec &spec)
{
    m_engine.traffic().add(std::make_unique<SignalSource>(m_engine, spec, now()));
    m_engine.wake();
}

bool Box::startReplay(const ReplaySpec &spec, std::string *error)
{
    std::string text;
    auto log = ReplayLog::load(spec.file, text);
    if (!log) {
        if (error)
            *error = text;
        return false;
    }
    m_engine.traffic().add(std::make_unique<ReplaySource>(config(), spec, std::move(*log), now()));
    m_engine.wake();
    return true;
}

void Box::stopTraffic()
{
    m_engine.traffic().clear();
}
bool Box::trafficRunning() const
{
    return !m_engine.traffic().empty();
}

void Box::addReplyFault(const ReplyFault &fault)
{
    m_engine.access([&](BoxState &s) { s.protocol.faults.push_back(fault); });
}

void Box::refuse(std::uint8_t protocol, std::uint8_t command, std::uint8_t channel, std::uint8_t code)
{
    addReplyFault({.match = {.protocol = protocol, .command = command, .channel = channel}, .code = code});
}

void Box::refuseParameter(std::uint8_t channel, std::uint8_t parameterId, std::uint8_t code)
{
    addReplyFault({.match = {.protocol = wire::Protocol::can,
                             .command = wire::Command::parameter,
                             .channel = channel,
                             .param = wire::Param::set,
                             .firstByte = parameterId},
                   .code = code});
}

void Box::setReplyDelay(std::chrono::milliseconds delay)
{
    m_engine.access([&](BoxState &s) { s.protocol.replyDelay = delay; });
}

void Box::setSilent(bool silent)
{
    m_engine.access([&](BoxState &s) {
        s.flush();
        s.silent = silent;
    });
}

void Box::clearFaults()
{
    m_engine.access([](BoxState &s) {
        s.protocol.faults.clear();
        s.protocol.replyDelay = {};
        s.silent = false;
    });
}

bool Box::sendDatagram(std::span<const std::uint8_t> bytes)
{
    return m_engine.access([&](BoxState &s) { return s.sendToHost(bytes); });
}

bool Box::sendFrame(std::uint8_t protocol, std::uint8_t command, std::uint8_t channel, std::uint8_t param,
                    std::span<const std::uint8_t> payload)
{
    return sendDatagram(wire::deviceFrame(protocol, command, channel, param, payload));
}

bool Box::sendEmptyDatagram()
{
    return sendDatagram({});
}

bool Box::sendJunk(std::size_t size)
{
    std::vector<std::uint8_t> bytes(size);
    std::minstd_rand random(static_cast<unsigned>(size) + 1);
    for (std::uint8_t &byte : bytes) {
        byte = static_cast<std::uint8_t>(random());
        if (byte == 0x55) // without it there is no sync word
            byte = 0;
    }
    return sendDatagram(bytes);
}

bool Box::sendCutDatagram(std::size_t size)
{
    const CanFrame frame = sampleFrame(0);
    std::vector<std::uint8_t> bytes(wire::canRecordSize(frame));
    wire::writeCanRecord(bytes.data(), 0, frame, CanType::received, deviceTime());
    bytes.resize(std::min(size, bytes.size()));
    return sendDatagram(bytes);
}

bool Box::sendBurst(int channel, std::size_t count)
{
    std::vector<std::uint8_t> datagram;
    datagram.reserve(wire::maxDatagram);
    bool ok = true;
    for (std::size_t i = 0; i < count; ++i) {
        const CanFrame frame = sampleFrame(static_cast<std::uint32_t>(i));
        const std::size_t size = wire::canRecordSize(frame);
        if (datagram.size() + size > wire::maxDatagram) {
            ok = sendDatagram(datagram) && ok;
            datagram.clear();
        }
        datagram.resize(datagram.size() + size);
        wire::writeCanRecord(datagram.data() + datagram.size() - size, static_cast<std::uint8_t>(channel), frame,
                             CanType::received, deviceTime());
    }
    return (datagram.empty() || sendDatagram(datagram)) && ok;
}

void Box::vanish()
{
    m_engine.vanish();
}

bool Box::comeBack(std::string *error)
{
    std::string text;
    const bool ok = m_engine.comeBack(text);
    if (error)
        *error = text;
    return ok;
}

bool Box::vanished() const
{
    return m_engine.access([](const BoxState &s) { return !s.link.isOpen(); });
}

} // namespace tzsim
