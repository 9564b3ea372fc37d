// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QJsonObject>
#include <QString>

#include <cstdint>
#include <optional>

struct TzVciDeviceConfig;

/// The JSON file of the device store: reads and writes it whole, and turns records into its elements and back.
/// Holds nothing but the path; any thread, though not two writers at a time.
class TzVciConfigFile
{
public:
    explicit TzVciConfigFile(QString path = QStringLiteral("config/vci/vci_config.json"));

    const QString &path() const { return m_path; }

    /// The file's object; empty for a syntax error, something else than an object, or more than 16 MiB.
    /// @return nothing if the file cannot be opened
    std::optional<QJsonObject> read() const;
    /// Replaces the file as a whole: what was there stays until all is written. Makes the folder. Logs failures.
    bool write(const QJsonObject &root) const;

    /// The element of `devices` for a device.
    static QJsonObject toElement(int deviceIndex, const TzVciDeviceConfig &config);
    /// Takes the settings of an element; values that are missing or invalid leave the record as it is.
    static void applyElement(const QJsonObject &element, TzVciDeviceConfig &config);
    /// The device index of an element, -1 if it has none.
    static int deviceIndex(const QJsonObject &element);
    /// Whether two records would be saved alike and have the same bit timing; open flags do not count.
    static bool haveSameSettings(const TzVciDeviceConfig &left, const TzVciDeviceConfig &right);

private:
    QString m_path;
};
