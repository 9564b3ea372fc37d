// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/ldf/LdfParser.h"
#include "tests/database/ldf/LdfSource.h"
#include "tests/support/LogCapture.h"

#include <QTemporaryFile>

#include <gtest/gtest.h>

#include <string>

namespace {

QString text(const char *latin)
{
    return QString::fromLatin1(latin);
}

struct RefusedCase
{
    const char *name;
    void (*change)(LdfSource &);
    const char *line; ///< at error level; empty: refused without a line of its own
};
class LdfRefused : public testing::TestWithParam<RefusedCase>
{
};

TEST_P(LdfRefused, TheWholeFile)
{
    tztest::LogCapture log;
    LdfSource source;
    ASSERT_TRUE(loadLdf(source));
    log.clear();
    GetParam().change(source);
    EXPECT_FALSE(loadLdf(source));
    if (*GetParam().line != '\0') {
        EXPECT_TRUE(log.has(3, GetParam().line));
    }
    EXPECT_EQ(log.countContaining(1, "LDF file parsed successfully"), 0U);
}

INSTANTIATE_TEST_SUITE_P(
    Nodes, LdfRefused,
    testing::Values(
        RefusedCase{"NoNodes", [](LdfSource &s) { s.nodes.clear(); }, "Nodes section not found in LDF file"},
        RefusedCase{"NoMaster", [](LdfSource &s) { s.nodes = text("Slaves: Slave1;"); },
                    "Master node definition not found"},
        RefusedCase{"NoBlockForASlave",
                    [](LdfSource &s) { s.attributes = LdfSource::slaveAttributes("Slave1", "1", "Error1"); },
                    "No attributes section found for node Slave2"},
        RefusedCase{"NoBlockForASlaveIsReportedForTheFileToo",
                    [](LdfSource &s) { s.attributes = LdfSource::slaveAttributes("Slave1", "1", "Error1"); },
                    "Failed to parse attributes for node Slave2"},
        RefusedCase{"NoProtocol", [](LdfSource &s) { s.attributes.replace(text("LIN_protocol"), text("protocol")); },
                    "LIN protocol version not found for node Slave1"},
        RefusedCase{"ConfiguredNadTooLarge",
                    [](LdfSource &s) { s.attributes.replace(text("0x01"), text("0x80000000")); },
                    "Invalid configured NAD value for node Slave1: 0x80000000"},
        RefusedCase{"ConfiguredNadNoOctal", [](LdfSource &s) { s.attributes.replace(text("0x01"), text("09")); },
                    "Invalid configured NAD value for node Slave1: 09"},
        RefusedCase{"InitialNadTooLarge",
                    [](LdfSource &s) { s.attributes.replace(text("0x01;"), text("1; initial_NAD = 99999999999;")); },
                    "Invalid initial NAD value for node Slave1: 99999999999"},
        RefusedCase{
            "ProductIdTooLarge",
            [](LdfSource &s) { s.attributes.replace(text("0x01;"), text("1; product_id = 99999999999, 1, 1;")); },
            "Failed to parse attributes for node Slave1"},
        RefusedCase{"NoAttributesAtAll", [](LdfSource &s) { s.attributes.clear(); },
                    "LIN protocol version not specified for slave node Slave1"},
        RefusedCase{"NoAttributesAtAllNamesTheSlave", [](LdfSource &s) { s.attributes.clear(); },
                    "Failed to validate slave node: Slave1"}),
    [](const auto &test) { return std::string(test.param.name); });

INSTANTIATE_TEST_SUITE_P(
    Sections, LdfRefused,
    testing::Values(
        RefusedCase{"NoFrames", [](LdfSource &s) { s.frames.clear(); }, "Frames section not found in LDF file"},
        RefusedCase{"NoSchedules", [](LdfSource &s) { s.schedules.clear(); },
                    "Schedule tables section not found in LDF file"},
        RefusedCase{"UnmatchedBraces", [](LdfSource &s) { s.schedules += text("{"); },
                    "Unmatched braces in section 'Schedule_tables'"},
        RefusedCase{"EmptyEncoding", [](LdfSource &s) { s.encodings = text("Ascii {\nascii_value;\n}"); },
                    "Failed to parse encoding values for Ascii"},
        RefusedCase{"LongDiagnosticSignal", [](LdfSource &s) { s.diagnosticSignals = text("Req: 65, 0;"); },
                    "Invalid diagnostic signal: Req"},
        RefusedCase{"FrameId64", [](LdfSource &s) { s.frames.replace(text("0x22"), text("64")); }, ""},
        RefusedCase{"FrameOfNineBytes", [](LdfSource &s) { s.frames.replace(text("Slave2, 1"), text("Slave2, 9")); },
                    ""},
        RefusedCase{"SignalsLongerThanTheFrame",
                    [](LdfSource &s) { s.signalList.replace(text("Error2: 1"), text("Error2: 9")); }, ""},
        RefusedCase{"UnknownSignalInAFrame",
                    [](LdfSource &s) { s.frames.replace(text("Level1, 1"), text("Ghost, 1")); },
                    "Signal Ghost not found for frame Status1"},
        RefusedCase{"UnknownSignalInADiagnosticFrame",
                    [](LdfSource &s) { s.diagnosticFrames = text("MasterReq: 0x3C {\nGhost, 0;\n}"); },
                    "Signal Ghost not found for frame MasterReq"},
        RefusedCase{"UnknownSporadicMember", [](LdfSource &s) { s.sporadicFrames = text("Any: CommandFrame, Ghost;"); },
                    "Frame Ghost not found for sporadic frame Any"},
        RefusedCase{"UnknownEventMember", [](LdfSource &s) { s.eventFrames = text("Event: Table, 0x30, Ghost;"); },
                    "Frame Ghost not found for event triggered frame Event"},
        RefusedCase{"UnknownFrameInASchedule", [](LdfSource &s) { s.schedules += text("\nT {\nGhost delay 5 ms;\n}"); },
                    ""},
        RefusedCase{"CommandOutsideInitTable",
                    [](LdfSource &s) { s.schedules += text("\nT {\nAssignNAD { Slave1 } delay 5 ms;\n}"); }, ""},
        RefusedCase{"InitTableWithSomethingElse",
                    [](LdfSource &s) { s.schedules += text("\nInitTable {\nwhatever;\n}"); }, ""},
        RefusedCase{"InitTableWithAnUnknownFrame",
                    [](LdfSource &s) { s.schedules += text("\nInitTable {\nGhost delay 5 ms;\n}"); }, ""}),
    [](const auto &test) { return std::string(test.param.name); });

/// A standard whose rules refuse one thing, told by a letter.
class RefusingParser : public Common::LdfParser
{
public:
    explicit RefusingParser(char refused)
        : m_refused(refused)
    {
    }
    bool parseProtocolConfig(const QString &, LdfNode &) override { return m_refused != 'p'; }
    bool parseFrameConfig(const QString &, LdfFrame &) override { return m_refused != 'c'; }
    bool validateNodeConfig(const LdfNode &node) override { return m_refused != node.name.front().toLatin1(); }
    bool validateFrame(const LdfFrame &) override { return m_refused != 'f'; }
    bool validateScheduleTable(const LdfScheduleTable &) override { return m_refused != 't'; }
    bool updateFrameTiming(LdfFrame &) override { return m_refused != 'u'; }

private:
    char m_refused;
};

TEST(LdfRefusedByARule, TheWholeFileButForATiming)
{
    struct Case
    {
        char refused;
        const char *line; ///< at error level; empty: none of its own
    };
    QTemporaryFile file;
    ASSERT_TRUE(file.open());
    file.write(LdfSource().text().toUtf8());
    ASSERT_TRUE(file.flush());
    for (const auto &[refused, line] :
         {Case{'p', "Failed to parse protocol specific config for node Slave1"}, Case{'c', ""}, Case{'f', ""},
          Case{'t', ""}, Case{'M', "Failed to validate master node"},
          Case{'S', "Failed to validate slave node: Slave1"}}) {
        tztest::LogCapture log;
        EXPECT_FALSE(RefusingParser(refused).parseFile(file.fileName(), text("UTF-8"))) << refused;
        EXPECT_EQ(log.countContaining(1, "LDF file parsed successfully"), 0U) << refused;
        const std::size_t errorLines = *line == '\0' ? 0U : 1U;
        EXPECT_EQ(log.countContaining(3, line), errorLines) << refused;
    }
    for (const char taken : {'u', '-'})
        EXPECT_TRUE(RefusingParser(taken).parseFile(file.fileName(), text("UTF-8"))) << taken;
}

} // namespace
