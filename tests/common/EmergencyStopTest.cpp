// SPDX-License-Identifier: GPL-3.0-or-later
#include "common/EmergencyStop.h"

#include "common/platform/Socket.h"
#include "tests/support/LogCapture.h"
#include "vci/TzVciNetwork.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <string>
#include <thread>
#include <vector>

using Common::platform::SharedSocket;
namespace EmergencyStop = Common::EmergencyStop;

namespace {

class EmergencyStopTest : public testing::Test
{
protected:
    EmergencyStopTest()
    {
        const std::string host = TzVciNetwork::current().prefix + ".1";
        m_box.bind(host, 0);
        m_box.setReceiveTimeout(200);
        m_link.connect(host, m_box.localPort());
        m_slot = EmergencyStop::acquireSlot(m_link.descriptor());
    }
    ~EmergencyStopTest() override
    {
        EmergencyStop::releaseSlot(m_slot);
        EmergencyStop::reset();
    }

    void arm(std::uint8_t protocol, std::uint8_t channel, std::string_view datagram) const
    {
        EmergencyStop::arm(m_slot, protocol, channel, datagram);
    }
    // What the box has heard, until nothing came for a while.
    std::vector<std::string> heard() const
    {
        std::vector<std::string> datagrams;
        std::array<char, 100> buffer{};
        for (auto received = m_box.receive(buffer); received.size > 0; received = m_box.receive(buffer))
            datagrams.emplace_back(buffer.data(), static_cast<std::size_t>(received.size));
        return datagrams;
    }

