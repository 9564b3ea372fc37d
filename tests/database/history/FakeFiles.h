// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "database/history/DatabaseFileManager.h"
#include "tests/database/TestFiles.h"

#include <QString>
#include <QStringList>

#include <condition_variable>
#include <memory>
#include <mutex>
#include <set>

namespace tztest {

struct FakeEntry
{
    QString filePath;
    QString encoding;
};

/// Stands in for a parser: a test can hold up the reading of a file, let it fail or throw. Any thread.
class FakeParser
{
public:
    static FakeParser &instance();

    void reset();
    void holdUp(const QString &path); ///< reading it waits for letGo()
    void letGo(const QString &path);
    void fail(const QString &path);
    void throwAt(const QString &path);
    bool waitUntilReading(const QString &path); ///< false if it was not read within 20 s
    /// Of every reading that has begun.
    QStringList readPaths() const;

    std::shared_ptr<const FakeEntry> read(const QString &path, const QString &encoding);

private:
    mutable std::mutex m_mutex; // protects all below
    std::condition_variable m_changed;
    std::set<QString> m_heldUp;
    std::set<QString> m_failing;
    std::set<QString> m_throwing;
    QStringList m_readPaths;
    bool m_isReading = false;
};

/// Stands in for a disk with trouble: a test can let the next readings or writings of the history throw, or hold up
/// the writings. Any thread.
class FakeDisk
{
public:
    static FakeDisk &instance();

    void reset();
    void throwAtReadings(int count);
    void throwAtWritings(int count);
    void holdUpWritings();
    void letWritingsGo();
    bool waitUntilWriting(); ///< false if nothing was written within 20 s

    void beforeReading();
    void beforeWriting();

private:
    static void countDown(int &throwing);

    std::mutex m_mutex; // protects all below
    std::condition_variable m_changed;
    int m_throwingReadings = 0;
    int m_throwingWritings = 0;
    int m_writings = 0; // since reset()
    bool m_heldUp = false;
};

/// A history file on the fake disk.
class FakeHistoryFile : public HistoryFile
{
public:
    using HistoryFile::HistoryFile;

    ReadResult read(FileHistory &history, QString &problem) const
    {
        FakeDisk::instance().beforeReading();
        return HistoryFile::read(history, problem);
    }
    bool write(const FileHistory &history) const
    {
        FakeDisk::instance().beforeWriting();
        return HistoryFile::write(history);
    }
};

struct FakeTraits
{
    using Entry = FakeEntry;

    static FakeHistoryFile defaultHistoryFile()
    {
        return {QStringLiteral("config/fake.json"), QLatin1String("files"), QLatin1String("encoding")};
    }
    static std::shared_ptr<const Entry> load(const QString &path, const QString &encoding)
    {
        return FakeParser::instance().read(path, encoding);
    }

    static constexpr const char *threadName = "fake-history";
    static constexpr const char *tooManyFiles = "too many: {}";
    static constexpr const char *overwriting = "overwriting: {}";
    static constexpr const char *notFoundForRemoval = "not found for removal: {}";
    static constexpr const char *noLongerExists = "no longer exists: {}";
    static constexpr const char *historyMissing = "history missing: {}";
    static constexpr const char *historyNotReadable = "history not readable: {}";
    static constexpr const char *historyMalformed = "history malformed: {}";
    static constexpr const char *historyLoaded = "loaded {} and {}";
    static constexpr const char *historySaved = "saved {} and {}";
    static constexpr const char *loadException = "load exception: {}";
    static constexpr const char *saveException = "save exception: {}";
};

class FakeManager : public DatabaseFileManager<FakeTraits>
{
public:
    using DatabaseFileManager::DatabaseFileManager;
    using DatabaseFileManager::waitingCallers;
};

/// Makes an empty file below the working directory.
void touch(const QString &path);
/// Writes config/fake.json with these files, which it makes, and keys; encodings are "enc-PATH".
void writeFakeHistory(const QStringList &paths, const QStringList &keys = {});
/// The paths in config/fake.json, with their encodings as "PATH=ENCODING".
QStringList savedFiles();
QString savedKey(const QString &key);

} // namespace tztest

extern template class DatabaseFileManager<tztest::FakeTraits>;
