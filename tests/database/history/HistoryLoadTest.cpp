// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/database/history/HistoryLoadFixture.h"
#include "tests/support/LocaleCodec.h"

#include <QDir>
#include <QFileInfo>

#include <gtest/gtest.h>

#include <memory>

using tztest::FakeManager;
using tztest::savedFiles;
using tztest::savedKey;
using tztest::writeFakeHistory;
using Lines = std::vector<tztest::LogCapture::Line>;

namespace {

class HistoryLoadTest : public tztest::HistoryLoadFixture
{
};

} // namespace

TEST_F(HistoryLoadTest, LoadsWhatTheLastRunLeft)
{
    writeFakeHistory({"b", "a"}, {"k1", "k2"});
    manager->startHistoryLoad();
    ASSERT_TRUE(hasEnded("loaded 2 and 2"));
    EXPECT_EQ(parser.readPaths(), (QStringList{"b", "a"})); // in the order of the file
    EXPECT_EQ(manager->findFile("a")->encoding, "enc-a");
    EXPECT_EQ(customFile("k2"), "saved-k2");
    EXPECT_EQ(log.lines(), (Lines{{1, "loaded 2 and 2"}}));
}

TEST_F(HistoryLoadTest, ASecondStartDoesNothing)
{
    writeFakeHistory({"a"});
    manager->startHistoryLoad();
    ASSERT_TRUE(hasEnded("loaded 1 and 0"));
    EXPECT_TRUE(manager->removeFile("a"));
    manager->startHistoryLoad();
    manager->endHistoryLoad();
    manager->startHistoryLoad();
    EXPECT_EQ(parser.readPaths(), QStringList("a"));
    EXPECT_FALSE(manager->containsFile("a"));
}

TEST_F(HistoryLoadTest, NoHistoryIsTold)
{
    manager->startHistoryLoad();
    manager->endHistoryLoad();
    EXPECT_EQ(log.lines(), (Lines{{1, "history missing: config/fake.json"}}));
}

TEST_F(HistoryLoadTest, AHistoryThatCannotBeReadIsTold)
{
    QDir().mkpath("config/fake.json");
    manager->startHistoryLoad();
    manager->endHistoryLoad();
    EXPECT_EQ(log.lines(), (Lines{{3, "history not readable: config/fake.json"}}));
}

TEST_F(HistoryLoadTest, ABrokenHistoryLeavesTheManagerEmpty)
{
    tztest::writeFile("config/fake.json", R"({"files": [{"filePath": "a"}], "customFileMap": {"k": "v")");
    manager->startHistoryLoad();
    ASSERT_TRUE(hasEnded("history malformed: "));
    EXPECT_TRUE(manager->getAllFiles().empty());
    EXPECT_EQ(customFile("k"), "");
    ASSERT_EQ(log.lines().size(), 1U);
    EXPECT_GT(log.lines()[0].text.size(), std::string("history malformed: ").size()); // the reader's own text
}

TEST_F(HistoryLoadTest, AFileThatHasGoneIsGoneFromTheNextSave)
{
    writeFakeHistory({"a", "gone", "z"});
    QFile::remove("gone");
    manager->startHistoryLoad();
    ASSERT_TRUE(hasEnded("loaded 2 and 0"));
    EXPECT_EQ(log.lines(), (Lines{{2, "no longer exists: gone"}, {1, "loaded 2 and 0"}}));
    EXPECT_TRUE(manager->saveHistory());
    EXPECT_EQ(savedFiles(), (QStringList{"a=enc-a", "z=enc-z"}));
}

TEST_F(HistoryLoadTest, PathsWithBlanksAndChineseCharactersInEveryLocale)
{
    const QString path = QStringLiteral("目录 一/温度 a.dbc");
    for (const char *name : {"UTF-8", "GB18030"}) {
        const tztest::LocaleCodec codec(name);
        writeFakeHistory({path});
        manager = std::make_unique<FakeManager>();
        manager->startHistoryLoad();
        ASSERT_TRUE(hasEnded("loaded 1 and 0")) << name;
        QFile::remove(path);
        manager = std::make_unique<FakeManager>();
        manager->startHistoryLoad();
        ASSERT_TRUE(hasEnded("loaded 0 and 0")) << name;
        EXPECT_EQ(log.lines(), (Lines{{1, "loaded 1 and 0"},
                                      {2, "no longer exists: 目录 一/温度 a.dbc"}, // UTF-8 in every locale
                                      {1, "loaded 0 and 0"}}))
            << name;
        log.clear();
        QDir(QFileInfo(path).path()).removeRecursively(); // nobody else understands its name
    }
}