    SharedSocket m_box = SharedSocket::openUdp();
    SharedSocket m_link = SharedSocket::openUdp();
    int m_slot = -1;
};

TEST_F(EmergencyStopTest, SendsTheDatagramOfEveryArmedChannel)
{
    arm(1, 0, "close can 0");
    arm(1, 3, "close can 3");
    arm(5, 0, "close lin 0");
    EXPECT_FALSE(EmergencyStop::fired());
    EmergencyStop::fire();
    EXPECT_TRUE(EmergencyStop::fired());
    EXPECT_THAT(heard(), testing::UnorderedElementsAre("close can 0", "close can 3", "close lin 0"));
}

TEST_F(EmergencyStopTest, AClosedChannelIsLeftOut)
{
    arm(1, 0, "close can 0");
    arm(1, 1, "close can 1");
    EmergencyStop::disarm(m_slot, 1, 0);
    EmergencyStop::disarm(m_slot, 5, 1); // never armed
    EmergencyStop::fire();
    EXPECT_THAT(heard(), testing::ElementsAre("close can 1"));
}

TEST_F(EmergencyStopTest, ArmingAgainReplaces)
{
    arm(1, 0, "a longer old one");
    arm(1, 0, "new");
    EmergencyStop::fire();
    EXPECT_THAT(heard(), testing::ElementsAre("new"));
}

TEST_F(EmergencyStopTest, AReleasedSlotSendsNothingAndServesAgain)
{
    arm(1, 0, "old");
    EmergencyStop::releaseSlot(m_slot);
    EmergencyStop::releaseSlot(m_slot); // twice, harmless
    EmergencyStop::fire();
    EXPECT_THAT(heard(), testing::IsEmpty());
    EmergencyStop::reset();
    const int again = EmergencyStop::acquireSlot(m_link.descriptor());
    EXPECT_EQ(again, m_slot);
    EmergencyStop::fire();
    EXPECT_THAT(heard(), testing::IsEmpty()); // the old owner's datagrams are gone
}

TEST_F(EmergencyStopTest, TheResetTakesTheFlagBack)
{
    EmergencyStop::fire();
    EmergencyStop::reset();
    EXPECT_FALSE(EmergencyStop::fired());
}

TEST_F(EmergencyStopTest, SlotsEnd)
{
    std::vector<int> slots;
    for (int slot = EmergencyStop::acquireSlot(m_link.descriptor()); slot >= 0;
         slot = EmergencyStop::acquireSlot(m_link.descriptor()))
        slots.push_back(slot);
    EXPECT_EQ(slots.size(), static_cast<std::size_t>(EmergencyStop::maxSlots - 1));
    for (const int slot : slots)
        EmergencyStop::releaseSlot(slot);
    EXPECT_EQ(EmergencyStop::acquireSlot(-1), -1);
}

TEST_F(EmergencyStopTest, ASlotKeepsItsDatagramsWhenItsSocketIsReplaced)
{
    arm(1, 0, "close can 0");
    const SharedSocket next = SharedSocket::openUdp();
    ASSERT_EQ(next.connect(m_box.localAddress(), m_box.localPort()), 0);
    EXPECT_FALSE(EmergencyStop::replaceSocket(m_slot, next.descriptor(), next.descriptor())); // it holds another
    EXPECT_FALSE(EmergencyStop::replaceSocket(m_slot, m_link.descriptor(), -1));
    EXPECT_FALSE(EmergencyStop::replaceSocket(-1, m_link.descriptor(), next.descriptor()));
    ASSERT_TRUE(EmergencyStop::replaceSocket(m_slot, m_link.descriptor(), next.descriptor()));
    EmergencyStop::fire();
    std::array<char, 100> buffer{};
    std::string ip;
    std::uint16_t port = 0;
    EXPECT_EQ(m_box.receiveFrom(buffer, ip, port).size, 11);
    EXPECT_EQ(port, next.localPort());
}

TEST_F(EmergencyStopTest, NoSlotIsIgnored)
{
    EmergencyStop::arm(-1, 1, 0, std::string_view("x"));
    EmergencyStop::arm(EmergencyStop::maxSlots, 1, 0, std::string_view("x"));
    EmergencyStop::disarm(-1, 1, 0);
    EmergencyStop::releaseSlot(-1);
    EmergencyStop::fire();
    EXPECT_THAT(heard(), testing::IsEmpty());
}

TEST_F(EmergencyStopTest, ADatagramThatDoesNotFitIsToldAndLeftOut)
{
    const tztest::LogCapture log;
    arm(1, 0, std::string(EmergencyStop::maxDatagramSize, 'x'));
    arm(1, 1, std::string(EmergencyStop::maxDatagramSize + 1, 'x'));
    arm(1, 2, "");
    EXPECT_EQ(log.countContaining(2, "No place to keep"), 2U);
    for (int channel = 0; channel < EmergencyStop::maxChannelsPerSlot; ++channel)
        arm(5, static_cast<std::uint8_t>(channel), "y");
    EXPECT_EQ(log.countContaining(2, "No place to keep"), 3U); // one channel more than there is room for
    EmergencyStop::fire();
    EXPECT_EQ(heard().size(), static_cast<std::size_t>(EmergencyStop::maxChannelsPerSlot));
}

// What is sent is whole, and after the release the socket is not touched, whatever fires at that moment.
TEST_F(EmergencyStopTest, FiringWhileChannelsComeAndGoSendsWholeDatagramsAlone)
{
    std::atomic<bool> stop{false};
    std::thread firing([&] {
        while (!stop)
            EmergencyStop::fire();
    });
    const std::string first(20, 'a');
    const std::string second(30, 'b');
    for (int i = 0; i < 2000; ++i) {
        arm(1, 0, i % 2 == 0 ? first : second);
        if (i % 7 == 0)
            EmergencyStop::disarm(m_slot, 1, 0);
        if (i % 50 == 0) {
            EmergencyStop::releaseSlot(m_slot);
            m_slot = EmergencyStop::acquireSlot(m_link.descriptor());
            ASSERT_GE(m_slot, 0);
        }
    }
    stop = true;
    firing.join();
    for (const std::string &datagram : heard())
        ASSERT_TRUE(datagram == first || datagram == second) << datagram;
}

} // namespace
