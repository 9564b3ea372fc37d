// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/history/HistoryFile.h"

#include "tests/database/history/FakeFiles.h"
#include "tests/support/FileSizeLimit.h"
#include "tests/support/LocaleCodec.h"
#include "tests/support/LogCapture.h"
#include "tests/support/TempWorkDir.h"

#include <QDir>
#include <QFileInfo>

#include <gtest/gtest.h>

#include <utility>

#include <sys/stat.h>

namespace {

class HistoryFileTest : public testing::Test
{
protected:
    tztest::TempWorkDir workDir;
    tztest::LogCapture log;
    HistoryFile file{QStringLiteral("config/history.json"), QLatin1String("dbcFiles"), QLatin1String("encoding")};
    FileHistory history;
    QString problem;
};

} // namespace

TEST_F(HistoryFileTest, WritesTheIndentedForm)
{
    history.files = {{"a.dbc", "UTF-8"}, {"b \"ü\".dbc", "GB18030"}};
    history.customFileMap = {{"dbc_import_default_directory", "/tmp"}, {"vci_dbc_view", "a.dbc"}};
    ASSERT_TRUE(file.write(history));
    EXPECT_EQ(tztest::readFile("config/history.json").toStdString(), R"({
    "customFileMap": {
        "dbc_import_default_directory": "/tmp",
        "vci_dbc_view": "a.dbc"
    },
    "dbcFiles": [
        {
            "encoding": "UTF-8",
            "filePath": "a.dbc"
        },
        {
            "encoding": "GB18030",
            "filePath": "b \"ü\".dbc"
        }
    ],
    "version": "2.0"
}
)");
}

TEST_F(HistoryFileTest, ReadsWhatItWrote)
{
    FileHistory written;
    written.files = {{"z.dbc", "GBK"}, {"a.dbc", "UTF-8"}};
    written.customFileMap = {{"k", "v"}};
    ASSERT_TRUE(file.write(written));
    ASSERT_EQ(file.read(history, problem), HistoryFile::ReadResult::Ok);
    ASSERT_EQ(history.files.size(), 2U);
    EXPECT_EQ(history.files[0].filePath, "z.dbc"); // in the order of the file
    EXPECT_EQ(history.files[0].encoding, "GBK");
    EXPECT_EQ(history.customFileMap, written.customFileMap);
}

TEST_F(HistoryFileTest, TakesWhatIsUsableAlone)
{
    tztest::writeFile("config/history.json", R"({"version": 7, "dbcFiles": [1, "x", null, {"filePath": "a.dbc"},
        {"filePath": 5, "encoding": 5}], "customFileMap": {"empty": "", "number": 3, "good": "v", "list": []}})");
    ASSERT_EQ(file.read(history, problem), HistoryFile::ReadResult::Ok);
    ASSERT_EQ(history.files.size(), 2U);
    EXPECT_EQ(history.files[0].encoding, "UTF-8");
    EXPECT_EQ(history.files[1].filePath, "");
    EXPECT_EQ(history.files[1].encoding, "UTF-8");
    EXPECT_EQ(history.customFileMap, (std::map<QString, QString>{{"good", "v"}}));
}

TEST_F(HistoryFileTest, RootsOfOtherTypesHoldNothing)
{
    for (const char *content : {"[]", "{}", R"({"dbcFiles": {}, "customFileMap": []})"}) {
        tztest::writeFile("config/history.json", content);
        EXPECT_EQ(file.read(history, problem), HistoryFile::ReadResult::Ok) << content;
        EXPECT_TRUE(history.files.empty() && history.customFileMap.empty()) << content;
    }
}

TEST_F(HistoryFileTest, TellsWhatIsWrongWithTheFile)
{
    EXPECT_EQ(file.read(history, problem), HistoryFile::ReadResult::Missing);
    for (const char *content : {"", "{\"dbcFiles\": [", "\xff\xfe{}", "not json"}) {
        tztest::writeFile("config/history.json", content);
        problem.clear();
        EXPECT_EQ(file.read(history, problem), HistoryFile::ReadResult::Malformed) << content;
        EXPECT_FALSE(problem.isEmpty()) << content;
    }
    tztest::writeFile("config/history.json", QByteArray(16 * 1024 * 1024 + 1, ' '));
    EXPECT_EQ(file.read(history, problem), HistoryFile::ReadResult::Malformed);
    QFile::remove("config/history.json");
    QDir().mkpath("config/history.json");
    EXPECT_EQ(file.read(history, problem), HistoryFile::ReadResult::NotReadable);
    EXPECT_TRUE(history.files.empty());
}

