// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The functions of DatabaseFileManager, for the source that instantiates them.

#include "common/LocalFileName.h"
#include "common/Log.h"
#include "common/Utils.h"
#include "database/history/DatabaseFileManager.h"

#include <algorithm>
#include <exception>
#include <utility>

template <typename Traits>
DatabaseFileManager<Traits>::DatabaseFileManager(History history)
    : m_history(std::move(history))
{
}

template <typename Traits> DatabaseFileManager<Traits>::~DatabaseFileManager()
{
    endHistoryLoad();
}

template <typename Traits> void DatabaseFileManager<Traits>::startHistoryLoad()
{
    {
        const std::scoped_lock lock(m_saveMutex, m_mutex); // a save that was begun before is read whole
        if (m_historyState != HistoryState::NotAsked)
            return;
        m_historyState = HistoryState::Asked; // from here on a save takes the history over before it writes
    }
    if (!m_loader.start(Traits::threadName, [this] { loadHistory(); }))
        Common::logError(Traits::loadException, "no thread left");
}

template <typename Traits> void DatabaseFileManager<Traits>::requestHistoryEnd()
{
    m_endRequested.store(true, std::memory_order_relaxed);
}

template <typename Traits> void DatabaseFileManager<Traits>::endHistoryLoad()
{
    requestHistoryEnd();
    m_loader.join();
}

template <typename Traits> bool DatabaseFileManager<Traits>::addFile(const QString &path, const QString &encoding)
{
    if (path.isEmpty())
        return false;
    const std::lock_guard loading(m_loadMutex);
    return loadFile(path, encoding, Caller::User);
}

// With m_loadMutex held, so that the number of files does not grow meanwhile.
template <typename Traits>
bool DatabaseFileManager<Traits>::loadFile(const QString &path, const QString &encoding, Caller caller)
{
    std::uint64_t clearCount = 0;
    {
        const std::lock_guard lock(m_mutex);
        if (m_files.size() >= maxFiles) {
            Common::logError(Traits::tooManyFiles, maxFiles);
            return false;
        }
        if (m_files.count(path) > 0)
            Common::logWarning(Traits::overwriting, path.toStdString());
        clearCount = m_clearCount;
    }
    std::shared_ptr<const Entry> entry = Traits::load(path, encoding);
    if (!entry)
        return false;
    const std::lock_guard lock(m_mutex);
    if (caller == Caller::User)
        takeHistory(); // else a load that has just been started would take this file for one to come
    const bool isWanted = caller == Caller::User ? clearCount == m_clearCount : m_fileInHand.has_value();
    if (isWanted) {
        m_files.insert_or_assign(path, std::move(entry));
        if (caller == Caller::User)
            dropPending(path);
        else
            m_fileInHand.reset(); // in the step that adds the file, so that every save sees it
    }
    return true; // as if it had been added just before it was removed
}

template <typename Traits> void DatabaseFileManager<Traits>::loadHistory()
{
    try {
        {
            const std::lock_guard lock(m_mutex);
            takeHistory();
            if (m_historyState != HistoryState::Taken)
                return;
        }
        const std::size_t loaded = loadPendingFiles();
        const std::lock_guard lock(m_mutex);
        Common::logInfo(Traits::historyLoaded, loaded, m_takenKeys);
    } catch (const std::exception &failure) {
        Common::logError(Traits::loadException, failure.what());
    }
}

template <typename Traits> std::size_t DatabaseFileManager<Traits>::loadPendingFiles()
{
    std::size_t loaded = 0;
    while (!m_endRequested.load(std::memory_order_relaxed)) {
        m_loadMutex.lockInBackground();
        const std::lock_guard loading(m_loadMutex, std::adopt_lock);
        FileHistory::File file;
        if (!takeInHand(file)) // now: a caller may just have added the file that was next
            break;
        if (loadInHand(file))
            ++loaded;
    }
    return loaded;
}

template <typename Traits> bool DatabaseFileManager<Traits>::takeInHand(FileHistory::File &file)
{
    const std::lock_guard lock(m_mutex);
    if (m_pending.empty())
        return false;
    file = m_pending.front();
    m_fileInHand = file;
    m_pending.pop_front();
    return true;
}

template <typename Traits> bool DatabaseFileManager<Traits>::loadInHand(const FileHistory::File &file)
{
    if (!Common::Utils::fileExists(Common::localFileName(file.filePath)))
        Common::logWarning(Traits::noLongerExists, file.filePath.toStdString());
    else if (loadFile(file.filePath, file.encoding, Caller::History))
        return true;
    const std::lock_guard lock(m_mutex);
    m_fileInHand.reset();
    return false;
}

// After an exception the history is still to be taken over.
template <typename Traits> void DatabaseFileManager<Traits>::takeHistory()
{
    if (m_historyState != HistoryState::Asked)
        return;
    FileHistory history;
    QString problem;
    switch (m_history.read(history, problem)) {
    case HistoryFile::ReadResult::Missing:
        m_historyState = HistoryState::Missing;
        Common::logInfo(Traits::historyMissing, m_history.path().toStdString());
        return;
    case HistoryFile::ReadResult::NotReadable:
        m_historyState = HistoryState::Unusable;
        Common::logError(Traits::historyNotReadable, m_history.path().toStdString());
        return;
    case HistoryFile::ReadResult::Malformed:
        m_historyState = HistoryState::Unusable;
        Common::logError(Traits::historyMalformed, problem.toStdString());
        return;
    case HistoryFile::ReadResult::Ok: takeOver(std::move(history)); return;
    }
}

