// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/ldf/LdfJ2602Parser.h"

#include "tests/database/ldf/LdfStandardSource.h"
#include "tests/support/LogCapture.h"

#include <QByteArray>

#include <gtest/gtest.h>

#include <string>
#include <utility>

namespace {

TEST(LdfJ2602, SlaveWithNad50LogsAWarningAndTheFileStands)
{
    tztest::LogCapture log;
    ASSERT_TRUE(loadLdf(j2602Source("0x50")));
    EXPECT_TRUE(log.has(2, "J2602 slave node Slave1 has invalid NAD 0x50 (must be 0x60-0x6F)"));
}

TEST(LdfJ2602, SlaveWithoutConfigurableFramesFailsTheFileAndPassesInPlainLin21)
{
    tztest::LogCapture log;
    LdfSource source = j2602Source("0x61", "response_tolerance = 40 %;");
    EXPECT_FALSE(loadLdf(source));
    EXPECT_TRUE(log.has(3, "J2602 slave node Slave1 must have configurable frames defined"));
    EXPECT_TRUE(log.has(3, "Failed to validate slave node: Slave1"));
    source.header.replace(QStringLiteral("J2602_3_1.0"), QStringLiteral("2.1"));
    EXPECT_TRUE(loadLdf(source));
}

TEST(LdfJ2602, NodesOwnProtocolDecidesOnTheSlaveRules)
{
    tztest::LogCapture log;
    EXPECT_TRUE(loadLdf(j2602Source("0x50", "", "", "\"2.1\"")));
    EXPECT_EQ(log.countContaining(2, "J2602 slave"), 0U);
}

TEST(LdfJ2602, ProtocolIsFoundInAnyCase)
{
    EXPECT_FALSE(loadLdf(j2602Source("0x61", "", "Error1", "\"j2602\"")));
}

TEST(LdfJ2602, ResponseTimeOfEightBytes)
{
    Common::LdfJ2602Parser parser;
    parseInto(parser, j2602Source());
    const double expected = (80 * 0.0520833 + 5) * 1.4;
    EXPECT_NEAR(parser.responseTimeMs(parser.config().frames.at(QStringLiteral("Status1"))), expected, 0.001);
    EXPECT_NEAR(expected, 12.83, 0.005);
    EXPECT_EQ(parser.responseTimeMs(parser.config().frames.at(QStringLiteral("CommandFrame"))), 0.0);
    LdfFrame orphan;
    orphan.size = 8;
    EXPECT_NEAR(parser.responseTimeMs(orphan), expected, 0.001); // 40 % where nothing is stated
}

TEST(LdfJ2602, ShortestPeriodRisesToTheResponseTime)
{
    LdfSource source = j2602Source();
    source.schedules = QStringLiteral("Normal {\nCommandFrame delay 1 ms;\nStatus1 delay 10 ms;\n}");
    tztest::LogCapture log;
    const auto config = loadLdf(source);
    ASSERT_TRUE(config);
    EXPECT_NEAR(config->frames.at(QStringLiteral("Status1")).minPeriod, 12.83, 0.005);
    EXPECT_EQ(config->frames.at(QStringLiteral("Status1")).maxPeriod, 10.0);
    EXPECT_EQ(config->frames.at(QStringLiteral("CommandFrame")).minPeriod, 1.0);
    EXPECT_TRUE(log.has(2, "Frame Status1 in table Normal has delay (10.0 ms) less than response time (12.8 ms)"));
}

TEST(LdfJ2602, ToleranceIsReadOrDefaultsAndIsChecked)
{
    tztest::LogCapture log;
    const auto config = loadLdf(j2602Source("0x61", "configurable_frames { Status1; }"));
    ASSERT_TRUE(config);
    EXPECT_EQ(config->frames.at(QStringLiteral("Status1")).responseTolerance, 40.0);
    EXPECT_TRUE(log.has(2, "J2602 node Slave1 missing required response_tolerance parameter, using default 40.0%%"));
    ASSERT_TRUE(loadLdf(j2602Source("0x61", "initial_NAD = 0x62; response_tolerance = 150.5 %; "
                                            "configurable_frames { Status1; }")));
    EXPECT_TRUE(log.has(2, "J2602 slave node Slave1 has invalid response tolerance 150.5%% (must be 0-100)"));
    EXPECT_TRUE(
        log.has(2, "Response tolerance 150.5%% for frame Status1 is outside recommended range (0.0%%-100.0%%)"));
    EXPECT_TRUE(log.has(2, "J2602 slave node Slave1 initial NAD (0x62) must equal configured NAD (0x61)"));
}

TEST(LdfJ2602, ConfigurableFramesMustExistAndConcernTheNode)
{
    tztest::LogCapture log;
    EXPECT_FALSE(loadLdf(j2602Source("0x61", "configurable_frames { Missing; }")));
    EXPECT_TRUE(log.has(3, "Configurable frame Missing not found for node Slave1"));
    EXPECT_FALSE(loadLdf(j2602Source("0x61", "configurable_frames { Status1; OtherFrame; }")));
    EXPECT_TRUE(log.has(3, "Node Slave1 neither publishes nor subscribes to configurable frame OtherFrame"));
}

TEST(LdfJ2602, ResponseErrorMustBeDefinedAndExist)
{
    tztest::LogCapture log;
    EXPECT_FALSE(loadLdf(j2602Source("0x61", "configurable_frames { Status1; }", "")));
    EXPECT_TRUE(log.has(3, "J2602 slave node Slave1 must define response_error signal"));
    EXPECT_FALSE(loadLdf(j2602Source("0x61", "configurable_frames { Status1; }", "Nothing")));
    EXPECT_TRUE(log.has(3, "Response error signal Nothing not found in any frame for node Slave1"));
}

TEST(LdfJ2602, IdentifiersOfSlaveFramesAreOnlyLogged)
{
    tztest::LogCapture log;
    LdfSource source = j2602Source();
    source.frames.replace(QStringLiteral("0x21"), QStringLiteral("0x30"));
    EXPECT_TRUE(loadLdf(source));
    EXPECT_TRUE(log.has(2, "J2602 slave frame Status1 has ID 0x30 outside recommended range (0x20-0x2F or 0x38-0x3B)"));
    source.frames.replace(QStringLiteral("0x30"), QStringLiteral("0x00"));
    EXPECT_TRUE(loadLdf(source));
    EXPECT_TRUE(log.has(1, "Slave frame Status1 using relative ID 0x00 (will be configured at runtime)"));
    Common::LdfJ2602Parser parser;
    parseInto(parser, j2602Source());
    LdfFrame frame = parser.config().frames.at(QStringLiteral("CommandFrame"));
    frame.id = 64;
    EXPECT_TRUE(parser.validateFrame(frame));
    EXPECT_TRUE(log.has(2, "J2602 master frame CommandFrame has ID 0x40 outside recommended range (<=0x3F)"));
}

std::size_t warningsOf(const LdfSource &source, const char *part)
{
    const tztest::LogCapture log;
    EXPECT_TRUE(loadLdf(source));
    return log.countContaining(2, part);
}

TEST(LdfJ2602, NadsFrom0x60To0x6FAreTakenWithoutAWarning)
{
    EXPECT_EQ(warningsOf(j2602Source("0x60"), "invalid NAD"), 0U);
    EXPECT_EQ(warningsOf(j2602Source("0x6F"), "invalid NAD"), 0U);
    EXPECT_EQ(warningsOf(j2602Source("0x5F"), "invalid NAD"), 1U);
    EXPECT_EQ(warningsOf(j2602Source("0x70"), "invalid NAD"), 1U);
}

TEST(LdfJ2602, TolerancesAboveZeroUpToAHundredAreTakenWithoutAWarning)
{
    const auto source = [](const char *tolerance) {
        const QByteArray attributes =
            QByteArray("response_tolerance = ") + tolerance + " %; configurable_frames { Status1; }";
        return j2602Source("0x61", attributes.constData());
    };
    for (const char *taken : {"0.1", "100"}) {
        EXPECT_EQ(warningsOf(source(taken), "invalid response tolerance"), 0U) << taken;
        EXPECT_EQ(warningsOf(source(taken), "outside recommended range"), 0U) << taken;
    }
    for (const char *warnedOf : {"0", "100.1"}) {
        EXPECT_EQ(warningsOf(source(warnedOf), "invalid response tolerance"), 1U) << warnedOf;
        EXPECT_EQ(warningsOf(source(warnedOf), "outside recommended range"), 1U) << warnedOf;
    }
}

TEST(LdfJ2602, LimitsOfTheIdentifiersOfSlaveFrames)
{
    const auto source = [](const char *id) {
        LdfSource changed = j2602Source();
        changed.frames.replace(QStringLiteral("0x21"), QLatin1String(id));
        return changed;
    };
    for (const char *taken : {"0x20", "0x2F", "0x38", "0x3B"})
        EXPECT_EQ(warningsOf(source(taken), "outside recommended range"), 0U) << taken;
    for (const char *warnedOf : {"0x01", "0x1F", "0x30", "0x37", "0x3C", "0x3F"})
        EXPECT_EQ(warningsOf(source(warnedOf), "outside recommended range"), 1U) << warnedOf;
}

TEST(LdfJ2602, BroadcastFramesAreThoseOf56To59)
{
    for (const auto &[id, count] : {std::pair(55, 0), std::pair(56, 1), std::pair(59, 1), std::pair(60, 0)}) {
        LdfSource source = j2602Source();
        source.frames.replace(QStringLiteral("0x38"), QString::number(id));
        const tztest::LogCapture log;
        ASSERT_TRUE(loadLdf(source));
        EXPECT_TRUE(log.has(1, "  Broadcast Frames: " + std::to_string(count))) << id;
    }
}

TEST(LdfJ2602, FrameOfAnUnknownPublisherIsRefused)
{
    tztest::LogCapture log;
    Common::LdfJ2602Parser parser;
    parseInto(parser, j2602Source());
    LdfFrame frame;
    frame.name = QStringLiteral("F");
    frame.publisher = QStringLiteral("Ghost");
    EXPECT_FALSE(parser.parseFrameConfig(QString(), frame));
    EXPECT_FALSE(parser.updateFrameTiming(frame));
    EXPECT_EQ(log.count(3, "Publisher node 'Ghost' not found for frame 'F'"), 2U);
}

TEST(LdfJ2602, SlotOfAResponseWithoutSlavesIsAnErrorLineAndTheFileStands)
{
    LdfSource source = j2602Source();
    source.nodes = QStringLiteral("Master: Master1, 5 ms, 0.1 ms;");
    source.attributes.clear();
    source.frames = QStringLiteral("CommandFrame: 0x10, Master1, 8 {\nCommand, 0;\n}");
    source.diagnosticSignals = QStringLiteral("B0: 8, 0;");
    source.diagnosticFrames = QStringLiteral("MasterReq: 0x3C { B0, 0; }\nSlaveResp: 0x3D { B0, 0; }");
    source.schedules = QStringLiteral("Normal {\nCommandFrame delay 10 ms;\nSlaveResp delay 30 ms;\n}");
    tztest::LogCapture log;
    const auto config = loadLdf(source);
    ASSERT_TRUE(config);
    EXPECT_EQ(log.count(3, "Publisher node '' not found for frame 'SlaveResp'"), 1U);
    EXPECT_EQ(config->diagnosticFrames.at(QStringLiteral("SlaveResp")).minPeriod, 30.0);
}

TEST(LdfJ2602, EventTriggeredMembersAreUpdatedAgainAfterASlotOfTheirOwn)
{
    LdfSource source = j2602Source();
    source.eventFrames = QStringLiteral("Event: Collision, 0x25, Status1, Status1;");
    source.schedules = QStringLiteral("Normal {\nEvent delay 5 ms;\nStatus1 delay 30 ms;\nEvent delay 5 ms;\n}\n"
                                      "Collision {\nCommandFrame delay 17 ms;\n}");
    Common::LdfJ2602Parser parser;
    parseInto(parser, source);
    EXPECT_EQ(parser.config().frames.at(QStringLiteral("Status1")).maxPeriod, 17.0); // not the slot's 30
    EXPECT_EQ(parser.eventUpdates(), 2U); // a member that is listed twice is one
}

TEST(LdfJ2602, CollisionTableThatDoesNotExistLeavesThePeriods)
{
    LdfSource source = j2602Source();
    source.eventFrames = QStringLiteral("Event: Nowhere, 0x25, Status1;");
    source.schedules = QStringLiteral("Normal {\nStatus1 delay 30 ms;\nEvent delay 5 ms;\n}");
    const auto config = loadLdf(source);
    ASSERT_TRUE(config);
    EXPECT_EQ(config->frames.at(QStringLiteral("Status1")).maxPeriod, 30.0);
}

TEST(LdfJ2602, SubscribersAreFoundWhicheverListIsLonger)
{
    LdfSource source =
        j2602Source("0x61", "response_tolerance = 40 %; configurable_frames { CommandFrame; OtherFrame; }");
    source.frames.replace(QStringLiteral("Other, 0;"), QStringLiteral("Other, 0;\nMore, 1;\nEnough, 2;"));
    source.signalList += QStringLiteral("\nMore: 1, 0, Master1, Nobody;\nEnough: 1, 0, Master1, Slave1;");
    EXPECT_TRUE(loadLdf(source)); // two signals received; three are in the frame, one is in the other
    source.signalList.replace(QStringLiteral("Enough: 1, 0, Master1, Slave1"),
                              QStringLiteral("Enough: 1, 0, Master1, Nobody"));
    EXPECT_FALSE(loadLdf(source));
}

TEST(LdfJ2602, DiagnosticTableNeedsRequestAndResponse)
{
    tztest::LogCapture log;
    Common::LdfJ2602Parser parser;
    EXPECT_FALSE(parser.validateScheduleTable(diagnosticTable({{"MasterReq", 10.0}})));
    EXPECT_TRUE(log.has(3, "J2602 diagnostic table Diag must have MasterReq and SlaveResp frames"));
    EXPECT_TRUE(parser.validateScheduleTable(diagnosticTable({{"MasterReq", 10.0}, {"SlaveResp", 10.0}})));
}

TEST(LdfJ2602, EventTriggeredMembersTakeTheCollisionTablesLongestDelay)
{
    LdfSource source = j2602Source();
    source.eventFrames = QStringLiteral("Event: Collision, 0x25, Status1;");
    source.schedules = QStringLiteral("Normal {\nEvent delay 5 ms;\n}\nCollision {\nCommandFrame delay 17 ms;\n}");
    const auto config = loadLdf(source);
    ASSERT_TRUE(config);
    EXPECT_EQ(config->frames.at(QStringLiteral("Status1")).maxPeriod, 17.0);
    EXPECT_NEAR(config->frames.at(QStringLiteral("Status1")).minPeriod, 12.83, 0.005);
}

TEST(LdfJ2602, SummariesTellWhatIsSpecial)
{
    tztest::LogCapture log;
    ASSERT_TRUE(loadLdf(j2602Source()));
    EXPECT_TRUE(log.has(1, "J2602 Specific Configuration:"));
    EXPECT_TRUE(log.has(1, "  Standard Baud Rate: 19.2 kbps"));
    EXPECT_TRUE(log.has(1, "  Broadcast Frames: 1"));
    EXPECT_TRUE(log.has(0, "  Slave Node: Slave1"));
    EXPECT_TRUE(log.has(0, "    Configured NAD: 0x61"));
    EXPECT_TRUE(log.has(1, "    Response Tolerance: 40.0%%"));
    EXPECT_TRUE(log.has(1, "    Configurable Frames: 2"));
}

TEST(LdfJ2602, BusWithoutSpeedHasFiniteTimes)
{
    LdfSource source = j2602Source();
    source.header.replace(QStringLiteral("19.2 kbps"), QStringLiteral("0 kbps"));
    const auto config = loadLdf(source);
    ASSERT_TRUE(config);
    EXPECT_EQ(config->frames.at(QStringLiteral("Status1")).minPeriod, 20.0);
}

} // namespace
