// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/ldf/LdfFileManager.h"

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

constexpr int info = 1;
constexpr int warning = 2;
constexpr int error = 3;

const QByteArray sample = "LIN_description_file;\nLIN_protocol_version = \"2.1\";\nLIN_language_version = \"2.1\";\n"
                          "LIN_speed = 19.2 kbps;\n"
                          "Nodes {\n  Master: Main, 5 ms, 0.1 ms;\n  Slaves: Door;\n}\n"
                          "Signals {\n  Command: 8, 0, Main, Door;\n  State: 8, 0, Door, Main;\n}\n"
                          "Frames {\n  Ask: 16, Main, 1 {\n    Command, 0;\n  }\n"
                          "  Answer: 17, Door, 1 {\n    State, 0;\n  }\n}\n"
                          "Node_attributes {\n  Door {\n    LIN_protocol = \"2.1\";\n    configured_NAD = 0x01;\n"
                          "    response_error = State;\n  }\n}\n"
                          "Schedule_tables {\n  Run {\n    Ask delay 10 ms;\n    Answer delay 10 ms;\n  }\n}\n"
                          "Signal_encoding_types {\n  Code {\n    physical_value, 0, 255, 1, 0, \"\xC2\xB0"
                          "C\";\n  }\n}\n"
                          "Signal_representation {\n  Code: State;\n}\n";

LdfFrame makeFrame(const char *name, std::uint8_t id, bool isMasterFrame)
{
    LdfFrame frame;
    frame.name = name;
    frame.id = id;
    frame.isMasterFrame = isMasterFrame;
    return frame;
}

QStringList names(const std::map<std::uint8_t, LdfFrame> &frames)
{
    QStringList list;
    for (const auto &[id, frame] : frames)
        list.append(frame.name);
    return list;
}

class LdfFileManagerTest : public testing::Test
{
protected:
    LdfFileManagerTest() { writeFile("a.ldf", sample); }

    tztest::TempWorkDir workDir;
    tztest::LogCapture log;
    LdfFileManager manager;
};

} // namespace

TEST_F(LdfFileManagerTest, HoldsWhatWasAdded)
{
    ASSERT_TRUE(manager.addFile("a.ldf", "UTF-8"));
    const auto files = manager.getAllFiles();
    ASSERT_EQ(files.size(), 1U);
    const LdfFileEntry &entry = files.at("a.ldf");
    EXPECT_EQ(entry.filePath, "a.ldf");
    EXPECT_EQ(entry.encoding, "UTF-8");
    EXPECT_EQ(entry.config.frames.size(), 2U);
    EXPECT_TRUE(entry.config.frames.at("Ask").isMasterFrame);
    EXPECT_TRUE(manager.addFile("a.ldf", "UTF-8"));
    EXPECT_TRUE(log.has(warning, "LDF file already exists, overwriting: a.ldf"));
}

TEST_F(LdfFileManagerTest, AFileThatCannotBeReadIsRefused)
{
    ASSERT_TRUE(manager.addFile("a.ldf", "UTF-8"));
    writeFile("a.ldf", "nothing");
    EXPECT_FALSE(manager.addFile("a.ldf", "UTF-8"));
    EXPECT_TRUE(log.has(error, "Failed to load LDF file: a.ldf"));
    EXPECT_EQ(manager.findFile("a.ldf")->config.frames.size(), 2U);
    EXPECT_FALSE(manager.addFile("missing.ldf", "UTF-8"));
    EXPECT_TRUE(log.has(error, "Failed to load LDF file: missing.ldf"));
    EXPECT_FALSE(manager.addFile("", "UTF-8"));
}

TEST_F(LdfFileManagerTest, ASeventeenthFileIsRefused)
{
    for (int i = 0; i < 16; ++i) {
        writeFile(QString("%1.ldf").arg(i), sample);
        ASSERT_TRUE(manager.addFile(QString("%1.ldf").arg(i), "UTF-8"));
    }
    EXPECT_FALSE(manager.addFile("a.ldf", "UTF-8"));
    EXPECT_FALSE(manager.addFile("3.ldf", "UTF-8"));
    EXPECT_EQ(log.count(error, "Maximum LDF files limit reached: 16"), 2U);
}

TEST_F(LdfFileManagerTest, BindsKeysToFilesThatAreHeld)
{
    EXPECT_FALSE(manager.bindKey(0xAB, ""));
    EXPECT_FALSE(manager.bindKey(0xAB, "a.ldf"));
    EXPECT_EQ(log.count(error, "LDF file not found: a.ldf"), 1U);
    ASSERT_TRUE(manager.addFile("a.ldf", "UTF-8"));
    EXPECT_TRUE(manager.bindKey(0xAB, "a.ldf"));
    EXPECT_TRUE(log.has(info, "Bound key 0xAB to LDF file: a.ldf"));
    EXPECT_EQ(manager.getBindings(), (std::map<std::uint64_t, QString>{{0xAB, "a.ldf"}}));
    EXPECT_TRUE(manager.unbindKey(0xAB));
    EXPECT_TRUE(log.has(info, "Unbound key: 0xAB from LDF file: a.ldf"));
    EXPECT_FALSE(manager.unbindKey(0xAB));
    EXPECT_TRUE(log.has(warning, "Key 171 not bound"));
}

