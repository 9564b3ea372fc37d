// SPDX-License-Identifier: GPL-3.0-or-later
#include "common/AdvancedLogger.h"

#include "tests/support/LogCapture.h"
#include "tests/support/TempWorkDir.h"
#include "tests/support/WaitFor.h"

#include <gtest/gtest.h>

#include <QFile>

#include <thread>
#include <vector>

using Common::AdvancedLogger;

namespace {

QByteArray contentOf(const char *path)
{
    QFile file(QString::fromLatin1(path));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

TEST(AdvancedLogger, WritesTheBytesAsTheyCome)
{
    const tztest::TempWorkDir workDir;
    {
        AdvancedLogger logger("logs/frames/uds.log");
        logger.logRawData("first\n");
        logger.logRawData("second\n");
    }
    EXPECT_EQ(contentOf("logs/frames/uds.log"), "first\nsecond\n");
}

TEST(AdvancedLogger, WritesWithoutAStop)
{
    const tztest::TempWorkDir workDir;
    AdvancedLogger logger("uds.log");
    logger.logRawData("line\n");
    EXPECT_TRUE(tztest::waitFor([] { return contentOf("uds.log") == "line\n"; }));
}

TEST(AdvancedLogger, AppendsAndDropsWhatComesAfterTheStop)
{
    const tztest::TempWorkDir workDir;
    for (const char *text : {"a", "b"}) {
        AdvancedLogger logger("uds.log");
        logger.logRawData(text);
        logger.stop();
        logger.stop();
        logger.logRawData("late");
    }
    EXPECT_EQ(contentOf("uds.log"), "ab");
}

TEST(AdvancedLogger, AFileThatCannotBeOpenedIsAnErrorInTheLog)
{
    const tztest::TempWorkDir workDir;
    const tztest::LogCapture log;
    AdvancedLogger logger("."); // a directory
    logger.logRawData("text");
    EXPECT_TRUE(log.has(3, "Failed to open the log file ."));
}

TEST(AdvancedLogger, AFullDiskIsAnErrorInTheLog)
{
    const tztest::LogCapture log;
    AdvancedLogger logger("/dev/full");
    logger.logRawData("text");
    EXPECT_TRUE(tztest::waitFor([&] { return log.has(3, "Failed to write a log file, what follows is dropped"); }));
    logger.logRawData("more");
    logger.stop();
    EXPECT_EQ(log.countContaining(3, "Failed to write"), 1U);
}

TEST(AdvancedLogger, ThreadsKeepTheirLinesWhole)
{
    const tztest::TempWorkDir workDir;
    constexpr int linesEach = 500;
    {
        AdvancedLogger logger("uds.log");
        std::vector<std::thread> threads;
        for (const char letter : {'a', 'b', 'c'}) {
            threads.emplace_back([&logger, letter] {
                for (int i = 0; i < linesEach; ++i)
                    logger.logRawData(std::string(20, letter) + '\n');
            });
        }
        for (std::thread &thread : threads)
            thread.join();
    }
    const QByteArrayList lines = contentOf("uds.log").split('\n');
    EXPECT_EQ(lines.size(), 3 * linesEach + 1);
    for (const QByteArray &line : lines)
        EXPECT_TRUE(line.isEmpty() || line == QByteArray(20, line[0]));
}

} // namespace
