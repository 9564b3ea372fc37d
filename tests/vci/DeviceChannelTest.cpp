// SPDX-License-Identifier: GPL-3.0-or-later
#include "common/EmergencyStop.h"
#include "common/PeriodSender.h"
#include "common/Utils.h"
#include "tests/vci/DeviceFixture.h"
#include "vci/TzVciCommunication.h"
#include "vci/TzVciFrameEncoder.h"

#include <array>
#include <chrono>
#include <thread>

using namespace tztest;
using testing::ElementsAre;
using testing::IsEmpty;

class DeviceChannel : public DeviceTest
{
protected:
    // Everything is answered with success but this one.
    void refuse(int protocol, int command, int channel, int firstPayloadByte = -1)
    {
        box.setRule([=](ScriptedBox &self, const ScriptedBox::Request &request) {
            const bool isMeant =
                request.protocol == protocol && request.command == command && request.channel == channel &&
                (firstPayloadByte < 0 || (request.payload.empty() ? 0 : request.payload[0]) == firstPayloadByte);
            if (isMeant)
                self.replyStatus(request, 1);
            else
                self.answer(request);
        });
    }
};

TEST_F(DeviceChannel, CanFdChannelIsGivenItsParametersInOrder)
{
    auto *config = store.canChannelConfig(0, 2);
    config->baudRate = 500000;
    config->fdBaudRate = 2000000;
    config->nominalSeg1 = 0x11;
    config->nominalSeg2 = 0x12;
    config->dataSeg1 = 0x13;
    config->dataSeg2 = 0x14;
    const auto device = openDevice();
    EXPECT_EQ(device->openChannel(1, 2), TzVciResult::ok);
    EXPECT_THAT(box.requestTexts(),
                ElementsAre("1 10 2 0: 20 a1 07 00",    // open, 500 kbit/s
                            "1 60 2 2: 01 20 a1 07 00", // nominal bit rate
                            "1 60 2 2: 27 11 00 00 00", // nominal segments
                            "1 60 2 2: 28 12 00 00 00", //
                            "1 60 2 2: 26 80 84 1e 00", // data-phase bit rate
                            "1 60 2 2: 29 13 00 00 00", // data segments
                            "1 60 2 2: 2a 14 00 00 00", //
                            "f 30 2 0: 01",             // terminal resistor on
                            "1 60 2 5: "));             // apply
    EXPECT_TRUE(store.isChannelOpen(0, 1, 2));
    EXPECT_THAT(events.values(), ElementsAre(1));
    EXPECT_TRUE(log.has(logInfo, "Opened device 0 channel 3: id 1."));
}

TEST_F(DeviceChannel, DefaultTimingAndResistorReachTheBox)
{
    store.canChannelConfig(0, 0)->type = QStringLiteral("CANFDBRS");
    store.canChannelConfig(0, 0)->terminalResistorEnabled = false;
    const auto device = openDevice();
    EXPECT_EQ(device->openChannel(1, 0), TzVciResult::ok);
    const auto texts = box.requestTexts();
    ASSERT_EQ(texts.size(), 9U);
    EXPECT_EQ(texts[2], "1 60 0 2: 27 1f 00 00 00");
    EXPECT_EQ(texts[3], "1 60 0 2: 28 08 00 00 00");
    EXPECT_EQ(texts[5], "1 60 0 2: 29 0f 00 00 00");
    EXPECT_EQ(texts[6], "1 60 0 2: 2a 04 00 00 00");
    EXPECT_EQ(texts[7], "f 30 0 0: 00");
}

TEST_F(DeviceChannel, ClassicCanChannelIsGivenNoParameters)
{
    for (const char *type : {"CAN", "canfd"}) { // the comparison is case sensitive
        store.canChannelConfig(0, 0)->type = QString::fromLatin1(type);
        const auto device = openDevice();
        EXPECT_EQ(device->openChannel(1, 0), TzVciResult::ok);
        EXPECT_THAT(box.requestTexts(), ElementsAre("1 10 0 0: 20 a1 07 00"));
        device->close();
    }
}