TEST_F(LdfFileManagerTest, ASecondBindingReplacesTheFirst)
{
    writeFile("b.ldf", sample);
    ASSERT_TRUE(manager.addFile("a.ldf", "UTF-8"));
    ASSERT_TRUE(manager.addFile("b.ldf", "UTF-8"));
    EXPECT_TRUE(manager.bindKey(1, "a.ldf"));
    EXPECT_TRUE(manager.bindKey(1, "b.ldf"));
    EXPECT_EQ(manager.getBindings(), (std::map<std::uint64_t, QString>{{1, "b.ldf"}}));
}

TEST_F(LdfFileManagerTest, AKeyBoundToAFileThatIsThenRemovedKeepsItsBindingUntilItIsUnbound)
{
    ASSERT_TRUE(manager.addFile("a.ldf", "UTF-8"));
    EXPECT_TRUE(manager.bindKey(1, "a.ldf"));
    EXPECT_TRUE(manager.removeFile("a.ldf"));
    EXPECT_EQ(manager.getBindings().count(1), 1U);
    EXPECT_TRUE(manager.unbindKey(1));
    EXPECT_TRUE(manager.getBindings().empty());
    EXPECT_FALSE(manager.removeFile("a.ldf"));
    EXPECT_TRUE(log.has(warning, "LDF file not found for removal: a.ldf"));
}

TEST_F(LdfFileManagerTest, ClearEmptiesFilesAndKeysAndKeepsBindings)
{
    ASSERT_TRUE(manager.addFile("a.ldf", "UTF-8"));
    EXPECT_TRUE(manager.bindKey(1, "a.ldf"));
    manager.setCustomFile("vci_ldf_view", "a.ldf");
    manager.clear();
    QString value;
    EXPECT_TRUE(manager.getAllFiles().empty());
    EXPECT_FALSE(manager.getCustomFile("vci_ldf_view", value));
    EXPECT_EQ(manager.getBindings().size(), 1U);
}

TEST_F(LdfFileManagerTest, FramesByFilter)
{
    LdfConfig config;
    config.frames = {{"B", makeFrame("B", 5, true)}, {"A", makeFrame("A", 9, false)}};
    config.diagnosticFrames = {{"MasterReq", makeFrame("MasterReq", 0x3C, true)},
                               {"SlaveResp", makeFrame("SlaveResp", 0x3D, false)}};
    using Manager = LdfFileManager;
    EXPECT_EQ(names(Manager::getFrames(config, Manager::AllFrames)), (QStringList{"B", "A", "MasterReq", "SlaveResp"}));
    EXPECT_EQ(names(Manager::getFrames(config, Manager::MasterFrames)), (QStringList{"B", "MasterReq"}));
    EXPECT_EQ(names(Manager::getFrames(config, Manager::SlaveFrames)), (QStringList{"A", "SlaveResp"}));
}

TEST_F(LdfFileManagerTest, OfEqualIdentifiersTheFirstInNameOrderUnconditionalBeforeDiagnostic)
{
    LdfConfig config;
    config.frames = {
        {"Z", makeFrame("Z", 0x3C, false)}, {"B", makeFrame("B", 5, true)}, {"A", makeFrame("A", 5, false)}};
    config.diagnosticFrames = {{"MasterReq", makeFrame("MasterReq", 0x3C, true)}};
    using Manager = LdfFileManager;
    EXPECT_EQ(names(Manager::getFrames(config, Manager::AllFrames)), (QStringList{"A", "Z"}));
    EXPECT_EQ(names(Manager::getFrames(config, Manager::MasterFrames)), (QStringList{"B", "MasterReq"}));
}

TEST_F(LdfFileManagerTest, TheHistoryUsesFileEncoding)
{
    ASSERT_TRUE(manager.addFile("a.ldf", "GBK"));
    manager.setCustomFile("vci_ldf_view", "a.ldf");
    EXPECT_TRUE(log.has(info, "Saved 1 LDF history files and 1 custom map"));
    EXPECT_EQ(readFile("config/ldf_manager.json").toStdString(), R"({
    "customFileMap": {
        "vci_ldf_view": "a.ldf"
    },
    "ldfFiles": [
        {
            "fileEncoding": "GBK",
            "filePath": "a.ldf"
        }
    ],
    "version": "2.0"
}
)");
}

