// SPDX-License-Identifier: GPL-3.0-or-later
#include "vci/TzVciDeviceStore.h"

#include "common/Log.h"
#include "vci/TzVciTypes.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QJsonValue>
#include <QStringList>

#include <algorithm>
#include <mutex>
#include <utility>

namespace {

const QLatin1String currentDeviceIndexKey("currentDeviceIndex");

template <typename Channel> const TzVciChannelConfig *channelAt(const std::vector<Channel> &channels, int index)
{
    if (index < 0 || static_cast<std::size_t>(index) >= channels.size())
        return nullptr;
    return &channels[static_cast<std::size_t>(index)];
}

template <typename Channel> bool anyOpen(const std::vector<Channel> &channels)
{
    return std::any_of(channels.begin(), channels.end(), [](const Channel &channel) { return channel.isOpen.value(); });
}

bool isChannelProtocol(std::uint8_t protocol)
{
    return protocol == TzVciProtocolId::can || protocol == TzVciProtocolId::lin;
}

} // namespace

TzVciDeviceStore::TzVciDeviceStore(const TzVciNetwork &network, TzVciConfigFile file)
    : m_network(network)
    , m_file(std::move(file))
{
}

TzVciDeviceStore::~TzVciDeviceStore() = default;

TzVciDeviceStore &TzVciDeviceStore::instance()
{
    static TzVciDeviceStore store;
    return store;
}

int TzVciDeviceStore::addDevice(int deviceIndex, const TzVciDeviceConfig &config)
{
    if (deviceIndex < 0 || deviceIndex >= tzVciMaxDevices) {
        Common::logWarning("Attempted to add device with invalid index: {}", deviceIndex);
        return -1;
    }
    TzVciDeviceConfig added = config;
    for (std::size_t i = 1; i < added.linChannels.size(); ++i)
        added.linChannels[i].type = QStringLiteral("Slave");
    bool isNew = false;
    {
        const std::unique_lock lock(m_mutex);
        isNew = m_entries.try_emplace(deviceIndex, Entry{added, added, false}).second;
    }
    if (!isNew) {
        Common::logWarning("The current Device{} already exists", deviceIndex);
        return -1;
    }
    Q_EMIT deviceAdded(deviceIndex);
    return 0;
}

bool TzVciDeviceStore::hasDevice(int deviceIndex) const
{
    const std::shared_lock lock(m_mutex);
    return findEntry(deviceIndex) != nullptr;
}

std::vector<int> TzVciDeviceStore::deviceIndices() const
{
    const std::shared_lock lock(m_mutex);
    std::vector<int> indices;
    indices.reserve(m_entries.size());
    for (const auto &[index, entry] : m_entries)
        indices.push_back(index);
    return indices;
}

int TzVciDeviceStore::currentDeviceIndex() const
{
    const std::shared_lock lock(m_mutex);
    return m_currentDeviceIndex;
}

void TzVciDeviceStore::setCurrentDevice(int deviceIndex)
{
    const std::unique_lock lock(m_mutex);
    m_currentDeviceIndex = knownOrLowestIndex(deviceIndex);
}

int TzVciDeviceStore::knownOrLowestIndex(int deviceIndex) const
{
    if (findEntry(deviceIndex))
        return deviceIndex;
    return m_entries.empty() ? 0 : m_entries.begin()->first;
}

template <typename Condition> bool TzVciDeviceStore::anyEntry(int deviceIndex, Condition condition) const
{
    const std::shared_lock lock(m_mutex);
    if (deviceIndex != -1) {
        const Entry *entry = findEntry(deviceIndex);
        return entry && condition(entry->config);
    }
    return std::any_of(m_entries.begin(), m_entries.end(),
                       [&](const auto &indexed) { return condition(indexed.second.config); });
}

int TzVciDeviceStore::canChannelCount(int deviceIndex) const
{
    const std::shared_lock lock(m_mutex);
    const Entry *entry = findEntry(deviceIndex);
    return entry ? static_cast<int>(entry->config.canChannels.size()) : 0;
}

int TzVciDeviceStore::linChannelCount(int deviceIndex) const
{
    const std::shared_lock lock(m_mutex);
    const Entry *entry = findEntry(deviceIndex);
    return entry ? static_cast<int>(entry->config.linChannels.size()) : 0;
}

const TzVciChannelConfig *TzVciDeviceStore::channelConfig(int deviceIndex, std::uint8_t protocol,
                                                          int channelIndex) const
{
    if (!isChannelProtocol(protocol)) {
        Common::logWarning("Failed to obtain channel configuration: Unknown protocol(id: {})", protocol);
        return nullptr;
    }
    const std::shared_lock lock(m_mutex);
    return findChannel(deviceIndex, protocol, channelIndex);
}

TzVciChannelConfig *TzVciDeviceStore::channelConfig(int deviceIndex, std::uint8_t protocol, int channelIndex)
{
    return const_cast<TzVciChannelConfig *>(std::as_const(*this).channelConfig(deviceIndex, protocol, channelIndex));
}

