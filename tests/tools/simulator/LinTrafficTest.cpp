// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/tools/simulator/SimulatorFixture.h"

#include "tools/simulator/LinMath.h"

using namespace tzsimtest;
using tzsim::Family;
using tzsim::LinFrame;

namespace {

constexpr std::uint8_t masterRead = 0;
constexpr std::uint8_t slaveRead = 1;
constexpr std::uint8_t masterWrite = 16;
constexpr std::uint8_t slaveWrite = 17;

/// Channel 0 is a master, channels 1 and 2 are slaves on the same bus, channel 3 is a slave elsewhere.
class SimulatorLin : public SimulatorFixture
{
protected:
    void SetUp() override
    {
        box = &addBox(0, 0, 4);
        ASSERT_TRUE(simulator.join({{0, Family::lin, 0}, {0, Family::lin, 1}, {0, Family::lin, 2}}));
        start();
        host = makeHost(*box);
        for (const std::uint8_t channel : {0, 1, 2, 3})
            openLin(*host, channel, channel == 0);
    }
    /// The three records that one frame on the bus gives.
    std::vector<BoxFrame> busFrames()
    {
        auto frames = receiveFrames(*host, 3);
        EXPECT_EQ(frames.size(), 3U);
        frames.resize(3);
        for (std::uint8_t channel = 0; channel < 3; ++channel) {
            EXPECT_EQ(frames[channel].channel, channel);
            EXPECT_EQ(frames[channel].protocol, 5);
        }
        return frames;
    }
    std::vector<int> directions()
    {
        std::vector<int> result;
        for (const BoxFrame &frame : busFrames())
            result.push_back(frame.linDirection());
        return result;
    }

    tzsim::Box *box = nullptr;
    std::unique_ptr<HostSocket> host;
};

} // namespace

TEST_F(SimulatorLin, HeaderAndResponseOfTheMaster)
{
    for (const std::uint8_t action : {1, 4}) {
        host->send(linTransmit(0, 0x23, action, {1, 2, 3, 4}));
        const auto frames = busFrames();
        EXPECT_EQ(frames[0].linDirection(), masterWrite);
        EXPECT_EQ(frames[1].linDirection(), slaveRead);
        EXPECT_EQ(frames[2].linDirection(), slaveRead);
        for (const BoxFrame &frame : frames) {
            // Identifier, length, enhanced, no action, PID, checksum over PID and data.
            EXPECT_EQ(toHex({frame.payload.begin(), frame.payload.begin() + 6}), "23 04 01 00 a3 52");
            EXPECT_EQ(frame.payload[7], 0);
            EXPECT_EQ(toHex(frame.data()), "01 02 03 04");
        }
    }
}

TEST_F(SimulatorLin, RecordOnTheWire)
{
    host->send(linTransmit(0, 0x10, 1, {0xAB}, 0));
    const Bytes datagram = host->receiveBytes();
    ASSERT_EQ(datagram.size(), 3U * 26);
    EXPECT_EQ(toHex({datagram.begin(), datagram.begin() + 16}), "55 aa 05 40 00 00 11 00 10 01 00 00 50 54 10 00");
    EXPECT_EQ(toHex({datagram.begin() + 24, datagram.begin() + 26}), "ab 00");
}

TEST_F(SimulatorLin, HeaderThatNobodyAnswers)
{
    host->send(linTransmit(0, 0x11, 2, {}));
    for (const BoxFrame &frame : busFrames()) {
        EXPECT_EQ(frame.linDirection(), frame.channel == 0 ? masterRead : slaveRead);
        EXPECT_EQ(frame.dataLength(), 0);
        EXPECT_EQ(frame.payload.size(), 16U);
        EXPECT_EQ(frame.payload[4], tzsim::linProtectedId(0x11));
        EXPECT_EQ(frame.payload[5], 0) << "no checksum was seen";
    }
}

TEST_F(SimulatorLin, StoredResponseOfASlaveAnswersTheHeaderUntilItIsCleared)
{
    host->send(linTransmit(2, 0x11, 3, {9, 8}, 0));
    expectNothingWaits(*host);
    EXPECT_EQ(box->linChannel(2).responses.at(0x11), LinFrame::make(0x11, Bytes{9, 8}, 0));
    for (int i = 0; i < 2; ++i) {
        host->send(linTransmit(0, 0x11, 2, {}));
        const auto frames = busFrames();
        EXPECT_EQ(frames[0].linDirection(), masterRead);
        EXPECT_EQ(frames[1].linDirection(), slaveRead);
        EXPECT_EQ(frames[2].linDirection(), slaveWrite);
        EXPECT_EQ(frames[0].payload[2], 0);
        EXPECT_EQ(frames[0].payload[5], 0xEE); // ~(9 + 8)
        EXPECT_EQ(frames[0].data(), (Bytes{9, 8}));
    }
    host->send(linTransmit(2, 0x11, 3, {1}));
    host->send(linTransmit(0, 0x11, 2, {}));
    EXPECT_EQ(busFrames()[0].data(), Bytes{1}) << "a later response replaces the earlier";
    host->send(linTransmit(2, 0x11, 12, {}));
    host->send(linTransmit(0, 0x11, 2, {}));
    EXPECT_EQ(busFrames()[0].dataLength(), 0);
}

