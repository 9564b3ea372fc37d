// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <atomic>
#include <functional>
#include <mutex>
#include <thread>

namespace Common {

/// A named thread with one owner, which can be joined from anywhere, any number of times.
///
/// The body must end by itself once its owner has told it to. Joining from the body itself does nothing, so that a
/// callback may stop the object that called it. Destroying it on its own thread lets the thread run out alone; the body
/// must then own all that it still uses.
///
/// Threads: all functions may be called from any thread.
class WorkerThread
{
public:
    WorkerThread() = default;
    ~WorkerThread();
    WorkerThread(const WorkerThread &) = delete;
    WorkerThread &operator=(const WorkerThread &) = delete;

    /// Joins the previous run, if any, and starts the thread.
    /// @param name  at most 15 characters, must outlive the call
    /// @throws std::system_error when the system has no thread left, or when called from the previous body
    void launch(const char *name, std::function<void()> body);
    /// The same for those who do not tell the reason. @return false where launch() throws
    [[nodiscard]] bool start(const char *name, std::function<void()> body);
    /// Waits for the end of the body; returns at once when nothing was started, or on the thread itself.
    void join();
    /// Whether the caller runs on this thread.
    bool isCurrent() const noexcept { return m_id.load(std::memory_order_acquire) == std::this_thread::get_id(); }

private:
    void joinLocked();

    std::atomic<std::thread::id> m_id{}; // of the started thread, until it was joined
    std::mutex m_mutex;                  // protects m_thread
    std::thread m_thread;
};

} // namespace Common
