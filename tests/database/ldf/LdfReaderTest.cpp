// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/ldf/LdfParser.h"

#include "database/ldf/LdfConversions.h"
#include "database/ldf/LdfSectionReaders.h"
#include "tests/database/ldf/LdfSource.h"
#include "tests/support/LogCapture.h"

#include <QTemporaryFile>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace {

QString text(const char *latin)
{
    return QString::fromLatin1(latin);
}

LdfProtocolVersion versionOf(const char *value)
{
    return detectLdfProtocolVersion(QStringLiteral("LIN_protocol_version = \"%1\";").arg(QLatin1String(value)));
}

TEST(LdfProtocol, TextsAreRecognised)
{
    EXPECT_EQ(versionOf("1.3"), LdfProtocolVersion::lin13);
    EXPECT_EQ(versionOf(" 2.0 "), LdfProtocolVersion::lin20);
    EXPECT_EQ(versionOf("2.1"), LdfProtocolVersion::lin21);
    EXPECT_EQ(versionOf("2.2"), LdfProtocolVersion::lin22);
    EXPECT_EQ(versionOf("2.3"), LdfProtocolVersion::lin20);
    EXPECT_EQ(versionOf("J2602_1_1.0"), LdfProtocolVersion::j2602Rev110);
    EXPECT_EQ(versionOf("J2602_3_1.0"), LdfProtocolVersion::j2602Rev310);
    EXPECT_EQ(versionOf("ISO17987:2015"), LdfProtocolVersion::iso17987Year2015);
    EXPECT_EQ(versionOf("ISO17987:2016"), LdfProtocolVersion::iso17987Year2016);
    EXPECT_EQ(versionOf("ISO17987:2017"), LdfProtocolVersion::iso17987Year2017);
    EXPECT_EQ(detectLdfProtocolVersion(text("LIN_protocol_version = 2.1;")), LdfProtocolVersion::unknown);
    EXPECT_EQ(ldfProtocolVersionText(LdfProtocolVersion::j2602Rev210), text("J2602 2.1.0"));
    EXPECT_EQ(ldfProtocolVersionText(static_cast<LdfProtocolVersion>(-1)), text("Unknown"));
}

TEST(LdfProtocol, UnknownJ2602RevisionCountsAs210AndGetsItsParser)
{
    EXPECT_EQ(versionOf("J2602_9_9.9"), LdfProtocolVersion::j2602Rev210);
    EXPECT_TRUE(isJ2602(versionOf("J2602_9_9.9")));
    LdfSource source;
    source.setProtocol("J2602_9_9.9");
    tztest::LogCapture log;
    const auto config = loadLdf(source);
    ASSERT_TRUE(config);
    EXPECT_EQ(config->protocolVersion, LdfProtocolVersion::j2602Rev210);
    EXPECT_TRUE(log.has(1, "J2602 Specific Configuration:"));
}

TEST(LdfProtocol, UnknownIsoEditionCountsAsLin20AndGetsTheBaseParser)
{
    LdfSource source;
    source.setProtocol("ISO17987:2020");
    tztest::LogCapture log;
    const auto config = loadLdf(source);
    ASSERT_TRUE(config);
    EXPECT_EQ(config->protocolVersion, LdfProtocolVersion::lin20);
    EXPECT_FALSE(log.has(1, "ISO17987 Specific Configuration:"));
    QTemporaryFile file;
    ASSERT_TRUE(file.open());
    file.write(source.text().toUtf8());
    ASSERT_TRUE(file.flush());
    const std::unique_ptr<Common::LdfParser> parser(
        Common::LdfParser::createParser(file.fileName(), QStringLiteral("UTF-8")));
    ASSERT_NE(parser, nullptr);
    EXPECT_EQ(parser->metaObject(), &Common::LdfParser::staticMetaObject);
}

