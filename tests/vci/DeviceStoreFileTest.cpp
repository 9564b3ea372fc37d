// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/support/LocaleCodec.h"
#include "tests/vci/DeviceStoreFileFixture.h"

#include <unistd.h>

using namespace tztest;
using testing::IsEmpty;

TEST_F(DeviceStoreFile, SavedFormIsFixed)
{
    store.setLocalIP(0, QStringLiteral("192.168.201.10"));
    store.canChannelConfig(0, 1)->type = QStringLiteral("CANFDBRS");
    store.canChannelConfig(0, 1)->terminalResistorEnabled = false;
    store.linChannelConfig(0, 1)->ldfFile = QStringLiteral("door.ldf");
    EXPECT_TRUE(store.saveConfig());
    EXPECT_TRUE(log.has(logInfo, "Configurations for 1 devices saved."));
    const QByteArray expected = R"({
    "currentDeviceIndex": 0,
    "devices": [
        {
            "canChannels": [
                {
                    "baudRate": "500000",
                    "fdBaudRate": "2000000",
                    "terminalResistorEnabled": true,
                    "type": "CANFD"
                },
                {
                    "baudRate": "500000",
                    "fdBaudRate": "2000000",
                    "terminalResistorEnabled": false,
                    "type": "CANFDBRS"
                }
            ],
            "deviceIndex": 0,
            "linChannels": [
                {
                    "baudRate": "19200",
                    "ldfFile": "",
                    "type": "Master"
                },
                {
                    "baudRate": "19200",
                    "ldfFile": "door.ldf",
                    "type": "Slave"
                }
            ],
            "localIP": "192.168.201.10"
        }
    ]
}
)";
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(file.readAll(), expected);
}

TEST_F(DeviceStoreFile, WhatWasSavedIsLoaded)
{
    store.addDevice(4, TzVciDeviceConfig(1, 1));
    store.setCurrentDevice(4);
    store.canChannelConfig(4, 0)->baudRate = 83300;
    store.canChannelConfig(4, 0)->fdBaudRate = 8000000;
    store.canChannelConfig(4, 0)->nominalSeg1 = 99;
    store.linChannelConfig(4, 0)->type = QStringLiteral("Slave");
    ASSERT_TRUE(store.saveConfig());

    TzVciDeviceStore again;
    again.addDevice(0, TzVciDeviceConfig(2, 2));
    again.addDevice(4, TzVciDeviceConfig(1, 1));
    EXPECT_TRUE(again.loadConfig());
    EXPECT_TRUE(log.has(logInfo, loadedLine));
    EXPECT_EQ(again.currentDeviceIndex(), 4);
    EXPECT_EQ(again.canChannelConfig(4, 0)->baudRate, 83300U);
    EXPECT_EQ(again.canChannelConfig(4, 0)->fdBaudRate, 8000000U);
    EXPECT_EQ(again.canChannelConfig(4, 0)->nominalSeg1, 31); // segments are not saved
    EXPECT_EQ(again.linChannelConfig(4, 0)->type, QStringLiteral("Slave"));
}

TEST_F(DeviceStoreFile, FolderWithChineseCharactersInEveryLocale)
{
    const QJsonObject root{{"currentDeviceIndex", 0}};
    for (const char *name : {"UTF-8", "GB18030"}) {
        const LocaleCodec codec(name);
        const TzVciConfigFile file(QStringLiteral("目录 一/vci_config.json"));
        EXPECT_TRUE(file.write(root)) << name;
        EXPECT_EQ(file.read(), root) << name;
        EXPECT_EQ(QDir().entryList(QDir::Dirs | QDir::NoDotAndDotDot), QStringList("目录 一")) << name;
        EXPECT_TRUE(QDir(QStringLiteral("目录 一")).removeRecursively()); // nobody else understands its name
    }
}

TEST_F(DeviceStoreFile, MissingFileMeansDefaults)
{
    EXPECT_FALSE(store.loadConfig());
    EXPECT_TRUE(log.has(logWarning, std::string("Config file not found: ") + path + ". Using default settings."));
}

TEST_F(DeviceStoreFile, EmptyTableSkipsTheLoad)
{
    writeFile(R"({"currentDeviceIndex": 3})");
    TzVciDeviceStore empty;
    EXPECT_TRUE(empty.loadConfig());
    EXPECT_TRUE(log.has(logInfo, "No devices present in manager, skipping config load."));
}

