// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/dbc/DbcFileManager.h"

#include "common/Log.h"
#include "database/dbc/DbcParser.h"
#include "database/history/DatabaseFileManagerBody.h"

#include <algorithm>
#include <mutex>

namespace {

bool startsEarlier(const DbcSignal &left, const DbcSignal &right)
{
    return left.startBit < right.startBit;
}

// The model is one for the process, whatever the number of managers: no two files are parsed at once.
std::mutex &modelMutex()
{
    static std::mutex mutex;
    return mutex;
}

// Empty where the file cannot be read.
DbcMessageMap readMessages(const QString &path, const QString &encoding)
{
    const std::lock_guard lock(modelMutex());
    DbcMessageMap messages;
    Common::DbcParser parser;
    if (!parser.parseFile(path, encoding))
        return messages;
    for (const DbcMessage &parsed : Common::DbcParser::model().messages) {
        DbcMessage &message = messages[parsed.id];
        message = parsed;
        std::stable_sort(message.signals.begin(), message.signals.end(), startsEarlier);
    }
    return messages;
}

} // namespace

template class DatabaseFileManager<DbcFileTraits>;

HistoryFile DbcFileTraits::defaultHistoryFile()
{
    return {QStringLiteral("config/dbc_manager.json"), QLatin1String("dbcFiles"), QLatin1String("encoding")};
}

std::shared_ptr<const DbcFileEntry> DbcFileTraits::load(const QString &path, const QString &encoding)
{
    auto entry = std::make_shared<DbcFileEntry>(DbcFileEntry{path, encoding, readMessages(path, encoding)});
    if (!entry->messages.empty())
        return entry;
    Common::logError("Failed to load DBC file or file is empty: {}", path.toStdString());
    return nullptr;
}

DbcFileManager &DbcFileManager::getInstance()
{
    Common::DbcParser::model(); // made first, so that it outlives the manager, whose thread may still read a file
    modelMutex();
    static DbcFileManager manager;
    return manager;
}

DbcMessageMap DbcFileManager::getMessages(const QString &path) const
{
    if (path.isEmpty())
        return {};
    const std::shared_ptr<const DbcFileEntry> entry = findFile(path);
    if (!entry) {
        Common::logWarning("DBC file not found: {}", path.toStdString());
        return {};
    }
    return entry->messages;
}