TEST(LdfProtocol, InABlockCommentIsNotSeen)
{
    tztest::LogCapture log;
    LdfSource source;
    source.header = text("/* LIN_protocol_version = \"2.2\"; */\nLIN_protocol_version = \"2.1\";\n");
    EXPECT_EQ(loadLdf(source)->protocolVersion, LdfProtocolVersion::lin21);
    source.header = text("/* LIN_protocol_version = \"2.2\"; */\n");
    EXPECT_FALSE(loadLdf(source));
    EXPECT_EQ(log.countContaining(3, "LDF protocol version not detected: "), 1U);
}

TEST(LdfFiles, ThatCannotBeOpenedAreLogged)
{
    tztest::LogCapture log;
    LdfConfig config;
    config.channelName = text("untouched");
    EXPECT_FALSE(Common::LdfParser::loadLdfConfig(config, text("/nowhere/a.ldf"), text("UTF-8")));
    EXPECT_EQ(config.channelName, text("untouched"));
    EXPECT_TRUE(log.has(3, "Failed to open file: /nowhere/a.ldf"));
    Common::LdfParser parser;
    EXPECT_FALSE(parser.parseFile(text("/nowhere/a.ldf"), text("UTF-8")));
    EXPECT_TRUE(log.has(1, "Load LDF file: /nowhere/a.ldf, UTF-8"));
    EXPECT_TRUE(log.has(3, "Failed to open LDF file: /nowhere/a.ldf"));
    EXPECT_FALSE(parser.parseFile(text(TZ_LDF_SAMPLES "/../CMakeLists.txt"), text("UTF-8")));
    EXPECT_TRUE(log.has(3, "LIN protocol version not found in LDF file"));
}

TEST(LdfHeader, DefaultsAreLogged)
{
    tztest::LogCapture log;
    LdfSource source;
    source.header = text("LIN_protocol_version = \"2.1\";\nLIN_sig_byte_order_big_endian;\n");
    const auto config = loadLdf(source);
    ASSERT_TRUE(config);
    EXPECT_EQ(config->busSpeed, 19.2);
    EXPECT_EQ(config->channelName, text("LIN"));
    EXPECT_TRUE(config->fileRevision.isEmpty());
    EXPECT_TRUE(config->isBigEndian);
    EXPECT_TRUE(log.has(2, "LIN speed not found in LDF file, using default 19.2 kbps"));
    EXPECT_TRUE(log.has(0, "Channel name not found in LDF file, using default"));
}

TEST(LdfSummary, TellsTheCounts)
{
    tztest::LogCapture log;
    ASSERT_TRUE(loadLdf(LdfSource()));
    for (const char *line : {"LDF Configuration Summary:", "  Protocol Version: LIN 2.1", "  Bus Speed: 19.2 kbps",
                             "  Master Node: Master1", "  Slave Nodes: 2", "  Slave Node: Slave1",
                             "    Configured NAD: 0x01", "Frame Statistics:", "  Frames: 3", "  Diagnostic Frames: 0",
                             "  Sporadic Frames: 0", "  Event Triggered Frames: 0", "  Total Signals: 4",
                             "  Schedule Tables: 1", "Section 'Diagnostic_signals' not found in content"})
        EXPECT_TRUE(log.has(0, line)) << line;
    for (const char *line : {"No signal encoding types section found", "No diagnostic signals section found",
                             "No signal representation section found"})
        EXPECT_TRUE(log.has(1, line)) << line;
}

