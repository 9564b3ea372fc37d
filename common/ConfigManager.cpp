// SPDX-License-Identifier: GPL-3.0-or-later
#include "common/ConfigManager.h"

#include "common/LocalFileName.h"
#include "common/Log.h"
#include "common/Utils.h"

#include <QSettings>

namespace Common {

namespace {

constexpr int maxByte = 255;

const QString instanceFile = QStringLiteral("config/tzbench.ini");
const QString defaultDirectory = QStringLiteral("logs");
const QString logFileSuffix = QStringLiteral(".log");
const QString logFileName = QStringLiteral("/TZBench.log");

const QString consoleOnlyKey = QStringLiteral("log/consoleOnly");
const QString levelKey = QStringLiteral("log/level");
const QString fileSizeKey = QStringLiteral("log/fileSizeMb");
const QString maxFilesKey = QStringLiteral("log/maxFiles");
const QString directoryKey = QStringLiteral("log/directory");

void warnOfInvalid(const QSettings &settings, const QString &key)
{
    if (settings.contains(key))
        logWarning("Invalid setting {}: {}", key.toStdString(), settings.value(key).toString().toStdString());
}

// A value that is no number or above the highest leaves the field as it is.
void readByte(const QSettings &settings, const QString &key, int highest, std::uint8_t &field)
{
    bool isNumber = false;
    const int value = settings.value(key).toInt(&isNumber);
    if (isNumber && value >= 0 && value <= highest)
        field = static_cast<std::uint8_t>(value);
    else
        warnOfInvalid(settings, key);
}

// As a variant any text but a few would be true.
void readFlag(const QSettings &settings, const QString &key, bool &field)
{
    const QString text = settings.value(key).toString();
    const bool isTrue = text.compare(QLatin1String("true"), Qt::CaseInsensitive) == 0 || text == QLatin1String("1");
    const bool isFalse = text.compare(QLatin1String("false"), Qt::CaseInsensitive) == 0 || text == QLatin1String("0");
    if (isTrue || isFalse)
        field = isTrue;
    else
        warnOfInvalid(settings, key);
}

} // namespace

ConfigManager &ConfigManager::getInstance()
{
    static ConfigManager manager(instanceFile);
    return manager;
}

ConfigManager::ConfigManager(const QString &filePath)
    : m_filePath(filePath)
{
    loadConfig();
}

QString ConfigManager::getLogFilePath() const
{
    const QString directory = logDirectory.trimmed().isEmpty() ? defaultDirectory : logDirectory;
    return directory.endsWith(logFileSuffix) ? directory : directory + logFileName;
}

void ConfigManager::loadConfig()
{
    if (!Utils::fileExists(localFileName(m_filePath))) {
        logInfo("No settings file {}, using the defaults", m_filePath.toStdString());
        return;
    }
    QSettings settings(m_filePath, QSettings::IniFormat);
    settings.setIniCodec("UTF-8");
    if (settings.status() != QSettings::NoError) {
        logWarning("Failed to read the settings file {}, using the defaults", m_filePath.toStdString());
        return;
    }
    readFlag(settings, consoleOnlyKey, logConsoleOnly);
    readByte(settings, levelKey, LogLevel::none, logLevel);
    readByte(settings, fileSizeKey, maxByte, logFileSizeMb);
    readByte(settings, maxFilesKey, maxByte, maxLogFiles);
    const QString directory = settings.value(directoryKey).toString();
    if (!directory.trimmed().isEmpty())
        logDirectory = directory;
}

void ConfigManager::saveConfig()
{
    if (!Utils::ensureFilePath(localFileName(m_filePath))) {
        logError("Failed to create the directory of the settings file {}", m_filePath.toStdString());
        return;
    }
    QSettings settings(m_filePath, QSettings::IniFormat);
    settings.setIniCodec("UTF-8");
    settings.setValue(consoleOnlyKey, logConsoleOnly);
    settings.setValue(levelKey, logLevel);
    settings.setValue(fileSizeKey, logFileSizeMb);
    settings.setValue(maxFilesKey, maxLogFiles);
    settings.setValue(directoryKey, logDirectory);
    settings.sync();
    if (settings.status() != QSettings::NoError)
        logError("Failed to write the settings file {}", m_filePath.toStdString());
}

} // namespace Common
