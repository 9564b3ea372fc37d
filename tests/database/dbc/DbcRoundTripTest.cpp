// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/dbc/DbcParser.h"
#include "database/dbc/DbcStatements.h"
#include "database/dbc/DbcWriter.h"
#include "tests/database/TestFiles.h"
#include "tests/database/dbc/DbcSamples.h"
#include "tests/support/LogCapture.h"
#include "tests/support/TempWorkDir.h"

#include <QTextCodec>

#include <gtest/gtest.h>

using tztest::makeMessage;
using tztest::makeSignal;
using tztest::readFile;
using tztest::writeFile;

namespace {

const char *const head = "VERSION \"1\"\nNS_ :\n\tCM_\nBS_:\nBU_: Ecu\n";

class DbcRoundTrip : public testing::Test
{
protected:
    static DbcFile parse(const QString &path, const QString &encoding = "UTF-8")
    {
        Common::DbcParser parser;
        EXPECT_TRUE(parser.parseFile(path, encoding));
        return Common::DbcParser::model();
    }
    static DbcFile parseText(const QByteArray &text)
    {
        writeFile("in.dbc", head + text);
        return parse("in.dbc");
    }
    static DbcFile writtenAndRead(const DbcFile &file, const QString &encoding = "UTF-8")
    {
        EXPECT_TRUE(DbcWriter(file).save("out.dbc", encoding));
        return parse("out.dbc", encoding);
    }

    tztest::TempWorkDir workDir;
    tztest::LogCapture log;
};

const char *const everything =
    "VAL_TABLE_ OnOff 1 \"On\" 0 \"Off\" ;\n"
    "BO_ 3221225472 VECTOR__INDEPENDENT_SIG_MSG: 0 Vector__XXX\n"
    " SG_ Free : 0|8@1+ (1,0) [0|255] \"\" Vector__XXX\n\n"
    "BO_ 100 Status: 8 Ecu\n"
    " SG_ Mux M : 0|8@1+ (1,0) [0|255] \"\" Ecu\n"
    " SG_ Speed m1 : 15|16@0- (0.5,-40) [-40|1000] \"km/h\" Ecu,Tool\n"
    " SG_ Real : 32|32@1- (1,0) [-3.4E+38|3.4E+38] \"\" Tool\n\n"
    "CM_ BO_ 100 \"a message\";\nCM_ SG_ 100 Speed \"the speed\";\n"
    "BA_DEF_ BO_ \"Period\" INT 0 1000;\nBA_DEF_ BO_ \"Kind\" ENUM \"a\",\"b\";\n"
    "BA_DEF_ \"Name\" STRING ;\nBA_DEF_ SG_ \"Weight\" FLOAT 0 1;\n"
    "BA_DEF_DEF_ \"Period\" 100;\nBA_DEF_DEF_ \"Kind\" \"a\";\nBA_DEF_DEF_ \"Name\" \"\";\n"
    "BA_DEF_DEF_ \"Weight\" 0.5;\n"
    "BA_ \"Name\" \"bus\";\nBA_ \"Period\" BO_ 100 20;\nBA_ \"Kind\" BO_ 100 1;\nBA_ \"Weight\" SG_ 100 Speed 1;\n"
    "VAL_ 100 Mux 1 \"one\" 2 \"two\" ;\n"
    "SIG_VALTYPE_ 100 Real : 1;\n"
    "SG_MUL_VAL_ 100 Speed Mux 1-1, 4-7;\n";

} // namespace

TEST_F(DbcRoundTrip, WhatIsWrittenIsReadBackTheSame)
{
    const DbcFile first = parseText(everything);
    const DbcFile second = writtenAndRead(first);
    // The text tells all that can be written; only the default of a real number changes its form.
    QString firstText = DbcStatements::fileText(first);
    EXPECT_EQ(firstText, DbcStatements::fileText(second));
    EXPECT_TRUE(readFile("out.dbc").contains("BA_DEF_DEF_ \"Name\" \"\";\n")); // empty, but there
    EXPECT_EQ(second.version, "1");
    EXPECT_EQ(second.newSymbols, QStringList("CM_"));
    ASSERT_EQ(second.messages.size(), 1U);
    EXPECT_EQ(second.messages[0].comment, "a message");
    EXPECT_EQ(second.messages[0].signals[1].multiplexValue, 1);
    EXPECT_EQ(second.messages[0].signals[2].valueType, 1);
    EXPECT_EQ(second.specialMessages.size(), 1U);
    EXPECT_EQ(first.attributeDefinitions[3].defaultValue.toString(), "0.5");
    EXPECT_EQ(second.attributeDefinitions[3].defaultValue.toString(), "0.500000");
}

