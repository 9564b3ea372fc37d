// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tests/support/WaitFor.h"
#include "tests/tools/simulator/HostSocket.h"
#include "tools/simulator/Simulator.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

namespace tzsimtest {

/// A simulator in the network of this test process, and hosts for its boxes.
class SimulatorFixture : public testing::Test
{
protected:
    /// A box without bus load reports, so that tests see only what they ask for.
    tzsim::Box &addBox(int index, int canChannels = 2, int linChannels = 2)
    {
        tzsim::BoxConfig config;
        config.index = index;
        config.canChannels = canChannels;
        config.linChannels = linChannels;
        config.busLoadPeriod = std::chrono::milliseconds(0);
        return simulator.addBox(config);
    }
    void start()
    {
        std::string error;
        ASSERT_TRUE(simulator.start(&error)) << error;
    }
    std::string hostAddress() const { return simulator.options().prefix + ".1"; }
    std::unique_ptr<HostSocket> makeHost(const tzsim::Box &box) const
    {
        auto host = std::make_unique<HostSocket>(hostAddress());
        host->connectTo(box.address(), 8000);
        return host;
    }
    /// Sends and returns the payload of the one reply.
    static Bytes request(HostSocket &host, std::uint8_t protocol, std::uint8_t command, std::uint8_t channel,
                         std::uint8_t param, const Bytes &payload = {})
    {
        EXPECT_TRUE(host.send(hostFrame(protocol, command, channel, param, payload)));
        const auto frames = split(host.receiveBytes());
        EXPECT_EQ(frames.size(), 1U);
        return frames.empty() ? Bytes() : frames.front().payload;
    }
    static void openCan(HostSocket &host, std::uint8_t channel, std::uint32_t rate = 500'000)
    {
        const Bytes payload = {static_cast<std::uint8_t>(rate), static_cast<std::uint8_t>(rate >> 8),
                               static_cast<std::uint8_t>(rate >> 16), static_cast<std::uint8_t>(rate >> 24)};
        EXPECT_EQ(request(host, 1, 0x10, channel, 0, payload), Bytes{0});
    }
    static void openLin(HostSocket &host, std::uint8_t channel, bool master)
    {
        EXPECT_EQ(request(host, 5, 0x10, channel, 0, {master ? std::uint8_t{0} : std::uint8_t{1}, 0x00, 0x4B, 0, 0}),
                  Bytes{0});
    }
    /// Frames of as many datagrams as it takes to get @p count of them.
    static std::vector<BoxFrame> receiveFrames(HostSocket &host, std::size_t count)
    {
        std::vector<BoxFrame> frames;
        while (frames.size() < count) {
            const auto datagram = host.receive();
            if (!datagram)
                break;
            for (BoxFrame &frame : split(datagram->bytes))
                frames.push_back(std::move(frame));
        }
        EXPECT_GE(frames.size(), count);
        return frames;
    }
    /// Nothing has come: the answer to a request sent now is the next datagram. Datagrams of one box keep their order.
    static void expectNothingWaits(HostSocket &host)
    {
        EXPECT_EQ(request(host, 0x0F, 0x60, 0, 0, {1}), (Bytes{1, 2, 3, 4}));
    }

    tzsim::Simulator simulator;
};

/// One box, running, and a host that is connected to it.
template <int canChannels, int linChannels> class OneBoxFixture : public SimulatorFixture
{
protected:
    void SetUp() override
    {
        start();
        host = makeHost(*box);
    }

    tzsim::Box *const box = &addBox(0, canChannels, linChannels);
    std::unique_ptr<HostSocket> host;
};

} // namespace tzsimtest
