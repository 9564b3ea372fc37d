// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/dbc/DbcFileManager.h"

#include "tests/database/TestFiles.h"
#include "tests/support/LogCapture.h"
#include "tests/support/TempWorkDir.h"
#include "tests/support/WaitFor.h"

#include <QTextCodec>

#include <gtest/gtest.h>

#include <thread>

using tztest::readFile;
using tztest::writeFile;

namespace {

constexpr int warning = 2;
constexpr int error = 3;

// A file with two messages; the signals of the first are not in the order of their start bits.
const QByteArray sample = "VERSION \"\"\n\nNS_ :\n\tCM_\n\nBS_:\n\nBU_: Ecu\n\n"
                          "BO_ 3221225472 VECTOR__INDEPENDENT_SIG_MSG: 0 Vector__XXX\n"
                          " SG_ Free : 0|8@1+ (1,0) [0|255] \"\" Vector__XXX\n\n"
                          "BO_ 100 First: 8 Ecu\n"
                          " SG_ Late : 32|8@1+ (1,0) [0|255] \"\" Ecu\n"
                          " SG_ EarlyA m0 : 0|8@1+ (1,0) [0|255] \"\" Ecu\n"
                          " SG_ EarlyB m1 : 0|8@1+ (1,0) [0|255] \"\" Ecu\n"
                          " SG_ Switch M : 8|8@1+ (1,0) [0|255] \"\" Ecu\n\n"
                          "BO_ 200 Second: 8 Ecu\n"
                          " SG_ S : 0|8@1+ (1,0) [0|255] \"\" Ecu\n";

class DbcFileManagerTest : public testing::Test
{
protected:
    DbcFileManagerTest() { writeFile("a.dbc", sample); }

    tztest::TempWorkDir workDir;
    tztest::LogCapture log;
    DbcFileManager manager;
};

} // namespace

TEST_F(DbcFileManagerTest, CopiesOrdinaryMessagesWithTheirSignalsByStartBit)
{
    ASSERT_TRUE(manager.addFile("a.dbc", "UTF-8"));
    const DbcMessageMap messages = manager.getMessages("a.dbc");
    ASSERT_EQ(messages.size(), 2U);
    QStringList names;
    for (const DbcSignal &signal : messages.at(100).signals)
        names.append(signal.name);
    EXPECT_EQ(names, (QStringList{"EarlyA", "EarlyB", "Switch", "Late"})); // equal ones in the order of the file
    const auto files = manager.getAllFiles();
    EXPECT_EQ(files.at("a.dbc").filePath, "a.dbc");
    EXPECT_EQ(files.at("a.dbc").encoding, "UTF-8");
}

TEST_F(DbcFileManagerTest, ARepeatedIdentifierOverwrites)
{
    writeFile("b.dbc", sample + "\nBO_ 2147483848 Extended: 8 Ecu\n SG_ S : 0|8@1+ (1,0) [0|255] \"\" Ecu\n");
    ASSERT_TRUE(manager.addFile("b.dbc", "UTF-8"));
    EXPECT_EQ(manager.getMessages("b.dbc").at(200).name, "Extended");
}

TEST_F(DbcFileManagerTest, FilesOutliveTheNextParse)
{
    writeFile("b.dbc", QByteArray(sample).replace("First", "Other"));
    ASSERT_TRUE(manager.addFile("a.dbc", "UTF-8"));
    ASSERT_TRUE(manager.addFile("b.dbc", "UTF-8"));
    EXPECT_EQ(manager.getMessages("a.dbc").at(100).name, "First");
    EXPECT_EQ(manager.getMessages("b.dbc").at(100).name, "Other");
}

TEST_F(DbcFileManagerTest, EmptyAndUnknownPaths)
{
    EXPECT_FALSE(manager.addFile("", "UTF-8"));
    EXPECT_TRUE(manager.getMessages("").empty());
    EXPECT_TRUE(log.lines().empty());
    EXPECT_TRUE(manager.getMessages("none").empty());
    EXPECT_TRUE(log.has(warning, "DBC file not found: none"));
    EXPECT_FALSE(manager.removeFile("none"));
    EXPECT_TRUE(log.has(warning, "DBC file not found for removal: none"));
}