TEST_F(DeviceChannel, LinChannelsAreOpenedAsMasterOrSlave)
{
    store.linChannelConfig(0, 1)->baudRate = 9600;
    const auto device = openDevice();
    EXPECT_EQ(device->openChannel(5, -1), TzVciResult::ok);
    EXPECT_THAT(box.requestTexts(), ElementsAre("5 10 0 0: 00 00 4b 00 00", "5 10 1 0: 01 80 25 00 00"));
    EXPECT_THAT(events.values(), ElementsAre(2, 2));
    EXPECT_TRUE(log.has(logInfo, "Opened device 0 channel 2: id 5."));
}

// openChannel(1, -1) with a refused third channel leaves the first two open and returns -602.
TEST_F(DeviceChannel, RefusedThirdChannelLeavesTheFirstTwoOpen)
{
    useClassicCan();
    const auto device = openDevice();
    refuse(1, 0x10, 2);
    EXPECT_EQ(device->openChannel(1, -1), -602);
    EXPECT_TRUE(store.isChannelOpen(0, 1, 0));
    EXPECT_TRUE(store.isChannelOpen(0, 1, 1));
    EXPECT_FALSE(store.isChannelOpen(0, 1, 2));
    EXPECT_FALSE(store.isChannelOpen(0, 1, 3));
    EXPECT_EQ(box.requestCount(), 3U); // the fourth is not tried
    EXPECT_THAT(events.values(), ElementsAre(1, 1));
    EXPECT_TRUE(log.has(logError, "Open device 0 channel 3 failed: id 1."));
}

TEST_F(DeviceChannel, RefusedLinChannelIsHandledLikewise)
{
    const auto device = openDevice();
    refuse(5, 0x10, 0);
    EXPECT_EQ(device->openChannel(5, 0), TzVciResult::openChannelRefused);
    EXPECT_TRUE(log.has(logError, "Open device 0 channel 1 failed: id 5."));
}

TEST_F(DeviceChannel, UnansweredOpenCountsAsRefused)
{
    useClassicCan();
    const auto device = openDevice();
    box.setRule([](ScriptedBox &, const auto &) {});
    EXPECT_EQ(device->openChannel(1, 0), TzVciResult::openChannelRefused);
    EXPECT_TRUE(log.has(logError, "Request Device0 timed out after 500 ms"));
}

struct RefusedParameter
{
    const char *name;
    int protocol;
    int command;
    int firstPayloadByte;
    const char *parameterText;
};

class RefusedCanParameter : public DeviceChannel, public testing::WithParamInterface<RefusedParameter>
{
};