// A JSON file with more canChannels entries than the device has channels: the surplus is ignored.
TEST_F(DeviceStoreFile, SurplusChannelsOfTheFileAreIgnored)
{
    writeFile(R"({"devices": [{"deviceIndex": 0, "canChannels": [
        {"baudRate": "100000"}, {"baudRate": "200000"}, {"baudRate": "250000"}, {"baudRate": "400000"}]}]})");
    EXPECT_TRUE(store.loadConfig());
    EXPECT_EQ(store.canChannelCount(0), 2);
    EXPECT_EQ(store.canChannelConfig(0, 0)->baudRate, 100000U);
    EXPECT_EQ(store.canChannelConfig(0, 1)->baudRate, 200000U);
}

// A file whose deviceIndex is unknown leaves that entry out of the next save.
TEST_F(DeviceStoreFile, UnknownDeviceOfTheFileIsNotSavedAgain)
{
    writeFile(R"({"devices": [{"deviceIndex": 9, "localIP": "1.2.3.4"}, {"deviceIndex": 0, "localIP": "5.6.7.8"}]})");
    EXPECT_TRUE(store.loadConfig());
    EXPECT_FALSE(store.hasDevice(9));
    EXPECT_EQ(store.localIP(0), QStringLiteral("5.6.7.8"));
    EXPECT_TRUE(store.saveConfig());
    EXPECT_EQ(readFile().value("devices").toArray().size(), 1);
    EXPECT_EQ(savedElement(0).value("deviceIndex").toInt(-1), 0);
}

TEST_F(DeviceStoreFile, UnknownCurrentDeviceSelectsTheLowest)
{
    store.addDevice(5, {});
    store.setCurrentDevice(5);
    writeFile(R"({"currentDeviceIndex": 12})");
    EXPECT_TRUE(store.loadConfig());
    EXPECT_EQ(store.currentDeviceIndex(), 0);
}

TEST_F(DeviceStoreFile, DeviceFoundAfterTheLoadKeepsItsDefaultsUntilTheSave)
{
    writeFile(R"({"devices": [{"deviceIndex": 3, "canChannels": [{"baudRate": "125000"}]}]})");
    EXPECT_TRUE(store.loadConfig());
    store.addDevice(3, TzVciDeviceConfig(1, 1));
    EXPECT_EQ(store.canChannelConfig(3, 0)->baudRate, 500000U);
}

// A save must not destroy settings that were never shown.
TEST_F(DeviceStoreFile, UneditedDeviceFoundAfterTheLoadTakesAndKeepsItsElement)
{
    writeFile(R"({"devices": [{"deviceIndex": 3, "localIP": "9.9.9.9", "note": "bench 4",
        "canChannels": [{"baudRate": "125000", "type": "CAN"}, {"baudRate": "250000"}],
        "linChannels": [{"baudRate": "9600", "type": "Slave", "ldfFile": "x.ldf"}]}]})");
    const QJsonObject before = savedElement(0);
    EXPECT_TRUE(store.loadConfig());
    store.addDevice(3, TzVciDeviceConfig(1, 1));
    for (int round = 0; round < 2; ++round) {
        EXPECT_TRUE(store.saveConfig());
        EXPECT_EQ(readFile().value("devices").toArray().size(), 2);
        EXPECT_EQ(savedElement(1), before);
    }
    EXPECT_EQ(store.canChannelConfig(3, 0)->baudRate, 125000U);
    EXPECT_EQ(store.canChannelConfig(3, 0)->type, QStringLiteral("CAN"));
    EXPECT_EQ(store.linChannelConfig(3, 0)->ldfFile, QStringLiteral("x.ldf"));
    EXPECT_EQ(store.localIP(3), QStringLiteral("9.9.9.9"));
}

struct Edit
{
    const char *name;
    void (*apply)(TzVciDeviceStore &store);
};

class EditedSinceFound : public DeviceStoreFile, public testing::WithParamInterface<Edit>
{
};

