// SPDX-License-Identifier: GPL-3.0-or-later
#include "vci/TzVciSocketGate.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <fcntl.h>
#include <thread>
#include <vector>

using Common::platform::SharedSocket;

namespace {

SharedSocket connectedSocket()
{
    SharedSocket socket = SharedSocket::openUdp();
    EXPECT_EQ(socket.connect("127.0.0.1", 9), 0);
    return socket;
}

bool isDescriptorOpen(int descriptor)
{
    return ::fcntl(descriptor, F_GETFD) != -1 || errno != EBADF;
}

} // namespace

TEST(SocketGate, IsClosedUntilASocketIsInstalled)
{
    TzVciSocketGate gate;
    EXPECT_FALSE(gate.isOpen());
    EXPECT_FALSE(gate.use());
    EXPECT_FALSE(gate.retire());
    gate.install(connectedSocket());
    EXPECT_TRUE(gate.isOpen());
    EXPECT_TRUE(gate.use());
}

TEST(SocketGate, OneRetirementAloneCounts)
{
    TzVciSocketGate gate;
    gate.install(connectedSocket());
    EXPECT_TRUE(gate.retire());
    EXPECT_FALSE(gate.retire());
    EXPECT_FALSE(gate.isOpen());
}

TEST(SocketGate, TheDescriptorIsClosedAfterTheLastUser)
{
    TzVciSocketGate gate;
    gate.install(connectedSocket());
    auto first = gate.use();
    auto second = gate.use();
    const int descriptor = first.socket().descriptor();
    gate.retire();
    EXPECT_TRUE(isDescriptorOpen(descriptor));
    first = {};
    EXPECT_TRUE(isDescriptorOpen(descriptor));
    second = {};
    EXPECT_FALSE(isDescriptorOpen(descriptor));
}

TEST(SocketGate, AUseKeepsItsSocketWhenAnotherIsInstalled)
{
    TzVciSocketGate gate;
    gate.install(connectedSocket());
    const auto old = gate.use();
    const int oldDescriptor = old.socket().descriptor();
    gate.retire();
    gate.install(connectedSocket());
    EXPECT_EQ(old.socket().descriptor(), oldDescriptor);
    EXPECT_NE(gate.use().socket().descriptor(), oldDescriptor);
}

TEST(SocketGate, RetiringWakesAThreadThatWaits)
{
    TzVciSocketGate gate;
    gate.install(connectedSocket()); // no receive time-out: only the shutdown can wake it
    std::atomic<bool> woken{false};
    std::thread waiting([&, use = gate.use()] {
        std::array<char, 16> buffer{};
        EXPECT_EQ(use.socket().receive(buffer).size, 0);
        woken = true;
    });
    gate.retire();
    waiting.join();
    EXPECT_TRUE(woken);
}

TEST(SocketGate, ManyThreadsUseItWhileSocketsComeAndGo)
{
    TzVciSocketGate gate;
    std::atomic<bool> stop{false};
    std::atomic<int> sends{0};
    std::vector<std::thread> users;
    for (int i = 0; i < 3; ++i) {
        users.emplace_back([&] {
            while (!stop) {
                if (const auto use = gate.use()) {
                    EXPECT_NE(use.socket().send(std::array<char, 1>{}), EBADF);
                    ++sends;
                }
            }
        });
    }
    for (int i = 0; i < 300 || sends < 300; ++i) {
        gate.install(connectedSocket());
        std::this_thread::yield();
        EXPECT_TRUE(gate.retire());
    }
    stop = true;
    for (std::thread &user : users)
        user.join();
}