TEST_F(HistoryFileTest, NestingBeyondMeasureIsMalformed)
{
    constexpr int levels = 100'000;
    const QByteArray keys = "{\"customFileMap\": " + QByteArray("{\"k\": ").repeated(levels);
    for (const QByteArray &content :
         {QByteArray(levels, '['), keys, "{\"dbcFiles\": " + QByteArray(levels, '[') + QByteArray(levels, ']') + "}"}) {
        tztest::writeFile("config/history.json", content);
        problem.clear();
        EXPECT_EQ(file.read(history, problem), HistoryFile::ReadResult::Malformed);
        EXPECT_FALSE(problem.isEmpty());
    }
    EXPECT_TRUE(history.files.empty() && history.customFileMap.empty());
}

TEST_F(HistoryFileTest, APipeIsNotReadable)
{
    QDir().mkpath("config");
    ASSERT_EQ(::mkfifo("config/history.json", 0600), 0);
    EXPECT_EQ(file.read(history, problem), HistoryFile::ReadResult::NotReadable); // and nobody waits for a writer
}

TEST_F(HistoryFileTest, AFolderWithBlanksAndChineseCharactersInEveryLocale)
{
    const HistoryFile chinese{QStringLiteral("目录 一/历史.json"), QLatin1String("dbcFiles"),
                              QLatin1String("encoding")};
    history.files = {{"目录 一/温度 a.dbc", "GB18030"}};
    for (const char *name : {"UTF-8", "GB18030"}) {
        const tztest::LocaleCodec codec(name);
        ASSERT_TRUE(chinese.write(history)) << name;
        FileHistory read;
        ASSERT_EQ(chinese.read(read, problem), HistoryFile::ReadResult::Ok) << name;
        ASSERT_EQ(read.files.size(), 1U);
        EXPECT_EQ(read.files[0].filePath, "目录 一/温度 a.dbc") << name;
        EXPECT_TRUE(chinese.setAside());
        EXPECT_EQ(chinese.read(read, problem), HistoryFile::ReadResult::Missing) << name;
        EXPECT_TRUE(QFile::exists("目录 一/历史.json.bak")) << name;
        EXPECT_TRUE(QDir("目录 一").removeRecursively()); // nobody else understands its name
    }
    EXPECT_EQ(log.count(2, "The unusable history file 目录 一/历史.json is kept as 目录 一/历史.json.bak"), 2U);
}

TEST_F(HistoryFileTest, AFileInPlaceOfTheFolder)
{
    tztest::touch("config");
    EXPECT_FALSE(file.write(history));
    EXPECT_EQ(log.lines(), (std::vector<tztest::LogCapture::Line>{{3, "Failed to create config directory"}}));
}

TEST_F(HistoryFileTest, AFolderInPlaceOfTheFile)
{
    QDir().mkpath("config/history.json");
    EXPECT_FALSE(file.write(history));
    EXPECT_EQ(log.lines(), (std::vector<tztest::LogCapture::Line>{
                               {3, "Failed to open config file for writing: config/history.json"}}));
}

TEST_F(HistoryFileTest, AWriteThatFallsShortIsToldAndLeavesWhatWasThere)
{
    tztest::writeFile("config/history.json", "old");
    std::size_t attempts = 0;
    for (const auto &[size, room] :
         {std::pair(1'000'000, 500'000U), std::pair(510'000, 500'000U), std::pair(1'000, 0U)}) {
        history.files = {{QString(size, 'c'), "UTF-8"}};
        {
            const tztest::FileSizeLimit limit(room);
            EXPECT_FALSE(file.write(history)) << size;
        }
        EXPECT_EQ(log.countContaining(3, "Failed to write config file config/history.json: "), ++attempts);
        EXPECT_EQ(tztest::readFile("config/history.json"), "old") << size;
    }
}