TEST_P(EditedSinceFound, IsSavedAsEdited)
{
    writeFile(R"({"devices": [{"deviceIndex": 3, "canChannels": [{"baudRate": "125000"}]}]})");
    EXPECT_TRUE(store.loadConfig());
    store.addDevice(3, TzVciDeviceConfig(1, 1));
    GetParam().apply(store);
    const std::uint32_t rate = store.canChannelConfig(3, 0)->baudRate;
    EXPECT_TRUE(store.saveConfig());
    EXPECT_EQ(store.canChannelConfig(3, 0)->baudRate, rate);
    EXPECT_EQ(savedCan(1, 0).value("baudRate").toString(), QString::number(rate));
}

INSTANTIATE_TEST_SUITE_P(
    Edits, EditedSinceFound,
    testing::Values(
        Edit{"Rate", [](TzVciDeviceStore &store) { store.canChannelConfig(3, 0)->baudRate = 1000000; }},
        Edit{"Timing", [](TzVciDeviceStore &store) { store.canChannelConfig(3, 0)->dataSeg2 = 9; }},
        Edit{"Resistor",
             [](TzVciDeviceStore &store) { store.canChannelConfig(3, 0)->terminalResistorEnabled = false; }},
        Edit{"LinRole", [](TzVciDeviceStore &store) { store.linChannelConfig(3, 0)->type = QStringLiteral("Slave"); }},
        Edit{"LocalIp", [](TzVciDeviceStore &store) { store.setLocalIP(3, QStringLiteral("1.1.1.1")); }},
        Edit{"ShownByALoad",
             [](TzVciDeviceStore &store) {
                 store.loadConfig();
                 store.canChannelConfig(3, 0)->baudRate = 500000; // back to the default, on purpose
             }}),
    [](const auto &test) { return std::string(test.param.name); });

TEST_F(DeviceStoreFile, OpenChannelsDoNotCountAsEdited)
{
    writeFile(R"({"devices": [{"deviceIndex": 3, "canChannels": [{"baudRate": "125000"}]}]})");
    EXPECT_TRUE(store.loadConfig());
    store.addDevice(3, TzVciDeviceConfig(1, 1));
    store.setChannelOpen(3, 1, 0, true);
    store.setDeviceOpen(3, true);
    EXPECT_TRUE(store.saveConfig());
    EXPECT_EQ(savedCan(1, 0).value("baudRate").toString(), QStringLiteral("125000"));
    EXPECT_TRUE(store.isChannelOpen(3, 1, 0));
}

TEST_F(DeviceStoreFile, ElementWithoutChannelsSetsTheAddressAlone)
{
    writeFile(R"({"devices": [{"deviceIndex": 0, "localIP": "1.2.3.4"}]})");
    EXPECT_TRUE(store.loadConfig());
    EXPECT_EQ(store.localIP(0), QStringLiteral("1.2.3.4"));
    store.setLocalIP(0, QString());
    expectDefaults();
}

TEST_F(DeviceStoreFile, LocalAddressIsTakenWithoutTheBlanksAroundIt)
{
    writeFile(R"({"devices": [{"deviceIndex": 0, "localIP": " 10.0.0.255\t"}]})");
    EXPECT_TRUE(store.loadConfig());
    EXPECT_EQ(store.localIP(0), QStringLiteral("10.0.0.255"));
    writeFile(R"({"devices": [{"deviceIndex": 0, "localIP": "nowhere"}]})");
    EXPECT_TRUE(store.loadConfig());
    EXPECT_EQ(store.localIP(0), QStringLiteral("10.0.0.255"));
    writeFile(R"({"devices": [{"deviceIndex": 0, "localIP": "  "}]})");
    EXPECT_TRUE(store.loadConfig());
    EXPECT_EQ(store.localIP(0), QString());
}