TEST_F(DbcFileManagerTest, AFileThatCannotBeReadIsRefusedAndKeepsWhatWasHeld)
{
    ASSERT_TRUE(manager.addFile("a.dbc", "UTF-8"));
    writeFile("a.dbc", "VERSION \"\"\nBO_ 1 NoSymbols: 8 Ecu\n");
    EXPECT_FALSE(manager.addFile("a.dbc", "UTF-8"));
    EXPECT_TRUE(log.has(warning, "DBC file already exists, overwriting: a.dbc"));
    EXPECT_TRUE(log.has(error, "Failed to load DBC file or file is empty: a.dbc"));
    EXPECT_EQ(manager.getMessages("a.dbc").size(), 2U);
    EXPECT_FALSE(manager.addFile("missing.dbc", "UTF-8"));
    EXPECT_TRUE(log.has(error, "Failed to load DBC file or file is empty: missing.dbc"));
}

TEST_F(DbcFileManagerTest, ASeventeenthFileIsRefusedAlsoWhenItReplacesOneAlreadyHeld)
{
    for (int i = 0; i < 16; ++i) {
        writeFile(QString("%1.dbc").arg(i), sample);
        ASSERT_TRUE(manager.addFile(QString("%1.dbc").arg(i), "UTF-8"));
    }
    EXPECT_FALSE(manager.addFile("a.dbc", "UTF-8"));
    EXPECT_FALSE(manager.addFile("3.dbc", "UTF-8"));
    EXPECT_EQ(log.count(error, "Exceeding the number of DBC management: 16"), 2U);
    EXPECT_EQ(log.countContaining(warning, "overwriting"), 0U);
}

TEST_F(DbcFileManagerTest, TheHistoryFile)
{
    ASSERT_TRUE(manager.addFile("a.dbc", "GBK"));
    manager.setCustomFile("vci_dbc_view", "a.dbc");
    EXPECT_TRUE(log.has(1, "Saved 1 DBC history files and 1 custom map"));
    EXPECT_EQ(readFile("config/dbc_manager.json").toStdString(), R"({
    "customFileMap": {
        "vci_dbc_view": "a.dbc"
    },
    "dbcFiles": [
        {
            "encoding": "GBK",
            "filePath": "a.dbc"
        }
    ],
    "version": "2.0"
}
)");
}

TEST_F(DbcFileManagerTest, AListedFileThatHasGoneIsGoneFromTheNextSave)
{
    writeFile("config/dbc_manager.json",
              R"({"dbcFiles": [{"filePath": "a.dbc"}, {"filePath": "gone.dbc"}], "customFileMap": {"k": "v"}})");
    manager.startHistoryLoad();
    ASSERT_TRUE(tztest::waitBlocking([&] { return log.has(1, "Loaded 1 DBC history files and 1 custom map"); }));
    EXPECT_TRUE(log.has(warning, "DBC file no longer exists: gone.dbc"));
    EXPECT_TRUE(manager.containsFile("a.dbc"));
    EXPECT_TRUE(manager.saveHistory());
    EXPECT_FALSE(readFile("config/dbc_manager.json").contains("gone"));
    EXPECT_TRUE(readFile("config/dbc_manager.json").contains("a.dbc"));
}

TEST_F(DbcFileManagerTest, APathWithBlanksAndChineseCharactersComesBackInTheNextRun)
{
    const QString path = QStringLiteral("目录 一/温度 a.dbc");
    writeFile(path, sample);
    ASSERT_TRUE(manager.addFile(path, "UTF-8"));
    manager.setCustomFile("vci_dbc_view", path);
    DbcFileManager next;
    next.startHistoryLoad();
    ASSERT_TRUE(tztest::waitBlocking([&] { return log.has(1, "Loaded 1 DBC history files and 1 custom map"); }));
    EXPECT_EQ(next.getMessages(path).size(), 2U);
    QString view;
    EXPECT_TRUE(next.getCustomFile("vci_dbc_view", view));
    EXPECT_EQ(view, path);
    EXPECT_TRUE(next.addFile(path, "UTF-8"));
    EXPECT_TRUE(log.has(warning, "DBC file already exists, overwriting: 目录 一/温度 a.dbc"));
}