TEST_F(HistoryLoadTest, AnElementWithoutAPathIsToldAndNeverSaved)
{
    writeFakeHistory({"a"});
    tztest::writeFile("config/fake.json", R"({"files": [{"filePath": "a"}, {"filePath": ""}, {}]})");
    parser.holdUp("a");
    manager->startHistoryLoad();
    ASSERT_TRUE(parser.waitUntilReading("a"));
    EXPECT_TRUE(manager->saveHistory());
    EXPECT_EQ(savedFiles(), QStringList("a=UTF-8"));
    parser.letGo("a");
    ASSERT_TRUE(hasEnded("loaded 1 and 0"));
    EXPECT_EQ(log.count(2, "no longer exists: "), 2U);
}

TEST_F(HistoryLoadTest, OfAnAbsurdlyLongHistoryTheFirstThousandAreTakenWithOneWarning)
{
    QByteArray files;
    for (int i = 0; i < 1500; ++i)
        files += (i == 0 ? "{\"filePath\": \"gone" : ", {\"filePath\": \"gone") + QByteArray::number(i) + "\"}";
    tztest::writeFile("config/fake.json", "{\"files\": [" + files + "]}");
    manager->startHistoryLoad();
    ASSERT_TRUE(hasEnded("loaded 0 and 0"));
    EXPECT_EQ(log.count(2, "History file config/fake.json lists 1500 files, the first 1000 are taken"), 1U);
    EXPECT_EQ(log.countContaining(2, "no longer exists: gone"), 1000U);
}

TEST_F(HistoryLoadTest, AFileThatCannotBeReadIsLeftOut)
{
    writeFakeHistory({"a", "bad", "z"});
    parser.fail("bad");
    manager->startHistoryLoad();
    ASSERT_TRUE(hasEnded("loaded 2 and 0"));
    EXPECT_FALSE(manager->containsFile("bad"));
    EXPECT_TRUE(manager->containsFile("z"));
}

TEST_F(HistoryLoadTest, MoreThanSixteenFilesAreRefused)
{
    QStringList paths;
    for (int i = 0; i < 18; ++i)
        paths.append(QString("file%1").arg(i));
    writeFakeHistory(paths);
    manager->startHistoryLoad();
    ASSERT_TRUE(hasEnded("loaded 16 and 0"));
    EXPECT_EQ(log.count(3, "too many: 16"), 2U);
    EXPECT_FALSE(manager->containsFile("file17"));
}

TEST_F(HistoryLoadTest, ARepeatedPathIsReadTwice)
{
    writeFakeHistory({"a", "a"});
    manager->startHistoryLoad();
    ASSERT_TRUE(hasEnded("loaded 2 and 0"));
    EXPECT_EQ(log.count(2, "overwriting: a"), 1U);
    EXPECT_EQ(manager->getAllFiles().size(), 1U);
}

TEST_F(HistoryLoadTest, TheEndJoinsAfterTheFileInHand)
{
    writeFakeHistory({"a", "b", "c"}, {"key"});
    parser.holdUp("b");
    manager->startHistoryLoad();
    ASSERT_TRUE(parser.waitUntilReading("b"));
    manager->requestHistoryEnd(); // does not wait: "b" is held up
    EXPECT_FALSE(manager->containsFile("b"));
    parser.letGo("b");
    manager->endHistoryLoad();
    EXPECT_EQ(parser.readPaths(), (QStringList{"a", "b"}));
    EXPECT_TRUE(manager->containsFile("b")); // was in hand
    EXPECT_FALSE(manager->containsFile("c"));
    EXPECT_TRUE(log.has(1, "loaded 2 and 1"));
    EXPECT_TRUE(manager->saveHistory()); // what was still to come stays in the history
    EXPECT_EQ(savedFiles(), (QStringList{"a=enc-a", "b=enc-b", "c=enc-c"}));
}

TEST_F(HistoryLoadTest, AnEndRequestedBeforeTheStartKeepsAllInTheHistory)
{
    writeFakeHistory({"a"}, {"key"});
    manager->requestHistoryEnd();
    manager->startHistoryLoad();
    manager->endHistoryLoad();
    EXPECT_TRUE(parser.readPaths().isEmpty());
    EXPECT_TRUE(manager->saveHistory());
    EXPECT_EQ(savedFiles(), QStringList("a=enc-a"));
    EXPECT_EQ(savedKey("key"), "saved-key");
}

TEST_F(HistoryLoadTest, DestructionEndsTheLoad)
{
    writeFakeHistory({"a", "b"});
    manager->startHistoryLoad();
    manager.reset();
    SUCCEED(); // the sanitizers see whether the thread still used it
}

TEST_F(HistoryLoadTest, AnExceptionIsToldAndLosesNoEntry)
{
    writeFakeHistory({"a", "bad", "c"}, {"key"});
    parser.throwAt("bad");
    manager->startHistoryLoad();
    ASSERT_TRUE(hasEnded("load exception: parser broke"));
    EXPECT_TRUE(manager->containsFile("a"));
    EXPECT_TRUE(manager->saveHistory());
    EXPECT_EQ(savedFiles(), (QStringList{"a=enc-a", "bad=enc-bad", "c=enc-c"}));
}