TEST_F(DeviceStoreFile, ElementsOfOneDeviceAreAppliedInTheirOrder)
{
    const QByteArray twice = R"({"devices": [
        {"deviceIndex": 3, "localIP": "1.1.1.1", "canChannels": [{"baudRate": "125000", "type": "CAN"}]},
        {"deviceIndex": 3, "localIP": "2.2.2.2", "linChannels": [{"baudRate": "9600"}]}]})";
    writeFile(twice);
    EXPECT_TRUE(store.loadConfig());
    store.addDevice(3, TzVciDeviceConfig(1, 1)); // takes its elements with the save
    EXPECT_TRUE(store.saveConfig());
    EXPECT_EQ(readFile().value("devices").toArray().size(), 2);
    EXPECT_EQ(savedElement(1).value("localIP").toString(), QStringLiteral("2.2.2.2"));
    EXPECT_EQ(savedCan(1, 0).value("baudRate").toString(), QStringLiteral("125000"));

    writeFile(twice);
    TzVciDeviceStore loaded;
    loaded.addDevice(3, TzVciDeviceConfig(1, 1));
    EXPECT_TRUE(loaded.loadConfig());
    for (const TzVciDeviceStore *each : {&store, &loaded}) {
        EXPECT_EQ(each->localIP(3), QStringLiteral("2.2.2.2"));
        EXPECT_EQ(each->channelConfig(3, 1, 0)->baudRate, 125000U);
        EXPECT_EQ(each->channelConfig(3, 5, 0)->baudRate, 9600U);
    }
}

// The file is older than what the user has set by then.
TEST_F(DeviceStoreFile, LoadAfterAFailedSaveKeepsWhatTheUserSet)
{
    const QByteArray old = R"({"currentDeviceIndex": 0, "devices": [
        {"deviceIndex": 0, "canChannels": [{"baudRate": "100000"}]},
        {"deviceIndex": 3, "canChannels": [{"baudRate": "200000"}]},
        {"deviceIndex": 4, "canChannels": [{"baudRate": "250000"}]}]})";
    writeFile(old);
    EXPECT_TRUE(store.loadConfig());
    store.addDevice(3, TzVciDeviceConfig(1, 1));
    store.canChannelConfig(0, 0)->baudRate = 1000000;
    store.canChannelConfig(3, 0)->baudRate = 800000;
    store.setCurrentDevice(3);
    QFile::remove(path);
    QDir().mkpath(path); // a folder in its place
    EXPECT_FALSE(store.saveConfig());
    QDir().rmdir(path);
    writeFile(old);
    store.addDevice(4, TzVciDeviceConfig(1, 1)); // nobody has set anything here
    for (int round = 0; round < 2; ++round) {
        EXPECT_TRUE(store.loadConfig());
        EXPECT_EQ(store.canChannelConfig(0, 0)->baudRate, 1000000U);
        EXPECT_EQ(store.canChannelConfig(3, 0)->baudRate, 800000U);
        EXPECT_EQ(store.canChannelConfig(4, 0)->baudRate, 250000U);
        EXPECT_EQ(store.currentDeviceIndex(), 3);
    }
    EXPECT_TRUE(store.saveConfig());
    writeFile(old);
    EXPECT_TRUE(store.loadConfig()); // the file counts again
    EXPECT_EQ(store.canChannelConfig(0, 0)->baudRate, 100000U);
    EXPECT_EQ(store.currentDeviceIndex(), 0);
}

TEST_F(DeviceStoreFile, FileInAFolderThatTakesNoNewFileIsWritten)
{
    if (::geteuid() == 0)
        GTEST_SKIP() << "root may write everywhere";
    writeFile("{}");
    QFile::setPermissions(QStringLiteral("config/vci"), QFile::ReadOwner | QFile::ExeOwner);
    EXPECT_TRUE(store.saveConfig());
    EXPECT_EQ(readFile().value("devices").toArray().size(), 1);
    QFile::setPermissions(QStringLiteral("config/vci"), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
}

TEST_F(DeviceStoreFile, UnwritableFolderIsToldAndLosesNothing)
{
    QFile notAFolder(QStringLiteral("config"));
    ASSERT_TRUE(notAFolder.open(QIODevice::WriteOnly));
    store.canChannelConfig(0, 0)->baudRate = 250000;
    EXPECT_FALSE(store.saveConfig());
    EXPECT_TRUE(log.has(logError, "Unable to save configuration file: Directory does not exist"));
    EXPECT_EQ(store.canChannelConfig(0, 0)->baudRate, 250000U);
}

TEST_F(DeviceStoreFile, UnwritableFileIsTold)
{
    QDir().mkpath(path); // a folder in its place
    EXPECT_FALSE(store.saveConfig());
    EXPECT_TRUE(log.has(logError, std::string("Failed to open config file for writing: ") + path));
    EXPECT_FALSE(store.loadConfig());
}
