// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/database/history/FakeFiles.h"

#include "database/history/DatabaseFileManagerBody.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <chrono>
#include <stdexcept>

template class DatabaseFileManager<tztest::FakeTraits>;

namespace tztest {

FakeParser &FakeParser::instance()
{
    static FakeParser parser;
    return parser;
}

void FakeParser::reset()
{
    const std::lock_guard lock(m_mutex);
    m_heldUp.clear();
    m_failing.clear();
    m_throwing.clear();
    m_readPaths.clear();
}

void FakeParser::holdUp(const QString &path)
{
    const std::lock_guard lock(m_mutex);
    m_heldUp.insert(path);
}

void FakeParser::letGo(const QString &path)
{
    const std::lock_guard lock(m_mutex);
    m_heldUp.erase(path);
    m_changed.notify_all();
}

void FakeParser::fail(const QString &path)
{
    const std::lock_guard lock(m_mutex);
    m_failing.insert(path);
}

void FakeParser::throwAt(const QString &path)
{
    const std::lock_guard lock(m_mutex);
    m_throwing.insert(path);
}

bool FakeParser::waitUntilReading(const QString &path)
{
    std::unique_lock lock(m_mutex);
    return m_changed.wait_for(lock, std::chrono::seconds(20), [&] { return m_readPaths.contains(path); });
}

QStringList FakeParser::readPaths() const
{
    const std::lock_guard lock(m_mutex);
    return m_readPaths;
}

std::shared_ptr<const FakeEntry> FakeParser::read(const QString &path, const QString &encoding)
{
    std::unique_lock lock(m_mutex);
    if (m_isReading)
        throw std::logic_error("two files are read at once");
    m_isReading = true;
    m_readPaths.append(path);
    m_changed.notify_all();
    m_changed.wait(lock, [&] { return m_heldUp.count(path) == 0; });
    m_isReading = false;
    if (m_throwing.count(path) > 0)
        throw std::runtime_error("parser broke");
    if (m_failing.count(path) > 0)
        return nullptr;
    return std::make_shared<FakeEntry>(FakeEntry{path, encoding});
}

FakeDisk &FakeDisk::instance()
{
    static FakeDisk disk;
    return disk;
}

void FakeDisk::reset()
{
    const std::lock_guard lock(m_mutex);
    m_throwingReadings = 0;
    m_throwingWritings = 0;
    m_writings = 0;
    m_heldUp = false;
}

void FakeDisk::throwAtReadings(int count)
{
    const std::lock_guard lock(m_mutex);
    m_throwingReadings = count;
}

void FakeDisk::throwAtWritings(int count)
{
    const std::lock_guard lock(m_mutex);
    m_throwingWritings = count;
}

void FakeDisk::holdUpWritings()
{
    const std::lock_guard lock(m_mutex);
    m_heldUp = true;
}

void FakeDisk::letWritingsGo()
{
    const std::lock_guard lock(m_mutex);
    m_heldUp = false;
    m_changed.notify_all();
}

bool FakeDisk::waitUntilWriting()
{
    std::unique_lock lock(m_mutex);
    return m_changed.wait_for(lock, std::chrono::seconds(20), [&] { return m_writings > 0; });
}

void FakeDisk::beforeReading()
{
    const std::lock_guard lock(m_mutex);
    countDown(m_throwingReadings);
}

void FakeDisk::beforeWriting()
{
    std::unique_lock lock(m_mutex);
    ++m_writings;
    m_changed.notify_all();
    m_changed.wait(lock, [&] { return !m_heldUp; });
    countDown(m_throwingWritings);
}

void FakeDisk::countDown(int &throwing)
{
    if (throwing == 0)
        return;
    --throwing;
    throw std::runtime_error("disk broke");
}

void touch(const QString &path)
{
    writeFile(path, {});
}

void writeFakeHistory(const QStringList &paths, const QStringList &keys)
{
    QJsonArray files;
    for (const QString &path : paths) {
        touch(path);
        files.append(QJsonObject{{"filePath", path}, {"encoding", "enc-" + path}});
    }
    QJsonObject custom;
    for (const QString &key : keys)
        custom.insert(key, "saved-" + key);
    const QJsonObject root{{"version", "2.0"}, {"files", files}, {"customFileMap", custom}};
    writeFile("config/fake.json", QJsonDocument(root).toJson());
}

QStringList savedFiles()
{
    QStringList files;
    const QJsonObject root = QJsonDocument::fromJson(readFile("config/fake.json")).object();
    for (const QJsonValue value : root.value("files").toArray())
        files.append(value.toObject().value("filePath").toString() + '=' +
                     value.toObject().value("encoding").toString());
    return files;
}

QString savedKey(const QString &key)
{
    const QJsonObject root = QJsonDocument::fromJson(readFile("config/fake.json")).object();
    return root.value("customFileMap").toObject().value(key).toString();
}

} // namespace tztest
