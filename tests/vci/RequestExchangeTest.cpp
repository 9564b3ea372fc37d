// SPDX-License-Identifier: GPL-3.0-or-later
#include "vci/TzVciRequestExchange.h"

#include "tests/vci/DeviceFixture.h"
#include "vci/TzVciProtocol.h"

#include <chrono>
#include <thread>

using namespace std::chrono_literals;
using namespace tztest;

namespace {

// Records what is sent, and tells how many exchanges have begun.
struct Wire
{
    Recorder<QByteArray> sent;
    TzVciRequestExchange exchange{3, [this](const QByteArray &datagram) { sent.add(datagram); }};

    // The reply of a box to the request sent as number `number`, after a while.
    std::jthread replyTo(std::size_t number, TzVciProtocolData record, std::chrono::milliseconds after = 0ms)
    {
        return std::jthread([this, number, record, after] {
            EXPECT_TRUE(waitForCount(number));
            std::this_thread::sleep_for(after);
            exchange.handleRecord(record);
        });
    }
    bool waitForCount(std::size_t count) const
    {
        return tztest::waitBlocking([this, count] { return sent.size() >= count; });
    }
};

TzVciProtocolData replyWith(const TzVciProtocolData &request, std::vector<std::uint8_t> payload)
{
    TzVciProtocolData reply = request;
    setProtocolPayload(reply, payload);
    return reply;
}

} // namespace

TEST(RequestExchange, PayloadOfTheReplyIsHandedOut)
{
    Wire wire;
    const TzVciProtocolData request = makeReadFirmwareVersion();
    const auto replier = wire.replyTo(1, replyWith(request, {1, 2, 3, 4}));
    TzVciProtocolData response;
    EXPECT_EQ(wire.exchange.request(request, response, 5000), TzVciResult::ok);
    EXPECT_EQ(response.length, 4);
    EXPECT_EQ(response.payload[3], 4);
    EXPECT_EQ(wire.sent.values().front(), encodeProtocolData(request));
}

TEST(RequestExchange, StatusZeroSucceedsWithoutPayload)
{
    Wire wire;
    const TzVciProtocolData request = makeCloseChannel(1, 2);
    const auto replier = wire.replyTo(1, replyWith(request, {0}));
    TzVciProtocolData response;
    response.length = 9;
    EXPECT_EQ(wire.exchange.request(request, response, 5000), TzVciResult::ok);
    EXPECT_EQ(response.length, 0);
}

TEST(RequestExchange, EmptyReplySucceeds)
{
    Wire wire;
    const TzVciProtocolData request = makeCloseChannel(1, 2);
    const auto replier = wire.replyTo(1, replyWith(request, {}));
    TzVciProtocolData response;
    EXPECT_EQ(wire.exchange.request(request, response, 5000), TzVciResult::ok);
    EXPECT_EQ(response.length, 0);
}

TEST(RequestExchange, OtherStatusIsRefusedAndLogged)
{
    const LogCapture log;
    Wire wire;
    const TzVciProtocolData request = makeCloseChannel(1, 2);
    const auto replier = wire.replyTo(1, replyWith(request, {7}));
    TzVciProtocolData response;
    EXPECT_EQ(wire.exchange.request(request, response, 5000), TzVciResult::requestRefused);
    EXPECT_TRUE(log.has(logError, "Device 3 channel 3 responsed error code: 7"));
}

TEST(RequestExchange, SilenceTimesOut)
{
    const LogCapture log;
    Wire wire;
    TzVciProtocolData response;
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(wire.exchange.request(makeReadBaseTime(), response, 50), TzVciResult::requestTimedOut);
    EXPECT_GE(std::chrono::steady_clock::now() - start, 50ms);
    EXPECT_TRUE(log.has(logError, "Request Device3 timed out after 50 ms"));
}

TEST(RequestExchange, NoTimeMeansTimedOutAtOnce)
{
    const LogCapture log;
    Wire wire;
    TzVciProtocolData response;
    EXPECT_EQ(wire.exchange.request(makeReadBaseTime(), response, 0), TzVciResult::requestTimedOut);
    EXPECT_EQ(wire.exchange.request(makeReadBaseTime(), response, -5), TzVciResult::requestTimedOut);
    EXPECT_EQ(wire.sent.size(), 2U);
    EXPECT_TRUE(log.has(logError, "Request Device3 timed out after 0 ms"));
    EXPECT_TRUE(log.has(logError, "Request Device3 timed out after -5 ms"));
}

