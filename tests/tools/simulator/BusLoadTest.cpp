// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/tools/simulator/SimulatorFixture.h"

#include "tools/simulator/BusLoadMeter.h"

using namespace tzsimtest;
using tzsim::BusLoadMeter;
using tzsim::CanFrame;
using namespace std::chrono_literals;

namespace {

class SimulatorBusLoad : public OneBoxFixture<2, 1>
{
protected:
    BoxFrame nextReport()
    {
        for (;;) {
            const auto datagram = host->receive();
            if (!datagram) {
                ADD_FAILURE() << "no report came";
                return {};
            }
            for (const BoxFrame &frame : split(datagram->bytes)) {
                if (frame.command == 0x70)
                    return frame;
            }
        }
    }
};

} // namespace

TEST_F(SimulatorBusLoad, ReportHoldsTheTrueFigures)
{
    openCan(*host, 0); // 13 bytes in, 10 out
    openCan(*host, 1, 250'000);
    box->setBusLoadPeriod(50ms);
    nextReport(); // the frames below fall into the period that begins now, or the next one
    const CanFrame standard = CanFrame::make(0x100, Bytes(8, 0));
    box->injectCan(0, std::vector<CanFrame>(10, standard)); // 10 * 111 bits at 500 kbit/s
    box->injectCan(1, CanFrame::make(0x100, {}));           // 47 bits at 250 kbit/s
    box->injectCanError(1, 1);                              // no frame
    std::uint32_t frames0 = 0, frames1 = 0, busy0 = 0, busy1 = 0;
    BoxFrame report;
    while (frames0 < 10 || frames1 < 1) {
        report = nextReport();
        ASSERT_EQ(report.payload.size(), 32U) << "16 bytes and 8 for each CAN channel";
        EXPECT_EQ(report.protocol, 1);
        // A report that went out late makes the next period shorter, so that the mean is kept.
        EXPECT_GT(u32(report.payload, 0), 0U);
        frames0 += u32(report.payload, 4);
        busy0 += u32(report.payload, 8);
        frames1 += u32(report.payload, 12);
        busy1 += u32(report.payload, 16);
    }
    EXPECT_EQ(frames0, 10U);
    EXPECT_NEAR(busy0, 2220, 1); // rounded in each of the reports that it falls into
    EXPECT_EQ(frames1, 1U);
    EXPECT_EQ(busy1, 188U);
    EXPECT_EQ(u32(report.payload, 20), 2U) << "frames that the host sent";
    EXPECT_EQ(u32(report.payload, 24), 26U) << "bytes that the host sent";
}

TEST_F(SimulatorBusLoad, TransmittedBytesDoNotCountTheReportThatCarriesThem)
{
    openCan(*host, 0);
    box->setBusLoadPeriod(20ms);
    EXPECT_EQ(u32(nextReport().payload, 28), 10U);
    EXPECT_EQ(u32(nextReport().payload, 28), 10U + 41U);
    EXPECT_EQ(u32(nextReport().payload, 28), 10U + 82U);
}

TEST_F(SimulatorBusLoad, TotalsBeginWithTheHost)
{
    openCan(*host, 0);
    request(*host, 0x0F, 0x60, 0, 0, {1});
    box->setBusLoadPeriod(20ms);
    EXPECT_EQ(u32(nextReport().payload, 20), 2U);
    host = makeHost(*box);
    host->send(hostFrame(0x0F, 0x60, 0, 0, {1}));
    EXPECT_EQ(u32(nextReport().payload, 20), 1U);
}

TEST_F(SimulatorBusLoad, NoReportWithoutAnOpenCanChannel)
{
    box->setBusLoadPeriod(1ms);
    openLin(*host, 0, true);
    EXPECT_FALSE(host->receive(30ms));
    EXPECT_EQ(box->counters().busLoadReports, 0U);
    host->send(hostFrame(1, 0x10, 0, 0, hex("20 A1 07 00")));
    nextReport();
    EXPECT_GE(box->counters().busLoadReports, 1U);
    box->setBusLoadPeriod(0ms);
    while (host->receive(0ms)) {
    }
    expectNothingWaits(*host);
}

struct BitsCase
{
    const char *name;
    std::uint8_t flags;
    std::size_t length;
    BusLoadMeter::FrameBits bits;
};

class SimulatorFrameBits : public testing::TestWithParam<BitsCase>
{
};

TEST_P(SimulatorFrameBits, AreThoseOfTheStandard)
{
    const BitsCase &c = GetParam();
    EXPECT_EQ(BusLoadMeter::frameBits(CanFrame::make(1, Bytes(c.length, 0), c.flags)), c.bits);
}

INSTANTIATE_TEST_SUITE_P(Simulator, SimulatorFrameBits,
                         testing::Values(BitsCase{"Empty", 0, 0, {47, 0}}, BitsCase{"Eight", 0, 8, {111, 0}},
                                         BitsCase{"ExtendedEight", 0x01, 8, {131, 0}},
                                         BitsCase{"Remote", 0x02, 8, {47, 0}},
                                         BitsCase{"Fd16", 0x40, 16, {17 + 13 + 5 + 128 + 27, 0}},
                                         BitsCase{"FdBrs8", 0x48, 8, {30, 5 + 64 + 27}},
                                         BitsCase{"FdBrsExtended64", 0x49, 64, {49, 5 + 512 + 32}}),
                         [](const auto &test) { return std::string(test.param.name); });

TEST(SimulatorBusLoadMeter, DataPhaseRunsAtTheDataRate)
{
    BusLoadMeter meter(1);
    const auto start = std::chrono::steady_clock::now();
    meter.restart(start);
    meter.setRates(0, 500'000, 2'000'000);
    meter.addFrame(0, CanFrame::make(1, Bytes(64, 0), 0x48)); // 30 bits of 2 us, 549 bits of 0.5 us
    meter.setRates(0, 1'000'000, 0);
    meter.addFrame(0, CanFrame::make(1, {})); // 47 bits of 1 us
    const Bytes report = meter.takeReport(start + 1s, {1, 2, 3});
    EXPECT_EQ(u32(report, 0), 1'000'000U);
    EXPECT_EQ(u32(report, 4), 2U);
    EXPECT_EQ(u32(report, 8), 382U); // 60 + 274.5 + 47, rounded
    EXPECT_EQ(u32(report, 12), 1U);
    EXPECT_EQ(u32(report, 16), 2U);
    EXPECT_EQ(u32(report, 20), 3U);
    const Bytes next = meter.takeReport(start + 3s, {});
    EXPECT_EQ(u32(next, 0), 2'000'000U);
    EXPECT_EQ(u32(next, 4), 0U);
    EXPECT_EQ(u32(next, 8), 0U);
}
