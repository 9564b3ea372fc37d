// SPDX-License-Identifier: GPL-3.0-or-later
// The road of a frame up to the subscriber: one device, loopback, 44 CAN frames of 8 bytes in each datagram.
//   bench_link [SECONDS]   length of the run that must lose nothing, 30 by default
#include "bench/BenchReport.h"
#include "common/Log.h"
#include "tests/support/AllocationCounter.h"
#include "tests/support/LoopbackGuard.h"
#include "vci/TzVciCommunication.h"
#include "vci/TzVciNetwork.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <string>
#include <thread>
#include <vector>

using Clock = std::chrono::steady_clock;

namespace {

constexpr int framesPerDatagram = 44;
constexpr int framesPerSecond = 1'000'000;
constexpr int measuredRuns = 5;
constexpr auto measuredRunLength = std::chrono::seconds(1);

double cpuSecondsOfThisThread()
{
    timespec time{};
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

// What the subscriber notes on the receive thread; the main thread reads it.
struct Subscriber
{
    std::atomic<std::uint64_t> frames{0};
    std::atomic<double> cpuSeconds{0.0};
    std::atomic<std::uint64_t> allocated{0};
    std::uint64_t payloadSum = 0; // receive thread only: every frame is looked at, as a subscriber would

    void take(const std::vector<TzVciProtocolData> &batch)
    {
        for (const TzVciProtocolData &record : batch)
            payloadSum += record.payload[0];
        frames += batch.size();
    }
    // Once a datagram: reading the thread's clock for each batch would be a good part of the figure.
    void note()
    {
        cpuSeconds = cpuSecondsOfThisThread();
        allocated = tztest::allocationsOfThisThread();
    }
};

// The device's side: a bare socket that knows where the link is.
class Peer
{
public:
    Peer()
        : m_socket(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0))
    {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        ::inet_pton(AF_INET, ip().c_str(), &address.sin_addr);
        socklen_t size = sizeof(address);
        if (::bind(m_socket, reinterpret_cast<const sockaddr *>(&address), sizeof(address)) != 0 ||
            ::getsockname(m_socket, reinterpret_cast<sockaddr *>(&address), &size) != 0) {
            fmt::print(stderr, "no socket for the device's side\n");
            std::exit(1);
        }
        port = ntohs(address.sin_port);
    }
    ~Peer() { ::close(m_socket); }
    Peer(const Peer &) = delete;
    Peer &operator=(const Peer &) = delete;

    static std::string ip() { return TzVciNetwork::current().deviceAddress(0); }
    void learnHost()
    {
        std::array<char, 64> buffer{};
        sockaddr_in host{};
        socklen_t size = sizeof(host);
        ::recvfrom(m_socket, buffer.data(), buffer.size(), 0, reinterpret_cast<sockaddr *>(&host), &size);
        ::connect(m_socket, reinterpret_cast<const sockaddr *>(&host), sizeof(host));
    }
    void send(const std::vector<std::uint8_t> &datagram) const
    {
        if (::send(m_socket, datagram.data(), datagram.size(), 0) < 0)
            fmt::print(stderr, "the device's side could not send\n");
    }
    std::uint16_t port = 0;

private:
    int m_socket;
};

std::vector<std::uint8_t> trafficDatagram()
{
    // 24 bytes of payload: id 0x123, 8 bytes, received, time stamp, data
    constexpr std::array<std::uint8_t, 33> frame{0x55, 0xAA, 1, 0x40, 0, 0, 24, 0, 0x23, 0x01, 0, 0, 8, 0, 0, 2};
    std::vector<std::uint8_t> datagram;
    for (int i = 0; i < framesPerDatagram; ++i)
        datagram.insert(datagram.end(), frame.begin(), frame.end());
    return datagram;
}

// Sends at 1 million frames/s, paced by the steady clock in steps of a millisecond. @return frames sent
std::uint64_t sendPaced(const Peer &peer, const std::vector<std::uint8_t> &datagram, Clock::duration length)
{
    const auto start = Clock::now();
    std::uint64_t sent = 0;
    while (Clock::now() - start < length) {
        const double elapsed = std::chrono::duration<double>(Clock::now() - start).count();
        while (static_cast<double>(sent) < elapsed * framesPerSecond) {
            peer.send(datagram);
            sent += framesPerDatagram;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return sent;
}

bool waitForFrames(const Subscriber &subscriber, std::uint64_t frames)
{
    const auto limit = Clock::now() + std::chrono::seconds(2);
    while (subscriber.frames < frames && Clock::now() < limit)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    return subscriber.frames >= frames;
}

// Frames by second of the receive thread's processor time while it is kept busy.
double framesPerCpuSecond(const Peer &peer, const Subscriber &subscriber, const std::vector<std::uint8_t> &datagram)
{
    const std::uint64_t framesBefore = subscriber.frames;
    const double cpuBefore = subscriber.cpuSeconds;
    const std::uint64_t sent = sendPaced(peer, datagram, measuredRunLength);
    waitForFrames(subscriber, framesBefore + sent);
    return static_cast<double>(subscriber.frames - framesBefore) / (subscriber.cpuSeconds - cpuBefore);
}

} // namespace

int main(int argc, char **argv)
{
    tztest::requireLoopbackNetwork();
    const auto seconds = std::chrono::seconds(argc > 1 ? std::max(1, std::atoi(argv[1])) : 30);
    Peer peer;
    Subscriber subscriber;
    TzVciCommunication link(0);
    link.setDataCallback([&](const std::vector<TzVciProtocolData> &batch) {
        subscriber.take(batch);
        if (batch.size() < 32) // the last batch of a datagram
            subscriber.note();
    });
    TzVciCommunication::ConnectConfig config;
    config.serverIp = Peer::ip();
    config.serverPort = peer.port;
    Common::logInit("", Common::LogLevel::warning, 1, 1); // what the host drops is told
    Common::logStart(true);
    if (!link.connect(config) || link.send(QByteArrayLiteral("hello")) != 0)
        return 1;
    peer.learnHost();

    using tzbench_report::report;
    using tzbench_report::Want;
    const auto datagram = trafficDatagram();
    sendPaced(peer, datagram, std::chrono::milliseconds(200)); // warm caches and buffers
    std::vector<double> rates;
    for (int i = 0; i < measuredRuns; ++i)
        rates.push_back(framesPerCpuSecond(peer, subscriber, datagram));
    report("link.receive", tzbench_report::median(rates), "frames/s of receive-thread CPU", Want::AtLeast, 2.5e6);

    const std::uint64_t framesBefore = subscriber.frames;
    const std::uint64_t allocatedBefore = subscriber.allocated;
    const auto start = Clock::now();
    const std::uint64_t sent = sendPaced(peer, datagram, seconds);
    const double took = std::chrono::duration<double>(Clock::now() - start).count();
    waitForFrames(subscriber, framesBefore + sent);
    const std::uint64_t received = subscriber.frames - framesBefore;
    report("link.sustained", static_cast<double>(sent) / took, "frames/s sent", Want::AtLeast, 0.99e6);
    report("link.lost", static_cast<double>(sent - received), "frames", Want::AtMost, 0);
    report("link.allocations", static_cast<double>(subscriber.allocated - allocatedBefore), "by the receive thread",
           Want::AtMost, 0);
    link.disconnect();
    Common::logStop();
    return 0;
}
