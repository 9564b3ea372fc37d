// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/ldf/LdfFileManager.h"

#include "common/Log.h"
#include "database/history/DatabaseFileManagerBody.h"
#include "database/ldf/LdfParser.h"

#include <mutex>

namespace {

bool isTaken(const LdfFrame &frame, LdfFileManager::FrameFilter filter)
{
    switch (filter) {
    case LdfFileManager::AllFrames: return true;
    case LdfFileManager::MasterFrames: return frame.isMasterFrame;
    case LdfFileManager::SlaveFrames: return !frame.isMasterFrame;
    }
    return false;
}

} // namespace

template class DatabaseFileManager<LdfFileTraits>;

HistoryFile LdfFileTraits::defaultHistoryFile()
{
    return {QStringLiteral("config/ldf_manager.json"), QLatin1String("ldfFiles"), QLatin1String("fileEncoding")};
}

std::shared_ptr<const LdfFileEntry> LdfFileTraits::load(const QString &path, const QString &encoding)
{
    auto entry = std::make_shared<LdfFileEntry>();
    if (!Common::LdfParser::loadLdfConfig(entry->config, path, encoding)) {
        Common::logError("Failed to load LDF file: {}", path.toStdString());
        return nullptr;
    }
    entry->filePath = path;
    entry->encoding = encoding;
    return entry;
}

LdfFileManager &LdfFileManager::getInstance()
{
    static LdfFileManager manager;
    return manager;
}

bool LdfFileManager::bindKey(std::uint64_t key, const QString &path)
{
    if (path.isEmpty())
        return false;
    const std::lock_guard lock(m_mutex);
    if (files().count(path) == 0) {
        Common::logError("LDF file not found: {}", path.toStdString());
        return false;
    }
    m_bindings.insert_or_assign(key, path);
    Common::logInfo("Bound key 0x{:X} to LDF file: {}", key, path.toStdString());
    return true;
}

bool LdfFileManager::unbindKey(std::uint64_t key)
{
    const std::lock_guard lock(m_mutex);
    const auto found = m_bindings.find(key);
    if (found == m_bindings.end()) {
        Common::logWarning("Key {} not bound", key);
        return false;
    }
    Common::logInfo("Unbound key: 0x{:X} from LDF file: {}", key, found->second.toStdString());
    m_bindings.erase(found);
    return true;
}

std::map<std::uint64_t, QString> LdfFileManager::getBindings() const
{
    const std::lock_guard lock(m_mutex);
    return m_bindings;
}

std::map<std::uint8_t, LdfFrame> LdfFileManager::getFrames(const LdfConfig &config, FrameFilter filter)
{
    std::map<std::uint8_t, LdfFrame> frames;
    for (const auto *group : {&config.frames, &config.diagnosticFrames}) {
        for (const auto &[name, frame] : *group) {
            if (isTaken(frame, filter))
                frames.try_emplace(frame.id, frame);
        }
    }
    return frames;
}
