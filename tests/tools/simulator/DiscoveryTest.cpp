// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/tools/simulator/SimulatorFixture.h"

#include <cstdlib>
#include <set>

using namespace tzsimtest;

namespace {

const Bytes discoveryRequest = hex("AA 55 00 FF 00 00 02 00 00 00 FF");

class SimulatorDiscovery : public SimulatorFixture
{
};

} // namespace

TEST_F(SimulatorDiscovery, BroadcastIsAnsweredFromTheBoxesOwnAddress)
{
    addBox(3, 4, 2);
    start();
    HostSocket host(hostAddress());
    ASSERT_TRUE(host.sendTo("127.255.255.255", 8080, discoveryRequest));
    const auto reply = host.receive();
    ASSERT_TRUE(reply);
    EXPECT_EQ(reply->from, simulator.options().prefix + ".133:8080");
    // Host's sync order, 14 bytes: type 2, 4 CAN channels, 2 LIN channels, end of the list.
    EXPECT_EQ(toHex(reply->bytes), "aa 55 00 ff 00 00 0e 00 02 00 01 00 04 00 05 00 02 00 00 00 00 00 ff");
    EXPECT_EQ(simulator.box(3).counters().discoveryReplies, 1U);
}

TEST_F(SimulatorDiscovery, EveryBoxAnswers)
{
    for (int index = 0; index < 16; ++index)
        addBox(index, 1, 0);
    start();
    HostSocket host(hostAddress());
    host.sendTo("127.255.255.255", 8080, discoveryRequest);
    std::set<std::string> addresses;
    for (int i = 0; i < 16; ++i) {
        const auto reply = host.receive();
        ASSERT_TRUE(reply);
        addresses.insert(reply->from);
    }
    EXPECT_EQ(addresses.size(), 16U);
}

TEST_F(SimulatorDiscovery, RequestSentToTheBoxAloneIsAnswered)
{
    addBox(0);
    start();
    HostSocket host(hostAddress());
    host.sendTo(simulator.box(0).address(), 8080, discoveryRequest);
    EXPECT_TRUE(host.receive());
}

TEST_F(SimulatorDiscovery, TwoSimulatorsShareTheBroadcastAndAnswerOnlyTheirOwnNetwork)
{
    addBox(0);
    start();
    // Test processes take networks up to 127.250; the last octet keeps those that run beside each other apart.
    const std::string prefix = simulator.options().prefix;
    const std::string otherPrefix = "127.254" + prefix.substr(prefix.rfind('.'));
    tzsim::Options other = simulator.options();
    ASSERT_TRUE(other.useLoopback(otherPrefix));
    tzsim::Simulator otherSimulator(other);
    otherSimulator.addBox({.index = 1});
    std::string error;
    ASSERT_TRUE(otherSimulator.start(&error)) << error;

    HostSocket host(hostAddress());
    HostSocket otherHost(otherPrefix + ".1");
    host.sendTo("127.255.255.255", 8080, discoveryRequest);
    otherHost.sendTo("127.255.255.255", 8080, discoveryRequest);
    EXPECT_EQ(host.receive().value().from, simulator.options().prefix + ".130:8080");
    EXPECT_EQ(otherHost.receive().value().from, otherPrefix + ".131:8080");
    // Both simulators have heard both requests by now, or will leave them out.
    EXPECT_EQ(simulator.box(0).counters().discoveryReplies, 1U);
    EXPECT_EQ(otherSimulator.box(1).counters().discoveryReplies, 1U);
    EXPECT_FALSE(host.receive(std::chrono::milliseconds(50)));
    EXPECT_FALSE(otherHost.receive(std::chrono::milliseconds(50)));
}

TEST_F(SimulatorDiscovery, OtherDatagramsAreNotAnswered)
{
    addBox(0);
    start();
    HostSocket host(hostAddress());
    for (const char *text : {"AA 55 00 FF 00 00 02 00 00 00 00", "55 AA 00 FF 00 00 02 00 00 00 FF",
                             "AA 55 00 FF 00 00 02 00 00 00", "AA 55 00 FF 00 00 02 00 00 00 FF 00", "FF"})
        host.sendTo("127.255.255.255", 8080, hex(text));
    host.sendTo("127.255.255.255", 8080, Bytes(2000, 0xAA));
    host.sendTo("127.255.255.255", 8080, discoveryRequest);
    EXPECT_TRUE(host.receive());
    EXPECT_EQ(simulator.box(0).counters().discoveryReplies, 1U);
}

TEST_F(SimulatorDiscovery, SilentBoxIsNotFound)
{
    addBox(0).setSilent(true);
    addBox(1);
    start();
    HostSocket host(hostAddress());
    host.sendTo("127.255.255.255", 8080, discoveryRequest);
    EXPECT_EQ(host.receive().value().from, simulator.box(1).address() + ":8080");
    EXPECT_EQ(simulator.box(0).counters().discoveryReplies, 0U);
}