TEST(LdfSummary, HasItsOrder)
{
    LdfSource source;
    source.setProtocol("J2602_3_1.0"); // its lines stand among the others; its nodes are of another protocol
    source.nodes.replace(text(", Slave2"), QString());
    source.attributes = LdfSource::slaveAttributes("Slave1", "1", "Error1");
    source.frames = source.frames.left(source.frames.indexOf(text("Status2")));
    source.signalList.replace(text("Error2: 1, 0, Slave2"), text("Error2: 1, 0, Slave1"));
    source.schedules.replace(text("Status2 delay 20 ms;"), QString());
    tztest::LogCapture log;
    ASSERT_TRUE(loadLdf(source));
    std::vector<std::string> lines;
    for (const auto &line : log.lines())
        lines.push_back(line.text);
    const auto begin = std::find(lines.begin(), lines.end(), "LDF Configuration Summary:");
    ASSERT_NE(begin, lines.end());
    lines.erase(lines.begin(), begin);
    ASSERT_FALSE(lines.empty());
    EXPECT_THAT(lines.back(), testing::StartsWith("LDF file parsed successfully: "));
    lines.pop_back();
    EXPECT_THAT(lines, testing::ElementsAre("LDF Configuration Summary:", "  Protocol Version: J2602 3.1.0",
                                            "  Bus Speed: 19.2 kbps", "  Master Node: Master1", "  Slave Nodes: 1",
                                            "J2602 Specific Configuration:", "  Standard Baud Rate: 19.2 kbps",
                                            "  Broadcast Frames: 0", "  Slave Node: Slave1", "    Configured NAD: 0x01",
                                            "    Response Tolerance: 40.0%%", "    Configurable Frames: 0",
                                            "Frame Statistics:", "  Frames: 2", "  Diagnostic Frames: 0",
                                            "  Sporadic Frames: 0", "  Event Triggered Frames: 0", "  Total Signals: 4",
                                            "  Schedule Tables: 1"));
}

TEST(LdfNodes, WithoutSlavesGoOn)
{
    tztest::LogCapture log;
    LdfSource source;
    source.nodes = text("Master: Master1, 5.5 ms, 0.25 ms, 24 bits, 1.5 %;");
    source.signalList = text("Command: 8, 0, Master1, Nobody;");
    source.frames = text("CommandFrame: 0x10, Master1, 1 {\nCommand, 0;\n}");
    source.schedules = text("T {\nCommandFrame delay 5 ms;\n}");
    source.diagnosticFrames = text("X: 1 { }");
    const auto config = loadLdf(source);
    ASSERT_TRUE(config);
    EXPECT_TRUE(log.has(2, "No slave nodes defined"));
    EXPECT_EQ(config->master.timeBase, 5.5);
    EXPECT_EQ(config->master.jitter, 0.25);
    EXPECT_TRUE(config->diagnosticFrames.at(text("SlaveResp")).publisher.isEmpty());
    EXPECT_EQ(config->diagnosticFrames.size(), 2U);
}

TEST(LdfNodes, ChecksWarn)
{
    tztest::LogCapture log;
    LdfSource source;
    source.nodes.replace(text("Slave2;"), text("Slave2, Slave1, Slave3;"));
    source.attributes =
        LdfSource::slaveAttributes("Slave1", "7", "Error1", "2.1", "product_id = 0x8001, 0x100, 0x100;") +
        LdfSource::slaveAttributes("Slave2", "07", "Error2") + LdfSource::slaveAttributes("Slave3", "", "");
    const auto config = loadLdf(source);
    ASSERT_TRUE(config);
    EXPECT_EQ(config->slaves.size(), 3U);
    EXPECT_TRUE(log.has(2, "Node Slave1 has supplier ID 0x8001 exceeding recommended maximum 0x7FFF"));
    EXPECT_TRUE(log.has(2, "Node Slave1 has function ID 0x100 exceeding recommended maximum 0xFF"));
    EXPECT_TRUE(log.has(2, "Node Slave1 has variant ID 0x100 exceeding recommended maximum 0xFF"));
    EXPECT_TRUE(log.has(2, "Duplicate NAD 0x07 found for node Slave2"));
    EXPECT_TRUE(log.has(2, "Configured NAD not specified for slave node Slave3"));
    EXPECT_TRUE(log.has(2, "Response error signal not specified for slave node Slave3"));
}