TEST_F(SimulatorLin, ResponsesAreForgottenAtClose)
{
    host->send(linTransmit(1, 0x11, 3, {9}));
    EXPECT_EQ(request(*host, 5, 0x20, 1, 0), Bytes{0});
    openLin(*host, 1, false);
    EXPECT_TRUE(box->linChannel(1).responses.empty());
}

TEST_F(SimulatorLin, MasterAnswersItsOwnHeaderFromItsStoredResponse)
{
    host->send(linTransmit(1, 0x11, 3, {1}));
    host->send(linTransmit(0, 0x11, 3, {2}));
    host->send(linTransmit(0, 0x11, 2, {}));
    EXPECT_EQ(directions(), (std::vector<int>{masterWrite, slaveRead, slaveRead}));
}

TEST_F(SimulatorLin, SimulatedSlaveAnswersHeaders)
{
    box->setLinNodeResponse(1, LinFrame::make(0x2A, Bytes{5, 6, 7}));
    host->send(linTransmit(0, 0x2A, 2, {}));
    const auto frames = busFrames();
    EXPECT_EQ(frames[0].linDirection(), masterRead);
    EXPECT_EQ(frames[1].linDirection(), slaveRead);
    EXPECT_EQ(frames[2].linDirection(), slaveRead);
    EXPECT_EQ(frames[2].data(), (Bytes{5, 6, 7}));
    box->clearLinNodeResponse(1, 0x2A);
    host->send(linTransmit(0, 0x2A, 2, {}));
    EXPECT_EQ(busFrames()[0].dataLength(), 0);
}

TEST_F(SimulatorLin, HeaderOfASimulatedMasterIsAnsweredByTheHostsSlave)
{
    host->send(linTransmit(3, 0x30, 3, {0x42}));
    expectNothingWaits(*host);
    box->injectLinHeader(3, 0x30);
    const auto frames = receiveFrames(*host, 1);
    EXPECT_EQ(frames[0].channel, 3);
    EXPECT_EQ(frames[0].linDirection(), slaveWrite);
    EXPECT_EQ(frames[0].data(), Bytes{0x42});
}

TEST_F(SimulatorLin, FrameOfOtherNodesIsRead)
{
    box->injectLin(1, LinFrame::make(0x01, Bytes{1}));
    EXPECT_EQ(directions(), (std::vector<int>{masterRead, slaveRead, slaveRead}));
}

TEST_F(SimulatorLin, WrongParityAndChecksumCanBePutOnTheBus)
{
    LinFrame frame = LinFrame::make(0x01, Bytes{1});
    frame.protectedId = 0x01;
    frame.checksum = 0x99;
    box->injectLin(3, frame);
    const auto frames = receiveFrames(*host, 1);
    EXPECT_EQ(frames[0].payload[4], 0x01);
    EXPECT_EQ(frames[0].payload[5], 0x99);
}

TEST_F(SimulatorLin, RejectedTransmitsAreCounted)
{
    host->send(linTransmit(1, 0x11, 1, {1})); // a slave sends no header
    host->send(linTransmit(1, 0x11, 2, {}));
    host->send(linTransmit(1, 0x11, 0, {}));            // no such action
    host->send(linTransmit(1, 0x40, 3, {1}));           // no such identifier
    host->send(hostFrame(5, 0x30, 1, 0, Bytes(23, 0))); // cut
    host->send(linTransmit(1, 0x11, 3, Bytes(8, 1)));   // taken
    EXPECT_EQ(request(*host, 5, 0x20, 1, 0), Bytes{0});
    host->send(linTransmit(1, 0x11, 3, {1})); // closed
    expectNothingWaits(*host);
    EXPECT_EQ(box->counters(Family::lin, 1), (tzsim::ChannelCounters{0, 1, 6}));
}

struct PidCase
{
    std::uint8_t id, protectedId;
};

// Values of the tables in ISO 17987-3 and LIN 2.1.
TEST(SimulatorLinMath, ProtectedIdentifiers)
{
    for (const auto &[id, pid] :
         {PidCase{0x00, 0x80}, PidCase{0x01, 0xC1}, PidCase{0x02, 0x42}, PidCase{0x10, 0x50}, PidCase{0x23, 0xA3},
          PidCase{0x3C, 0x3C}, PidCase{0x3D, 0x7D}, PidCase{0x3E, 0xFE}, PidCase{0x3F, 0xBF}})
        EXPECT_EQ(tzsim::linProtectedId(id), pid) << int(id);
}

TEST(SimulatorLinMath, Checksums)
{
    // The example of LIN 2.1: 0x4A, 0x55, 0x93, 0xE5 with a carry gives 0xE6.
    LinFrame frame = LinFrame::make(0x01, hex("4A 55 93 E5"), tzsim::LinChecksum::classic);
    EXPECT_EQ(tzsim::linChecksum(frame), 0xE6);
    // With the identifier in front: 0x4A as PID of 0x0A is 0xCA.
    frame = LinFrame::make(0x0A, hex("55 93 E5"));
    frame.protectedId = 0x4A;
    EXPECT_EQ(tzsim::linChecksum(frame), 0xE6);
    // Diagnostic frames are always classic.
    EXPECT_EQ(tzsim::linChecksum(LinFrame::make(0x3C, hex("01"))), 0xFE);
    EXPECT_EQ(tzsim::linChecksum(LinFrame::make(0x3D, hex("01"))), 0xFE);
    EXPECT_EQ(tzsim::linChecksum(LinFrame::make(0x01, {})), 0);
}
