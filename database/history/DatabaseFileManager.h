// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "common/WorkerThread.h"
#include "database/history/CallersFirstMutex.h"
#include "database/history/FileHistory.h"
#include "database/history/HistoryFile.h"

#include <QString>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <optional>

/// The database files that are loaded, at most 16, by path; a map of free keys to paths; and both kept across runs in a
/// JSON file. What the managers of the file formats share; the functions are in DatabaseFileManagerBody.h.
///
/// Traits gives what differs:
///  - Entry: a record with filePath and encoding, made once and never changed again
///  - static std::shared_ptr<const Entry> load(path, encoding): reads a file; logs its failures, which give null.
///    Never called twice at once by one manager.
///  - static HistoryFile defaultHistoryFile(), or of another type with the same functions
///  - threadName, and the log texts
///
/// Threads: every function may be called from any thread. Files are loaded one at a time under a lock of their own, so
/// that a caller who looks something up meanwhile does not wait for a parse: it sees the files that were there before.
/// A file is added in one step. startHistoryLoad() starts the thread that loads the files of the last run; a caller who
/// adds a file waits for the file that it has in hand, and goes first.
template <typename Traits> class DatabaseFileManager
{
public:
    using Entry = typename Traits::Entry;
    using History = decltype(Traits::defaultHistoryFile());

    static constexpr std::size_t maxFiles = 16;
    /// Elements of a history that are taken over; no history of ours has as many.
    static constexpr std::size_t maxHistoryFiles = 1000;

    explicit DatabaseFileManager(History history = Traits::defaultHistoryFile());
    /// Ends the load, see endHistoryLoad().
    ~DatabaseFileManager();
    DatabaseFileManager(const DatabaseFileManager &) = delete;
    DatabaseFileManager &operator=(const DatabaseFileManager &) = delete;

    /// Loads what the last run left, on a thread of its own; only the first call does anything. The keys of the last
    /// run and the paths to come are taken over before the first file is read, so that a save meanwhile loses none.
    /// What a caller sets or adds meanwhile wins.
    void startHistoryLoad();
    /// Lets the load end after the file in hand; files that were still to come stay in the history. Does not wait.
    void requestHistoryEnd();
    /// The same, and waits for that end.
    void endHistoryLoad();

    /// Loads a file, also one that is held already. Not saved: call saveHistory().
    /// @return false with 16 files held, or if it cannot be loaded; what was held stays
    bool addFile(const QString &path, const QString &encoding);
    bool removeFile(const QString &path);
    /// Lets go of all files and keys; ends what the background load still has before it.
    void clear();
    bool containsFile(const QString &path) const;
    /// Null for a path that is not held. Cheap: the entry is shared and never changes.
    std::shared_ptr<const Entry> findFile(const QString &path) const;
    std::map<QString, Entry> getAllFiles() const;

    bool getCustomFile(const QString &key, QString &outValue) const;
    /// Stores and saves at once.
    void setCustomFile(const QString &key, const QString &value);
    /// Writes the files held, those still to be loaded, and all keys. A history that could not be used is not lost: it
    /// is kept under another name.
    bool saveHistory();

protected:
    using Files = std::map<QString, std::shared_ptr<const Entry>>;

    const Files &files() const { return m_files; } // with m_mutex held
    /// Callers of addFile() that wait for a file in hand at this moment.
    int waitingCallers() const { return m_loadMutex.waitingCallers(); }

    mutable std::mutex m_mutex; // protects all data here and in derived classes; never held across a parse or a save

private:
    enum class HistoryState
    {
        NotAsked,
        Asked, ///< to be taken over by whoever needs it first
        Taken,
        Missing,
        Unusable ///< there, but to be set aside before anything is written
    };
    enum class Caller
    {
        User,
        History
    };

    bool loadFile(const QString &path, const QString &encoding, Caller caller);
    void loadHistory();
    std::size_t loadPendingFiles();
    bool takeInHand(FileHistory::File &file);
    bool loadInHand(const FileHistory::File &file);
    FileHistory historyToSave();
    bool setUnusableHistoryAside(); // with m_saveMutex held
    // With m_mutex held:
    void takeHistory();
    void takeOver(FileHistory &&history);
    void dropPending(const QString &path);

    const History m_history;
    CallersFirstMutex m_loadMutex; // held across a parse; taken before m_mutex
    std::mutex m_saveMutex;        // held across a save, which waits for the disk; taken before m_mutex
    Files m_files;
    std::map<QString, QString> m_customFileMap;
    std::deque<FileHistory::File> m_pending;       // of the history, still to be loaded
    std::optional<FileHistory::File> m_fileInHand; // of the history; reset meanwhile: its result is not wanted
    HistoryState m_historyState = HistoryState::NotAsked;
    std::size_t m_takenKeys = 0;
    std::uint64_t m_clearCount = 0; // tells a load that clear() was called meanwhile
    std::atomic<bool> m_endRequested{false};
    Common::WorkerThread m_loader; // last: it uses all above
};
