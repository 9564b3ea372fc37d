// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/dbc/DbcStatements.h"
#include "database/dbc/DbcWriter.h"
#include "tests/database/TestFiles.h"
#include "tests/database/dbc/DbcSamples.h"
#include "tests/support/FileSizeLimit.h"
#include "tests/support/LogCapture.h"
#include "tests/support/TempWorkDir.h"

#include <QDir>
#include <QTextCodec>

#include <gtest/gtest.h>

#include <utility>

using tztest::makeMessage;
using tztest::makeSignal;
using tztest::readFile;
using tztest::writeFile;
using Lines = std::vector<tztest::LogCapture::Line>;

namespace {

std::string merged(const char *source, const std::vector<DbcMessage> &messages)
{
    return DbcStatements::mergedText(QString::fromUtf8(source), messages).toStdString();
}

class DbcMerge : public testing::Test
{
protected:
    tztest::TempWorkDir workDir;
    tztest::LogCapture log;
    const std::vector<DbcMessage> messages{makeMessage(7, "New", {makeSignal("A"), makeSignal("B", 8)})};
    const QByteArray newText = "BO_ 7 New: 8 Ecu\n"
                               " SG_ A : 0|8@1+ (1,0) [0|255] \"\" \n"
                               " SG_ B : 8|8@1+ (1,0) [0|255] \"\" \n";
};

} // namespace

TEST_F(DbcMerge, ComesBehindTheLastSignal)
{
    EXPECT_EQ(merged("BO_ 1 M: 8 X\n SG_ S : 0|8@1+ (1,0) [0|255] \"\" X\n\nCM_ \"c\";\n", messages),
              "BO_ 1 M: 8 X\n SG_ S : 0|8@1+ (1,0) [0|255] \"\" X\n\n\n" + newText.toStdString() + "\n\nCM_ \"c\";\n");
}

TEST_F(DbcMerge, SeveralMessagesInTheirOrder)
{
    EXPECT_EQ(merged(" SG_ S : 0|8@1+ (1,0) [0|1] \"\" X", {makeMessage(1, "A"), makeMessage(2, "B")}),
              " SG_ S : 0|8@1+ (1,0) [0|1] \"\" X\n\n\nBO_ 1 A: 8 Ecu\n\nBO_ 2 B: 8 Ecu\n");
}

TEST_F(DbcMerge, AFileWithNoSignalLineGetsTheMessagesAtTheVeryTopWithoutTheEmptyElement)
{
    EXPECT_EQ(merged("VERSION \"\"\nBO_ 1 M: 8 X\n", messages),
              newText.toStdString() + "\nVERSION \"\"\nBO_ 1 M: 8 X\n");
}

TEST_F(DbcMerge, LinesThatDoNotCountAsSignals)
{
    for (const char *line : {" SG_ S m3 : 0|8@1+ (1,0) [0|255] \"\" X", " SG_ S M : 0|8@1+ (1,0) [0|255] \"\" X",
                             " SG_ S : 0|8@1+ (1e-3,0) [0|255] \"\" X", " SG_ S : 0|8@1+ (1,0) [0|1e9] \"\" X",
                             " SG_ S : 0|8@1+ (1, 0) [0|255] \"\" X", "SG_MUL_VAL_ 1 S M 1-2;"}) {
        EXPECT_EQ(merged(line, messages), newText.toStdString() + '\n' + line) << line;
    }
}

TEST_F(DbcMerge, AMultiplexMarkWithoutABlankCounts)
{
    EXPECT_EQ(merged("SG_ Sm3 : 0|8@1+ (1,0) [0|255] \"\"", {}), "SG_ Sm3 : 0|8@1+ (1,0) [0|255] \"\"\n\n");
}

TEST_F(DbcMerge, NoMessages)
{
    EXPECT_EQ(merged("a\nb", {}), "a\nb");
    EXPECT_EQ(merged("", {}), "");
}

TEST_F(DbcMerge, AnEmptySource)
{
    writeFile("in.dbc", "");
    EXPECT_TRUE(DbcWriter::merge("in.dbc", "out.dbc", messages, "UTF-8"));
    EXPECT_EQ(readFile("out.dbc"), newText + '\n');
}

