// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/ldf/LdfISO17987Parser.h"

#include "tests/database/ldf/LdfStandardSource.h"
#include "tests/support/LogCapture.h"

#include <gtest/gtest.h>

namespace {

constexpr const char *isoTiming = "P2_min = 40 ms; ST_min = 1 ms; N_As_timeout = 900 ms; N_Cr_timeout = 800 ms;";

TEST(LdfIso17987, SlaveFrameOfId0x10FailsUnlessConfigurable)
{
    tztest::LogCapture log;
    LdfSource source = isoSource();
    source.frames.replace(QStringLiteral("0x10"), QStringLiteral("0x11")); // the master may have any
    source.frames.replace(QStringLiteral("0x21"), QStringLiteral("0x10"));
    EXPECT_FALSE(loadLdf(source));
    EXPECT_TRUE(log.has(3, "Slave frame Status1 has invalid ID 0x10 (must be 0x20-0x3F or configurable)"));
    source.attributes = isoSource("configurable_frames { Status1; }").attributes;
    EXPECT_TRUE(loadLdf(source));
}

TEST(LdfIso17987, IdsOfSlaveFramesBeginAt0x20)
{
    tztest::LogCapture log;
    LdfSource source = isoSource();
    source.frames.replace(QStringLiteral("0x21"), QStringLiteral("0x20"));
    EXPECT_TRUE(loadLdf(source));
    source.frames.replace(QStringLiteral("0x20"), QStringLiteral("0x1F"));
    EXPECT_FALSE(loadLdf(source));
    EXPECT_TRUE(log.has(3, "Slave frame Status1 has invalid ID 0x1F (must be 0x20-0x3F or configurable)"));
}

TEST(LdfIso17987, TimingOutOfRangeIsLoggedAndKept)
{
    tztest::LogCapture log;
    const auto config = loadLdf(isoSource("P2_min = 150 ms; ST_min = 101 ms; N_As_timeout = 0 ms; "
                                          "N_Cr_timeout = 360000.5 ms;"));
    ASSERT_TRUE(config);
    const LdfNode &slave = config->slaves.at(QStringLiteral("Slave1"));
    EXPECT_EQ(slave.p2Min, 150.0);
    EXPECT_EQ(slave.stMin, 101.0);
    EXPECT_EQ(slave.nAsTimeout, 0.0);
    EXPECT_EQ(slave.nCrTimeout, 360'000.5);
    EXPECT_TRUE(log.has(2, "ISO17987 node Slave1 P2_min 150.0 ms out of range [0.0, 100.0], using default (50.0 ms)"));
    EXPECT_TRUE(log.has(2, "ISO17987 node Slave1 ST_min 101.0 ms out of range [0.0, 100.0], using default (0.0 ms)"));
    EXPECT_TRUE(
        log.has(2, "ISO17987 node Slave1 N_As_timeout 0.0 ms out of range (0, 360000.0], using default (1000.0 ms)"));
    EXPECT_TRUE(log.has(
        2, "ISO17987 node Slave1 N_Cr_timeout 360000.5 ms out of range (0, 360000.0], using default (1000.0 ms)"));
}

TEST(LdfIso17987, LimitsOfTimingAndNadsAreTakenWithoutAWarning)
{
    tztest::LogCapture log;
    for (const char *timing : {"P2_min = 0 ms; ST_min = 0 ms; N_As_timeout = 0.1 ms; N_Cr_timeout = 0.1 ms;",
                               "P2_min = 100 ms; ST_min = 100 ms; N_As_timeout = 360000 ms; N_Cr_timeout = 360000 ms;"})
        EXPECT_TRUE(loadLdf(isoSource(timing)));
    for (const char *nad : {"1", "126"})
        EXPECT_TRUE(loadLdf(isoSource(isoTiming, nad)));
    EXPECT_EQ(log.countContaining(2, "out of range"), 0U);
    EXPECT_EQ(log.countContaining(2, "outside recommended range"), 0U);
    EXPECT_TRUE(loadLdf(isoSource(isoTiming, "0")));
    EXPECT_TRUE(log.has(2, "Node Slave1 has NAD 0x00 outside recommended range [0x01, 0x7E]"));
    EXPECT_TRUE(log.has(2, "Node Slave1 initial NAD 0x00 out of range [0x01, 0x7E]"));
}

TEST(LdfIso17987, MissingTimingAndFaultSignalsAreLogged)
{
    tztest::LogCapture log;
    ASSERT_TRUE(loadLdf(isoSource("P2_min = 50 ms;")));
    EXPECT_TRUE(log.has(2, "ISO17987 node Slave1 missing timing parameters: P2_min=true, ST_min=false, N_As=false, "
                           "N_Cr=false"));
    EXPECT_TRUE(log.has(2, "ISO17987 node Slave1 does not have fault_state_signals configured"));
}

TEST(LdfIso17987, NadsAndSignalsAreChecked)
{
    tztest::LogCapture log;
    const auto config =
        loadLdf(isoSource("initial_NAD = 0x80; fault_state_signals = Error1, Ghost;", "0x7F", "Command"));
    ASSERT_TRUE(config);
    EXPECT_EQ(config->slaves.at(QStringLiteral("Slave1")).faultStateSignals.size(), 2);
    EXPECT_TRUE(log.has(2, "Node Slave1 has NAD 0x7F outside recommended range [0x01, 0x7E]"));
    EXPECT_TRUE(log.has(2, "Node Slave1 initial NAD 0x80 out of range [0x01, 0x7E]"));
    EXPECT_TRUE(log.has(2, "Response error signal Command should be 1 bit in node Slave1"));
    EXPECT_TRUE(log.has(2, "Fault state signal Ghost not found in frames for node Slave1"));
    ASSERT_TRUE(loadLdf(isoSource("", "5", "Ghost")));
    EXPECT_TRUE(log.has(2, "Response error signal Ghost not found in frames for node Slave1"));
}

TEST(LdfIso17987, FunctionMayHaveSixteenBits)
{
    tztest::LogCapture log;
    ASSERT_TRUE(loadLdf(isoSource("product_id = 0x8000, 0x10000, 256;")));
    EXPECT_TRUE(log.has(2, "Node Slave1 has supplier ID 0x8000 exceeding recommended maximum 0x7FFF"));
    EXPECT_TRUE(log.has(2, "Node Slave1 has function ID 0x10000 exceeding recommended maximum 0xFFFF"));
    EXPECT_TRUE(log.has(2, "Node Slave1 has variant ID 0x100 exceeding recommended maximum 0xFF"));
}

TEST(LdfIso17987, DiagnosticIdentifiersHaveTheirPublisherAndSize)
{
    tztest::LogCapture log;
    Common::LdfISO17987Parser parser;
    parseInto(parser, isoSource(isoTiming));
    LdfFrame frame = parser.config().frames.at(QStringLiteral("Status1"));
    frame.id = 60;
    EXPECT_FALSE(parser.validateFrame(frame));
    EXPECT_TRUE(log.has(3, "Diagnostic master request frame Status1 must be published by master"));
    frame.publisher = QStringLiteral("Master1");
    EXPECT_TRUE(parser.validateFrame(frame));
    frame.size = 7;
    EXPECT_FALSE(parser.validateFrame(frame));
    EXPECT_TRUE(log.has(3, "ISO17987 diagnostic frame Status1 must be 8 bytes"));
    frame.id = 61;
    EXPECT_FALSE(parser.validateFrame(frame));
    EXPECT_TRUE(log.has(3, "Diagnostic slave response frame Status1 cannot be published by master"));
    frame.id = 64;
    EXPECT_FALSE(parser.validateFrame(frame));
    EXPECT_TRUE(log.has(3, "Master frame Status1 has invalid ID 0x40 (must be <= 0x3F)"));
    frame.id = 1;
    frame.size = 9;
    EXPECT_FALSE(parser.validateFrame(frame));
    EXPECT_TRUE(log.has(3, "ISO17987 frame Status1 exceeds maximum length of 8 bytes"));
    frame.size = 8;
    frame.signals.begin()->second.size = 65;
    EXPECT_FALSE(parser.validateFrame(frame));
    EXPECT_TRUE(log.has(3, "Signal Error1 exceeds maximum length of 64 bits"));
}

TEST(LdfIso17987, DiagnosticTablesKeepTheirTimes)
{
    tztest::LogCapture log;
    Common::LdfISO17987Parser parser;
    EXPECT_FALSE(parser.hasAcceptedTable());
    EXPECT_FALSE(parser.validateScheduleTable(diagnosticTable({{"MasterReq", 20.0}, {"SlaveResp", 10.0}})));
    EXPECT_TRUE(log.has(3, "Diagnostic response time -10.0 ms is less than minimum P2 time 0.0 ms"));
    EXPECT_FALSE(parser.validateScheduleTable(diagnosticTable({{"MasterReq", 10.0}, {"SlaveResp", 61.0}})));
    EXPECT_TRUE(log.has(3, "Diagnostic response time 51.0 ms exceeds maximum P2 time 50.0 ms"));
    EXPECT_FALSE(parser.validateScheduleTable(diagnosticTable({{"SlaveResp", 10.0}})));
    EXPECT_TRUE(log.has(3, "Diagnostic schedule table Diag must contain both MasterReq and SlaveResp frames"));
    EXPECT_FALSE(parser.validateScheduleTable(diagnosticTable({{"MasterReq", 1001.0}, {"SlaveResp", 1001.0}})));
    EXPECT_TRUE(log.has(3, "ISO17987 diagnostic table Diag entry delay 1001.0 ms exceeds 1000ms"));
    EXPECT_FALSE(parser.hasAcceptedTable());
    EXPECT_TRUE(parser.validateScheduleTable(diagnosticTable({{"MasterReq", 10.0}, {"SlaveResp", 60.0}})));
    EXPECT_TRUE(parser.hasAcceptedTable());
    EXPECT_EQ(parser.acceptedTables(), QStringList(QStringLiteral("Diag")));
    EXPECT_TRUE(parser.validateScheduleTable(diagnosticTable({{"MasterReq", 1000.0}, {"SlaveResp", 1000.0}})));
}

TEST(LdfIso17987, PeriodsRiseToTheResponseTime)
{
    LdfSource source = isoSource(isoTiming);
    source.diagnosticSignals = QStringLiteral("B0: 8, 0;");
    source.diagnosticFrames = QStringLiteral("MasterReq: 0x3C { B0, 0; }\nSlaveResp: 0x3D { B0, 0; }");
    source.eventFrames = QStringLiteral("Event: Collision, 0x25, Status1;");
    source.schedules =
        QStringLiteral("Normal {\nStatus1 delay 20 ms;\nSlaveResp delay 30 ms;\nMasterReq delay 30 ms;\n}");
    auto config = loadLdf(source);
    ASSERT_TRUE(config);
    const double response = 80 / 19.2 + 5.0 + 40.0;
    EXPECT_NEAR(config->frames.at(QStringLiteral("Status1")).minPeriod, response, 1e-9);
    EXPECT_EQ(config->diagnosticFrames.at(QStringLiteral("SlaveResp")).minPeriod, 10.0);
    EXPECT_EQ(config->diagnosticFrames.at(QStringLiteral("MasterReq")).minPeriod, 30.0);
    source.schedules += QStringLiteral("\nMore {\nEvent delay 5 ms;\n}\nCollision {\n}");
    config = loadLdf(source);
    ASSERT_TRUE(config);
    EXPECT_EQ(config->frames.at(QStringLiteral("Status1")).minPeriod, 50.0);
    EXPECT_EQ(config->frames.at(QStringLiteral("Status1")).maxPeriod, 0.0); // an empty collision table
    Common::LdfISO17987Parser parser;
    parseInto(parser, source);
    LdfFrame orphan;
    orphan.publisher = QStringLiteral("Ghost");
    EXPECT_EQ(parser.responseTimeMs(orphan), 55.0); // a default node's times
}

TEST(LdfIso17987, SummariesTellWhatIsSpecial)
{
    tztest::LogCapture log;
    ASSERT_TRUE(loadLdf(isoSource("product_id = 0x1234, 0x56, 0x78; P2_min = 40 ms;")));
    for (const char *line : {"ISO17987 Specific Configuration:", "  P2 Max Time: 50.0 ms", "  P2* Max Time: 5000.0 ms",
                             "  P3 Max Time: 5000.0 ms", "    Supplier ID: 0x1234", "    Function ID: 0x56",
                             "    Variant: 0x78", "    P2 min: 40.0 ms"})
        EXPECT_TRUE(log.has(1, line)) << line;
}

} // namespace
