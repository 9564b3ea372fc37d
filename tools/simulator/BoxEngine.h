// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tools/simulator/BoxState.h"
#include "tools/simulator/BoxTraffic.h"
#include "tools/simulator/BusSwitch.h"

#include <array>
#include <atomic>
#include <chrono>
#include <functional>
#include <future>
#include <mutex>
#include <thread>
#include <vector>

namespace tzsim {

class Delivery;

/// One box at work: its thread, its state, and the delivery of frames to its host.
///
/// Threads: the box's own thread receives, answers, runs timers and traffic. Other boxes' threads and callers of the
/// library deliver frames. One mutex protects the state; no two boxes' mutexes are ever held at once.
class BoxEngine
{
public:
    using Clock = std::chrono::steady_clock;

    BoxEngine(const Options &options, const BoxConfig &config, BusSwitch &buses);
    ~BoxEngine();
    BoxEngine(const BoxEngine &) = delete;
    BoxEngine &operator=(const BoxEngine &) = delete;

    const Options &options() const { return m_options; }
    const BoxConfig &config() const { return m_config; }
    BusSwitch &buses() { return m_buses; }
    BoxTraffic &traffic() { return m_traffic; }

    /// State as after power-up, sockets bound; false with a text in @p error.
    bool open(std::string &error);
    void start(); ///< starts the thread; throws std::system_error when there is none to be had
    void stop();  ///< joins the thread and closes the sockets
    void wake();
    /// Runs @p action on the box's thread, or here when that does not run, and waits for its end. Not to be called on
    /// the box's thread.
    void runOnThread(const std::function<void()> &action);
    void vanish();
    bool comeBack(std::string &error);

    template <typename Action> auto access(Action &&action)
    {
        const std::lock_guard lock(m_mutex);
        return action(m_state);
    }

    // ---- from Delivery
    void deliverCan(int channel, const CanFrame &frame, std::uint8_t type, Clock::time_point at);
    void deliverLin(int channel, const LinFrame &frame, std::uint8_t direction, Clock::time_point at);
    void flush();
    bool listens(Family family, int channel);
    bool linIsMaster(int channel);
    std::optional<LinFrame> linResponse(int channel, std::uint8_t id);

    void answerDiscovery(const sockaddr_in &from);

private:
    static constexpr std::size_t receiveBatch = 32;
    static constexpr std::size_t receiveBytes = 2048; // a longer datagram cannot come from a host of this protocol

    struct LateReply
    {
        Clock::time_point due;
        sockaddr_in to;
        std::vector<std::uint8_t> datagram;
    };

    void run();
    void waitUntil(Clock::time_point due);
    void receive(int socket, bool discovery);
    void handleDatagram(std::span<const std::uint8_t> datagram, bool truncated, const sockaddr_in &from);
    void handleRequest(const wire::HostFrame &frame, const sockaddr_in &from);
    void transmitCan(const wire::HostFrame &frame, Delivery &delivery);
    void transmitLin(const wire::HostFrame &frame, Delivery &delivery);
    Clock::time_point runTimers(Clock::time_point now, Clock::time_point latest);
    Clock::time_point reportBusLoad(BoxState &state, Clock::time_point now, Clock::time_point latest);
    void sendLateReplies(Clock::time_point now);
    void runActions();

    const Options m_options;
    const BoxConfig m_config;
    BusSwitch &m_buses;
    std::mutex m_mutex; // protects m_state
    BoxState m_state;
    BoxTraffic m_traffic;
    UniqueFd m_wake;
    std::atomic<bool> m_stop{false};
    std::vector<LateReply> m_lateReplies;                                 // the box's thread only
    std::vector<std::array<std::uint8_t, receiveBytes>> m_receiveBuffers; // the box's thread only
    std::mutex m_actionMutex;                                             // protects the next two
    std::vector<std::packaged_task<void()>> m_actions;
    bool m_running = false;
    std::thread m_thread; // last: it uses all of the above
};

} // namespace tzsim
