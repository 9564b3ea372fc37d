// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/database/history/FakeFiles.h"
#include "tests/support/LogCapture.h"
#include "tests/support/TempWorkDir.h"
#include "tests/support/WaitFor.h"

#include <QDir>

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <thread>

using tztest::FakeManager;
using tztest::FakeParser;
using tztest::savedFiles;
using tztest::savedKey;
using tztest::waitBlocking;
using tztest::writeFakeHistory;
using Lines = std::vector<tztest::LogCapture::Line>;

namespace {

class HistoryLoadTest : public testing::Test
{
protected:
    HistoryLoadTest() { parser.reset(); }

    /// True once the load has told its end.
    bool hasEnded(const char *lastLine)
    {
        return waitBlocking([&] { return log.count(1, lastLine) > 0 || log.countContaining(3, lastLine) > 0; });
    }
    QString customFile(const QString &key)
    {
        QString value;
        manager->getCustomFile(key, value);
        return value;
    }

    tztest::TempWorkDir workDir;
    tztest::LogCapture log;
    FakeParser &parser = FakeParser::instance();
    std::unique_ptr<FakeManager> manager = std::make_unique<FakeManager>();
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

TEST_F(HistoryLoadTest, ASaveDuringTheLoadWritesHeldAndPendingEntries)
{
    writeFakeHistory({"a", "b", "c"}, {"key"});
    parser.holdUp("b");
    manager->startHistoryLoad();
    ASSERT_TRUE(parser.waitUntilReading("b"));
    EXPECT_TRUE(manager->saveHistory());
    EXPECT_EQ(savedFiles(), (QStringList{"a=enc-a", "b=enc-b", "c=enc-c"}));
    EXPECT_EQ(savedKey("key"), "saved-key");
    EXPECT_TRUE(log.has(1, "saved 3 and 1"));
    parser.letGo("b");
    EXPECT_TRUE(hasEnded("loaded 3 and 1"));
}

TEST_F(HistoryLoadTest, AKeySetMeanwhileWins)
{
    writeFakeHistory({"a"}, {"changed", "kept"});
    parser.holdUp("a");
    manager->startHistoryLoad();
    ASSERT_TRUE(parser.waitUntilReading("a"));
    EXPECT_EQ(customFile("changed"), "saved-changed"); // taken over before the first file
    manager->setCustomFile("changed", "new");
    parser.letGo("a");
    ASSERT_TRUE(hasEnded("loaded 1 and 2"));
    EXPECT_EQ(customFile("changed"), "new");
    EXPECT_EQ(customFile("kept"), "saved-kept");
    EXPECT_EQ(savedKey("changed"), "new");
    EXPECT_EQ(savedFiles(), QStringList("a=enc-a"));
}

TEST_F(HistoryLoadTest, AKeySetWhileTheThreadStartsLosesNothing)
{
    for (int round = 0; round < 50; ++round) { // either side may come first
        writeFakeHistory({"a", "b"}, {"changed", "kept"});
        manager = std::make_unique<FakeManager>();
        manager->startHistoryLoad();
        manager->setCustomFile("changed", "new");
        manager->endHistoryLoad();
        EXPECT_EQ(customFile("changed"), "new");
        EXPECT_EQ(customFile("kept"), "saved-kept");
        EXPECT_EQ(savedKey("kept"), "saved-kept");
        EXPECT_EQ(savedFiles(), (QStringList{"a=enc-a", "b=enc-b"}));
    }
}

TEST_F(HistoryLoadTest, LookUpsDoNotWaitForAParse)
{
    writeFakeHistory({"a", "b"}, {"key"});
    parser.holdUp("b");
    manager->startHistoryLoad();
    ASSERT_TRUE(parser.waitUntilReading("b"));
    EXPECT_TRUE(manager->containsFile("a"));
    EXPECT_FALSE(manager->containsFile("b"));
    EXPECT_EQ(manager->getAllFiles().size(), 1U);
    EXPECT_EQ(customFile("key"), "saved-key");
    EXPECT_TRUE(manager->removeFile("a"));
    parser.letGo("b");
    EXPECT_TRUE(hasEnded("loaded 2 and 1"));
}

TEST_F(HistoryLoadTest, AFileAddedMeanwhileWins)
{
    writeFakeHistory({"a", "b"});
    parser.holdUp("a");
    manager->startHistoryLoad();
    ASSERT_TRUE(parser.waitUntilReading("a"));
    std::thread user([this] { EXPECT_TRUE(manager->addFile("b", "user")); });
    parser.letGo("a");
    user.join();
    manager->endHistoryLoad();
    EXPECT_EQ(manager->findFile("b")->encoding, "user");
    EXPECT_TRUE(manager->saveHistory());
    EXPECT_EQ(savedFiles(), (QStringList{"a=enc-a", "b=user"}));
}

TEST_F(HistoryLoadTest, ClearEndsTheLoadAndDropsTheFileInHand)
{
    writeFakeHistory({"a", "b", "c"}, {"key"});
    parser.holdUp("b");
    manager->startHistoryLoad();
    ASSERT_TRUE(parser.waitUntilReading("b"));
    manager->clear();
    parser.letGo("b");
    manager->endHistoryLoad();
    EXPECT_TRUE(manager->getAllFiles().empty());
    EXPECT_EQ(parser.readPaths(), (QStringList{"a", "b"}));
    EXPECT_TRUE(manager->saveHistory());
    EXPECT_TRUE(savedFiles().isEmpty());
    EXPECT_EQ(savedKey("key"), "");
}

TEST_F(HistoryLoadTest, ClearWhileTheThreadStartsLeavesNothing)
{
    for (int round = 0; round < 50; ++round) {
        writeFakeHistory({"a", "b"}, {"key"});
        manager = std::make_unique<FakeManager>();
        manager->startHistoryLoad();
        manager->clear();
        manager->endHistoryLoad();
        EXPECT_TRUE(manager->getAllFiles().empty());
        EXPECT_EQ(customFile("key"), "");
    }
}

TEST_F(HistoryLoadTest, ARepeatedPathRemovedInHandStaysAwayAndTheNextIsLoaded)
{
    writeFakeHistory({"a"});
    tztest::touch("z");
    tztest::writeFile("config/fake.json", R"({"files": [{"filePath": "a"}, {"filePath": "z"}]})");
    ASSERT_TRUE(manager->addFile("a", "user"));
    parser.reset(); // forgets that it was read
    parser.holdUp("a");
    manager->startHistoryLoad();
    ASSERT_TRUE(parser.waitUntilReading("a"));
    EXPECT_TRUE(manager->removeFile("a"));
    parser.letGo("a");
    ASSERT_TRUE(waitBlocking([&] { return manager->containsFile("z"); }));
    manager->endHistoryLoad();
    EXPECT_FALSE(manager->containsFile("a"));
}

TEST_F(HistoryLoadTest, TheEndJoinsAfterTheFileInHand)
{
    writeFakeHistory({"a", "b", "c"}, {"key"});
    parser.holdUp("b");
    manager->startHistoryLoad();
    ASSERT_TRUE(parser.waitUntilReading("b"));
    std::atomic<bool> ended{false};
    std::thread end([&] {
        manager->endHistoryLoad();
        ended = true;
    });
    EXPECT_FALSE(ended);
    parser.letGo("b");
    end.join();
    EXPECT_TRUE(manager->containsFile("b")); // was in hand
    EXPECT_TRUE(manager->saveHistory());     // what was still to come stays in the history
    EXPECT_EQ(savedFiles(), (QStringList{"a=enc-a", "b=enc-b", "c=enc-c"}));
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

TEST_F(HistoryLoadTest, UseOfAllKindsWhileItLoads)
{
    QStringList paths;
    for (int i = 0; i < 12; ++i)
        paths.append(QString("file%1").arg(i, 2, 10, QLatin1Char('0')));
    writeFakeHistory(paths, {"kept"});
    manager->startHistoryLoad();
    std::thread user([this] {
        for (int i = 0; i < 20; ++i)
            EXPECT_TRUE(manager->addFile("user", "UTF-8"));
    });
    for (int i = 0; i < 20; ++i) {
        manager->setCustomFile("key", QString::number(i));
        EXPECT_TRUE(manager->saveHistory());
        EXPECT_GE(savedFiles().size(), 12);
        EXPECT_EQ(savedKey("kept"), "saved-kept");
        manager->getAllFiles();
    }
    user.join();
    ASSERT_TRUE(hasEnded("loaded 12 and 1"));
    EXPECT_EQ(manager->getAllFiles().size(), 13U);
}
