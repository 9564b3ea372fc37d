// SPDX-License-Identifier: GPL-3.0-or-later
#include "common/JsonFile.h"

#include "common/Log.h"
#include "common/ReplaceFile.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QString>

namespace Common {

bool saveJsonFile(const QString &path, const QJsonObject &root)
{
    QString problem;
    switch (replaceFile(path, QJsonDocument(root).toJson(QJsonDocument::Indented), &problem)) {
    case ReplaceFileResult::Replaced: return true;
    case ReplaceFileResult::NotOpened:
        logError("Failed to open config file for writing: {}", path.toStdString());
        return false;
    case ReplaceFileResult::NotWritten:
        logError("Failed to write config file {}: {}", path.toStdString(), problem.toStdString());
        return false;
    }
    return false;
}

} // namespace Common