TEST_F(DbcFileManagerTest, TheHistoryNamesTheEncodingSimplyEncoding)
{
    writeFile("config/dbc_manager.json",
              R"({"dbcFiles": [{"filePath": "a.dbc", "encoding": "GBK", "fileEncoding": "ignored"}]})");
    manager.startHistoryLoad();
    ASSERT_TRUE(tztest::waitBlocking([&] { return manager.containsFile("a.dbc"); }));
    EXPECT_EQ(manager.findFile("a.dbc")->encoding, "GBK");
}

TEST_F(DbcFileManagerTest, TheTextsOfExceptions)
{
    EXPECT_STREQ(DbcFileTraits::loadException, "Exception occurred while loading history: {}");
    EXPECT_STREQ(DbcFileTraits::saveException, "Exception occurred while saving history: {}");
}

TEST_F(DbcFileManagerTest, NoHistoryAndABrokenOneAreTold)
{
    manager.startHistoryLoad();
    manager.endHistoryLoad();
    EXPECT_TRUE(log.has(1, "History file does not exist: config/dbc_manager.json"));
    writeFile("config/dbc_manager.json", "{");
    DbcFileManager broken;
    broken.startHistoryLoad();
    broken.endHistoryLoad();
    EXPECT_EQ(log.countContaining(error, "Failed to parse history file: "), 1U);
    writeFile("config/x", "");
    QFile::remove("config/dbc_manager.json");
    QDir().mkpath("config/dbc_manager.json");
    DbcFileManager unreadable;
    unreadable.startHistoryLoad();
    unreadable.endHistoryLoad();
    EXPECT_TRUE(log.has(error, "Failed to open history file for reading: config/dbc_manager.json"));
}

TEST_F(DbcFileManagerTest, TheEncodingReachesTheParser)
{
    const QString text = QString::fromUtf8(sample) + QStringLiteral("CM_ BO_ 200 \"°\";\n");
    for (const char *name : {"UTF-8", "windows-1252", "GB18030", "GBK"}) {
        writeFile("b.dbc", QTextCodec::codecForName(name)->fromUnicode(text));
        ASSERT_TRUE(manager.addFile("b.dbc", name)) << name;
        EXPECT_EQ(manager.getMessages("b.dbc").at(200).comment, QStringLiteral("°")) << name;
    }
}

TEST_F(DbcFileManagerTest, FilesAreAddedFromManyThreadsWhileTheHistoryLoads)
{
    QByteArray history = "{\"dbcFiles\": [";
    for (int i = 0; i < 6; ++i) {
        writeFile(QString("%1.dbc").arg(i), sample);
        history += (i ? ", {\"filePath\": \"" : "{\"filePath\": \"") + QByteArray::number(i) + ".dbc\"}";
    }
    writeFile("config/dbc_manager.json", history + "]}");
    manager.startHistoryLoad();
    DbcFileManager other; // the model is one for all
    std::thread first([&] { EXPECT_TRUE(manager.addFile("a.dbc", "UTF-8")); });
    std::thread second([&] { EXPECT_TRUE(other.addFile("a.dbc", "UTF-8")); });
    for (int i = 0; i < 10; ++i) {
        manager.setCustomFile("key", QString::number(i));
        manager.getAllFiles();
        manager.getMessages("a.dbc");
    }
    first.join();
    second.join();
    ASSERT_TRUE(tztest::waitBlocking([&] { return log.has(1, "Loaded 6 DBC history files and 0 custom map"); }));
    EXPECT_EQ(manager.getAllFiles().size(), 7U);
    EXPECT_EQ(other.getMessages("a.dbc").size(), 2U);
}

TEST_F(DbcFileManagerTest, ThereIsOneForTheProcess)
{
    EXPECT_EQ(&DbcFileManager::getInstance(), &DbcFileManager::getInstance());
}
