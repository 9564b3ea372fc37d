// SPDX-License-Identifier: GPL-3.0-or-later
#include "tools/simulator/BoxEngine.h"

#include "tools/simulator/Delivery.h"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <poll.h>
#include <pthread.h>
#include <sys/prctl.h>
#include <sys/socket.h>

namespace tzsim {

namespace {

constexpr auto idleWait = std::chrono::seconds(1);

} // namespace

BoxEngine::BoxEngine(const Options &options, const BoxConfig &config, BusSwitch &buses)
    : m_options(options)
    , m_config(config)
    , m_buses(buses)
    , m_state(config)
    , m_wake(makeWakeFd())
    , m_receiveBuffers(receiveBatch)
{
}

BoxEngine::~BoxEngine()
{
    stop();
}

bool BoxEngine::open(std::string &error)
{
    const std::lock_guard lock(m_mutex);
    m_state.powerUp(m_config, Clock::now());
    return m_state.link.open(m_options, m_config.index, error);
}

void BoxEngine::start()
{
    m_stop = false;
    {
        const std::lock_guard lock(m_actionMutex);
        m_running = true;
    }
    try {
        m_thread = std::thread([this] { run(); });
    } catch (...) {
        const std::lock_guard lock(m_actionMutex);
        m_running = false;
        throw;
    }
}

void BoxEngine::stop()
{
    m_stop = true;
    wake();
    if (m_thread.joinable())
        m_thread.join();
    const std::lock_guard lock(m_mutex);
    m_state.link.close();
}

void BoxEngine::wake()
{
    signalWakeFd(m_wake);
}

void BoxEngine::runOnThread(const std::function<void()> &action)
{
    std::packaged_task<void()> task(action);
    std::future<void> done = task.get_future();
    {
        std::unique_lock lock(m_actionMutex);
        if (!m_running) {
            lock.unlock();
            task();
            return;
        }
        m_actions.push_back(std::move(task));
    }
    wake();
    done.wait();
}

void BoxEngine::runActions()
{
    std::vector<std::packaged_task<void()>> actions;
    {
        const std::lock_guard lock(m_actionMutex);
        actions.swap(m_actions);
    }
    for (auto &action : actions)
        action();
}

void BoxEngine::run()
{
    ::pthread_setname_np(::pthread_self(), fmt::format("sim-box-{}", m_config.index).c_str());
    ::prctl(PR_SET_TIMERSLACK, 1000UL, 0UL, 0UL, 0UL); // 1 microsecond instead of 50: traffic keeps its cycle times
    while (!m_stop) {
        const auto now = Clock::now();
        auto due = m_traffic.run(now, m_buses, now + idleWait);
        due = runTimers(now, due);
        waitUntil(due);
        runActions();
    }
    {
        const std::lock_guard lock(m_actionMutex);
        m_running = false;
    }
    runActions(); // whoever waits must not wait for ever
    m_lateReplies.clear();
}

void BoxEngine::waitUntil(Clock::time_point due)
{
    const auto [socket, discovery] =
        access([](BoxState &s) { return std::pair(s.link.socket(), s.link.discoverySocket()); });
    // A closed socket is -1, which poll passes over.
    std::array<pollfd, 3> fds = {{{m_wake.get(), POLLIN, 0}, {socket, POLLIN, 0}, {discovery, POLLIN, 0}}};
    const auto wait = std::max(due - Clock::now(), Clock::duration::zero());
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(wait);
    const timespec limit{seconds.count(), std::chrono::nanoseconds(wait - seconds).count()};
    if (::ppoll(fds.data(), fds.size(), &limit, nullptr) <= 0)
        return;
    if (fds[0].revents != 0)
        drainWakeFd(m_wake);
    if (fds[1].revents != 0)
        receive(socket, false);
    if (fds[2].revents != 0)
        receive(discovery, true);
}

void BoxEngine::receive(int socket, bool discovery)
{
    std::array<mmsghdr, receiveBatch> messages{};
    std::array<iovec, receiveBatch> parts{};
    std::array<sockaddr_in, receiveBatch> from{};
    for (std::size_t i = 0; i < receiveBatch; ++i) {
        parts[i] = {m_receiveBuffers[i].data(), receiveBytes};
        messages[i].msg_hdr.msg_name = &from[i];
        messages[i].msg_hdr.msg_namelen = sizeof from[i];
        messages[i].msg_hdr.msg_iov = &parts[i];
        messages[i].msg_hdr.msg_iovlen = 1;
    }
    const int count = ::recvmmsg(socket, messages.data(), receiveBatch, MSG_DONTWAIT, nullptr);
    for (int i = 0; i < count; ++i) {
        const auto n = static_cast<std::size_t>(i);
        const std::span<const std::uint8_t> datagram(m_receiveBuffers[n].data(), messages[n].msg_len);
        if (!discovery)
            handleDatagram(datagram, (messages[n].msg_hdr.msg_flags & MSG_TRUNC) != 0, from[n]);
        else if (wire::isDiscoveryRequest(datagram))
            answerDiscovery(from[n]);
    }
}

void BoxEngine::handleDatagram(std::span<const std::uint8_t> datagram, bool truncated, const sockaddr_in &from)
{
    const bool isHeartbeat = datagram.size() == 1 && datagram[0] == wire::heartbeat;
    access([&](BoxState &s) {
        ++s.counters.datagramsIn;
        s.counters.bytesIn += datagram.size();
        s.counters.malformed += datagram.empty() || truncated ? 1 : 0;
        if (isHeartbeat) {
            ++s.counters.heartbeats;
            s.counters.lastHeartbeat = Clock::now();
        }
        if (s.link.isHost(from)) {
            s.hostTotals.rxBytes += static_cast<std::uint32_t>(datagram.size());
            s.hostHeardAt = Clock::now();
        }
    });
    if (isHeartbeat || datagram.empty() || truncated)
        return;

    Delivery delivery(m_buses);
    wire::HostFrameReader reader(datagram);
    bool malformed = false;
    // Counted before the frame behind it is answered, so that whoever has the answer sees it counted.
    const auto countMalformed = [&](BoxState &s) {
        s.counters.malformed += reader.malformed() && !malformed ? 1 : 0;
        malformed = reader.malformed();
    };
    while (const auto frame = reader.next()) {
        access([&](BoxState &s) {
            countMalformed(s);
            s.noteHost(from, datagram.size());
            ++s.counters.framesIn;
            ++s.hostTotals.rxFrames;
        });
        const bool transmit = frame->command == wire::Command::transmit;
        if (transmit && frame->protocol == wire::Protocol::can)
            transmitCan(*frame, delivery);
        else if (transmit && frame->protocol == wire::Protocol::lin)
            transmitLin(*frame, delivery);
        else
            handleRequest(*frame, from);
    }
    access(countMalformed);
}

void BoxEngine::handleRequest(const wire::HostFrame &frame, const sockaddr_in &from)
{
    const std::lock_guard lock(m_mutex);
    const bool couldReport = m_state.anyCanOpen();
    auto reply = m_state.protocol.handle(frame, m_state.clock.at(Clock::now()));
    if (const auto changed = std::exchange(m_state.protocol.ratesChanged, std::nullopt)) {
        const CanChannelState &channel = m_state.protocol.can[*changed];
        m_state.meter.setRates(*changed, channel.nominalRate, channel.dataRate);
    }
    if (!couldReport && m_state.anyCanOpen()) {
        m_state.meter.restart(Clock::now());
        m_state.reportDue = Clock::now() + m_state.busLoadPeriod;
    }
    if (!reply)
        return;
    if (reply->delay.count() > 0)
        m_lateReplies.push_back({Clock::now() + reply->delay, from, std::move(reply->datagram)});
    else
        m_state.sendTo(from, reply->datagram);
}

void BoxEngine::transmitCan(const wire::HostFrame &frame, Delivery &delivery)
{
    const auto can = wire::parseCanTransmit(frame.payload);
    const bool taken = access([&](BoxState &s) {
        s.protocol.logTransmit(frame);
        ChannelCounters *counters = s.channelCounters(Family::can, frame.channel);
        const bool fits = counters && can && s.protocol.can[frame.channel].open;
        if (counters)
            ++(fits ? counters->framesReceived : counters->framesRejected);
        return fits;
    });
    if (taken)
        delivery.canFromHost({m_config.index, Family::can, frame.channel}, *can, Clock::now());
}

void BoxEngine::transmitLin(const wire::HostFrame &frame, Delivery &delivery)
{
    using namespace wire::LinAction;
    const auto lin = wire::parseLinTransmit(frame.payload);
    const std::uint8_t action = lin ? lin->action : 0;
    const bool sendsHeader = action == headerAndResponse || action == headerAndResponse4 || action == header;
    const bool taken = access([&](BoxState &s) {
        s.protocol.logTransmit(frame);
        ChannelCounters *counters = s.channelCounters(Family::lin, frame.channel);
        if (!counters)
            return false;
        LinChannelState &channel = s.protocol.lin[frame.channel];
        const bool known = sendsHeader ? channel.master : action == response || action == clearResponse;
        const bool fits = lin && channel.open && known;
        if (fits && action == response)
            channel.responses[lin->frame.id] = lin->frame;
        else if (fits && action == clearResponse)
            channel.responses.erase(lin->frame.id);
        ++(fits ? counters->framesReceived : counters->framesRejected);
        return fits;
    });
    const ChannelRef sender{m_config.index, Family::lin, frame.channel};
    if (taken && action == header)
        delivery.linHeaderFromHost(sender, lin->frame.id, lin->frame.checksumType, Clock::now());
    else if (taken && sendsHeader)
        delivery.linFromHost(sender, lin->frame, Clock::now());
}

BoxEngine::Clock::time_point BoxEngine::runTimers(Clock::time_point now, Clock::time_point latest)
{
    sendLateReplies(now);
    for (const LateReply &reply : m_lateReplies)
        latest = std::min(latest, reply.due);
    const std::lock_guard lock(m_mutex);
    if (m_state.heartbeatTimeout.count() > 0 && m_state.openChannels() > 0) {
        const auto due = m_state.hostHeardAt + m_state.heartbeatTimeout;
        if (due <= now) {
            ++m_state.counters.heartbeatLosses;
            m_state.protocol.closeAllChannels();
        } else {
            latest = std::min(latest, due);
        }
    }
    return reportBusLoad(m_state, now, latest);
}

BoxEngine::Clock::time_point BoxEngine::reportBusLoad(BoxState &state, Clock::time_point now, Clock::time_point latest)
{
    if (state.busLoadPeriod.count() == 0 || !state.anyCanOpen())
        return latest;
    if (state.reportDue <= now) {
        state.flush(); // the report counts what went out before it
        const auto payload = state.meter.takeReport(now, state.hostTotals);
        if (state.sendToHost(wire::deviceFrame(wire::Protocol::can, wire::Command::busLoad, 0, 0, payload)))
            ++state.counters.busLoadReports;
        state.reportDue = std::max(state.reportDue + state.busLoadPeriod, now);
    }
    return std::min(latest, state.reportDue);
}

void BoxEngine::sendLateReplies(Clock::time_point now)
{
    if (m_lateReplies.empty())
        return;
    const auto byDue = [](const LateReply &a, const LateReply &b) { return a.due < b.due; };
    std::stable_sort(m_lateReplies.begin(), m_lateReplies.end(), byDue);
    const auto end = std::find_if(m_lateReplies.begin(), m_lateReplies.end(),
                                  [now](const LateReply &reply) { return reply.due > now; });
    const std::lock_guard lock(m_mutex);
    for (auto reply = m_lateReplies.begin(); reply != end; ++reply)
        m_state.sendTo(reply->to, reply->datagram);
    m_lateReplies.erase(m_lateReplies.begin(), end);
}

void BoxEngine::deliverCan(int channel, const CanFrame &frame, std::uint8_t type, Clock::time_point at)
{
    const std::lock_guard lock(m_mutex);
    m_state.deliverCan(static_cast<std::size_t>(channel), frame, type, at);
}

void BoxEngine::deliverLin(int channel, const LinFrame &frame, std::uint8_t direction, Clock::time_point at)
{
    const std::lock_guard lock(m_mutex);
    m_state.deliverLin(static_cast<std::size_t>(channel), frame, direction, at);
}

void BoxEngine::flush()
{
    const std::lock_guard lock(m_mutex);
    m_state.flush();
}

bool BoxEngine::listens(Family family, int channel)
{
    const auto n = static_cast<std::size_t>(channel);
    return access([&](const BoxState &s) {
        const bool open = family == Family::can ? n < s.protocol.can.size() && s.protocol.can[n].open
                                                : n < s.protocol.lin.size() && s.protocol.lin[n].open;
        return open && s.link.host();
    });
}

bool BoxEngine::linIsMaster(int channel)
{
    const auto n = static_cast<std::size_t>(channel);
    return access([&](const BoxState &s) { return n < s.protocol.lin.size() && s.protocol.lin[n].master; });
}

std::optional<LinFrame> BoxEngine::linResponse(int channel, std::uint8_t id)
{
    const auto n = static_cast<std::size_t>(channel);
    return access([&](const BoxState &s) -> std::optional<LinFrame> {
        if (n >= s.protocol.lin.size())
            return std::nullopt;
        const auto &responses = s.protocol.lin[n].responses; // a closed channel has none
        const auto found = responses.find(id);
        return found == responses.end() ? std::nullopt : std::optional(found->second);
    });
}

void BoxEngine::vanish()
{
    runOnThread([this] {
        m_lateReplies.clear();
        const std::lock_guard lock(m_mutex);
        m_state.flush();
        m_state.link.close();
        m_state.protocol.closeAllChannels();
    });
}

bool BoxEngine::comeBack(std::string &error)
{
    bool ok = false;
    runOnThread([&] {
        const std::lock_guard lock(m_mutex);
        ok = m_state.link.isOpen() || m_state.link.open(m_options, m_config.index, error);
    });
    return ok;
}

void BoxEngine::answerDiscovery(const sockaddr_in &from)
{
    const std::lock_guard lock(m_mutex);
    if (m_state.silent)
        return;
    if (m_state.link.sendDiscoveryReply(from, wire::discoveryReply(m_config.canChannels, m_config.linChannels)))
        ++m_state.counters.discoveryReplies;
}

} // namespace tzsim