TEST_F(DbcRoundTrip, AMessageWithNoSignalsSurvivesAndComesBackWithTheWarning)
{
    const DbcFile first = parseText("BO_ 100 Empty: 8 Ecu\n\nBO_ 200 Other: 8 Ecu\n"
                                    " SG_ S : 0|8@1+ (1,0) [0|255] \"\" Ecu\n");
    log.clear();
    const DbcFile second = writtenAndRead(first);
    ASSERT_EQ(second.messages.size(), 2U);
    EXPECT_EQ(second.messages[0].name, "Empty");
    EXPECT_TRUE(second.messages[0].signals.empty());
    EXPECT_EQ(log.countContaining(2, "Parse signals exception for message(Empty, 100): "), 1U);
}

TEST_F(DbcRoundTrip, AnExtendedMessageComesBackAsAStandardOne)
{
    const DbcFile first = parseText("BO_ 2147484672 M: 8 Ecu\n SG_ S : 0|8@1+ (1,0) [0|255] \"\" Ecu\n");
    EXPECT_TRUE(first.messages[0].isExtended);
    const DbcFile second = writtenAndRead(first);
    EXPECT_EQ(second.messages[0].id, 1024U);
    EXPECT_FALSE(second.messages[0].isExtended);
}

TEST_F(DbcRoundTrip, AFrameFormatKeepsAnExtendedMessageExtended)
{
    const DbcFile first = parseText("BO_ 2147484672 M: 8 Ecu\n SG_ S : 0|8@1+ (1,0) [0|255] \"\" Ecu\n"
                                    "BA_DEF_ BO_ \"VFrameFormat\" ENUM \"StandardCAN\",\"ExtendedCAN\";\n"
                                    "BA_ \"VFrameFormat\" BO_ 2147484672 1;\n");
    EXPECT_TRUE(writtenAndRead(first).messages[0].isExtended);
}

TEST_F(DbcRoundTrip, CommentsOfNodesAndOfTheFileAreLost)
{
    DbcFile first = parseText("BO_ 1 M: 8 Ecu\n SG_ S : 0|8@1+ (1,0) [0|255] \"\" Ecu\nCM_ BU_ Ecu \"a node\";\n");
    EXPECT_EQ(first.nodes[0].comment, "a node");
    first.comments.append("global");
    const DbcFile second = writtenAndRead(first);
    EXPECT_TRUE(readFile("out.dbc").contains("CM_ \"global\";\n"));
    EXPECT_EQ(second.nodes[0].comment, "");
    EXPECT_TRUE(second.comments.isEmpty());
}

TEST_F(DbcRoundTrip, ATextOfAMessageLosesItsQuotes)
{
    const DbcFile first = parseText("BO_ 1 M: 8 Ecu\n SG_ S : 0|8@1+ (1,0) [0|255] \"\" Ecu\n"
                                    "BA_DEF_ BO_ \"T\" STRING ;\nBA_ \"T\" BO_ 1 \"hello\";\n");
    const DbcFile second = writtenAndRead(first);
    EXPECT_TRUE(readFile("out.dbc").contains("BA_ \"T\" BO_ 1 hello;\n"));
    EXPECT_EQ(first.messages[0].attributes[0].value, "hello");
    ASSERT_EQ(second.messages[0].attributes.size(), 1U);
}

TEST_F(DbcRoundTrip, ATableWithoutAMessageComesBackAsAValueTable)
{
    const DbcFile first = parseText("BO_ 1 M: 8 Ecu\n SG_ S : 0|8@1+ (1,0) [0|255] \"\" Ecu\n"
                                    "VAL_ Table 1 \"one\" ;\n");
    const DbcFile second = writtenAndRead(first);
    EXPECT_TRUE(readFile("out.dbc").contains("VAL_TABLE_ Table 1 \"one\" ;\n"));
    ASSERT_EQ(second.valueTables.size(), 1U);
    EXPECT_EQ(second.valueTables[0].entries, first.valueTables[0].entries);
}

