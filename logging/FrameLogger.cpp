// SPDX-License-Identifier: GPL-3.0-or-later
#include "logging/FrameLogger.h"

#include "common/Log.h"
#include "common/Utils.h"
#include "common/platform/ExclusiveFile.h"
#include "common/platform/RaceAnnotations.h"

#include <algorithm>
#include <chrono>
#include <exception>
#include <filesystem>
#include <new>
#include <system_error>
#include <thread>
#include <utility>

namespace Common {

namespace {

constexpr std::chrono::milliseconds flushInterval{100};
constexpr std::size_t linesCapacity = 128 * 1024;
constexpr int bitsOfMebibyte = 20;

} // namespace

FrameLogger::FrameLogger(const Texts &texts, const UnifiedTimeManager *unifiedTime)
    : m_texts(texts)
    , m_unifiedTime(unifiedTime)
    , m_queue(batchSize)
    , m_producer(m_queue)
    , m_lines(linesCapacity)
    , m_clock(unifiedTime, true)
{
    if (!m_producer.valid())
        throw std::bad_alloc(); // the one way in which a token fails
}

FrameLogger::~FrameLogger()
{
    stop();
}

void FrameLogger::configure(const std::string &path, int sizeLimitMb, bool absoluteTime,
                            std::unique_ptr<const RecordFormatter> formatter)
{
    const std::lock_guard lock(m_mutex);
    if (isRunning()) {
        logError("{}", m_texts.configRefused);
        return;
    }
    const auto limit = static_cast<std::uint64_t>(std::clamp(sizeLimitMb, minSizeLimitMb, maxSizeLimitMb));
    m_path = RecordingPath(path);
    m_sizeLimitBytes = limit << bitsOfMebibyte;
    m_fileIndex = 0;
    m_clock = RecordClock(m_unifiedTime, absoluteTime);
    m_formatter = std::move(formatter);
}

int FrameLogger::start()
{
    const std::lock_guard lock(m_mutex);
    if (isRunning()) {
        logError("{}", m_texts.alreadyRunning);
        return LoggerResult::alreadyRunning;
    }
    if (m_path.path().empty()) {
        logError("{}", m_texts.noPath);
        return LoggerResult::openFailed;
    }
    if (!openFile())
        return LoggerResult::openFailed;
    if (!writeHeader()) {
        m_file.close();
        return LoggerResult::headerFailed;
    }
    m_batch.resize(batchSize);
    discardQueue();
    m_isFileLost.store(false);
    m_dropped.store(0);
    m_isDropReported = false;
    m_isRunning.store(true);
    try {
        m_thread.launch(m_texts.threadName, [this] { run(); });
    } catch (const std::exception &error) {
        m_isRunning.store(false);
        m_file.finish();
        m_file.close();
        logError("Failed to start flush thread: {}", error.what());
        return LoggerResult::threadFailed;
    }
    return LoggerResult::ok;
}

void FrameLogger::stop()
{
    const std::lock_guard lock(m_mutex);
    if (!m_isRunning.exchange(false))
        return;
    m_sleeper.wake();
    m_thread.join();
    if (!m_file.isOpen())
        return;
    m_file.finish();
    m_file.close();
}

// A caller that found the logger running is counted before it looks again: the last flush waits for what it puts in.
bool FrameLogger::addMessages(std::span<const TzVciMessage> messages)
{
    if (!isRunning())
        return false;
    const std::int64_t room = claimRoom(messages.size());
    if (!m_isRunning.load()) {
        m_queued.fetch_sub(room);
        return false;
    }
    const auto entered = static_cast<std::int64_t>(enqueue(messages.first(static_cast<std::size_t>(room))));
    if (entered < room)
        m_queued.fetch_sub(room - entered); // no memory: lost
    return true;
}

// Counts the frames that may enter the queue; all of them while there is a file.
std::int64_t FrameLogger::claimRoom(std::size_t count) noexcept
{
    const auto wanted = static_cast<std::int64_t>(count);
    if (!m_isFileLost.load(std::memory_order_acquire)) {
        m_queued.fetch_add(wanted);
        return wanted;
    }
    std::int64_t queued = m_queued.load();
    std::int64_t room = 0;
    do
        room = std::clamp(maxKeptRecords - queued, std::int64_t{0}, wanted);
    while (!m_queued.compare_exchange_weak(queued, queued + room));
    m_dropped.fetch_add(wanted - room);
    return room;
}

// Block by block: the queue takes a bulk as a whole or not at all, and one that finds no memory after it asked for
// several blocks leaves those uncounted in the producer, whose index of blocks then overflows.
std::size_t FrameLogger::enqueue(std::span<const TzVciMessage> messages)
{
    const RaceAnnotations::UncheckedAccess unchecked; // the queue takes its emptied blocks again behind a fence
    std::size_t entered = 0;
    while (entered < messages.size()) {
        const auto part = messages.subspan(entered, std::min(messages.size() - entered, QueueTraits::BLOCK_SIZE));
        if (!m_queue.enqueue_bulk(m_producer, part.data(), part.size()))
            break;
        entered += part.size();
    }
    return entered;
}

bool FrameLogger::openFile()
{
    Utils::ensureFilePath(m_path.path()); // where it cannot be done, the open tells
    if (m_file.open(m_path.path(), m_formatter->footer()))
        return true;
    logError(m_texts.openFailed, m_path.path());
    return false;
}

bool FrameLogger::writeHeader()
{
    m_clock.restart();
    m_file.write(m_formatter->header());
    return m_file.flush();
}

// What was left by a run that had lost its file.
void FrameLogger::discardQueue()
{
    while (m_queued.load() > 0) {
        if (takeBatch(batchSize) == 0)
            std::this_thread::yield(); // a caller of addMessages() is about to put in what it counted
    }
}

std::size_t FrameLogger::takeBatch(std::size_t limit)
{
    const std::size_t count = m_queue.try_dequeue_bulk(m_batch.begin(), limit);
    m_queued.fetch_sub(static_cast<std::int64_t>(count));
    return count;
}

void FrameLogger::run()
{
    logInfo("{}", m_texts.threadStarted);
    auto ticket = m_sleeper.ticket();
    while (m_isRunning.load()) {
        m_sleeper.sleepUntil(ticket, platform::SteadySleeper::Clock::now() + flushInterval);
        ticket = m_sleeper.ticket();
        if (m_isRunning.load()) // else what waits is the rest
            flushQueue();
    }
    flushRest();
    logInfo("{}", m_texts.threadStopped);
}

// Ends with the first batch that is not a whole one, so that a steady stream of frames cannot keep it from stopping.
void FrameLogger::flushQueue()
{
    if (!m_file.isOpen()) {
        dropExcess();
        return;
    }
    std::size_t count = 0;
    do {
        count = flushBatch();
        if (count > 0 && isFull())
            rotate();
    } while (count == batchSize);
    if (count == 0)
        m_file.flush();
}

// No further frames are accepted: what is counted is in the queue or about to be. A file that the last of them fills is
// not followed by an empty one.
void FrameLogger::flushRest()
{
    while (m_file.isOpen() && m_queued.load() > 0) {
        if (m_queue.size_approx() == 0)
            std::this_thread::yield();
        else if (isFull())
            rotate();
        else
            flushBatch();
    }
    if (!m_file.isOpen())
        dropExcess();
}

std::size_t FrameLogger::flushBatch()
{
    if (!m_file.isOpen())
        return 0;
    const std::size_t count = takeBatch(batchSize);
    if (count == 0)
        return 0;
    m_lines.clear();
    m_formatter->append({m_batch.data(), count}, m_clock, m_lines);
    if (!m_lines.empty())
        m_file.write(m_lines.text());
    return count;
}

void FrameLogger::rotate()
{
    m_file.finish();
    keepFullFile();
    m_file.close();
    if (openFile())
        writeHeader();
    else
        m_isFileLost.store(true, std::memory_order_release);
}

// All files are locked here: nobody takes the full one for a fresh recording before it has its new name, and nobody
// begins to record into the older one of that name, which it replaces. Where somebody moved the full one away, a
// stranger's file that stands in its place is kept instead, since the fresh one would empty it.
void FrameLogger::keepFullFile()
{
    ++m_fileIndex;
    const std::string &path = m_path.path();
    platform::ExclusiveFile stranger;
    if (!m_file.isAt(path)) {
        const std::error_code error = stranger.hold(path);
        const bool isOtherRecording = error == std::errc::operation_would_block;
        if (isOtherRecording || error == std::errc::no_such_file_or_directory)
            return;
    }
    const std::string kept = m_path.keptPath(m_fileIndex);
    platform::ExclusiveFile older;
    std::error_code error = older.hold(kept);
    if (error != std::errc::operation_would_block)
        std::filesystem::rename(path, kept, error);
    if (!error)
        return;
    const std::string reason = error.message();
    logError(m_texts.renameFailed, path, kept, reason);
}

// While there is no file: keeps what waits within its bound, and tells once that frames are lost.
void FrameLogger::dropExcess()
{
    for (auto excess = m_queued.load() - maxKeptRecords; excess > 0; excess = m_queued.load() - maxKeptRecords) {
        const auto count = takeBatch(std::min(static_cast<std::size_t>(excess), batchSize));
        if (count == 0)
            break; // counted, but not in the queue yet
        m_dropped.fetch_add(static_cast<std::int64_t>(count));
    }
    if (m_dropped.load() > 0 && !std::exchange(m_isDropReported, true))
        logError("{} has no open file: {} frames are kept, further ones are dropped", m_texts.owner, maxKeptRecords);
}

} // namespace Common
