// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/database/history/FakeFiles.h"
#include "tests/support/LogCapture.h"
#include "tests/support/TempWorkDir.h"
#include "tests/support/WaitFor.h"

#include <QDir>

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include <sys/stat.h>

using tztest::FakeDisk;
using tztest::FakeManager;
using tztest::readFile;
using tztest::savedFiles;
using tztest::savedKey;
using tztest::writeFakeHistory;
using tztest::writeFile;
using Lines = std::vector<tztest::LogCapture::Line>;

namespace {

const char *const historyPath = "config/fake.json";
const char *const keptPath = "config/fake.json.bak";

class HistorySaveTest : public testing::Test
{
protected:
    HistorySaveTest()
    {
        tztest::FakeParser::instance().reset();
        disk.reset();
    }

    void load()
    {
        manager.startHistoryLoad();
        manager.endHistoryLoad();
    }

    tztest::TempWorkDir workDir;
    tztest::LogCapture log;
    FakeDisk &disk = FakeDisk::instance();
    FakeManager manager;
};

} // namespace

TEST_F(HistorySaveTest, AnExceptionIsToldAndFalse)
{
    disk.throwAtWritings(2);
    EXPECT_FALSE(manager.saveHistory());
    manager.setCustomFile("key", "value");
    EXPECT_EQ(log.lines(), (Lines{{3, "save exception: disk broke"}, {3, "save exception: disk broke"}}));
    EXPECT_TRUE(manager.addFile("a", "UTF-8")); // no lock is left behind
    EXPECT_TRUE(manager.saveHistory());
    EXPECT_EQ(savedFiles(), QStringList("a=UTF-8"));
    EXPECT_EQ(savedKey("key"), "value");
}

TEST_F(HistorySaveTest, AnExceptionWhileTheHistoryIsReadLosesNothing)
{
    writeFakeHistory({"a"}, {"kept"});
    disk.throwAtReadings(2);
    load();
    EXPECT_EQ(log.lines(), (Lines{{3, "load exception: disk broke"}}));
    manager.setCustomFile("new", "first"); // must take the history over, and fails at that
    EXPECT_TRUE(log.has(3, "save exception: disk broke"));
    EXPECT_EQ(savedKey("kept"), "saved-kept");
    EXPECT_TRUE(manager.saveHistory());
    EXPECT_EQ(savedFiles(), QStringList("a=enc-a"));
    EXPECT_EQ(savedKey("kept"), "saved-kept");
    EXPECT_EQ(savedKey("new"), "first");
}

TEST_F(HistorySaveTest, LookUpsDoNotWaitForTheDisk)
{
    ASSERT_TRUE(manager.addFile("a", "UTF-8"));
    disk.holdUpWritings();
    std::thread saver([this] { manager.setCustomFile("key", "value"); });
    const bool isWriting = disk.waitUntilWriting();
    std::atomic<bool> lookedUp{false};
    std::thread user([&] {
        QString value;
        EXPECT_TRUE(manager.getCustomFile("key", value));
        EXPECT_TRUE(manager.containsFile("a"));
        EXPECT_EQ(manager.getAllFiles().size(), 1U);
        EXPECT_TRUE(manager.addFile("b", "UTF-8"));
        lookedUp = true;
    });
    EXPECT_TRUE(tztest::waitBlocking([&] { return lookedUp.load(); }));
    disk.letWritingsGo();
    user.join();
    saver.join();
    EXPECT_TRUE(isWriting);
    EXPECT_EQ(log.lines(), (Lines{{1, "saved 1 and 1"}}));
}

TEST_F(HistorySaveTest, TheLastSaveHasTheLatest)
{
    std::thread first([this] {
        for (int i = 0; i < 20; ++i)
            manager.setCustomFile("first", QString::number(i));
    });
    std::thread second([this] {
        for (int i = 0; i < 20; ++i)
            manager.setCustomFile("second", QString::number(i));
    });
    first.join();
    second.join();
    EXPECT_EQ(savedKey("first"), "19");
    EXPECT_EQ(savedKey("second"), "19");
}

TEST_F(HistorySaveTest, ABrokenHistoryIsKeptUnderAnotherName)
{
    writeFile(keptPath, "of an earlier run");
    writeFile(historyPath, "{\"files\": [{\"filePath\": \"a\"}"); // a bracket short
    const QByteArray broken = readFile(historyPath);
    load();
    EXPECT_EQ(readFile(historyPath), broken); // until there is something to write
    log.clear();
    manager.setCustomFile("key", "value");
    EXPECT_EQ(log.lines(), (Lines{{2, "The unusable history file config/fake.json is kept as config/fake.json.bak"},
                                  {1, "saved 0 and 1"}}));
    EXPECT_EQ(readFile(keptPath), broken);
    EXPECT_EQ(savedKey("key"), "value");
    log.clear();
    EXPECT_TRUE(manager.saveHistory()); // the file is ours now
    EXPECT_EQ(log.lines(), (Lines{{1, "saved 0 and 1"}}));
    EXPECT_EQ(readFile(keptPath), broken);
}

TEST_F(HistorySaveTest, ABrokenHistoryThatCannotBeKeptIsNotReplaced)
{
    writeFile(historyPath, "broken");
    tztest::touch(QString(keptPath) + "/in the way");
    load();
    log.clear();
    EXPECT_FALSE(manager.saveHistory());
    EXPECT_EQ(
        log.countContaining(3, "Failed to keep the unusable history file config/fake.json as config/fake.json.bak: "),
        1U);
    EXPECT_EQ(log.lines().size(), 1U);
    EXPECT_EQ(readFile(historyPath), "broken");
    QFile::remove(QString(keptPath) + "/in the way");
    QDir().rmdir(keptPath);
    EXPECT_TRUE(manager.saveHistory());
    EXPECT_EQ(readFile(keptPath), "broken");
}

TEST_F(HistorySaveTest, NoHistoryAndAGoodOneLeaveNothingBehind)
{
    load();
    EXPECT_TRUE(manager.saveHistory());
    FakeManager next;
    next.startHistoryLoad();
    next.endHistoryLoad();
    EXPECT_TRUE(next.saveHistory());
    EXPECT_FALSE(QFile::exists(keptPath));
}

TEST_F(HistorySaveTest, APipeInPlaceOfTheHistoryHoldsNobodyUp)
{
    QDir().mkpath("config");
    ASSERT_EQ(::mkfifo(historyPath, 0600), 0);
    load();
    EXPECT_EQ(log.lines(), (Lines{{3, "history not readable: config/fake.json"}}));
    manager.setCustomFile("key", "value");
    EXPECT_EQ(savedKey("key"), "value");
}
