// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/database/history/HistoryLoadFixture.h"

#include <gtest/gtest.h>

#include <memory>
#include <thread>

using tztest::FakeManager;
using tztest::savedFiles;
using tztest::savedKey;
using tztest::waitBlocking;
using tztest::writeFakeHistory;
using Lines = std::vector<tztest::LogCapture::Line>;

namespace {

class HistoryMeanwhileTest : public tztest::HistoryLoadFixture
{
protected:
    static constexpr int rounds = 20; // of races: either side may come first, and none may lose anything
};

} // namespace

TEST_F(HistoryMeanwhileTest, ASaveDuringTheLoadWritesHeldAndPendingEntries)
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

TEST_F(HistoryMeanwhileTest, AKeySetMeanwhileWins)
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

TEST_F(HistoryMeanwhileTest, AKeySetWhileTheThreadStartsLosesNothing)
{
    for (int round = 0; round < rounds; ++round) {
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

TEST_F(HistoryMeanwhileTest, LookUpsDoNotWaitForAParse)
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

TEST_F(HistoryMeanwhileTest, AFileAddedMeanwhileWins)
{
    writeFakeHistory({"a", "b"});
    parser.holdUp("a");
    manager->startHistoryLoad();
    ASSERT_TRUE(parser.waitUntilReading("a"));
    std::thread user([this] { EXPECT_TRUE(manager->addFile("b", "user")); });
    const bool waits = waitBlocking([&] { return manager->waitingCallers() == 1; });
    parser.letGo("a");
    user.join();
    ASSERT_TRUE(waits);
    ASSERT_TRUE(hasEnded("loaded 1 and 0"));
    EXPECT_EQ(parser.readPaths(), (QStringList{"a", "b"})); // once each
    EXPECT_EQ(log.countContaining(2, "overwriting"), 0U);
    EXPECT_EQ(manager->findFile("b")->encoding, "user");
    EXPECT_TRUE(manager->saveHistory());
    EXPECT_EQ(savedFiles(), (QStringList{"a=enc-a", "b=user"}));
}

TEST_F(HistoryMeanwhileTest, AFileAddedWhileTheThreadStartsWins)
{
    for (int round = 0; round < rounds; ++round) {
        writeFakeHistory({"a", "b"});
        manager = std::make_unique<FakeManager>();
        manager->startHistoryLoad();
        EXPECT_TRUE(manager->addFile("b", "user"));
        manager->endHistoryLoad();
        ASSERT_EQ(manager->findFile("b")->encoding, "user") << round;
    }
}

TEST_F(HistoryMeanwhileTest, AFileRemovedWhileTheThreadStartsStaysAway)
{
    for (int round = 0; round < rounds; ++round) {
        writeFakeHistory({"a"});
        manager = std::make_unique<FakeManager>();
        EXPECT_TRUE(manager->addFile("a", "user"));
        manager->startHistoryLoad();
        EXPECT_TRUE(manager->removeFile("a"));
        manager->endHistoryLoad();
        ASSERT_FALSE(manager->containsFile("a")) << round;
    }
}

TEST_F(HistoryMeanwhileTest, AFileAddedBeforeTheThreadRunsIsNotToCome)
{
    writeFakeHistory({"a", "b"}, {"key"});
    startWithoutAThread();
    EXPECT_EQ(log.lines(), (Lines{{3, "load exception: no thread left"}}));
    EXPECT_TRUE(manager->addFile("b", "user"));
    EXPECT_EQ(customFile("key"), "saved-key"); // taken over first
    EXPECT_TRUE(manager->removeFile("b"));
    EXPECT_TRUE(manager->saveHistory());
    EXPECT_EQ(savedFiles(), QStringList("a=enc-a"));
}

TEST_F(HistoryMeanwhileTest, AFileRemovedBeforeTheThreadRunsIsNotToCome)
{
    writeFakeHistory({"a", "b"});
    EXPECT_TRUE(manager->addFile("b", "user"));
    startWithoutAThread();
    EXPECT_TRUE(manager->removeFile("b"));
    EXPECT_TRUE(manager->saveHistory());
    EXPECT_EQ(savedFiles(), QStringList("a=enc-a"));
}

TEST_F(HistoryMeanwhileTest, ClearEndsTheLoadAndDropsTheFileInHand)
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

TEST_F(HistoryMeanwhileTest, ClearWhileTheThreadStartsLeavesNothing)
{
    for (int round = 0; round < rounds; ++round) {
        writeFakeHistory({"a", "b"}, {"key"});
        manager = std::make_unique<FakeManager>();
        manager->startHistoryLoad();
        manager->clear();
        manager->endHistoryLoad();
        EXPECT_TRUE(manager->getAllFiles().empty());
        EXPECT_EQ(customFile("key"), "");
    }
}

TEST_F(HistoryMeanwhileTest, ARepeatedPathRemovedInHandStaysAwayAndTheNextIsLoaded)
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

TEST_F(HistoryMeanwhileTest, UseOfAllKindsWhileItLoads)
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
