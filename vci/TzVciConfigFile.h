// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QJsonObject>
#include <QLatin1String>
#include <QString>

#include <cstdint>
#include <map>
#include <optional>
#include <vector>

struct TzVciDeviceConfig;

/// The JSON file of the device store: reads and writes it whole, and turns records into its elements and back.
/// Holds nothing but the path; any thread, though not two writers at a time.
class TzVciConfigFile
{
public:
    using Elements = std::vector<QJsonObject>;

    static constexpr QLatin1String devicesKey{"devices", 7}; ///< of the file's object

    explicit TzVciConfigFile(QString path = QStringLiteral("config/vci/vci_config.json"));

    const QString &path() const { return m_path; }

    /// The file's object; empty for a syntax error, something else than an object, or more than 16 MiB.
    /// @return nothing if the file cannot be opened
    std::optional<QJsonObject> read() const;
    /// Replaces the file as a whole: what was there stays until all is written, unless the folder takes no new file.
    /// Makes the folder. Logs failures.
    bool write(const QJsonObject &root) const;

    /// The element of `devices` for a device.
    static QJsonObject toElement(int deviceIndex, const TzVciDeviceConfig &config);
    /// The elements of `devices`, those of one device in the order of the file; -1 holds those without an index.
    static std::map<int, Elements> elementsByDevice(const QJsonObject &root);
    /// Takes the settings of a device's elements, one after the other; values that are missing or invalid leave the
    /// record as it is. A local address is empty or a dotted IPv4 address.
    static void applyElements(const Elements &elements, TzVciDeviceConfig &config);
    static void applyElement(const QJsonObject &element, TzVciDeviceConfig &config); ///< the same for one
    /// The device index of an element, -1 if it has none.
    static int deviceIndex(const QJsonObject &element);
    /// Whether two records would be saved alike and have the same bit timing; open flags do not count.
    static bool haveSameSettings(const TzVciDeviceConfig &left, const TzVciDeviceConfig &right);

private:
    QString m_path;
};
