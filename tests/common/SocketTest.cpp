// SPDX-License-Identifier: GPL-3.0-or-later
#include "common/platform/Socket.h"

#include "common/Utils.h"
#include "vci/TzVciNetwork.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <string_view>
#include <thread>
#include <vector>

#include <fcntl.h>

using Common::Utils;
using Common::platform::Received;
using Common::platform::SharedSocket;
using Common::platform::SocketSlot;

namespace {

const std::string &host()
{
    static const std::string address = TzVciNetwork::current().prefix + ".1";
    return address;
}

SharedSocket boundSocket()
{
    SharedSocket socket = SharedSocket::openUdp();
    EXPECT_EQ(socket.bind(host(), 0), 0);
    EXPECT_EQ(socket.setReceiveTimeout(5000), 0);
    return socket;
}

std::string textOf(const Received &received, std::span<const char> buffer)
{
    return received.size < 0 ? "error" : std::string(buffer.data(), static_cast<std::size_t>(received.size));
}

bool isDescriptorOpen(int descriptor)
{
    return ::fcntl(descriptor, F_GETFD) >= 0;
}

TEST(Socket, CarriesADatagramWithItsSender)
{
    const SharedSocket receiver = boundSocket();
    const SharedSocket sender = boundSocket();
    ASSERT_EQ(sender.connect(host(), receiver.localPort()), 0);
    ASSERT_EQ(sender.send(std::string_view("abc")), 0);
    std::array<char, 100> buffer{};
    std::string ip;
    std::uint16_t port = 0;
    const Received received = receiver.receiveFrom(buffer, ip, port);
    EXPECT_EQ(textOf(received, buffer), "abc");
    EXPECT_EQ(ip, host());
    EXPECT_EQ(port, sender.localPort());
    ASSERT_EQ(receiver.sendTo(std::string_view("de"), ip, port), 0);
    EXPECT_EQ(textOf(sender.receive(buffer), buffer), "de");
}

TEST(Socket, TellsThatNothingCameInTime)
{
    const SharedSocket socket = boundSocket();
    ASSERT_EQ(Utils::setReceiveTimeout(socket.descriptor(), 10), 0);
    std::array<char, 10> buffer{};
    const Received received = socket.receive(buffer);
    EXPECT_LT(received.size, 0);
    EXPECT_TRUE(SharedSocket::isTimeout(received.error));
    EXPECT_FALSE(SharedSocket::isTimeout(ECONNREFUSED));
}

TEST(Socket, WithoutASocketEveryOperationFails)
{
    const SharedSocket none;
    std::array<char, 10> buffer{};
    EXPECT_FALSE(none.isOpen());
    EXPECT_EQ(none.descriptor(), -1);
    EXPECT_EQ(none.bind(host(), 0), EBADF);
    EXPECT_EQ(none.connect(host(), 1), EBADF);
    EXPECT_EQ(none.send(std::string_view("x")), EBADF);
    EXPECT_EQ(none.receive(buffer).error, EBADF);
    EXPECT_EQ(none.localPort(), 0);
    EXPECT_EQ(none.localAddress(), "");
    none.shutdown();
}

TEST(Socket, RefusesTextThatIsNoAddress)
{
    const SharedSocket socket = SharedSocket::openUdp();
    EXPECT_EQ(socket.bind("localhost", 0), EINVAL);
    EXPECT_EQ(socket.bind("300.1.1.1", 0), EINVAL);
    EXPECT_EQ(socket.connect("", 1), EINVAL);
    EXPECT_EQ(socket.sendTo(std::string_view("x"), "127.0.0", 1), EINVAL);
}

TEST(Socket, APortInUseIsRefused)
{
    const SharedSocket first = boundSocket();
    const SharedSocket second = SharedSocket::openUdp();
    EXPECT_EQ(second.bind(host(), first.localPort()), EADDRINUSE);
}

TEST(Socket, AnAddressThatNoInterfaceOwnsCannotBeTiedToADevice)
{
    EXPECT_EQ(SharedSocket::openUdp().bindToDevice("203.0.113.7"), ENODEV);
}

TEST(Socket, DiscardsWhatWaitsAndNothingElse)
{
    const SharedSocket receiver = boundSocket();
    const SharedSocket sender = boundSocket();
    ASSERT_EQ(sender.connect(host(), receiver.localPort()), 0);
    receiver.discardReceived(); // nothing waits, and it does not either
    for (const char *text : {"a", "", "bcd"})
        ASSERT_EQ(sender.send(std::string_view(text)), 0);
    receiver.discardReceived();
    ASSERT_EQ(sender.send(std::string_view("kept")), 0);
    std::array<char, 10> buffer{};
    EXPECT_EQ(textOf(receiver.receive(buffer), buffer), "kept");
    SharedSocket().discardReceived();
}

TEST(Socket, IsClosedAfterItsLastUser)
{
    SharedSocket first = SharedSocket::openUdp();
    const int descriptor = first.descriptor();
    SharedSocket second = first;
    EXPECT_EQ(first, second);
    first = {};
    EXPECT_TRUE(isDescriptorOpen(descriptor));
    second = {};
    EXPECT_FALSE(isDescriptorOpen(descriptor));
}

TEST(Socket, ShutdownWakesAWaitingReceive)
{
    for (const bool connected : {true, false}) {
        const SharedSocket socket = SharedSocket::openUdp();
        ASSERT_EQ(socket.bind(host(), 0), 0);
        if (connected) {
            ASSERT_EQ(socket.connect(host(), socket.localPort()), 0);
        }
        std::thread receiver([socket] {
            std::array<char, 10> buffer{};
            EXPECT_EQ(socket.receive(buffer).size, 0);
        });
        socket.shutdown(); // before or in the receive: the outcome is the same
        receiver.join();
    }
}

TEST(Socket, TellsHowManyDatagramsTheKernelDropped)
{
    const SharedSocket receiver = boundSocket();
    ASSERT_EQ(receiver.countDrops(), 0);
    ASSERT_EQ(receiver.setReceiveBufferSize(1), 0); // the system's least
    const SharedSocket sender = boundSocket();
    ASSERT_EQ(sender.connect(host(), receiver.localPort()), 0);
    constexpr std::uint32_t sent = 200;
    const std::array<char, 1000> datagram{};
    for (std::uint32_t i = 0; i < sent; ++i)
        ASSERT_EQ(sender.send(datagram), 0);
    std::array<char, 1500> buffer{};
    std::uint32_t received = 0;
    ASSERT_EQ(receiver.setReceiveTimeout(50), 0);
    while (receiver.receive(buffer).size > 0)
        ++received;
    ASSERT_LT(received, sent);
    ASSERT_EQ(sender.send(std::string_view("x")), 0); // the counter comes with the next datagram
    const Received last = receiver.receive(buffer);
    EXPECT_TRUE(last.dropsKnown);
    EXPECT_EQ(last.dropped, sent - received);
}

TEST(Socket, BufferSizesAreInKibibytesAndToldInBytes)
{
    const SharedSocket socket = SharedSocket::openUdp();
    EXPECT_NE(Utils::setSocketSendBufferSize(socket.descriptor(), 64), 0);
    EXPECT_GE(Utils::getSocketSendBufferSize(socket.descriptor()), 64 * 1024);
    EXPECT_GT(Utils::getSocketReceiveBufferSize(socket.descriptor()), 0);
    EXPECT_EQ(Utils::setSocketSendBufferSize(socket.descriptor(), 0), 0);
    EXPECT_EQ(Utils::setSocketSendBufferSize(socket.descriptor(), 4'000'000), 0); // more bytes than an int holds
    EXPECT_EQ(Utils::setSocketSendBufferSize(-1, 64), 0);
    EXPECT_EQ(Utils::getSocketSendBufferSize(-1), -1);
    EXPECT_EQ(Utils::getSocketReceiveBufferSize(-1), -1);
    EXPECT_NE(Utils::setReceiveTimeout(-1, 10), 0);
    EXPECT_NE(Utils::setReceiveTimeout(socket.descriptor(), -1), 0);
}

TEST(SocketSlot, OneOfManyThreadsTakesTheSocket)
{
    SocketSlot slot;
    slot.exchange(SharedSocket::openUdp());
    std::atomic<int> winners{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            slot.load().setReceiveTimeout(1);
            if (slot.exchange({}).isOpen())
                ++winners;
        });
    }
    for (std::thread &thread : threads)
        thread.join();
    EXPECT_EQ(winners, 1);
    EXPECT_FALSE(slot.load().isOpen());
}

} // namespace
