// SPDX-License-Identifier: GPL-3.0-or-later
#include "vci/TzVciConfigFile.h"

#include "common/JsonFile.h"
#include "common/LocalFileName.h"
#include "common/Log.h"
#include "common/Utils.h"
#include "vci/TzVciDeviceConfig.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QStringList>

#include <algorithm>

namespace {

// A file of 16 devices with 255 channels each stays below 1 MiB.
constexpr qint64 maxFileBytes = 16 * 1024 * 1024;

const QLatin1String deviceIndexKey("deviceIndex");
const QLatin1String localIpKey("localIP");
const QLatin1String canChannelsKey("canChannels");
const QLatin1String linChannelsKey("linChannels");
const QLatin1String baudRateKey("baudRate");
const QLatin1String fdBaudRateKey("fdBaudRate");
const QLatin1String typeKey("type");
const QLatin1String terminalResistorKey("terminalResistorEnabled");
const QLatin1String ldfFileKey("ldfFile");

bool isDigits(const QString &text)
{
    return std::all_of(text.begin(), text.end(), [](QChar c) { return c >= '0' && c <= '9'; });
}

QString rateText(std::uint32_t rate)
{
    return QString::number(rate);
}

// Four decimal numbers up to 255 with a dot between.
bool isDottedIpv4(const QString &text)
{
    const QStringList parts = text.split(QLatin1Char('.'));
    return parts.size() == 4 && std::all_of(parts.begin(), parts.end(), [](const QString &part) {
               return !part.isEmpty() && part.size() <= 3 && isDigits(part) && part.toUInt() <= 255;
           });
}

// Takes a local address; an empty one lets the system route.
void takeLocalIp(const QJsonValue &value, QString &localIp)
{
    const QString text = value.toString().trimmed();
    if (value.isString() && (text.isEmpty() || isDottedIpv4(text)))
        localIp = text;
}

// Takes a rate, written as a string of decimal digits.
void takeRate(const QJsonObject &object, QLatin1String key, TzVciSetting<std::uint32_t> &rate)
{
    const QString text = object.value(key).toString();
    bool isNumber = false;
    const std::uint32_t value = text.toUInt(&isNumber, 10);
    if (isDigits(text) && isNumber && value > 0)
        rate = value;
}

void takeChoice(const QJsonObject &object, QLatin1String key, std::initializer_list<const char *> choices,
                TzVciSetting<QString> &setting)
{
    const QString text = object.value(key).toString();
    if (std::any_of(choices.begin(), choices.end(), [&](const char *choice) { return text == QLatin1String(choice); }))
        setting = text;
}

QJsonObject toObject(const TzVciCanChannelConfig &channel)
{
    return {{baudRateKey, rateText(channel.baudRate)},
            {fdBaudRateKey, rateText(channel.fdBaudRate)},
            {typeKey, channel.type.value()},
            {terminalResistorKey, channel.terminalResistorEnabled.value()}};
}

QJsonObject toObject(const TzVciLinChannelConfig &channel)
{
    return {{baudRateKey, rateText(channel.baudRate)},
            {typeKey, channel.type.value()},
            {ldfFileKey, channel.ldfFile.value()}};
}

void applyObject(const QJsonObject &object, TzVciCanChannelConfig &channel)
{
    takeRate(object, baudRateKey, channel.baudRate);
    takeRate(object, fdBaudRateKey, channel.fdBaudRate);
    takeChoice(object, typeKey, {"CAN", "CANFD", "CANFDBRS"}, channel.type);
    if (const QJsonValue resistor = object.value(terminalResistorKey); resistor.isBool())
        channel.terminalResistorEnabled = resistor.toBool();
}

void applyObject(const QJsonObject &object, TzVciLinChannelConfig &channel)
{
    takeRate(object, baudRateKey, channel.baudRate);
    takeChoice(object, typeKey, {"Master", "Slave"}, channel.type);
    if (const QJsonValue ldfFile = object.value(ldfFileKey); ldfFile.isString())
        channel.ldfFile = ldfFile.toString();
}

template <typename Channel> QJsonArray toArray(const std::vector<Channel> &channels)
{
    QJsonArray array;
    for (const Channel &channel : channels)
        array.append(toObject(channel));
    return array;
}

template <typename Channel> void applyArray(const QJsonArray &array, std::vector<Channel> &channels)
{
    const std::size_t count = std::min(static_cast<std::size_t>(array.size()), channels.size());
    for (std::size_t i = 0; i < count; ++i)
        applyObject(array.at(static_cast<int>(i)).toObject(), channels[i]);
}

bool haveSameTiming(const TzVciCanChannelConfig &left, const TzVciCanChannelConfig &right)
{
    return left.nominalSeg1 == right.nominalSeg1 && left.nominalSeg2 == right.nominalSeg2 &&
           left.dataSeg1 == right.dataSeg1 && left.dataSeg2 == right.dataSeg2;
}

} // namespace

TzVciConfigFile::TzVciConfigFile(QString path)
    : m_path(std::move(path))
{
}

std::optional<QJsonObject> TzVciConfigFile::read() const
{
    QFile file(m_path);
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    const QByteArray bytes = file.read(maxFileBytes + 1);
    if (bytes.size() > maxFileBytes) {
        Common::logWarning("Config file {} is larger than {} bytes and is ignored.", m_path.toStdString(),
                           maxFileBytes);
        return QJsonObject();
    }
    return QJsonDocument::fromJson(bytes).object();
}

bool TzVciConfigFile::write(const QJsonObject &root) const
{
    if (!Common::Utils::ensureFilePath(Common::localFileName(m_path))) {
        Common::logError("Unable to save configuration file: Directory does not exist");
        return false;
    }
    return Common::saveJsonFile(m_path, root);
}

QJsonObject TzVciConfigFile::toElement(int deviceIndex, const TzVciDeviceConfig &config)
{
    return {{deviceIndexKey, deviceIndex},
            {localIpKey, config.localIP},
            {canChannelsKey, toArray(config.canChannels)},
            {linChannelsKey, toArray(config.linChannels)}};
}

std::map<int, TzVciConfigFile::Elements> TzVciConfigFile::elementsByDevice(const QJsonObject &root)
{
    std::map<int, Elements> elements;
    for (const QJsonValue &value : root.value(devicesKey).toArray()) {
        const QJsonObject element = value.toObject();
        elements[deviceIndex(element)].push_back(element);
    }
    return elements;
}

void TzVciConfigFile::applyElements(const Elements &elements, TzVciDeviceConfig &config)
{
    for (const QJsonObject &element : elements)
        applyElement(element, config);
}

void TzVciConfigFile::applyElement(const QJsonObject &element, TzVciDeviceConfig &config)
{
    takeLocalIp(element.value(localIpKey), config.localIP);
    applyArray(element.value(canChannelsKey).toArray(), config.canChannels);
    applyArray(element.value(linChannelsKey).toArray(), config.linChannels);
}

int TzVciConfigFile::deviceIndex(const QJsonObject &element)
{
    return element.value(deviceIndexKey).toInt(-1);
}

bool TzVciConfigFile::haveSameSettings(const TzVciDeviceConfig &left, const TzVciDeviceConfig &right)
{
    return toElement(0, left) == toElement(0, right) &&
           std::equal(left.canChannels.begin(), left.canChannels.end(), right.canChannels.begin(),
                      right.canChannels.end(), haveSameTiming);
}
