// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "database/history/DatabaseFileManager.h"
#include "database/ldf/LdfConfig.h"

#include <QString>

#include <cstdint>
#include <map>
#include <memory>

/// One loaded LDF file.
struct LdfFileEntry
{
    QString filePath;
    QString encoding;
    LdfConfig config;
};

/// What the managers of database files need to know about LDF files.
struct LdfFileTraits
{
    using Entry = LdfFileEntry;

    static HistoryFile defaultHistoryFile(); ///< config/ldf_manager.json
    static std::shared_ptr<const Entry> load(const QString &path, const QString &encoding);

    static constexpr const char *threadName = "ldf-history";
    static constexpr const char *tooManyFiles = "Maximum LDF files limit reached: {}";
    static constexpr const char *overwriting = "LDF file already exists, overwriting: {}";
    static constexpr const char *notFoundForRemoval = "LDF file not found for removal: {}";
    static constexpr const char *noLongerExists = "LDF file no longer exists: {}";
    static constexpr const char *historyMissing = "Config file does not exist: {}";
    static constexpr const char *historyNotReadable = "Failed to open config file: {}";
    static constexpr const char *historyMalformed = "Failed to parse history file: {}";
    static constexpr const char *historyLoaded = "Loaded {} LDF history files and {} custom map";
    static constexpr const char *historySaved = "Saved {} LDF history files and {} custom map";
    static constexpr const char *loadException = "Exception occurred while loading history: {}";
    static constexpr const char *saveException = "Exception occurred while saving history: {}";
};

extern template class DatabaseFileManager<LdfFileTraits>;

/// The LDF files of the process, their history in config/ldf_manager.json, and the channels that are bound to them; see
/// DatabaseFileManager for what is not told here. Any thread.
class LdfFileManager : public DatabaseFileManager<LdfFileTraits>
{
public:
    // Unscoped: the numbers are part of the interface.
    enum FrameFilter
    {
        AllFrames = 0,
        MasterFrames = 1,
        SlaveFrames = 2
    };

    static LdfFileManager &getInstance();

    using DatabaseFileManager::DatabaseFileManager;

    /// Binds a key, of Common::Utils::makeUtilsKey(), to a file that is held; it replaces what the key was bound to. A
    /// binding lasts for the run, also when its file is removed, until it is unbound.
    bool bindKey(std::uint64_t key, const QString &path);
    bool unbindKey(std::uint64_t key);
    std::map<std::uint64_t, QString> getBindings() const;

    /// Frames by identifier: those which the filter takes. Of equal identifiers the first in the order of names,
    /// unconditional before diagnostic frames.
    static std::map<std::uint8_t, LdfFrame> getFrames(const LdfConfig &config, FrameFilter filter);

private:
    std::map<std::uint64_t, QString> m_bindings; // protected by m_mutex
};