TzVciCanChannelConfig *TzVciDeviceStore::canChannelConfig(int deviceIndex, int channelIndex)
{
    return static_cast<TzVciCanChannelConfig *>(channelConfig(deviceIndex, TzVciProtocolId::can, channelIndex));
}

TzVciLinChannelConfig *TzVciDeviceStore::linChannelConfig(int deviceIndex, int channelIndex)
{
    return static_cast<TzVciLinChannelConfig *>(channelConfig(deviceIndex, TzVciProtocolId::lin, channelIndex));
}

std::vector<std::uint32_t> TzVciDeviceStore::channelIndices(int deviceIndex, std::uint8_t protocol,
                                                            int channelIndex) const
{
    if (!isChannelProtocol(protocol)) {
        Common::logWarning("Automatically obtain device channel index failed by unknown protocol id: {}", protocol);
        return {};
    }
    const int count = protocol == TzVciProtocolId::can ? canChannelCount(deviceIndex) : linChannelCount(deviceIndex);
    std::vector<std::uint32_t> indices;
    for (int i = 0; i < count; ++i) {
        if (channelIndex == -1 || channelIndex == i)
            indices.push_back(static_cast<std::uint32_t>(i));
    }
    return indices;
}

bool TzVciDeviceStore::isChannelOpen(int deviceIndex, std::uint8_t protocol, int channelIndex) const
{
    const std::shared_lock lock(m_mutex);
    const TzVciChannelConfig *channel = findChannel(deviceIndex, protocol, channelIndex);
    return channel && channel->isOpen;
}

void TzVciDeviceStore::setChannelOpen(int deviceIndex, std::uint8_t protocol, int channelIndex, bool open)
{
    if (!isChannelProtocol(protocol)) {
        Common::logWarning("Setting channel status failed: Unknown protocol(id: {})", protocol);
        return;
    }
    if (TzVciChannelConfig *channel = channelConfig(deviceIndex, protocol, channelIndex))
        channel->isOpen = open;
}

bool TzVciDeviceStore::isDeviceOpen(int deviceIndex) const
{
    return anyEntry(deviceIndex, [](const TzVciDeviceConfig &config) { return config.isOpen; });
}

void TzVciDeviceStore::setDeviceOpen(int deviceIndex, bool open)
{
    const std::unique_lock lock(m_mutex);
    if (Entry *entry = findEntry(deviceIndex))
        entry->config.isOpen = open;
}

bool TzVciDeviceStore::anyCanChannelOpen(int deviceIndex) const
{
    return anyEntry(deviceIndex, [](const TzVciDeviceConfig &config) { return anyOpen(config.canChannels); });
}

bool TzVciDeviceStore::anyLinChannelOpen(int deviceIndex) const
{
    return anyEntry(deviceIndex, [](const TzVciDeviceConfig &config) { return anyOpen(config.linChannels); });
}

bool TzVciDeviceStore::anyChannelOpen(int deviceIndex) const
{
    return anyEntry(deviceIndex, [](const TzVciDeviceConfig &config) {
        return anyOpen(config.canChannels) || anyOpen(config.linChannels);
    });
}

bool TzVciDeviceStore::uniqueOpenCanChannel(int &deviceIndex, int &channelIndex) const
{
    const std::shared_lock lock(m_mutex);
    int foundDevice = -1;
    int foundChannel = -1;
    for (const auto &[index, entry] : m_entries) {
        const auto &channels = entry.config.canChannels;
        for (std::size_t i = 0; i < channels.size(); ++i) {
            if (!channels[i].isOpen)
                continue;
            if (foundDevice != -1)
                return false;
            foundDevice = index;
            foundChannel = static_cast<int>(i);
        }
    }
    if (foundDevice == -1)
        return false;
    deviceIndex = foundDevice;
    channelIndex = foundChannel;
    return true;
}

QString TzVciDeviceStore::localIP(int deviceIndex) const
{
    const std::shared_lock lock(m_mutex);
    const Entry *entry = findEntry(deviceIndex);
    return entry ? entry->config.localIP : QString();
}

void TzVciDeviceStore::setLocalIP(int deviceIndex, const QString &localIP)
{
    const std::unique_lock lock(m_mutex);
    if (Entry *entry = findEntry(deviceIndex))
        entry->config.localIP = localIP;
}

QString TzVciDeviceStore::deviceIp(int deviceIndex) const
{
    return QString::fromStdString(m_network.deviceAddress(deviceIndex));
}

