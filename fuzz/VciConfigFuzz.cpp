// SPDX-License-Identifier: GPL-3.0-or-later
// Any file in the place of the saved device settings.
#include "fuzz/FuzzSupport.h"
#include "vci/TzVciConfigFile.h"
#include "vci/TzVciDeviceConfig.h"

#include <QByteArray>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <cstddef>
#include <cstdint>

namespace {

void checkRecord(const TzVciDeviceConfig &config)
{
    require(config.canChannels.size() == 2 && config.linChannels.size() == 2);
    for (const auto &channel : config.canChannels) {
        require(channel.baudRate > 0 && channel.fdBaudRate > 0);
        require(channel.type.value().startsWith(QLatin1String("CAN")));
    }
    for (const auto &channel : config.linChannels) {
        require(channel.baudRate > 0);
        require(channel.isMaster() || channel.type == QStringLiteral("Slave"));
    }
}

// An element never makes a bad record, and what is written of the record reads back the same.
void checkElement(const QJsonObject &element)
{
    TzVciDeviceConfig config(2, 2);
    TzVciConfigFile::applyElement(element, config);
    checkRecord(config);
    TzVciDeviceConfig again(2, 2);
    TzVciConfigFile::applyElement(TzVciConfigFile::toElement(TzVciConfigFile::deviceIndex(element), config), again);
    require(TzVciConfigFile::haveSameSettings(config, again));
}

} // namespace

// The library's JSON reader forgets a few hundred bytes over some broken texts; it reads one such file in a program
// run.
extern "C" const char *__lsan_default_suppressions();
const char *__lsan_default_suppressions()
{
    return "leak:libQt5Core.so";
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char *>(data), static_cast<int>(size));
    const QJsonObject root = QJsonDocument::fromJson(bytes).object();
    checkElement(root);
    for (const QJsonValue &element : root.value(QLatin1String("devices")).toArray())
        checkElement(element.toObject());
    return 0;
}