TEST(LdfSignals, AreReadInBothForms)
{
    tztest::LogCapture log;
    LdfSource source;
    source.signalList += text("\nText: 16, {1, 2}, Slave1, Master1, Slave2 ; // two bytes\n"
                              "Odd: 99999, 1, Slave1, Master1;\n"
                              "this is nothing");
    source.frames += text("\nTextFrame: 0x23, Slave1, 2 {\nText, 0;\n}");
    const auto config = loadLdf(source);
    ASSERT_TRUE(config);
    const LdfSignal &signal = config->frames.at(text("TextFrame")).signals.at(text("Text"));
    EXPECT_EQ(signal.initialValue, text("{1, 2}"));
    EXPECT_EQ(signal.value, 0x0201U);
    EXPECT_EQ(signal.publisher, text("Slave1"));
    EXPECT_EQ(signal.subscribers, QStringList({text("Master1"), text("Slave2")}));
    EXPECT_EQ(signal.comment, text("two bytes"));
    EXPECT_TRUE(log.has(2, "Invalid signal format: this is nothing"));
}

TEST(LdfSignals, LineOfBlanksAloneIsNoSignalWhileAnEmptyOneIsNothing)
{
    tztest::LogCapture log;
    LdfSource source;
    source.signalList.replace(text("Master1;\nError2"), text("Master1;\n\n  \t\n\nError2"));
    ASSERT_TRUE(loadLdf(source));
    EXPECT_EQ(log.count(2, "Invalid signal format: "), 1U);
    EXPECT_EQ(log.countContaining(2, "Invalid signal format"), 1U);
}

TEST(LdfSignals, SectionMayBeMissing)
{
    LdfSource source;
    source.signalList.clear();
    source.attributes = LdfSource::slaveAttributes("Slave1", "1", "") + LdfSource::slaveAttributes("Slave2", "2", "");
    source.frames = text("Empty: 0x10, Master1, 1 {\n;\n}");
    source.schedules = text("T {\nEmpty delay 5 ms;\n}");
    tztest::LogCapture log;
    const auto config = loadLdf(source);
    ASSERT_TRUE(config);
    EXPECT_TRUE(config->frames.at(text("Empty")).signals.empty());
    EXPECT_EQ(log.count(1, "No signals section found"), 1U);
}

TEST(LdfSignals, EachFrameHasItsOwnCopyAndPlace)
{
    LdfSource source;
    source.signalList += text("\nShared: 4, 3, Slave1, Master1;");
    source.frames += text("\nFirst: 0x23, Slave1, 1 {\nShared, 0;\n}\nSecond: 0x24, Slave1, 1 {\nShared, 4;\n}");
    const auto config = loadLdf(source);
    ASSERT_TRUE(config);
    EXPECT_EQ(config->frames.at(text("First")).signals.at(text("Shared")).startBit, 0);
    EXPECT_EQ(config->frames.at(text("Second")).signals.at(text("Shared")).startBit, 4);
    EXPECT_EQ(encodeFrame(config->frames.at(text("Second"))), QByteArray::fromHex("30"));
}

TEST(LdfEncodings, AreReadAndRepresented)
{
    tztest::LogCapture log;
    LdfSource source;
    source.encodings = text("// a comment\nLevel {\nphysical_value, 0, 0x64, 0.5, -1.5e1, \"V\";\n"
                            "physical_value, 101, 99999999999, 1e999, .25;\n"
                            "logical_value, 0x3FF, \"none\";\nlogical_value, 99999999999, \"lost\";\nbcd_value;\n}");
    source.representations = text("Level: Level1, Ghost;\nMissing: Level1;\nnonsense");
    const auto config = loadLdf(source);
    ASSERT_TRUE(config);
    const LdfSignal &signal = config->frames.at(text("Status1")).signals.at(text("Level1"));
    ASSERT_TRUE(signal.encoding);
    EXPECT_EQ(signal.encoding->name, text("Level"));
    const LdfPhysicalRange &range = signal.encoding->physicalRanges.at(100);
    EXPECT_EQ(range.minRaw, 0U);
    EXPECT_EQ(range.factor, 0.5);
    EXPECT_EQ(range.offset, -15.0);
    EXPECT_EQ(range.unit, text("V"));
    const LdfPhysicalRange &odd = signal.encoding->physicalRanges.at(0); // what is too large reads 0
    EXPECT_EQ(odd.factor, 0.0);
    EXPECT_EQ(odd.offset, 0.25);
    EXPECT_TRUE(odd.unit.isEmpty());
    EXPECT_EQ(signal.encoding->logicalValues.size(), 1U);
    EXPECT_EQ(signal.encoding->logicalValues.at(0x3FF), text("none"));
    EXPECT_TRUE(log.has(2, "Signal Ghost not found for encoding Level"));
    EXPECT_TRUE(log.has(2, "Encoding Missing not found, skipping representation"));
    EXPECT_TRUE(log.has(2, "Invalid signal representation format: nonsense"));
}

