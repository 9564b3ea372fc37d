// SPDX-License-Identifier: GPL-3.0-or-later
#include "vci/TzVciNetwork.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

namespace {

struct NetworkCase
{
    const char *name;
    const char *value;
    const char *prefix; // empty: refused
};

class LoopbackNetwork : public testing::TestWithParam<NetworkCase>
{
};

} // namespace

TEST_P(LoopbackNetwork, IsTakenWholeOrNotAtAll)
{
    TzVciNetwork network;
    const std::string prefix = GetParam().prefix;
    EXPECT_EQ(TzVciNetwork::parseLoopback(GetParam().value, network), !prefix.empty());
    EXPECT_EQ(network.prefix, prefix.empty() ? TzVciNetwork().prefix : prefix);
    EXPECT_EQ(network.broadcast, prefix.empty() ? TzVciNetwork().broadcast : "127.255.255.255");
    EXPECT_EQ(network.isLoopback(), !prefix.empty());
}

INSTANTIATE_TEST_SUITE_P(
    Vci, LoopbackNetwork,
    testing::Values(NetworkCase{"Usual", "127.1.2", "127.1.2"}, NetworkCase{"Smallest", "127.0.0", "127.0.0"},
                    NetworkCase{"Largest", "127.255.255", "127.255.255"}, NetworkCase{"Empty", "", ""},
                    NetworkCase{"OneOctet", "127", ""}, NetworkCase{"TwoOctets", "127.1", ""},
                    NetworkCase{"ThirdOctetMissing", "127.1.", ""}, NetworkCase{"SecondOctetMissing", "127..2", ""},
                    NetworkCase{"FourOctets", "127.1.2.3", ""}, NetworkCase{"DotBehind", "127.1.2.", ""},
                    NetworkCase{"RealNetwork", "192.168.201", ""}, NetworkCase{"OneBelow", "126.1.2", ""},
                    NetworkCase{"OneAbove", "128.1.2", ""}, NetworkCase{"SecondOctetTooLarge", "127.256.2", ""},
                    NetworkCase{"ThirdOctetTooLarge", "127.1.256", ""},
                    NetworkCase{"BeyondAllNumbers", "127.1.99999999999999999999", ""},
                    NetworkCase{"BelowZero", "127.-1.2", ""}, NetworkCase{"MinusZero", "127.-0.2", ""},
                    NetworkCase{"Plus", "127.+1.2", ""}, NetworkCase{"Hexadecimal", "127.0x1.2", ""},
                    NetworkCase{"BlankInFront", " 127.1.2", ""}, NetworkCase{"BlankBehind", "127.1.2 ", ""},
                    NetworkCase{"Word", "localhost", ""}),
    [](const auto &test) { return std::string(test.param.name); });

TEST(Network, OnlyDevices0To15HaveAnAddress)
{
    const TzVciNetwork network;
    EXPECT_EQ(network.deviceAddress(0), "192.168.201.130");
    EXPECT_EQ(network.deviceAddress(15), "192.168.201.145");
    EXPECT_EQ(network.deviceAddress(-1), "");
    EXPECT_EQ(network.deviceAddress(16), "");
}

// Going on with the real addresses would be worse than ending.
TEST(NetworkDeathTest, ABadValueOfTheEnvironmentEndsTheProcess)
{
    for (const char *value : {"192.168.201", "127.1", "127.1.2.3", "on"}) {
        EXPECT_EXIT(
            {
                ::setenv("TZVCI_NETWORK", value, 1); // NOLINT(concurrency-mt-unsafe): in a process of its own
                TzVciNetwork::fromEnvironment();
            },
            testing::ExitedWithCode(2), std::string("TZVCI_NETWORK=") + value + " is not of the form 127.x.y");
    }
}
