// SPDX-License-Identifier: GPL-3.0-or-later
#include "common/platform/DatagramReceiver.h"

#include "common/platform/Socket.h"
#include "vci/TzVciNetwork.h"

#include <gtest/gtest.h>

#include <array>
#include <string_view>

using Common::platform::DatagramReceiver;
using Common::platform::SharedSocket;

namespace {

// A socket with the least receive buffer there is, and one that sends to it.
class DatagramReceiverTest : public testing::Test
{
protected:
    DatagramReceiverTest()
    {
        const std::string host = TzVciNetwork::current().prefix + ".1";
        EXPECT_EQ(m_socket.bind(host, 0), 0);
        EXPECT_EQ(m_socket.countDrops(), 0);
        EXPECT_EQ(m_socket.setReceiveBufferSize(1), 0);
        EXPECT_EQ(m_socket.setReceiveTimeout(20), 0);
        EXPECT_EQ(m_sender.connect(host, m_socket.localPort()), 0);
    }

    void send(int count) const
    {
        for (int i = 0; i < count; ++i)
            ASSERT_EQ(m_sender.send(std::string_view("datagram")), 0);
    }
    // Reads until nothing waits any more. @return the number of datagrams
    int drain()
    {
        int sum = 0;
        for (int count = receive(); count > 0; count = receive())
            sum += count;
        return sum;
    }
    int receive() { return m_receiver.receive(m_socket.descriptor()); }

    const SharedSocket m_socket = SharedSocket::openUdp();
    const SharedSocket m_sender = SharedSocket::openUdp();
    DatagramReceiver m_receiver;
};

} // namespace

TEST_F(DatagramReceiverTest, TakesWhatWaitsInOneCall)
{
    send(2);
    ASSERT_EQ(receive(), 2);
    EXPECT_EQ(m_receiver.datagram(1).size(), 8U);
    EXPECT_EQ(m_receiver.droppedDatagrams(), 0U);
    EXPECT_TRUE(SharedSocket::isTimeout(-receive()));
}

TEST_F(DatagramReceiverTest, AsksForWhatWasDroppedBehindTheLastDatagram)
{
    constexpr int sent = 100;
    send(sent);
    const int received = drain();
    ASSERT_LT(received, sent);
    EXPECT_EQ(m_receiver.droppedDatagrams(), 0U); // all that was read had come before
    m_receiver.updateDroppedDatagrams(m_socket.descriptor());
    EXPECT_EQ(m_receiver.droppedDatagrams(), static_cast<unsigned>(sent - received));
}

TEST_F(DatagramReceiverTest, TheCountNeverGoesBack)
{
    send(100);
    drain();
    send(100); // those that find room bear the count of the first hundred
    m_receiver.updateDroppedDatagrams(m_socket.descriptor());
    const auto latest = m_receiver.droppedDatagrams();
    ASSERT_GT(receive(), 0);
    EXPECT_EQ(m_receiver.droppedDatagrams(), latest);
    m_receiver.forgetDroppedDatagrams();
    EXPECT_EQ(m_receiver.droppedDatagrams(), 0U);
}