TEST_P(RefusedCanParameter, ClosesTheChannelAgain)
{
    const auto device = openDevice();
    refuse(GetParam().protocol, GetParam().command, 0, GetParam().firstPayloadByte);
    EXPECT_EQ(device->openChannel(1, 0), TzVciResult::parameterRefused);
    EXPECT_TRUE(log.has(logError, std::string("Configure device 0 channel 1 failed: id 1, param 0x") +
                                      GetParam().parameterText + " "));
    EXPECT_EQ(box.requestTexts().back(), "1 20 0 0: ");
    EXPECT_FALSE(store.isChannelOpen(0, 1, 0));
    EXPECT_THAT(events.values(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(EachOfThem, RefusedCanParameter,
                         testing::Values(RefusedParameter{"NominalBitRate", 1, 0x60, 0x01, "1"},
                                         RefusedParameter{"NominalSegment1", 1, 0x60, 0x27, "27"},
                                         RefusedParameter{"NominalSegment2", 1, 0x60, 0x28, "28"},
                                         RefusedParameter{"DataBitRate", 1, 0x60, 0x26, "26"},
                                         RefusedParameter{"DataSegment1", 1, 0x60, 0x29, "29"},
                                         RefusedParameter{"DataSegment2", 1, 0x60, 0x2A, "2A"},
                                         RefusedParameter{"TerminalResistor", 15, 0x30, 1, "1"},
                                         RefusedParameter{"Apply", 1, 0x60, 0, "0"}),
                         [](const auto &test) { return std::string(test.param.name); });

// The box has closed it by then, so that nobody may go on as if it were open.
TEST_F(DeviceChannel, RefusedParameterOfAnOpenChannelClosesItForEverybody)
{
    const auto device = openDevice();
    ASSERT_EQ(device->openChannel(1, 0), TzVciResult::ok);
    TzVciCanDataType frame;
    const auto key = Common::Utils::makeUtilsKey(1, 0, 1);
    ASSERT_EQ(device->periodSender()->addFrame({key, encodeCanFrame(0, frame), 1000, 1000}), 0);
    refuse(1, 0x60, 0, 0x27);
    EXPECT_EQ(device->openChannel(1, 0), TzVciResult::parameterRefused);
    EXPECT_EQ(box.requestTexts().back(), "1 20 0 0: ");
    EXPECT_FALSE(store.isChannelOpen(0, 1, 0));
    EXPECT_THAT(events.values(), ElementsAre(1, 3));
    EXPECT_FALSE(device->periodSender()->removeFrame(key));
}

// An opening that comes while the device closes must not leave a channel open behind it.
TEST_F(DeviceChannel, OpeningDuringTheCloseFindsNoLink)
{
    useClassicCan();
    const auto device = openDevice();
    ASSERT_EQ(device->openChannel(1, 0), TzVciResult::ok);
    std::atomic<bool> done{false};
    int result = TzVciResult::ok;
    std::thread opener;
    device->subscribeStatus(2, [&](int, std::uint8_t cmd) {
        if (cmd != VciStatus::canChannelClosed)
            return;
        opener = std::thread([&] {
            result = device->openChannel(1, 1);
            done = true;
        });
        // Time to get past every test that it may pass. It has to wait for the close, so this runs out.
        const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(100);
        while (!done && std::chrono::steady_clock::now() < end)
            std::this_thread::yield();
    });
    EXPECT_EQ(device->close(), TzVciResult::ok);
    opener.join();
    EXPECT_EQ(result, TzVciResult::linkDown);
    EXPECT_THAT(box.requestTexts(), ElementsAre("1 10 0 0: 20 a1 07 00", "1 20 0 0: "));
    EXPECT_FALSE(store.anyChannelOpen(0));
}

TEST_F(DeviceChannel, SelectionWithoutChannelIsRefused)
{
    const auto device = openDevice();
    EXPECT_EQ(device->openChannel(1, 4), TzVciResult::noChannel);
    EXPECT_EQ(device->openChannel(1, -2), TzVciResult::noChannel);
    EXPECT_EQ(device->closeChannel(5, 2), TzVciResult::noChannel);
    EXPECT_THAT(box.requestTexts(), IsEmpty());
    EXPECT_THAT(events.values(), IsEmpty());
}

TEST_F(DeviceChannel, UnknownProtocolIsRefused)
{
    const auto device = openDevice();
    EXPECT_EQ(device->openChannel(7, -1), TzVciResult::noChannel);
    EXPECT_TRUE(log.has(logWarning, "Automatically obtain device channel index failed by unknown protocol id: 7"));
}

TEST_F(DeviceChannel, ReservedCanProtocolsHaveNoSettings)
{
    const auto device = openDevice();
    for (const std::uint8_t protocol : {std::uint8_t{3}, std::uint8_t{6}}) {
        EXPECT_EQ(device->openChannel(protocol, 0), TzVciResult::noChannel);
        EXPECT_TRUE(log.has(logWarning,
                            fmt::format("Failed to obtain channel configuration: Unknown protocol(id: {})", protocol)));
    }
}

TEST_F(DeviceChannel, NothingOpensWithoutLink)
{
    EXPECT_EQ(makeDevice()->openChannel(1, -1), TzVciResult::linkDown);
}

// closeChannel(5, 0) on a closed channel sends nothing and notifies status 4.
TEST_F(DeviceChannel, CloseOfAClosedChannelSendsNothingAndTellsIt)
{
    const auto device = openDevice();
    EXPECT_EQ(device->closeChannel(5, 0), TzVciResult::ok);
    EXPECT_THAT(box.requestTexts(), IsEmpty());
    EXPECT_THAT(events.values(), ElementsAre(4));
}

TEST_F(DeviceChannel, CloseIsToldOnceForAllChannels)
{
    useClassicCan();
    const auto device = openDevice();
    ASSERT_EQ(device->openChannel(1, -1), TzVciResult::ok);
    box.clearRequests();
    EXPECT_EQ(device->closeChannel(1, -1), TzVciResult::ok);
    EXPECT_THAT(box.requestTexts(), ElementsAre("1 20 0 0: ", "1 20 1 0: ", "1 20 2 0: ", "1 20 3 0: "));
    EXPECT_THAT(events.values(), ElementsAre(1, 1, 1, 1, 3));
    EXPECT_TRUE(log.has(logInfo, "Closed device 0 channel 4: id 1"));
}

TEST_F(DeviceChannel, RefusedCloseCountsAsClosedAndGoesOn)
{
    useClassicCan();
    const auto device = openDevice();
    ASSERT_EQ(device->openChannel(1, -1), TzVciResult::ok);
    refuse(1, 0x20, 1);
    EXPECT_EQ(device->closeChannel(1, -1), TzVciResult::closeChannelRefused);
    EXPECT_FALSE(store.anyChannelOpen(0));
    EXPECT_TRUE(log.has(logError, "Close device 0 channel 2 failed: id 1"));
    EXPECT_TRUE(log.has(logInfo, "Closed device 0 channel 3: id 1"));
}

TEST_F(DeviceChannel, WithoutLinkOpenChannelsAreForcedClosed)
{
    const auto device = makeDevice();
    device->subscribeStatus(1, [this](int, std::uint8_t cmd) { events.add(cmd); });
    store.setChannelOpen(0, 1, 1, true);
    EXPECT_EQ(device->closeChannel(1, -1), TzVciResult::ok);
    EXPECT_FALSE(store.anyChannelOpen(0));
    EXPECT_EQ(log.countContaining(logWarning, "forced"), 1U);
    EXPECT_TRUE(log.has(logWarning, "The device 0 is not connected and is forced to close channel 2: id 1"));
    EXPECT_THAT(events.values(), ElementsAre(3));
}

TEST_F(DeviceChannel, CloseStopsThePeriodicFramesOfTheChannel)
{
    useClassicCan();
    const auto device = openDevice();
    ASSERT_EQ(device->openChannel(1, 0), TzVciResult::ok);
    TzVciCanDataType frame;
    frame.canId = 0x123;
    ASSERT_EQ(device->periodSender()->addFrame({Common::Utils::makeUtilsKey(1, 0, 1), encodeCanFrame(0, frame), 1, 0}),
              0);
    EXPECT_TRUE(waitFor([&] { return box.requestCount() > 5; }));
    EXPECT_EQ(device->closeChannel(1, 0), TzVciResult::ok);
    EXPECT_FALSE(device->periodSender()->removeFrame(Common::Utils::makeUtilsKey(1, 0, 1)));
    EXPECT_EQ(box.requestTexts().back(), "1 20 0 0: ");
}

// The port is gone after the first channel: the rest ends in refusals, and the device closes by itself.
TEST_F(DeviceChannel, BoxThatVanishesInTheMiddleOfOpening)
{
    useClassicCan();
    const auto device = openDevice();
    std::atomic<bool> gone{false};
    box.setRule([&](ScriptedBox &self, const ScriptedBox::Request &request) {
        if (request.channel == 0)
            self.answer(request);
        else
            gone = true;
    });
    std::jthread remover([&] {
        EXPECT_TRUE(tztest::waitBlocking([&] { return gone.load(); }));
        box.vanish();
    });
    EXPECT_EQ(device->openChannel(1, -1), TzVciResult::openChannelRefused);
    remover.join();
    EXPECT_TRUE(store.isChannelOpen(0, 1, 0));
    EXPECT_TRUE(log.has(logError, "Open device 0 channel 2 failed: id 1."));
    EXPECT_EQ(device->close(), TzVciResult::closeChannelRefused);
    EXPECT_FALSE(store.anyChannelOpen(0));
    EXPECT_FALSE(store.isDeviceOpen(0));
}

TEST_F(DeviceChannel, EmergencyStopClosesWhatIsOpen)
{
    useClassicCan();
    const auto device = openDevice();
    ASSERT_EQ(device->openChannel(1, 0), TzVciResult::ok);
    ASSERT_EQ(device->openChannel(1, 3), TzVciResult::ok);
    ASSERT_EQ(device->openChannel(5, 1), TzVciResult::ok);
    ASSERT_EQ(device->closeChannel(1, 0), TzVciResult::ok);
    box.clearRequests();
    Common::EmergencyStop::fire();
    EXPECT_TRUE(waitFor([&] { return box.requestCount() >= 2; }));
    Common::EmergencyStop::reset();
    EXPECT_THAT(box.requestTexts(), testing::UnorderedElementsAre("1 20 3 0: ", "5 20 1 0: "));
}

TEST_F(DeviceChannel, EmergencyStopForgetsARefusedChannel)
{
    const auto device = openDevice();
    refuse(1, 0x60, 0, 0x27);
    ASSERT_EQ(device->openChannel(1, 0), TzVciResult::parameterRefused);
    ASSERT_EQ(device->openChannel(5, 0), TzVciResult::ok);
    box.clearRequests();
    Common::EmergencyStop::fire();
    EXPECT_TRUE(waitFor([&] { return box.requestCount() >= 1; }));
    Common::EmergencyStop::reset();
    EXPECT_THAT(box.requestTexts(), ElementsAre("5 20 0 0: "));
}

// The process may die before the box's answer is here.
TEST_F(DeviceChannel, EmergencyStopKnowsAChannelBeforeItsOpeningIsAnswered)
{
    useClassicCan();
    const auto device = openDevice();
    box.setRule([](ScriptedBox &self, const ScriptedBox::Request &request) {
        if (request.command == 0x10)
            Common::EmergencyStop::fire();
        self.answer(request);
    });
    ASSERT_EQ(device->openChannel(1, 2), TzVciResult::ok);
    EXPECT_TRUE(waitFor([&] { return box.requestCount() >= 2; }));
    Common::EmergencyStop::reset();
    EXPECT_THAT(box.requestTexts(), ElementsAre("1 10 2 0: 20 a1 07 00", "1 20 2 0: "));
}

// Channel 1 may be open on the box, channel 2 is not, and channel 3 was open before.
TEST_F(DeviceChannel, EmergencyStopClosesWhatMayBeOpen)
{
    useClassicCan();
    const auto device = openDevice();
    ASSERT_EQ(device->openChannel(1, 3), TzVciResult::ok);
    box.setRule([](ScriptedBox &self, const ScriptedBox::Request &request) {
        if (request.channel != 1)
            self.replyStatus(request, 1);
    });
    for (const int channel : {1, 2, 3})
        EXPECT_EQ(device->openChannel(1, channel), TzVciResult::openChannelRefused);
    box.clearRequests();
    Common::EmergencyStop::fire();
    EXPECT_TRUE(waitFor([&] { return box.requestCount() >= 2; }));
    Common::EmergencyStop::reset();
    EXPECT_THAT(box.requestTexts(), testing::UnorderedElementsAre("1 20 1 0: ", "1 20 3 0: "));
}
