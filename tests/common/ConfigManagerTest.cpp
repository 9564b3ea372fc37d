// SPDX-License-Identifier: GPL-3.0-or-later
#include "common/ConfigManager.h"

#include "tests/support/LocaleCodec.h"
#include "tests/support/LogCapture.h"
#include "tests/support/TempWorkDir.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>

using Common::ConfigManager;

namespace {

const QString file = QStringLiteral("config/tzbench.ini");

void writeFile(const QByteArray &content)
{
    ASSERT_TRUE(QDir().mkpath(QStringLiteral("config")));
    QFile ini(file);
    ASSERT_TRUE(ini.open(QIODevice::WriteOnly));
    ini.write(content);
}

void expectDefaults(const ConfigManager &config)
{
    EXPECT_FALSE(config.logConsoleOnly);
    EXPECT_EQ(config.logLevel, 1);
    EXPECT_EQ(config.logFileSizeMb, 10);
    EXPECT_EQ(config.maxLogFiles, 5);
    EXPECT_EQ(config.logDirectory, QStringLiteral("logs"));
}

class Config : public testing::Test
{
protected:
    tztest::TempWorkDir m_workDir;
};

TEST_F(Config, AMissingFileMeansTheDefaultsAndALogLine)
{
    const tztest::LogCapture log;
    const ConfigManager config(file);
    expectDefaults(config);
    EXPECT_TRUE(log.has(1, "No settings file config/tzbench.ini, using the defaults"));
    EXPECT_FALSE(QFileInfo::exists(file));
}

TEST_F(Config, WhatIsSavedComesBack)
{
    ConfigManager saved(file);
    saved.logConsoleOnly = true;
    saved.logLevel = 4;
    saved.logFileSizeMb = 255;
    saved.maxLogFiles = 1;
    saved.logDirectory = QStringLiteral("/tmp/日志, with \"marks\"/TZBench.log");
    saved.saveConfig();
    const ConfigManager loaded(file);
    EXPECT_TRUE(loaded.logConsoleOnly);
    EXPECT_EQ(loaded.logLevel, 4);
    EXPECT_EQ(loaded.logFileSizeMb, 255);
    EXPECT_EQ(loaded.maxLogFiles, 1);
    EXPECT_EQ(loaded.logDirectory, saved.logDirectory);
}

TEST_F(Config, AFolderWithChineseCharactersInEveryLocale)
{
    for (const char *name : {"UTF-8", "GB18030"}) {
        const tztest::LocaleCodec codec(name);
        const QString path = QStringLiteral("目录 一/tzbench.ini");
        ConfigManager saved(path);
        saved.logLevel = 3;
        saved.saveConfig();
        EXPECT_EQ(ConfigManager(path).logLevel, 3) << name;
        EXPECT_EQ(QDir().entryList(QDir::Dirs | QDir::NoDotAndDotDot), QStringList("目录 一")) << name;
        EXPECT_TRUE(QDir(QStringLiteral("目录 一")).removeRecursively()); // nobody else understands its name
    }
}

TEST_F(Config, BothEndsOfAByteComeBack)
{
    ConfigManager saved(file);
    saved.logLevel = 0;
    saved.logFileSizeMb = 0;
    saved.maxLogFiles = 0;
    saved.saveConfig();
    const tztest::LogCapture log;
    const ConfigManager loaded(file);
    EXPECT_EQ(loaded.logLevel, 0);
    EXPECT_EQ(loaded.logFileSizeMb, 0);
    EXPECT_EQ(loaded.maxLogFiles, 0);
    EXPECT_EQ(log.countContaining(2, "Invalid setting"), 0U);
}

TEST_F(Config, InvalidValuesLeaveTheirDefaults)
{
    const tztest::LogCapture log;
    writeFile("[log]\nconsoleOnly=perhaps\nlevel=5\nfileSizeMb=-1\nmaxFiles=many\ndirectory=\n");
    expectDefaults(ConfigManager(file));
    EXPECT_TRUE(log.has(2, "Invalid setting log/consoleOnly: perhaps"));
    EXPECT_TRUE(log.has(2, "Invalid setting log/level: 5"));
    EXPECT_TRUE(log.has(2, "Invalid setting log/fileSizeMb: -1"));
    EXPECT_TRUE(log.has(2, "Invalid setting log/maxFiles: many"));
}

TEST_F(Config, ValuesBeyondAByteAreInvalid)
{
    writeFile("[log]\nlevel=-1\nfileSizeMb=256\nmaxFiles=99999999999\n");
    expectDefaults(ConfigManager(file));
}

TEST_F(Config, ABrokenFileMeansTheDefaults)
{
    writeFile(QByteArray("\0\xff\xfe[[[===\n\n]", 12));
    expectDefaults(ConfigManager(file));
    writeFile("[log\nlevel=3");
    expectDefaults(ConfigManager(file));
}

TEST_F(Config, AFolderThatCannotBeMadeIsAnErrorInTheLog)
{
    QFile inTheWay(QStringLiteral("config"));
    ASSERT_TRUE(inTheWay.open(QIODevice::WriteOnly));
    const tztest::LogCapture log;
    ConfigManager(file).saveConfig();
    EXPECT_TRUE(log.has(3, "Failed to create the directory of the settings file config/tzbench.ini"));
}

TEST_F(Config, AFileThatCannotBeWrittenIsAnErrorInTheLog)
{
    ASSERT_TRUE(QDir().mkpath(file)); // a directory of that name
    const tztest::LogCapture log;
    ConfigManager(file).saveConfig();
    EXPECT_TRUE(log.has(3, "Failed to write the settings file config/tzbench.ini"));
}

TEST_F(Config, TheLogFilePathEndsInLog)
{
    ConfigManager config(file);
    EXPECT_EQ(config.getLogFilePath(), QStringLiteral("logs/TZBench.log"));
    config.logDirectory = QStringLiteral("/var/tmp");
    EXPECT_EQ(config.getLogFilePath(), QStringLiteral("/var/tmp/TZBench.log"));
    config.logDirectory = QStringLiteral("/var/tmp/TZBench.log");
    EXPECT_EQ(config.getLogFilePath(), QStringLiteral("/var/tmp/TZBench.log"));
    config.logDirectory = QStringLiteral("  ");
    EXPECT_EQ(config.getLogFilePath(), QStringLiteral("logs/TZBench.log"));
}

TEST_F(Config, TheInstanceIsOne)
{
    EXPECT_EQ(&ConfigManager::getInstance(), &ConfigManager::getInstance());
}

} // namespace