TEST(LdfEncodings, KeyThatIsNoNumberReadsZeroAndOneTooLargeIsLeftOut)
{
    LdfSource source;
    source.encodings = text("Octal {\nlogical_value, 08, \"eight\";\n}\n"
                            "Mixed {\nlogical_value, 010, \"ten\";\nlogical_value, 4294967295, \"most\";\n"
                            "logical_value, 4294967296, \"beyond\";\nlogical_value, 99999999999, \"lost\";\n"
                            "logical_value, 0x100000000, \"hex\";\nlogical_value, 0777777777777777, \"octal\";\n}");
    source.representations = text("Octal: Level1;\nMixed: Command;");
    const auto config = loadLdf(source);
    ASSERT_TRUE(config);
    using Texts = std::map<std::uint32_t, QString>;
    EXPECT_EQ(config->frames.at(text("Status1")).signals.at(text("Level1")).encoding->logicalValues,
              (Texts{{0, text("eight")}}));
    EXPECT_EQ(config->frames.at(text("CommandFrame")).signals.at(text("Command")).encoding->logicalValues,
              (Texts{{8, text("ten")}, {4294967295U, text("most")}}));
}

TEST(LdfEncodings, WithKeysTooLargeAloneRefuseTheFile)
{
    tztest::LogCapture log;
    LdfSource source;
    source.encodings = text("Lost {\nlogical_value, 99999999999, \"lost\";\n}");
    EXPECT_FALSE(loadLdf(source));
    EXPECT_TRUE(log.has(3, "Failed to parse encoding values for Lost"));
}

TEST(LdfEncodings, AreThereOnceHoweverManySignalsHaveThem)
{
    LdfSource source;
    source.encodings = text("E {\nlogical_value, 0, \"off\";\n}");
    source.representations = text("E: Level1, Command;\nE: Error1;");
    const auto config = loadLdf(source);
    ASSERT_TRUE(config);
    const auto &status = config->frames.at(text("Status1")).signals;
    ASSERT_TRUE(status.at(text("Level1")).encoding);
    EXPECT_EQ(status.at(text("Level1")).encoding, status.at(text("Error1")).encoding);
    EXPECT_EQ(status.at(text("Level1")).encoding,
              config->frames.at(text("CommandFrame")).signals.at(text("Command")).encoding);
    EXPECT_FALSE(config->frames.at(text("Status2")).signals.at(text("Error2")).encoding);
}

TEST(LdfNodeChecks, NamesMustNotBeEmpty)
{
    tztest::LogCapture log;
    Common::LdfParser rules;
    LdfConfig config;
    Common::LdfSignalMap signalMap;
    Common::LdfEncodingMap encodings;
    config.master.type = LdfNodeType::master;
    EXPECT_FALSE(Common::validateLdfNodes({rules, config, signalMap, encodings}));
    EXPECT_TRUE(log.has(3, "Node name cannot be empty"));
    EXPECT_TRUE(log.has(3, "Failed to validate master node"));
    Common::addLdfSlave(QString(), config.slaves);
    EXPECT_TRUE(config.slaves.empty());
    EXPECT_TRUE(log.has(2, "Found empty slave name in list"));
}

} // namespace