TEST(RequestExchange, RecordsOfOtherKindsAreNotTheReply)
{
    Wire wire;
    const TzVciProtocolData request = makeCloseChannel(1, 2);
    const auto replier = std::jthread([&] {
        EXPECT_TRUE(wire.waitForCount(1));
        for (TzVciProtocolData stray : {makeCloseChannel(5, 2), makeCloseChannel(1, 3), makeOpenCanChannel(2, 5)})
            wire.exchange.handleRecord(replyWith(stray, {9}));
        wire.exchange.handleRecord(replyWith(request, {0}));
    });
    TzVciProtocolData response;
    EXPECT_EQ(wire.exchange.request(request, response, 5000), TzVciResult::ok);
}

TEST(RequestExchange, ParamPlaysNoPartInTheMatch)
{
    Wire wire;
    const TzVciProtocolData request = makeApplyCanParameters(2);
    TzVciProtocolData record = replyWith(request, {0});
    record.param = 77;
    const auto replier = wire.replyTo(1, record);
    TzVciProtocolData response;
    EXPECT_EQ(wire.exchange.request(request, response, 5000), TzVciResult::ok);
}

TEST(RequestExchange, WithNothingPendingNoRecordMatches)
{
    const LogCapture log;
    Wire wire;
    TzVciProtocolData allZero;
    allZero.length = 1;
    allZero.payload[0] = 9;
    wire.exchange.handleRecord(allZero); // equals the pending record of nobody
    EXPECT_TRUE(log.lines().empty());
    TzVciProtocolData response;
    EXPECT_EQ(wire.exchange.request(makeReadBaseTime(), response, 20), TzVciResult::requestTimedOut);
    wire.exchange.handleRecord(replyWith(makeReadBaseTime(), {9}));
    EXPECT_EQ(log.countContaining(logError, "responsed"), 0U);
}

TEST(RequestExchange, PayloadOfAnEarlierReplyIsNotHandedOutAgain)
{
    Wire wire;
    TzVciProtocolData response;
    {
        const auto replier = wire.replyTo(1, replyWith(makeReadBaseTime(), {1, 2, 3, 4, 5, 6, 7, 8}));
        EXPECT_EQ(wire.exchange.request(makeReadBaseTime(), response, 5000), TzVciResult::ok);
    }
    const auto replier = wire.replyTo(2, replyWith(makeReadBaseTime(), {0}));
    EXPECT_EQ(wire.exchange.request(makeReadBaseTime(), response, 5000), TzVciResult::ok);
    EXPECT_EQ(response.length, 0);
}

TEST(RequestExchange, LengthAboveTheRecordIsReadWithinIt)
{
    Wire wire;
    const TzVciProtocolData request = makeReadBaseTime();
    TzVciProtocolData record = replyWith(request, {1});
    record.length = 0xFFFF;
    const auto replier = wire.replyTo(1, record);
    TzVciProtocolData response;
    EXPECT_EQ(wire.exchange.request(request, response, 5000), TzVciResult::ok);
    EXPECT_EQ(response.payloadLength(), TzVciProtocolData::maxPayload);
}

// The second exchange waits for the first to give up, and has its whole time from its own send on.
TEST(RequestExchange, OneExchangeAtATimeEachWithItsOwnTime)
{
    Wire wire;
    std::jthread first([&] {
        TzVciProtocolData response;
        EXPECT_EQ(wire.exchange.request(makeReadBaseTime(), response, 1500), TzVciResult::requestTimedOut);
    });
    ASSERT_TRUE(wire.waitForCount(1));
    const auto replier = wire.replyTo(2, replyWith(makeReadFirmwareVersion(), {1, 2, 3, 4}), 750ms);
    TzVciProtocolData response;
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(wire.exchange.request(makeReadFirmwareVersion(), response, 1500), TzVciResult::ok);
    EXPECT_GT(std::chrono::steady_clock::now() - start, 1500ms); // more than its own time, all in all
}