template <typename Traits> void DatabaseFileManager<Traits>::takeOver(FileHistory &&history)
{
    const std::size_t listed = history.files.size();
    history.files.resize(std::min(listed, maxHistoryFiles));
    std::deque<FileHistory::File> pending(history.files.begin(), history.files.end());
    // From here on nothing throws: it is taken over whole or not at all.
    m_pending.swap(pending);
    m_takenKeys = history.customFileMap.size();
    m_customFileMap.merge(history.customFileMap); // keys that are there already stay
    m_historyState = HistoryState::Taken;
    if (listed > maxHistoryFiles)
        Common::logWarning("History file {} lists {} files, the first {} are taken", m_history.path().toStdString(),
                           listed, maxHistoryFiles);
}

template <typename Traits> bool DatabaseFileManager<Traits>::removeFile(const QString &path)
{
    if (path.isEmpty())
        return false;
    const std::lock_guard lock(m_mutex);
    takeHistory(); // else a load that has just been started would bring it back
    if (m_files.erase(path) == 0) {
        Common::logWarning(Traits::notFoundForRemoval, path.toStdString());
        return false;
    }
    dropPending(path);
    return true;
}

template <typename Traits> void DatabaseFileManager<Traits>::dropPending(const QString &path)
{
    const auto isPath = [&](const FileHistory::File &file) { return file.filePath == path; };
    m_pending.erase(std::remove_if(m_pending.begin(), m_pending.end(), isPath), m_pending.end());
    if (m_fileInHand && isPath(*m_fileInHand))
        m_fileInHand.reset();
}

template <typename Traits> void DatabaseFileManager<Traits>::clear()
{
    const std::lock_guard lock(m_mutex);
    takeHistory(); // as in removeFile()
    m_files.clear();
    m_customFileMap.clear();
    m_pending.clear();
    m_fileInHand.reset();
    ++m_clearCount;
}

template <typename Traits> bool DatabaseFileManager<Traits>::containsFile(const QString &path) const
{
    const std::lock_guard lock(m_mutex);
    return m_files.count(path) > 0;
}

template <typename Traits>
auto DatabaseFileManager<Traits>::findFile(const QString &path) const -> std::shared_ptr<const Entry>
{
    const std::lock_guard lock(m_mutex);
    const auto found = m_files.find(path);
    return found == m_files.end() ? nullptr : found->second;
}

template <typename Traits> auto DatabaseFileManager<Traits>::getAllFiles() const -> std::map<QString, Entry>
{
    Files snapshot;
    {
        const std::lock_guard lock(m_mutex);
        snapshot = m_files;
    }
    std::map<QString, Entry> copies; // made outside the lock: databases are large
    for (const auto &[path, entry] : snapshot)
        copies.emplace(path, *entry);
    return copies;
}

template <typename Traits> bool DatabaseFileManager<Traits>::getCustomFile(const QString &key, QString &outValue) const
{
    const std::lock_guard lock(m_mutex);
    const auto found = m_customFileMap.find(key);
    if (found == m_customFileMap.end())
        return false;
    outValue = found->second;
    return true;
}

template <typename Traits> void DatabaseFileManager<Traits>::setCustomFile(const QString &key, const QString &value)
{
    {
        const std::lock_guard lock(m_mutex);
        m_customFileMap.insert_or_assign(key, value);
    }
    saveHistory();
}

template <typename Traits> bool DatabaseFileManager<Traits>::saveHistory()
{
    const std::lock_guard saving(m_saveMutex); // from the look at what is held on, so that the last save has the latest
    try {
        const FileHistory history = historyToSave();
        if (!setUnusableHistoryAside() || !m_history.write(history))
            return false;
        Common::logInfo(Traits::historySaved, history.files.size(), history.customFileMap.size());
        return true;
    } catch (const std::exception &failure) {
        Common::logError(Traits::saveException, failure.what());
        return false;
    }
}

template <typename Traits> FileHistory DatabaseFileManager<Traits>::historyToSave()
{
    const std::lock_guard lock(m_mutex);
    takeHistory();
    std::map<QString, QString> encodings; // by path; a file that is held counts more than one to come
    for (const auto &[path, entry] : m_files)
        encodings.emplace(path, entry->encoding);
    if (m_fileInHand)
        encodings.emplace(m_fileInHand->filePath, m_fileInHand->encoding);
    for (const FileHistory::File &file : m_pending)
        encodings.emplace(file.filePath, file.encoding);
    encodings.erase(QString()); // an element without a path is told when its turn comes
    FileHistory history;
    for (const auto &[path, encoding] : encodings)
        history.files.push_back({path, encoding});
    history.customFileMap = m_customFileMap;
    return history;
}

template <typename Traits> bool DatabaseFileManager<Traits>::setUnusableHistoryAside()
{
    {
        const std::lock_guard lock(m_mutex);
        if (m_historyState != HistoryState::Unusable)
            return true;
    }
    if (!m_history.setAside())
        return false;
    const std::lock_guard lock(m_mutex);
    m_historyState = HistoryState::Missing;
    return true;
}
