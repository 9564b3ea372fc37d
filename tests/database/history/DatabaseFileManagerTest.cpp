// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/database/history/FakeFiles.h"
#include "tests/support/LogCapture.h"
#include "tests/support/TempWorkDir.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

using tztest::FakeManager;
using tztest::FakeParser;
using tztest::savedFiles;
using Lines = std::vector<tztest::LogCapture::Line>;

namespace {

class DatabaseFileManagerTest : public testing::Test
{
protected:
    DatabaseFileManagerTest()
    {
        FakeParser::instance().reset();
        tztest::FakeDisk::instance().reset();
    }

    tztest::TempWorkDir workDir;
    tztest::LogCapture log;
    FakeManager manager;
};

} // namespace

TEST_F(DatabaseFileManagerTest, HoldsWhatWasAdded)
{
    EXPECT_TRUE(manager.addFile("b", "GBK"));
    EXPECT_TRUE(manager.addFile("a", "UTF-8"));
    EXPECT_TRUE(manager.containsFile("a"));
    EXPECT_FALSE(manager.containsFile("c"));
    ASSERT_NE(manager.findFile("b"), nullptr);
    EXPECT_EQ(manager.findFile("b")->encoding, "GBK");
    EXPECT_EQ(manager.findFile("c"), nullptr);
    const auto files = manager.getAllFiles();
    ASSERT_EQ(files.size(), 2U);
    EXPECT_EQ(files.begin()->first, "a");
    EXPECT_TRUE(log.lines().empty());
    EXPECT_FALSE(QFile::exists("config/fake.json")); // adding does not save
}

TEST_F(DatabaseFileManagerTest, RefusesAnEmptyPathSilently)
{
    EXPECT_FALSE(manager.addFile("", "UTF-8"));
    EXPECT_FALSE(manager.removeFile(""));
    EXPECT_TRUE(FakeParser::instance().readPaths().isEmpty());
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(DatabaseFileManagerTest, OverwritesWithAWarning)
{
    EXPECT_TRUE(manager.addFile("a", "UTF-8"));
    EXPECT_TRUE(manager.addFile("a", "GBK"));
    EXPECT_EQ(log.lines(), (Lines{{2, "overwriting: a"}}));
    EXPECT_EQ(manager.findFile("a")->encoding, "GBK");
}

TEST_F(DatabaseFileManagerTest, AFailureLeavesWhatWasHeld)
{
    EXPECT_TRUE(manager.addFile("a", "UTF-8"));
    FakeParser::instance().fail("a");
    EXPECT_FALSE(manager.addFile("a", "GBK"));
    EXPECT_EQ(manager.findFile("a")->encoding, "UTF-8");
}

TEST_F(DatabaseFileManagerTest, AnExceptionLeavesTheLocksFree)
{
    FakeParser::instance().throwAt("a");
    EXPECT_THROW(manager.addFile("a", "UTF-8"), std::runtime_error);
    EXPECT_TRUE(manager.addFile("b", "UTF-8"));
    EXPECT_FALSE(manager.containsFile("a"));
}

TEST_F(DatabaseFileManagerTest, ASeventeenthFileIsRefusedAlsoWhenItReplacesOneAlreadyHeld)
{
    for (int i = 0; i < 16; ++i)
        EXPECT_TRUE(manager.addFile(QString("file%1").arg(i), "UTF-8"));
    EXPECT_TRUE(log.lines().empty());
    EXPECT_FALSE(manager.addFile("new", "UTF-8"));
    EXPECT_FALSE(manager.addFile("file3", "GBK"));
    EXPECT_EQ(log.lines(), (Lines{{3, "too many: 16"}, {3, "too many: 16"}}));
    EXPECT_EQ(manager.findFile("file3")->encoding, "UTF-8");
    EXPECT_TRUE(manager.removeFile("file3"));
    EXPECT_TRUE(manager.addFile("new", "UTF-8"));
}

TEST_F(DatabaseFileManagerTest, RemovesAndWarnsOfWhatIsNotThere)
{
    EXPECT_TRUE(manager.addFile("a", "UTF-8"));
    EXPECT_TRUE(manager.removeFile("a"));
    EXPECT_FALSE(manager.removeFile("a"));
    EXPECT_EQ(log.lines(), (Lines{{2, "not found for removal: a"}}));
}

TEST_F(DatabaseFileManagerTest, ClearEmptiesFilesAndKeys)
{
    EXPECT_TRUE(manager.addFile("a", "UTF-8"));
    manager.setCustomFile("key", "value");
    manager.clear();
    QString value;
    EXPECT_TRUE(manager.getAllFiles().empty());
    EXPECT_FALSE(manager.getCustomFile("key", value));
}

TEST_F(DatabaseFileManagerTest, ACustomFileIsSavedAtOnce)
{
    QString value = "untouched";
    EXPECT_FALSE(manager.getCustomFile("key", value));
    EXPECT_EQ(value, "untouched");
    manager.setCustomFile("key", "value");
    EXPECT_EQ(log.lines(), (Lines{{1, "saved 0 and 1"}}));
    EXPECT_EQ(tztest::savedKey("key"), "value");
    EXPECT_TRUE(manager.getCustomFile("key", value));
    EXPECT_EQ(value, "value");
}

TEST_F(DatabaseFileManagerTest, SavesInTheOrderOfThePaths)
{
    for (const char *path : {"c", "a", "B"})
        EXPECT_TRUE(manager.addFile(path, "UTF-8"));
    EXPECT_TRUE(manager.saveHistory());
    EXPECT_EQ(savedFiles(), (QStringList{"B=UTF-8", "a=UTF-8", "c=UTF-8"}));
    EXPECT_EQ(log.lines(), (Lines{{1, "saved 3 and 0"}}));
}

TEST_F(DatabaseFileManagerTest, AFailedSaveIsFalseAndKeepsTheKey)
{
    tztest::touch("config");
    EXPECT_FALSE(manager.saveHistory());
    manager.setCustomFile("key", "value");
    QString value;
    EXPECT_TRUE(manager.getCustomFile("key", value));
    EXPECT_EQ(log.lines(), (Lines{{3, "Failed to create config directory"}, {3, "Failed to create config directory"}}));
}

TEST_F(DatabaseFileManagerTest, EveryOperationFromManyThreads)
{
    std::atomic<int> added{0};
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread) {
        threads.emplace_back([this, thread, &added] {
            QString value;
            for (int i = 0; i < 25; ++i) {
                const QString path = QString("file%1").arg((i * 7 + thread) % 20);
                added += manager.addFile(path, "UTF-8") ? 1 : 0;
                manager.setCustomFile(QString("key%1").arg(thread), path);
                manager.getCustomFile("key0", value);
                manager.containsFile(path);
                manager.getAllFiles();
                if (i % 5 == 0)
                    manager.removeFile(path);
                if (i % 20 == 19)
                    manager.clear();
                manager.saveHistory();
            }
        });
    }
    for (std::thread &thread : threads)
        thread.join();
    EXPECT_GT(added.load(), 0);
    EXPECT_LE(manager.getAllFiles().size(), FakeManager::maxFiles);
}