TEST(SimulatorOptions, EnvironmentMovesTheNetworkToLoopback)
{
    const tzsim::Options options = tzsim::Options::fromEnvironment(); // set by the test's main()
    EXPECT_TRUE(options.isLoopback());
    EXPECT_EQ(options.prefix, std::getenv("TZVCI_NETWORK"));
    EXPECT_EQ(options.broadcast, "127.255.255.255");
    EXPECT_EQ(options.problem, "");
}

TEST(SimulatorOptions, DefaultIsTheRealNetwork)
{
    const tzsim::Options options;
    EXPECT_EQ(options.boxAddress(0), "192.168.201.130");
    EXPECT_EQ(options.boxAddress(15), "192.168.201.145");
    EXPECT_EQ(options.boxAddress(16), "");
    EXPECT_EQ(options.boxAddress(-1), "");
    EXPECT_EQ(options.port, 8000);
    EXPECT_EQ(options.discoveryPort, 8080);
    EXPECT_EQ(options.broadcast, "255.255.255.255");
}

TEST(SimulatorOptions, OnlyLoopbackNetworksAreTaken)
{
    for (const char *text :
         {"", "127", "127.1", "127.1.", "127.1.256", "127.1.2.3", "127.1.2 ", "128.1.2", "127.-1.2"}) {
        tzsim::Options options;
        EXPECT_FALSE(options.useLoopback(text)) << text;
        EXPECT_EQ(options.prefix, "192.168.201") << text;
    }
}

TEST(SimulatorOptions, WrongNetworkInTheEnvironmentStopsTheStart)
{
    const std::string before = std::getenv("TZVCI_NETWORK");
    ::setenv("TZVCI_NETWORK", "10.0.0", 1);
    tzsim::Simulator simulator;
    ::setenv("TZVCI_NETWORK", before.c_str(), 1);
    simulator.addBox();
    std::string error;
    EXPECT_FALSE(simulator.start(&error));
    EXPECT_EQ(error, "TZVCI_NETWORK=10.0.0 is not of the form 127.x.y");
}

TEST(SimulatorStart, AddressInUseIsReported)
{
    tzsim::Simulator first;
    first.addBox();
    ASSERT_TRUE(first.start());
    tzsim::Simulator second;
    second.addBox();
    std::string error;
    EXPECT_FALSE(second.start(&error));
    EXPECT_EQ(error, "cannot bind " + first.box(0).address() + ":8000: Address already in use");
    EXPECT_FALSE(second.isRunning());
    first.stop();
    first.stop();
    EXPECT_TRUE(second.start(&error)) << error;
}

TEST(SimulatorStart, ForeignAddressIsReported)
{
    tzsim::Options options;
    options.prefix = "192.0.2"; // reserved for documentation: no machine owns it
    options.broadcast = "127.255.255.255";
    tzsim::Simulator simulator(options);
    simulator.addBox();
    std::string error;
    EXPECT_FALSE(simulator.start(&error));
    EXPECT_EQ(error, "cannot bind 192.0.2.130:8000: Cannot assign requested address");
}

TEST(SimulatorStart, WrongBoxesAreReported)
{
    const auto startError = [](const std::vector<tzsim::BoxConfig> &boxes) {
        tzsim::Simulator simulator;
        for (const tzsim::BoxConfig &box : boxes)
            simulator.addBox(box);
        std::string error;
        EXPECT_FALSE(simulator.start(&error));
        return error;
    };
    EXPECT_EQ(startError({{.index = 16}}), "box 16 with 2 CAN and 1 LIN channels is out of range");
    EXPECT_EQ(startError({{.canChannels = 61}}), "box 0 with 61 CAN and 1 LIN channels is out of range");
    EXPECT_EQ(startError({{.linChannels = -1}}), "box 0 with 2 CAN and -1 LIN channels is out of range");
    EXPECT_EQ(startError({{.index = 4}, {.index = 4}}), "there are two boxes 4");
}

TEST(SimulatorStart, StartsAnewAfterAStop)
{
    tzsim::Simulator simulator;
    tzsim::Box &box = simulator.addBox();
    for (int round = 0; round < 3; ++round) {
        ASSERT_TRUE(simulator.start());
        HostSocket host(simulator.options().prefix + ".1");
        host.connectTo(box.address(), 8000);
        host.send(hostFrame(1, 0x10, 0, 0, hex("20 A1 07 00")));
        EXPECT_TRUE(host.receive());
        EXPECT_EQ(box.openChannels(), 1);
        EXPECT_EQ(box.requests().size(), 1U);
        simulator.stop();
    }
}
