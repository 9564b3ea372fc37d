// SPDX-License-Identifier: GPL-3.0-or-later
#include "common/LogBackend.h"

#include "common/Thread.h"
#include "common/Utils.h"

#include <fmt/format.h>
#include <spdlog/async_logger.h>
#include <spdlog/details/thread_pool.h>
#include <spdlog/sinks/rotating_file_sink.h>
#include <spdlog/sinks/stdout_sinks.h>

#include <chrono>
#include <optional>
#include <stdexcept>

namespace Common {

namespace {

constexpr std::size_t queueLines = 8192; // about 3 MiB, allocated once
constexpr std::size_t bytesPerMebibyte = 1024 * 1024;
constexpr auto linePattern = "%Y-%m-%d %H:%M:%S.%e [%l] %v";
constexpr auto lossReportInterval = std::chrono::seconds(1);

spdlog::level::level_enum toSpdlog(int level)
{
    switch (level) {
    case 0: return spdlog::level::debug;
    case 1: return spdlog::level::info;
    case 2: return spdlog::level::warn;
    case 3: return spdlog::level::err;
    default: return spdlog::level::off;
    }
}

// Stands before the file or the console on the log's thread: tells of lost lines and flushes whenever nothing waits,
// so that the file is current while the program is quiet and not flushed line by line while it is not.
class TellingSink : public spdlog::sinks::sink
{
public:
    TellingSink(std::shared_ptr<spdlog::sinks::sink> target, spdlog::details::thread_pool *queue)
        : m_target(std::move(target))
        , m_queue(queue)
    {
        m_target->set_pattern(linePattern);
    }

    void log(const spdlog::details::log_msg &message) override
    {
        m_target->log(message);
        const bool idle = m_queue->queue_size() == 0;
        noteLoss(message.time, idle);
        if (idle)
            m_target->flush();
    }
    // Asked for once, at the end.
    void flush() override
    {
        if (lost() > 0)
            reportLoss();
        m_target->flush();
    }
    void set_pattern(const std::string &) override {} // one form for all
    void set_formatter(std::unique_ptr<spdlog::formatter>) override {}

private:
    using Time = spdlog::log_clock::time_point;

    std::size_t lost() const { return m_queue->overrun_counter() - m_reported; }

    // Tells a loss when the burst is over, in a lasting overload once in the interval.
    void noteLoss(Time now, bool idle)
    {
        if (lost() == 0)
            return;
        if (!m_lossSince)
            m_lossSince = now;
        const bool isOver = idle || now - *m_lossSince >= lossReportInterval;
        if (!isOver || now - m_lastReport < lossReportInterval)
            return;
        reportLoss();
        m_lossSince.reset();
        m_lastReport = now;
    }

    void reportLoss()
    {
        const std::size_t count = lost();
        const std::string text = fmt::format("The log was overloaded: {} lines lost", count);
        m_target->log(spdlog::details::log_msg(spdlog::source_loc{}, {}, spdlog::level::warn, text));
        m_reported += count;
    }

    std::shared_ptr<spdlog::sinks::sink> m_target;
    spdlog::details::thread_pool *m_queue; // outlives its own thread, which alone comes here
    std::size_t m_reported = 0;
    std::optional<Time> m_lossSince;
    Time m_lastReport{};
};

} // namespace

struct LogBackend::Impl
{
    Impl(std::shared_ptr<spdlog::sinks::sink> target, int level)
        : queue(std::make_shared<spdlog::details::thread_pool>(queueLines, 1, [] { setThreadName("tz-log"); }))
        , logger(std::make_shared<spdlog::async_logger>("tzbench",
                                                        std::make_shared<TellingSink>(std::move(target), queue.get()),
                                                        queue, spdlog::async_overflow_policy::overrun_oldest))
    {
        logger->set_level(toSpdlog(level));
    }

    std::shared_ptr<spdlog::details::thread_pool> queue;
    std::shared_ptr<spdlog::async_logger> logger;
};

LogBackend::LogBackend(std::unique_ptr<Impl> impl)
    : m_impl(std::move(impl))
{
}

// The queue's destructor works off what waits before it joins its thread. The logger only refers to it weakly.
LogBackend::~LogBackend()
{
    m_impl->logger->flush(); // behind all that waits
    m_impl->queue.reset();
}

std::unique_ptr<LogBackend> LogBackend::openFile(const LogSettings &settings)
{
    if (!Utils::ensureFilePath(settings.path))
        throw std::runtime_error(fmt::format("Failed to create the directory of the log file {}", settings.path));
    // The library counts the rotated files alone.
    auto file = std::make_shared<spdlog::sinks::rotating_file_sink_st>(
        settings.path, settings.fileSizeMb * bytesPerMebibyte, settings.maxFiles - 1);
    return std::unique_ptr<LogBackend>(new LogBackend(std::make_unique<Impl>(std::move(file), settings.level)));
}

std::unique_ptr<LogBackend> LogBackend::openConsole(int level)
{
    auto console = std::make_shared<spdlog::sinks::stderr_sink_st>();
    return std::unique_ptr<LogBackend>(new LogBackend(std::make_unique<Impl>(std::move(console), level)));
}

void LogBackend::write(int level, const std::string &text)
{
    m_impl->logger->log(toSpdlog(level), spdlog::string_view_t(text));
}

} // namespace Common
