// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/tools/simulator/SimulatorFixture.h"

#include "tools/simulator/SignalTable.h"

#include <map>
#include <set>

using namespace tzsimtest;
using namespace std::chrono_literals;
using tzsim::Family;

namespace {

// For 300 000 frames of a load of a million a second.
#if !defined(__SANITIZE_THREAD__) && !defined(__SANITIZE_ADDRESS__) && defined(NDEBUG)
constexpr double longestSpanSeconds = 1;
#else
constexpr double longestSpanSeconds = 20; // it need not be fast, it has to go on
#endif

using SimulatorTraffic = OneBoxFixture<4, 2>;

} // namespace

TEST_F(SimulatorTraffic, LoadIsEvenNumberedAndPacked)
{
    for (const std::uint8_t channel : {0, 1})
        openCan(*host, channel);
    box->startLoad({.framesPerSecond = 50'000, .canChannels = {0, 1}, .firstId = 0x200, .idCount = 3, .count = 5000});
    std::map<int, std::vector<BoxFrame>> byChannel;
    std::size_t datagrams = 0;
    for (std::size_t count = 0; count < 10'000;) {
        const Bytes datagram = host->receiveBytes();
        ASSERT_FALSE(datagram.empty());
        ASSERT_LE(datagram.size(), 1472U);
        ++datagrams;
        for (BoxFrame &frame : split(datagram)) {
            byChannel[frame.channel].push_back(std::move(frame));
            ++count;
        }
    }
    EXPECT_LT(datagrams, 10'000U / 10) << "several records share a datagram";
    for (const auto &[channel, frames] : byChannel) {
        ASSERT_EQ(frames.size(), 5000U);
        for (std::size_t i = 0; i < frames.size(); ++i) {
            ASSERT_EQ(u32(frames[i].data(), 0), i);
            ASSERT_EQ(frames[i].canId(), 0x200 + i % 3);
            ASSERT_EQ(frames[i].canType(), 2);
            ASSERT_EQ(frames[i].dataLength(), 8);
        }
        // 20 microseconds from frame to frame by the stamps, whenever they were sent.
        EXPECT_NEAR(static_cast<double>(frames[4999].ticks() - frames[0].ticks()) / 4999, 200.0, 0.1);
    }
    EXPECT_TRUE(tztest::waitFor([&] { return !box->trafficRunning(); }));
}

TEST_F(SimulatorTraffic, LoadOfCanFdAndLin)
{
    openCan(*host, 3);
    openLin(*host, 1, false);
    box->startLoad({.framesPerSecond = 1000,
                    .canChannels = {3},
                    .linChannels = {1},
                    .length = 64,
                    .flags = tzsim::CanFlag::fd | tzsim::CanFlag::bitRateSwitch,
                    .count = 20});
    const auto frames = receiveFrames(*host, 40);
    EXPECT_EQ(frames.size(), 40U);
    for (const BoxFrame &frame : frames) {
        EXPECT_EQ(frame.channel, frame.protocol == 1 ? 3 : 1);
        EXPECT_EQ(frame.dataLength(), frame.protocol == 1 ? 64 : 8);
    }
}

TEST_F(SimulatorTraffic, LoadWaitsForAnOpenChannelAndSkipsClosedOnes)
{
    box->startLoad({.framesPerSecond = 10'000, .canChannels = {0, 1}, .count = 100});
    expectNothingWaits(*host);
    openCan(*host, 1);
    const auto frames = receiveFrames(*host, 100);
    for (const BoxFrame &frame : frames)
        EXPECT_EQ(frame.channel, 1);
    EXPECT_EQ(u32(frames[0].data(), 0), 0U) << "numbers count what was delivered";
    EXPECT_TRUE(box->trafficRunning()) << "channel 0 has had nothing yet";
    box->stopTraffic();
    EXPECT_FALSE(box->trafficRunning());
}

TEST_F(SimulatorTraffic, MillionFramesPerSecondFromOneBox)
{
    for (const std::uint8_t channel : {0, 1, 2, 3})
        openCan(*host, channel);
    box->startLoad({.framesPerSecond = 250'000, .canChannels = {0, 1, 2, 3}});
    const auto sent = [&] {
        std::uint64_t sum = 0;
        for (int channel = 0; channel < 4; ++channel)
            sum += box->counters(Family::can, channel).framesSent;
        return sum;
    };
    ASSERT_TRUE(tztest::waitFor([&] { return sent() > 0; }));
    // The load keeps its rate over time, also where the machine is busy now and then.
    const auto secondsForASpan = [&] {
        const auto start = std::chrono::steady_clock::now();
        const auto before = sent();
        EXPECT_TRUE(tztest::waitFor([&] { return sent() - before >= 300'000; }));
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    };
    // A machine that stands still spoils a span; a load that is too slow has none that is good.
    double seconds = 0;
    EXPECT_TRUE(tztest::waitFor([&] { return (seconds = secondsForASpan()) < longestSpanSeconds; })) << seconds;
    box->stopTraffic();
    RecordProperty("framesPerSecond", static_cast<int>(300'000 / seconds));
    EXPECT_EQ(box->counters().sendErrors, 0U);
}

TEST_F(SimulatorTraffic, BoxAnswersUnderLoad)
{
    for (const std::uint8_t channel : {0, 1, 2, 3})
        openCan(*host, channel);
    box->startLoad({.framesPerSecond = 20'000, .canChannels = {0, 1, 2, 3}});
    host->send(hostFrame(0x0F, 0x60, 0, 0, {1}));
    bool answered = false;
    while (!answered) {
        const Bytes datagram = host->receiveBytes();
        ASSERT_FALSE(datagram.empty());
        for (const BoxFrame &frame : split(datagram))
            answered |= frame.protocol == 0x0F;
    }
    box->stopTraffic();
}

TEST_F(SimulatorTraffic, SignalsKeepTheirCycleTimes)
{
    openCan(*host, 0);
    box->startSignals({.canChannels = {0}, .linChannels = {}});
    std::vector<std::uint64_t> ticks;
    std::set<std::uint32_t> ids;
    std::vector<std::uint8_t> counters;
    // A machine that stands still makes single frames late: the mean is that of the last 24 cycles.
    const auto meanCycle = [&] {
        constexpr std::size_t cycles = 24;
        return ticks.size() <= cycles ? 0.0
                                      : static_cast<double>(ticks.back() - ticks.end()[-1 - int{cycles}]) / cycles;
    };
    const auto keepsTheCycle = [&] { return meanCycle() > 80'000 && meanCycle() < 120'000; }; // 8 to 12 ms
    const auto end = std::chrono::steady_clock::now() + replyLimit;
    while (!keepsTheCycle() && std::chrono::steady_clock::now() < end) {
        for (const BoxFrame &frame : receiveFrames(*host, 1)) {
            ids.insert(frame.canId());
            EXPECT_EQ(frame.canFlags() & tzsim::CanFlag::fd, 0) << "the channel was opened without CAN FD";
            if (frame.canId() != 0x0C9)
                continue;
            ticks.push_back(frame.ticks());
            counters.push_back(frame.data().at(6));
            std::uint8_t sum = 0;
            for (std::size_t i = 0; i < 7; ++i)
                sum ^= frame.data()[i];
            EXPECT_EQ(frame.data()[7], sum);
        }
    }
    for (std::size_t i = 1; i < ticks.size(); ++i) {
        EXPECT_EQ(counters[i], static_cast<std::uint8_t>(counters[i - 1] + 1));
        EXPECT_GE(ticks[i], ticks[i - 1]);
    }
    EXPECT_TRUE(keepsTheCycle()) << meanCycle() << " instead of 100000, which are 10 ms";
    EXPECT_TRUE(ids.contains(0x18FEF100));
    box->stopTraffic();
}

TEST_F(SimulatorTraffic, SignalsOnLinAndCanFdAndErrors)
{
    openCan(*host, 0);
    request(*host, 1, 0x60, 0, 2, hex("26 80 84 1E 00"));
    openLin(*host, 0, true);
    openLin(*host, 1, false);
    box->startSignals({.canChannels = {0}, .linChannels = {0, 1}, .errors = true});
    bool fd = false, fdBrs = false, error = false, classicChecksum = false;
    std::set<std::pair<int, int>> linDirections;
    const auto end = std::chrono::steady_clock::now() + replyLimit;
    while ((!fd || !fdBrs || !error || !classicChecksum || linDirections.size() < 2) &&
           std::chrono::steady_clock::now() < end) {
        for (const BoxFrame &frame : receiveFrames(*host, 1)) {
            if (frame.protocol == 5) {
                linDirections.emplace(frame.channel, frame.linDirection());
                classicChecksum |= frame.payload.at(2) == 0;
            } else if (frame.canType() == 4) {
                error = true;
                EXPECT_EQ(toHex(frame.data()), "00 00 00 08");
            } else {
                fd |= (frame.canFlags() & 0x48) == 0x40;
                fdBrs |= (frame.canFlags() & 0x48) == 0x48;
            }
        }
    }
    EXPECT_TRUE(fd && fdBrs && error && classicChecksum);
    EXPECT_EQ(linDirections, (std::set<std::pair<int, int>>{{0, 0}, {1, 1}}));
    box->stopTraffic();
}

TEST(SimulatorSignalTable, EveryShapeStaysInsideItsMessage)
{
    std::set<std::pair<tzsim::Family, std::uint32_t>> seen;
    for (const tzsim::SignalMessage &message : tzsim::signalMessages()) {
        EXPECT_TRUE(seen.emplace(message.family, message.id).second);
        EXPECT_GT(message.cycle.count(), 0);
        EXPECT_LE(message.length, message.family == Family::lin || (message.flags & 0x40) == 0 ? 8 : 64);
        for (const tzsim::SignalShape &shape : message.shapes)
            EXPECT_LE(shape.firstByte + shape.bytes, message.length) << message.id;
    }
}

TEST(SimulatorSignalTable, ShapesMoveAsTheySay)
{
    using tzsim::SignalShape;
    const std::array shapes = {
        SignalShape{SignalShape::Kind::counter, 0, 1}, SignalShape{SignalShape::Kind::ramp, 1, 1, 10, 20, 10},
        SignalShape{SignalShape::Kind::sine, 2, 2, -100, 100, 4}, SignalShape{SignalShape::Kind::toggle, 4, 1, 1, 2, 2},
        SignalShape{SignalShape::Kind::checksum, 5, 1}};
    const tzsim::SignalMessage message{Family::can, 1, 0, 6, 10ms, shapes};
    Bytes data(6);
    tzsim::fillSignals(message, 258, 5.0, data);
    EXPECT_EQ(toHex(data), "02 0f 64 00 02 6b");
    tzsim::fillSignals(message, 0, 3.0, data);
    EXPECT_EQ(toHex(data), "00 0d 9c ff 02 6c") << "negative values in two's complement";
}
