// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/dbc/DbcWriter.h"

#include "database/dbc/DbcStatements.h"
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

class DbcWriterTest : public testing::Test
{
protected:
    DbcWriterTest()
    {
        file.messages = {makeMessage(1, "M", {makeSignal("S")})};
        file.messages[0].signals[0].unit = QStringLiteral("°C");
        file.messages[0].comment = QStringLiteral("Größe");
    }

    tztest::TempWorkDir workDir;
    tztest::LogCapture log;
    DbcFile file;
};

} // namespace

TEST_F(DbcWriterTest, WritesTheTextAndTellsIt)
{
    EXPECT_TRUE(DbcWriter(file).save("out.dbc", "UTF-8"));
    EXPECT_EQ(readFile("out.dbc"), DbcStatements::fileText(file).toUtf8());
    EXPECT_FALSE(readFile("out.dbc").contains('\r'));
    EXPECT_EQ(log.lines(), (Lines{{1, "Successfully saved DBC file: out.dbc"}}));
}

TEST_F(DbcWriterTest, InEachEncodingWithoutAByteOrderMark)
{
    const QString text = DbcStatements::fileText(file);
    for (const char *name : {"UTF-8", " windows-1252 ", "GB18030", "GBK", "UTF-16", "UTF-16LE", "UTF-16BE"}) {
        ASSERT_TRUE(DbcWriter(file).save("out.dbc", name)) << name;
        QTextCodec *codec = QTextCodec::codecForName(QByteArray(name).trimmed());
        QTextCodec::ConverterState withoutMark(QTextCodec::IgnoreHeader);
        EXPECT_EQ(readFile("out.dbc"), codec->fromUnicode(text.constData(), text.size(), &withoutMark)) << name;
    }
}

TEST_F(DbcWriterTest, AnEmptyOrUnknownEncodingIsTheLocales)
{
    const QByteArray expected = QTextCodec::codecForLocale()->fromUnicode(DbcStatements::fileText(file));
    for (const char *name : {"", "  ", "no such codec"}) {
        ASSERT_TRUE(DbcWriter(file).save("out.dbc", name));
        EXPECT_EQ(readFile("out.dbc"), expected) << name;
    }
}

TEST_F(DbcWriterTest, NotesAnAsciiNameWithoutEffectOnTheText)
{
    DbcWriter writer(file);
    EXPECT_FALSE(writer.isAsciiEncoding());
    EXPECT_TRUE(writer.save("a.dbc", "US-ASCII"));
    EXPECT_TRUE(writer.isAsciiEncoding());
    EXPECT_TRUE(writer.save("b.dbc", "UTF-8"));
    EXPECT_FALSE(writer.isAsciiEncoding());
    EXPECT_NE(readFile("a.dbc").size(), 0);
}

TEST_F(DbcWriterTest, ReplacesAFileAsAWhole)
{
    writeFile("out.dbc", QByteArray(100000, 'x'));
    EXPECT_TRUE(DbcWriter(file).save("out.dbc", "UTF-8"));
    EXPECT_EQ(readFile("out.dbc"), DbcStatements::fileText(file).toUtf8());
}

TEST_F(DbcWriterTest, APathWithBlanksAndChineseCharacters)
{
    QDir().mkpath("目录 一");
    EXPECT_TRUE(DbcWriter(file).save("目录 一/温度 a.dbc", "UTF-8"));
    EXPECT_EQ(readFile("目录 一/温度 a.dbc"), DbcStatements::fileText(file).toUtf8());
    EXPECT_FALSE(DbcWriter(file).save("目录 二/温度 a.dbc", "UTF-8"));
    EXPECT_EQ(log.lines(), (Lines{{1, "Successfully saved DBC file: 目录 一/温度 a.dbc"},
                                  {3, "Failed to open file for writing: 目录 二/温度 a.dbc"}}));
}

TEST_F(DbcWriterTest, AFileThatCannotBeOpenedIsTold)
{
    QDir().mkpath("folder");
    EXPECT_FALSE(DbcWriter(file).save("folder", "UTF-8"));
    EXPECT_FALSE(DbcWriter(file).save("missing/out.dbc", "UTF-8"));
    EXPECT_EQ(log.lines(), (Lines{{3, "Failed to open file for writing: folder"},
                                  {3, "Failed to open file for writing: missing/out.dbc"}}));
}

TEST_F(DbcWriterTest, AWriteThatFallsShortIsToldAndLeavesWhatWasThere)
{
    writeFile("out.dbc", "old");
    for (const auto &[size, room] :
         {std::pair(1'000'000, 500'000U), std::pair(510'000, 500'000U), std::pair(1'000, 0U)}) {
        file.comments = QStringList(QString(size, 'c'));
        log.clear();
        {
            const tztest::FileSizeLimit limit(room);
            EXPECT_FALSE(DbcWriter(file).save("out.dbc", "UTF-8")) << size;
        }
        EXPECT_EQ(log.lines(), (Lines{{3, "Failed to write file: out.dbc"}})) << size;
        EXPECT_EQ(readFile("out.dbc"), "old") << size;
    }
}
