// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/history/HistoryFile.h"

#include "common/JsonFile.h"
#include "common/LocalFileName.h"
#include "common/Log.h"
#include "common/Utils.h"

#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <filesystem>
#include <system_error>
#include <utility>

namespace {

// 16 paths and a few keys take some KiB.
constexpr qint64 maxFileBytes = 16 * 1024 * 1024;

const QLatin1String versionKey("version");
const QLatin1String filePathKey("filePath");
const QLatin1String customFileMapKey("customFileMap");

} // namespace

HistoryFile::HistoryFile(QString path, QLatin1String filesKey, QLatin1String encodingKey)
    : m_path(std::move(path))
    , m_filesKey(filesKey)
    , m_encodingKey(encodingKey)
{
}

HistoryFile::ReadResult HistoryFile::read(FileHistory &history, QString &problem) const
{
    if (!QFileInfo::exists(m_path))
        return ReadResult::Missing;
    QFile file(m_path);
    if (!QFileInfo(m_path).isFile() || !file.open(QIODevice::ReadOnly)) // a pipe would hold up the reader
        return ReadResult::NotReadable;
    const QByteArray bytes = file.read(maxFileBytes + 1);
    if (file.error() != QFileDevice::NoError)
        return ReadResult::NotReadable;
    if (bytes.size() > maxFileBytes) {
        problem = QStringLiteral("the file is too large");
        return ReadResult::Malformed;
    }
    QJsonParseError error;
    const QJsonObject root = QJsonDocument::fromJson(bytes, &error).object();
    if (error.error != QJsonParseError::NoError) {
        problem = error.errorString();
        return ReadResult::Malformed;
    }
    for (const QJsonValue value : root.value(m_filesKey).toArray()) {
        const QJsonObject element = value.toObject();
        if (value.isObject())
            history.files.push_back({element.value(filePathKey).toString(),
                                     element.value(m_encodingKey).toString(QStringLiteral("UTF-8"))});
    }
    const QJsonObject custom = root.value(customFileMapKey).toObject();
    for (auto key = custom.begin(); key != custom.end(); ++key) {
        if (const QString text = key.value().toString(); !text.isEmpty())
            history.customFileMap.emplace(key.key(), text);
    }
    return ReadResult::Ok;
}

bool HistoryFile::setAside() const
{
    if (!QFileInfo(m_path).isFile())
        return true; // nothing that the user could have written
    const QString keptPath = m_path + QStringLiteral(".bak");
    std::error_code error;
    std::filesystem::rename(Common::localFileName(m_path), Common::localFileName(keptPath), error);
    if (error) {
        Common::logError("Failed to keep the unusable history file {} as {}: {}", m_path.toStdString(),
                         keptPath.toStdString(), error.message());
        return false;
    }
    Common::logWarning("The unusable history file {} is kept as {}", m_path.toStdString(), keptPath.toStdString());
    return true;
}

bool HistoryFile::write(const FileHistory &history) const
{
    if (!Common::Utils::ensureFilePath(Common::localFileName(m_path))) {
        Common::logError("Failed to create config directory");
        return false;
    }
    QJsonArray files;
    for (const FileHistory::File &held : history.files)
        files.append(QJsonObject{{filePathKey, held.filePath}, {m_encodingKey, held.encoding}});
    QJsonObject custom;
    for (const auto &[key, value] : history.customFileMap)
        custom.insert(key, value);
    const QJsonObject root{{versionKey, QStringLiteral("2.0")}, {m_filesKey, files}, {customFileMapKey, custom}};

    return Common::saveJsonFile(m_path, root);
}