TEST_F(LdfFileManagerTest, LoadsTheHistory)
{
    writeFile("config/ldf_manager.json", R"({"ldfFiles": [{"filePath": "a.ldf", "fileEncoding": "GBK",
        "encoding": "ignored"}, {"filePath": "gone.ldf"}], "customFileMap": {"vci_ldf_view": "a.ldf", "empty": ""}})");
    manager.startHistoryLoad();
    ASSERT_TRUE(tztest::waitBlocking([&] { return log.has(info, "Loaded 1 LDF history files and 1 custom map"); }));
    EXPECT_TRUE(log.has(warning, "LDF file no longer exists: gone.ldf"));
    EXPECT_EQ(manager.findFile("a.ldf")->encoding, "GBK");
    EXPECT_TRUE(manager.getBindings().empty());
}

TEST_F(LdfFileManagerTest, APathWithBlanksAndChineseCharactersComesBackInTheNextRun)
{
    const QString path = QStringLiteral("目录 一/车门 a.ldf");
    writeFile(path, sample);
    ASSERT_TRUE(manager.addFile(path, "UTF-8"));
    EXPECT_TRUE(manager.bindKey(1, path));
    EXPECT_TRUE(log.has(info, "Bound key 0x1 to LDF file: 目录 一/车门 a.ldf"));
    EXPECT_TRUE(manager.saveHistory());
    LdfFileManager next;
    next.startHistoryLoad();
    ASSERT_TRUE(tztest::waitBlocking([&] { return log.has(info, "Loaded 1 LDF history files and 0 custom map"); }));
    ASSERT_NE(next.findFile(path), nullptr);
    EXPECT_EQ(next.findFile(path)->config.frames.size(), 2U);
}

TEST_F(LdfFileManagerTest, TheTextsOfExceptions)
{
    EXPECT_STREQ(LdfFileTraits::loadException, "Exception occurred while loading history: {}");
    EXPECT_STREQ(LdfFileTraits::saveException, "Exception occurred while saving history: {}");
}

TEST_F(LdfFileManagerTest, NoHistoryAnUnreadableAndABrokenOneAreTold)
{
    manager.startHistoryLoad();
    manager.endHistoryLoad();
    EXPECT_TRUE(log.has(info, "Config file does not exist: config/ldf_manager.json"));
    writeFile("config/ldf_manager.json", "{");
    LdfFileManager broken;
    broken.startHistoryLoad();
    broken.endHistoryLoad();
    EXPECT_EQ(log.countContaining(error, "Failed to parse history file: "), 1U);
    QFile::remove("config/ldf_manager.json");
    QDir().mkpath("config/ldf_manager.json");
    LdfFileManager unreadable;
    unreadable.startHistoryLoad();
    unreadable.endHistoryLoad();
    EXPECT_TRUE(log.has(error, "Failed to open config file: config/ldf_manager.json"));
}

TEST_F(LdfFileManagerTest, UnitsInEachEncoding)
{
    const QString text = QString::fromUtf8(sample);
    const auto unit = [this] {
        const auto entry = manager.findFile("b.ldf");
        return entry->config.frames.at("Answer").signals.at("State").encoding->physicalRanges.at(255).unit;
    };
    for (const char *name : {"UTF-8", "windows-1252", "GB18030", "GBK"}) {
        writeFile("b.ldf", QTextCodec::codecForName(name)->fromUnicode(text));
        ASSERT_TRUE(manager.addFile("b.ldf", name)) << name;
        EXPECT_EQ(unit(), QStringLiteral("°C")) << name;
    }
    writeFile("b.ldf", "\xEF\xBB\xBF" + sample);
    ASSERT_TRUE(manager.addFile("b.ldf", "GBK")); // the mark overrides the name
    EXPECT_EQ(unit(), QStringLiteral("°C"));
}

TEST_F(LdfFileManagerTest, KeysAreBoundWhileTheHistoryLoads)
{
    QByteArray history = "{\"ldfFiles\": [";
    for (int i = 0; i < 6; ++i) {
        writeFile(QString("%1.ldf").arg(i), sample);
        history += (i ? ", {\"filePath\": \"" : "{\"filePath\": \"") + QByteArray::number(i) + ".ldf\"}";
    }
    writeFile("config/ldf_manager.json", history + "]}");
    manager.startHistoryLoad();
    std::thread user([&] {
        EXPECT_TRUE(manager.addFile("a.ldf", "UTF-8"));
        EXPECT_TRUE(manager.bindKey(1, "a.ldf"));
    });
    for (int i = 0; i < 10; ++i) {
        manager.setCustomFile("key", QString::number(i));
        manager.getBindings();
        manager.getAllFiles();
    }
    user.join();
    ASSERT_TRUE(tztest::waitBlocking([&] { return log.has(info, "Loaded 6 LDF history files and 0 custom map"); }));
    EXPECT_EQ(manager.getAllFiles().size(), 7U);
}