TEST_F(DbcMerge, ReceiversAreJoinedAndAnEmptyListStaysEmpty)
{
    DbcSignal signal = makeSignal("S");
    EXPECT_EQ(merged("", {makeMessage(1, "M", {signal})}), "BO_ 1 M: 8 Ecu\n SG_ S : 0|8@1+ (1,0) [0|255] \"\" \n\n");
    signal.receivers = QStringList{"A", "B"};
    EXPECT_EQ(merged("", {makeMessage(1, "M", {signal})}),
              "BO_ 1 M: 8 Ecu\n SG_ S : 0|8@1+ (1,0) [0|255] \"\" A,B\n\n");
}

TEST_F(DbcMerge, NumbersHaveSixDigits)
{
    DbcSignal signal = makeSignal("S");
    signal.factor = 1.0 / 3.0;
    signal.offset = 1e-7;
    EXPECT_NE(merged("", {makeMessage(1, "M", {signal})}).find("(0.333333,1e-07)"), std::string::npos);
}

TEST_F(DbcMerge, EveryKindOfLineEndBecomesANewline)
{
    writeFile("in.dbc", "a\r\nb\rc\n\rd");
    EXPECT_TRUE(DbcWriter::merge("in.dbc", "out.dbc", {}, "UTF-8"));
    EXPECT_EQ(readFile("out.dbc"), "a\nb\nc\n\nd");
}

TEST_F(DbcMerge, BlockCommentsStay)
{
    writeFile("in.dbc", "/* why */\na");
    EXPECT_TRUE(DbcWriter::merge("in.dbc", "out.dbc", {}, "UTF-8"));
    EXPECT_EQ(readFile("out.dbc"), "/* why */\na");
}

TEST_F(DbcMerge, SourceAndDestinationMayBeOneFile)
{
    writeFile("a.dbc", "\xEF\xBB\xBFx");
    EXPECT_TRUE(DbcWriter::merge("a.dbc", "a.dbc", messages, "GB18030"));
    EXPECT_EQ(readFile("a.dbc"), "\xEF\xBB\xBF" + newText + "\nx");
}

TEST_F(DbcMerge, KeepsTheEncoding)
{
    const QString text = QStringLiteral("CM_ \"Größe\";");
    DbcMessage message = makeMessage(1, "M", {makeSignal("S")});
    message.signals[0].unit = QStringLiteral("°C");
    for (const char *name : {"UTF-8", "windows-1252", "GB18030", "UTF-16", "UTF-16LE", "UTF-16BE"}) {
        QTextCodec *codec = QTextCodec::codecForName(name);
        QTextCodec::ConverterState withoutMark(QTextCodec::IgnoreHeader);
        const QByteArray source = codec->fromUnicode(text.constData(), text.size(), &withoutMark);
        writeFile("in.dbc", source);
        ASSERT_TRUE(DbcWriter::merge("in.dbc", "out.dbc", {message}, name)) << name;
        EXPECT_EQ(codec->toUnicode(readFile("out.dbc")),
                  QStringLiteral("BO_ 1 M: 8 Ecu\n SG_ S : 0|8@1+ (1,0) [0|255] \"°C\" \n\n") + text)
            << name;
    }
}

TEST_F(DbcMerge, AByteOrderMarkOverridesTheEncodingAndIsKept)
{
    writeFile("in.dbc", "\xEF\xBB\xBF"
                        "CM_ \"Gr\xC3\xB6\xC3\x9F"
                        "e\";");
    EXPECT_TRUE(DbcWriter::merge("in.dbc", "out.dbc", {}, "windows-1252"));
    EXPECT_EQ(readFile("out.dbc"), readFile("in.dbc"));
}

