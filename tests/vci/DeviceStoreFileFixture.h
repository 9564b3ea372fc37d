// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tests/support/TempWorkDir.h"
#include "tests/vci/DeviceFixture.h"
#include "vci/TzVciConfigFile.h"
#include "vci/TzVciDeviceStore.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace tztest {

/// A store with device 0 in a folder of its own, and what stands in its file.
class DeviceStoreFile : public testing::Test
{
protected:
    static constexpr const char *path = "config/vci/vci_config.json";
    static constexpr const char *loadedLine = "Configuration loaded and applied to existing devices.";

    DeviceStoreFile() { store.addDevice(0, TzVciDeviceConfig(2, 2)); }

    static void writeFile(const QByteArray &bytes)
    {
        QDir().mkpath(QStringLiteral("config/vci"));
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    }
    static QJsonObject readFile()
    {
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        return QJsonDocument::fromJson(file.readAll()).object();
    }
    static QJsonObject savedElement(int position)
    {
        return readFile().value("devices").toArray().at(position).toObject();
    }
    static QJsonObject savedCan(int position, int channel)
    {
        return savedElement(position).value("canChannels").toArray().at(channel).toObject();
    }
    // The first device as it came into the world.
    void expectDefaults()
    {
        EXPECT_EQ(store.canChannelConfig(0, 0)->baudRate, 500000U);
        EXPECT_EQ(store.canChannelConfig(0, 0)->fdBaudRate, 2000000U);
        EXPECT_EQ(store.canChannelConfig(0, 0)->type, QStringLiteral("CANFD"));
        EXPECT_TRUE(store.canChannelConfig(0, 0)->terminalResistorEnabled);
        EXPECT_EQ(store.linChannelConfig(0, 0)->baudRate, 19200U);
        EXPECT_EQ(store.linChannelConfig(0, 0)->type, QStringLiteral("Master"));
        EXPECT_EQ(store.linChannelConfig(0, 0)->ldfFile, QString());
        EXPECT_EQ(store.localIP(0), QString());
    }

    TempWorkDir dir;
    LogCapture log;
    TzVciDeviceStore store;
};

} // namespace tztest
