// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/ldf/LdfISO17987Parser.h"
#include "database/ldf/LdfJ2602Parser.h"
#include "tests/database/ldf/LdfSource.h"
#include "tests/support/LogCapture.h"

#include <QTemporaryFile>

#include <gtest/gtest.h>

namespace {

LdfSource j2602Source(const char *nad = "0x61",
                      const char *more = "response_tolerance = 40 %;\n"
                                         "configurable_frames { Status1; CommandFrame; }",
                      const char *responseError = "Error1", const char *protocol = "\"J2602_3_1.0\"")
{
    LdfSource source;
    source.setProtocol("J2602_3_1.0");
    source.nodes = QStringLiteral("Master: Master1, 5 ms, 0.1 ms;\nSlaves: Slave1;");
    source.signalList = QStringLiteral("Command: 8, 0, Master1, Slave1;\nError1: 1, 0, Slave1, Master1;\n"
                                       "Other: 1, 0, Master1, Nobody;");
    source.frames = QStringLiteral("CommandFrame: 0x10, Master1, 8 {\nCommand, 0;\n}\nOtherFrame: 0x38, Master1, 1 {\n"
                                   "Other, 0;\n}\nStatus1: 0x21, Slave1, 8 {\nError1, 0;\n}");
    source.attributes = LdfSource::slaveAttributes("Slave1", nad, responseError, protocol, more);
    source.schedules = QStringLiteral("Normal {\nCommandFrame delay 10 ms;\nStatus1 delay 20 ms;\n}");
    return source;
}

LdfSource isoSource(const char *attributes = "", const char *nad = "0x05", const char *responseError = "Error1")
{
    LdfSource source = j2602Source(nad, attributes, responseError, "\"ISO17987:2016\"");
    source.header.replace(QStringLiteral("J2602_3_1.0"), QStringLiteral("ISO17987:2016"));
    return source;
}

constexpr const char *isoTiming = "P2_min = 40 ms; ST_min = 1 ms; N_As_timeout = 900 ms; N_Cr_timeout = 800 ms;";

template <typename Parser> void parseInto(Parser &parser, const LdfSource &source, bool expected = true)
{
    QTemporaryFile file;
    ASSERT_TRUE(file.open());
    file.write(source.text().toUtf8());
    file.flush();
    EXPECT_EQ(parser.parseFile(file.fileName(), QStringLiteral("UTF-8")), expected);
}

LdfScheduleTable diagnosticTable(std::initializer_list<std::pair<const char *, double>> slots_)
{
    LdfScheduleTable table;
    table.name = QStringLiteral("Diag");
    table.type = LdfScheduleTableType::diagnostic;
    for (const auto &[name, delay] : slots_) {
        LdfScheduleEntry entry;
        entry.frameName = QString::fromLatin1(name);
        entry.delay = delay;
        table.entries.push_back(entry);
    }
    return table;
}

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
    EXPECT_EQ(config->slaves.at(QStringLiteral("Slave1")).p2Min, 150.0);
    EXPECT_TRUE(log.has(2, "ISO17987 node Slave1 P2_min 150.0 ms out of range [0.0, 100.0], using default (50.0 ms)"));
    EXPECT_TRUE(log.has(2, "ISO17987 node Slave1 ST_min 101.0 ms out of range [0.0, 100.0], using default (0.0 ms)"));
    EXPECT_TRUE(
        log.has(2, "ISO17987 node Slave1 N_As_timeout 0.0 ms out of range (0, 360000.0], using default (1000.0 ms)"));
    EXPECT_TRUE(log.has(
        2, "ISO17987 node Slave1 N_Cr_timeout 360000.5 ms out of range (0, 360000.0], using default (1000.0 ms)"));
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
