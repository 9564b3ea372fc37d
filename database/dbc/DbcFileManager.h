// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "database/dbc/DbcMessageMap.h"
#include "database/history/DatabaseFileManager.h"

#include <QString>

#include <memory>

/// One loaded DBC file: copies of its ordinary messages, the signals of each in ascending order of their start bits.
struct DbcFileEntry
{
    QString filePath;
    QString encoding;
    DbcMessageMap messages;
};

/// What the managers of database files need to know about DBC files.
struct DbcFileTraits
{
    using Entry = DbcFileEntry;

    static HistoryFile defaultHistoryFile(); ///< config/dbc_manager.json
    static std::shared_ptr<const Entry> load(const QString &path, const QString &encoding);

    static constexpr const char *threadName = "dbc-history";
    static constexpr const char *tooManyFiles = "Exceeding the number of DBC management: {}";
    static constexpr const char *overwriting = "DBC file already exists, overwriting: {}";
    static constexpr const char *notFoundForRemoval = "DBC file not found for removal: {}";
    static constexpr const char *noLongerExists = "DBC file no longer exists: {}";
    static constexpr const char *historyMissing = "History file does not exist: {}";
    static constexpr const char *historyNotReadable = "Failed to open history file for reading: {}";
    static constexpr const char *historyMalformed = "Failed to parse history file: {}";
    static constexpr const char *historyLoaded = "Loaded {} DBC history files and {} custom map";
    static constexpr const char *historySaved = "Saved {} DBC history files and {} custom map";
    static constexpr const char *loadException = "Exception occurred while loading history: {}";
    static constexpr const char *saveException = "Exception occurred while saving history: {}";
};

extern template class DatabaseFileManager<DbcFileTraits>;

/// The DBC files of the process and their history in config/dbc_manager.json; see DatabaseFileManager for all but
/// getMessages(). Any thread.
class DbcFileManager : public DatabaseFileManager<DbcFileTraits>
{
public:
    static DbcFileManager &getInstance();

    using DatabaseFileManager::DatabaseFileManager;

    /// A copy; empty for an empty path and, with a warning, for an unknown one.
    DbcMessageMap getMessages(const QString &path) const;
};