int TzVciDeviceStore::indexFromIp(const QString &ip) const
{
    if (ip.isEmpty())
        return -1;
    const QStringList parts = ip.split(QLatin1Char('.'));
    if (parts.size() != 4) {
        Common::logWarning("Invalid IP format: {}", ip.toStdString());
        return -1;
    }
    const QString segment = QStringLiteral("%1.%2.%3").arg(parts[0], parts[1], parts[2]);
    if (segment != QString::fromStdString(m_network.prefix)) {
        Common::logDebug("IP {} does not match network segment {}", ip.toStdString(), m_network.prefix);
        return -1;
    }
    bool isNumber = false;
    const int lastOctet = parts[3].toInt(&isNumber, 10);
    if (!isNumber) {
        Common::logWarning("Invalid last octet in IP: {}", ip.toStdString());
        return -1;
    }
    // 64 bits, since the octet may be any number that somebody wrote there.
    const std::int64_t index = std::int64_t{lastOctet} - m_network.firstHost;
    if (index < 0 || index >= tzVciMaxDevices) {
        Common::logDebug("Calculated index {} for IP {} is out of range.", index, ip.toStdString());
        return -1;
    }
    return static_cast<int>(index);
}

bool TzVciDeviceStore::loadConfig()
{
    const std::optional<QJsonObject> root = m_file.read();
    if (!root) {
        Common::logWarning("Config file not found: {}. Using default settings.", m_file.path().toStdString());
        return false;
    }
    if (applyFile(*root))
        Common::logInfo("Configuration loaded and applied to existing devices.");
    else
        Common::logInfo("No devices present in manager, skipping config load.");
    return true;
}

// @return false if there is no device to apply it to
bool TzVciDeviceStore::applyFile(const QJsonObject &root)
{
    const std::map<int, TzVciConfigFile::Elements> elements = TzVciConfigFile::elementsByDevice(root);
    const std::unique_lock lock(m_mutex);
    if (m_entries.empty())
        return false;
    if (!m_isFileOutdated)
        m_currentDeviceIndex = knownOrLowestIndex(root.value(currentDeviceIndexKey).toInt(0));
    for (auto &[index, entry] : m_entries) {
        const auto found = elements.find(index);
        if (found != elements.end() && (!m_isFileOutdated || entry.isUntouched()))
            TzVciConfigFile::applyElements(found->second, entry.config);
        entry.isShown = true;
    }
    return true;
}

bool TzVciDeviceStore::saveConfig()
{
    const std::map<int, QJsonObject> keptElements = takeElementsNeverShown();
    QJsonObject root;
    std::size_t deviceCount = 0;
    {
        const std::shared_lock lock(m_mutex);
        QJsonArray devices;
        for (const auto &[index, entry] : m_entries) {
            const auto kept = keptElements.find(index);
            devices.append(kept != keptElements.end() ? kept->second : TzVciConfigFile::toElement(index, entry.config));
        }
        root = {{currentDeviceIndexKey, m_currentDeviceIndex}, {TzVciConfigFile::devicesKey, devices}};
        deviceCount = m_entries.size();
    }
    const bool isWritten = m_file.write(root);
    {
        const std::unique_lock lock(m_mutex);
        m_isFileOutdated = !isWritten;
    }
    if (!isWritten)
        return false;
    Common::logInfo("Configurations for {} devices saved.", deviceCount);
    return true;
}

bool TzVciDeviceStore::Entry::isUntouched() const
{
    return !isShown && TzVciConfigFile::haveSameSettings(config, initial);
}

// Devices that came after the last loadConfig() and that nobody edited take what the file says about them.
// @return their elements of the file, to be written again as they are; several of one device are made one
std::map<int, QJsonObject> TzVciDeviceStore::takeElementsNeverShown()
{
    const auto root = m_file.read();
    if (!root)
        return {};
    std::map<int, QJsonObject> keptElements;
    const std::unique_lock lock(m_mutex);
    for (const auto &[index, elements] : TzVciConfigFile::elementsByDevice(*root)) {
        Entry *entry = findEntry(index);
        if (!entry || !entry->isUntouched())
            continue;
        TzVciConfigFile::applyElements(elements, entry->config);
        entry->initial = entry->config; // still untouched
        keptElements[index] =
            elements.size() == 1 ? elements.front() : TzVciConfigFile::toElement(index, entry->config);
    }
    return keptElements;
}

const TzVciDeviceStore::Entry *TzVciDeviceStore::findEntry(int deviceIndex) const
{
    const auto position = m_entries.find(deviceIndex);
    return position == m_entries.end() ? nullptr : &position->second;
}

TzVciDeviceStore::Entry *TzVciDeviceStore::findEntry(int deviceIndex)
{
    return const_cast<Entry *>(std::as_const(*this).findEntry(deviceIndex));
}

const TzVciChannelConfig *TzVciDeviceStore::findChannel(int deviceIndex, std::uint8_t protocol, int channelIndex) const
{
    const Entry *entry = findEntry(deviceIndex);
    if (!entry)
        return nullptr;
    switch (protocol) {
    case TzVciProtocolId::can: return channelAt(entry->config.canChannels, channelIndex);
    case TzVciProtocolId::lin: return channelAt(entry->config.linChannels, channelIndex);
    default: return nullptr;
    }
}