TEST_F(DbcMerge, AMarkOfWiderCharactersIsKeptToo)
{
    const QString text = QStringLiteral("CM_ \"Größe 温度\";");
    for (const char *name : {"UTF-16LE", "UTF-16BE", "UTF-32LE", "UTF-32BE"}) {
        writeFile("in.dbc", QTextCodec::codecForName(name)->fromUnicode(text)); // with a mark
        ASSERT_TRUE(DbcWriter::merge("in.dbc", "out.dbc", messages, "UTF-8")) << name;
        const QByteArray expected =
            QTextCodec::codecForName(name)->fromUnicode(QString::fromUtf8(newText) + '\n' + text);
        EXPECT_EQ(readFile("out.dbc"), expected) << name;
    }
}

TEST_F(DbcMerge, PathsWithBlanksAndChineseCharacters)
{
    writeFile("目录 一/温度 a.dbc", "abc");
    EXPECT_TRUE(DbcWriter::merge("目录 一/温度 a.dbc", "目录 一/温度 b.dbc", messages, "UTF-8"));
    EXPECT_EQ(readFile("目录 一/温度 b.dbc"), newText + "\nabc");
    EXPECT_TRUE(log.lines().empty());
    EXPECT_FALSE(DbcWriter::merge("目录 一/没有.dbc", "out.dbc", messages, "UTF-8"));
    EXPECT_EQ(log.lines(), (Lines{{3, "DBC merge failed by save file: 目录 一/没有.dbc"}}));
}

TEST_F(DbcMerge, ALineThatCannotBeSearchedIsToldAndDoesNotCount)
{
    QString line = QStringLiteral("SG_ S : 0|8@1+ (1,0) [0|255] \"?\"");
    line[line.indexOf('?')] = QChar(0xD800); // half a character
    const QString text = QStringLiteral("SG_ S : 0|8@1+ (1,0) [0|255] \"\"\n") + line;
    EXPECT_EQ(DbcStatements::mergedText(text, {}), QStringLiteral("SG_ S : 0|8@1+ (1,0) [0|255] \"\"\n\n\n") + line);
    EXPECT_EQ(log.countContaining(3, "could not be applied to a text of "), 1U);
}

TEST_F(DbcMerge, AnUnknownEncodingIsTheLocales)
{
    writeFile("in.dbc", "abc");
    EXPECT_TRUE(DbcWriter::merge("in.dbc", "out.dbc", {}, "no such codec"));
    EXPECT_EQ(readFile("out.dbc"), "abc");
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(DbcMerge, AMissingSourceIsToldByItsPath)
{
    EXPECT_FALSE(DbcWriter::merge("none.dbc", "out.dbc", messages, "UTF-8"));
    EXPECT_EQ(log.lines(), (Lines{{3, "DBC merge failed by save file: none.dbc"}}));
    EXPECT_FALSE(QFile::exists("out.dbc"));
}

TEST_F(DbcMerge, ADestinationThatCannotBeWrittenIsToldByItsPath)
{
    writeFile("in.dbc", "abc");
    QDir().mkpath("folder");
    EXPECT_FALSE(DbcWriter::merge("in.dbc", "folder", messages, "UTF-8"));
    EXPECT_FALSE(DbcWriter::merge("in.dbc", "missing/out.dbc", messages, "UTF-8"));
    EXPECT_EQ(log.lines(), (Lines{{3, "DBC merge failed by save file: folder"},
                                  {3, "DBC merge failed by save file: missing/out.dbc"}}));
}

TEST_F(DbcMerge, AWriteThatFallsShortIsToldAndLeavesWhatWasThere)
{
    writeFile("out.dbc", "old");
    for (const auto &[size, room] :
         {std::pair(1'000'000, 500'000U), std::pair(510'000, 500'000U), std::pair(1'000, 0U)}) {
        writeFile("in.dbc", QByteArray(size, 'c'));
        log.clear();
        {
            const tztest::FileSizeLimit limit(room);
            EXPECT_FALSE(DbcWriter::merge("in.dbc", "out.dbc", messages, "UTF-8")) << size;
        }
        EXPECT_EQ(log.lines(), (Lines{{3, "DBC merge failed by save file: out.dbc"}})) << size;
        EXPECT_EQ(readFile("out.dbc"), "old") << size;
    }
}
