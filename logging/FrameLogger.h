// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "common/WorkerThread.h"
#include "common/platform/SteadySleeper.h"
#include "logging/LineBuffer.h"
#include "logging/LoggerResult.h"
#include "logging/RecordClock.h"
#include "logging/RecordFormatter.h"
#include "logging/RecordingFile.h"
#include "logging/RecordingPath.h"
#include "vci/TzVciMessage.h"

#include <concurrentqueue/concurrentqueue.h>
#include <fmt/format.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <span>
#include <string>
#include <vector>

namespace Common {

class UnifiedTimeManager;

/// Writes frames to a text file without holding up the thread that delivers them: the engine of all recorders.
///
/// Frames go through a lock-free queue to a thread that formats them every 100 ms and writes each batch in one go. A
/// file that has reached the size limit is kept as "NAME.1.EXT", "NAME.2.EXT", ..., and recording goes on in a fresh
/// one. Frames are written in the order in which they were handed over.
///
/// A full disk ends the file at its last whole line and loses what follows without a message, until the next file is
/// begun. Where that next file cannot be opened, the logger goes on running, keeps at most maxKeptRecords frames, and
/// tells once that it drops the others.
///
/// Threads: addMessage() and addMessages() belong to whoever delivers; they never wait. The deliverer may change, as
/// from a drain thread to the thread that has joined it, but there is one at a time, and each call happens before the
/// next: all of them go through one producer of the queue, so that the file keeps the order of the calls. All other
/// functions may be called from any thread at any time. The flush thread ("can-logger", "lin-logger") formats, writes
/// and begins new files.
class FrameLogger
{
public:
    static constexpr int minSizeLimitMb = 1;
    static constexpr int maxSizeLimitMb = 100;
    static constexpr std::size_t batchSize = 10'000;
    static constexpr std::int64_t maxKeptRecords = 100'000; ///< waiting while no file is open

    FrameLogger(const FrameLogger &) = delete;
    FrameLogger &operator=(const FrameLogger &) = delete;

    /// Makes the path's directory, opens the file, writes its header and starts the flush thread.
    /// @return a LoggerResult; failures are logged
    int start();
    /// Writes all that was handed over, ends the flush thread and closes the file; does nothing when not running.
    void stop();
    bool isRunning() const noexcept { return m_isRunning.load(std::memory_order_acquire); }

    /// Hands one frame over. @return false when not running; what is then accepted before stop() is written
    bool addMessage(const TzVciMessage &message) { return addMessages({&message, 1}); }
    /// Hands frames over in their order; otherwise as addMessage().
    bool addMessages(std::span<const TzVciMessage> messages);
    /// Frames handed over that the flush thread has not taken yet. Any thread.
    std::int64_t waitingRecords() const noexcept { return m_queued.load(std::memory_order_relaxed); }

protected:
    /// What the recorders say differently.
    struct Texts
    {
        const char *threadName;
        const char *owner; ///< begins the lines that all recorders word alike
        const char *configRefused;
        const char *alreadyRunning;
        const char *noPath;
        fmt::format_string<const std::string &> openFailed; ///< path
        fmt::format_string<const std::string &, const std::string &, const std::string &>
            renameFailed; ///< paths, error
        const char *threadStarted;
        const char *threadStopped;
    };

    FrameLogger(const Texts &texts, const UnifiedTimeManager *unifiedTime);
    ~FrameLogger(); ///< as stop()

    /// Takes what the next start() works with; refused, with an error line, while running.
    void configure(const std::string &path, int sizeLimitMb, bool absoluteTime,
                   std::unique_ptr<const RecordFormatter> formatter);

private:
    struct QueueTraits : moodycamel::ConcurrentQueueDefaultTraits
    {
        static constexpr std::size_t BLOCK_SIZE =
            256; // larger than the default: spares bookkeeping at this record size
    };

    bool openFile();
    bool writeHeader();
    void discardQueue();
    std::int64_t claimRoom(std::size_t count) noexcept;
    std::size_t enqueue(std::span<const TzVciMessage> messages);
    std::size_t takeBatch(std::size_t limit);

    // on the flush thread
    void run();
    void flushQueue();
    std::size_t flushBatch();
    void flushRest();
    bool isFull() const noexcept { return m_file.bytesWritten() >= m_sizeLimitBytes; }
    void rotate();
    void keepFullFile();
    void dropExcess();

    const Texts &m_texts;
    const UnifiedTimeManager *const m_unifiedTime;

    std::mutex m_mutex; // configure(), start() and stop() one after the other; never taken on the flush thread
    std::atomic<bool> m_isRunning{false};
    moodycamel::ConcurrentQueue<TzVciMessage, QueueTraits> m_queue;
    const moodycamel::ProducerToken m_producer; // of whoever delivers; the queue orders within one only
    std::atomic<std::int64_t> m_queued{0};      // frames in the queue, and those that are being put into it
    std::atomic<bool> m_isFileLost{false};      // running without a file
    std::atomic<std::int64_t> m_dropped{0};     // frames not kept since the file was lost
    platform::SteadySleeper m_sleeper;          // the flush thread's wait; stop() ends it

    // The flush thread's while it runs, else start()'s and stop()'s.
    std::vector<TzVciMessage> m_batch;
    LineBuffer m_lines;
    RecordingPath m_path;
    std::uint64_t m_sizeLimitBytes = 0;
    int m_fileIndex = 0; // number of the file kept last
    RecordClock m_clock;
    std::unique_ptr<const RecordFormatter> m_formatter;
    RecordingFile m_file;
    bool m_isDropReported = false;

    WorkerThread m_thread; // last, so that it ends before what it uses
};

} // namespace Common