TEST_F(DbcRoundTrip, NumbersKeepSixDigitsAndADerivedRangeIsWritten)
{
    const DbcFile first = parseText("BO_ 1 M: 8 Ecu\n SG_ A : 0|8@1+ (0.123456789,0) [0|1234567] \"\" Ecu\n"
                                    " SG_ B : 8|8@1+ (2,0) [0|0] \"\" Ecu\n");
    const DbcFile second = writtenAndRead(first);
    EXPECT_EQ(second.messages[0].signals[0].factor, 0.123457);
    EXPECT_EQ(second.messages[0].signals[0].maximum, 1.23457e6);
    EXPECT_TRUE(readFile("out.dbc").contains(" SG_ B : 8|8@1+ (2,0) [0|510] \"\" Ecu\n"));
}

TEST_F(DbcRoundTrip, ASignalWithoutReceivers)
{
    DbcFile file = parseText("BO_ 1 M: 8 Ecu\n SG_ S : 0|8@1+ (1,0) [0|255] \"\" \n");
    EXPECT_TRUE(file.messages[0].signals[0].receivers.isEmpty());
    EXPECT_EQ(writtenAndRead(file).messages[0].signals[0].receivers, QStringList("Vector__XXX"));
    ASSERT_TRUE(DbcWriter::merge("in.dbc", "merged.dbc", {makeMessage(2, "New", {makeSignal("N")})}, "UTF-8"));
    EXPECT_TRUE(readFile("merged.dbc").contains(" SG_ N : 0|8@1+ (1,0) [0|255] \"\" \n"));
}

TEST_F(DbcRoundTrip, AMergedFileHoldsBothSets)
{
    parseText(everything);
    ASSERT_TRUE(DbcWriter::merge("in.dbc", "merged.dbc", {makeMessage(300, "New", {makeSignal("N")})}, "UTF-8"));
    const DbcFile merged = parse("merged.dbc");
    ASSERT_EQ(merged.messages.size(), 2U);
    EXPECT_EQ(merged.messages[0].name, "New"); // only the special message has a signal line that counts
    EXPECT_EQ(merged.messages[0].signals.size(), 1U);
    EXPECT_EQ(merged.messages[1].signals.size(), 3U);
    EXPECT_EQ(merged.specialMessages.size(), 1U);
    EXPECT_EQ(merged.attributeDefinitions.size(), 4U);
}

TEST_F(DbcRoundTrip, UnitsAndCommentsSurviveInEachEncoding)
{
    const auto text = [](const QString &unit, const QString &comment) {
        return QString::fromLatin1(head) + QStringLiteral("BO_ 1 M: 8 Ecu\n SG_ S : 0|8@1+ (1,0) [0|255] \"") + unit +
               QStringLiteral("\" Ecu\nCM_ SG_ 1 S \"") + comment + QStringLiteral("\";\nVAL_ 1 S 0 \"") + comment +
               QStringLiteral("\" ;\n");
    };
    struct Case
    {
        const char *encoding;
        QString unit;
        QString comment;
    };
    const Case cases[] = {{"UTF-8", "°C", "Größe 温度"},   {"windows-1252", "°C", "Größe €"},
                          {"GB18030", "℃", "Größe 温度"},  {"GBK", "℃", "温度"},
                          {"UTF-16", "°C", "Größe 温度"},  {"UTF-16LE", "°C", "Größe 温度"},
                          {"UTF-16BE", "°C", "Größe 温度"}};
    for (const auto &[encoding, unit, comment] : cases) {
        writeFile("in.dbc", QTextCodec::codecForName(encoding)->fromUnicode(text(unit, comment)));
        const DbcFile file = writtenAndRead(parse("in.dbc", encoding), encoding);
        const DbcSignal &signal = file.messages.at(0).signals.at(0);
        EXPECT_EQ(signal.unit, unit) << encoding;
        EXPECT_EQ(signal.comment, comment) << encoding;
        EXPECT_EQ(signal.valueDescriptions.at(0), comment) << encoding;
    }
    writeFile("in.dbc", "\xEF\xBB\xBF" + text("°C", "Größe").toUtf8());
    const DbcFile file = writtenAndRead(parse("in.dbc", "GBK"), "UTF-8"); // the mark overrides the name
    EXPECT_EQ(file.messages.at(0).signals.at(0).unit, "°C");
}
