// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "vci/TzVciConfigFile.h"
#include "vci/TzVciDeviceConfig.h"
#include "vci/TzVciNetwork.h"

#include <QJsonObject>
#include <QObject>
#include <QString>

#include <cstdint>
#include <map>
#include <shared_mutex>
#include <vector>

/// All devices known in this run, open or not, with the settings of their channels; kept in config/vci/vci_config.json.
///
/// The table only grows: devices come from the scanner and the settings dialog and are never removed.
/// Threads: any; each call takes the store's lock by itself and calls nobody under it.
/// Errors: nothing throws; an unknown device or channel reads as closed, empty or 0.
class TzVciDeviceStore : public QObject
{
    Q_OBJECT
public:
    explicit TzVciDeviceStore(const TzVciNetwork &network = TzVciNetwork::current(),
                              TzVciConfigFile file = TzVciConfigFile());
    ~TzVciDeviceStore() override;

    /// The process's store, made at the first call. Fetched by app/ alone, which hands it on.
    static TzVciDeviceStore &instance();

    /// Adds a device; its LIN channels from index 1 on become slaves.
    /// @return 0, or -1 for an index outside 0 to 15 or one that is there already
    int addDevice(int deviceIndex, const TzVciDeviceConfig &config);
    bool hasDevice(int deviceIndex) const;
    std::vector<int> deviceIndices() const; ///< ascending
    int currentDeviceIndex() const;
    /// An unknown index selects the lowest index present, or 0 in an empty table.
    void setCurrentDevice(int deviceIndex);

    int canChannelCount(int deviceIndex) const; ///< 0 if unknown
    int linChannelCount(int deviceIndex) const; ///< 0 if unknown
    /// The settings of a channel, to be read and edited in place; null if there is no such channel. Valid as long as
    /// the store. Protocol 1 gives a TzVciCanChannelConfig, 5 a TzVciLinChannelConfig.
    TzVciChannelConfig *channelConfig(int deviceIndex, std::uint8_t protocol, int channelIndex);
    const TzVciChannelConfig *channelConfig(int deviceIndex, std::uint8_t protocol, int channelIndex) const;
    /// The same with its own type; null as well where channelConfig() is.
    TzVciCanChannelConfig *canChannelConfig(int deviceIndex, int channelIndex);
    TzVciLinChannelConfig *linChannelConfig(int deviceIndex, int channelIndex);
    /// All channels of the family for -1, the one if it exists, else none.
    std::vector<std::uint32_t> channelIndices(int deviceIndex, std::uint8_t protocol, int channelIndex) const;

    bool isChannelOpen(int deviceIndex, std::uint8_t protocol, int channelIndex) const; ///< protocols 1 and 5 only
    void setChannelOpen(int deviceIndex, std::uint8_t protocol, int channelIndex, bool open);
    bool isDeviceOpen(int deviceIndex) const; ///< -1 asks whether any device is
    void setDeviceOpen(int deviceIndex, bool open);
    bool anyCanChannelOpen(int deviceIndex) const; ///< -1 asks across all devices
    bool anyLinChannelOpen(int deviceIndex) const; ///< -1 asks across all devices
    bool anyChannelOpen(int deviceIndex) const;    ///< -1 asks across all devices
    /// Finds the one open CAN channel of all devices; false, with the arguments unchanged, if none or several are open.
    bool uniqueOpenCanChannel(int &deviceIndex, int &channelIndex) const;

    QString localIP(int deviceIndex) const;
    void setLocalIP(int deviceIndex, const QString &localIP);
    QString deviceIp(int deviceIndex) const; ///< the device's address, empty outside 0 to 15
    /// The device index that belongs to an address, or -1.
    int indexFromIp(const QString &ip) const;

    /// Takes the file's settings for the devices that are in the table. Values that are missing or make no sense leave
    /// the record as it is. After a saveConfig() that failed, devices that were shown or edited in this run and the
    /// current device keep what they have. @return false only if there is no file
    bool loadConfig();
    /// Writes all devices. One that came after the last loadConfig() and still has its first settings takes and keeps
    /// its element of the file, since the user never saw it. @return false if the file could not be written
    bool saveConfig();

Q_SIGNALS:
    /// Emitted on the thread that added the device, often a scan worker, after the device is in the table.
    void deviceAdded(int deviceIndex);

private:
    struct Entry
    {
        TzVciDeviceConfig config;
        TzVciDeviceConfig initial; // as it was added, to tell whether somebody edited it since
        bool isShown = false;      // loadConfig() has run since it was added

        bool isUntouched() const;
    };

    const Entry *findEntry(int deviceIndex) const;
    Entry *findEntry(int deviceIndex);
    const TzVciChannelConfig *findChannel(int deviceIndex, std::uint8_t protocol, int channelIndex) const;
    template <typename Condition> bool anyEntry(int deviceIndex, Condition condition) const;
    int knownOrLowestIndex(int deviceIndex) const;
    bool applyFile(const QJsonObject &root);
    std::map<int, QJsonObject> takeElementsNeverShown();

    const TzVciNetwork m_network;
    const TzVciConfigFile m_file;
    mutable std::shared_mutex m_mutex; // protects all below; channel settings are safe by themselves
    std::map<int, Entry> m_entries;
    int m_currentDeviceIndex = 0;
    bool m_isFileOutdated = false; // the last saveConfig() failed
};
