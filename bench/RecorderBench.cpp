// SPDX-License-Identifier: GPL-3.0-or-later
// Recorders: what a frame's text costs, and 1 million frames/s into files that are kept and begun anew.
//   bench_recorder [SECONDS]   length of each run that must lose nothing, 30 by default
#include "bench/BenchReport.h"
#include "common/Log.h"
#include "common/UnifiedTimeManager.h"
#include "logging/CANLogger.h"
#include "logging/CanRecordLines.h"
#include "logging/LINLogger.h"
#include "logging/LinRecordLines.h"
#include "logging/RecordingPath.h"
#include "tests/support/AllocationCounter.h"
#include "tests/support/ProcessFigures.h"

#include <QTemporaryDir>

#include <algorithm>
#include <chrono>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;
using tzbench_report::median;
using tzbench_report::report;
using tzbench_report::Want;

constexpr double targetFramesPerSecond = 3e6;
constexpr int runs = 9;
constexpr int batchesPerRun = 50;
constexpr std::size_t batch = Common::FrameLogger::batchSize;
constexpr std::size_t lineCapacity = 128 * 1024;
constexpr std::size_t framesPerStep = 1'000; // handed over each millisecond
constexpr int sizeLimitMb = 50;
constexpr int ascFormat = 0;
constexpr int csvFormat = 1;

void setTime(std::uint32_t &low, std::uint32_t &high, std::uint64_t ticks)
{
    low = static_cast<std::uint32_t>(ticks);
    high = static_cast<std::uint32_t>(ticks >> 32);
}

/// Frames of all devices, 1 us apart: nine of ten classic with 8 bytes, or all of them CAN FD with 64.
std::vector<TzVciMessage> canTraffic(std::size_t count, bool fd)
{
    std::vector<TzVciMessage> messages(count);
    for (std::size_t n = 0; n < count; ++n) {
        TzVciMessage &message = messages[n];
        message.deviceIndex = static_cast<std::uint8_t>(n % 16);
        message.channelIndex = static_cast<std::uint8_t>(n / 16 % 8);
        TzVciCanDataType &can = message.frame.can;
        can.canId = static_cast<std::uint32_t>(n * 7 % 0x800);
        can.frameType = n % 3 == 0 ? TzVciCanFrameType::transmitted : TzVciCanFrameType::received;
        can.dataLength = fd ? 64 : 8;
        can.flags = fd ? TzVciCanFlag::formatMask : (n % 10 == 0 ? TzVciCanFlag::extendedId : 0);
        for (std::size_t i = 0; i < can.dataLength; ++i)
            can.data[i] = static_cast<std::uint8_t>(n + 37 * i);
        setTime(can.timestampLow, can.timestampHigh, 36'000'000'000 + 10 * n); // an hour after the device's start
    }
    return messages;
}

std::vector<TzVciMessage> linTraffic(std::size_t count)
{
    std::vector<TzVciMessage> messages(count);
    for (std::size_t n = 0; n < count; ++n) {
        TzVciMessage &message = messages[n];
        message.deviceIndex = static_cast<std::uint8_t>(n % 16);
        TzVciLinDataType lin;
        lin.linId = static_cast<std::uint8_t>(n % 0x40);
        lin.protectedId = lin.linId;
        lin.checksum = static_cast<std::uint8_t>(n);
        lin.dataLength = 8;
        lin.linDirection = n % 2 == 0 ? TzVciLinDirection::masterRead : TzVciLinDirection::slaveWrite;
        for (std::size_t i = 0; i < lin.data.size(); ++i)
            lin.data[i] = static_cast<std::uint8_t>(n + 37 * i);
        setTime(lin.timestampLow, lin.timestampHigh, 36'000'000'000 + 10 * n);
        message.setLin(lin);
    }
    return messages;
}

double cpuSecondsOfThisThread()
{
    timespec time{};
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

/// Frames formatted by second of this thread, in batches as the flush thread takes them; counts allocations too.
bool benchFormat(const std::string &name, const Common::RecordFormatter &formatter,
                 const std::vector<TzVciMessage> &traffic)
{
    const Common::UnifiedTimeManager time;
    Common::RecordClock clock(&time, true);
    Common::LineBuffer lines(lineCapacity);
    const auto format = [&](std::size_t n) {
        lines.clear();
        formatter.append({&traffic[n * batch % traffic.size()], batch}, clock, lines);
    };
    for (std::size_t n = 0; n < traffic.size() / batch; ++n)
        format(n); // the buffer grows to its size
    const std::size_t allocated = tztest::allocationsOfThisThread();
    std::vector<double> rates;
    rates.reserve(runs);
    for (int run = 0; run < runs; ++run) {
        const double start = cpuSecondsOfThisThread();
        for (std::size_t n = 0; n < batchesPerRun; ++n)
            format(n);
        rates.push_back(static_cast<double>(batchesPerRun * batch) / (cpuSecondsOfThisThread() - start));
    }
    const auto allocations = static_cast<double>(tztest::allocationsOfThisThread() - allocated - 1); // rates
    const bool fast = report(name, median(rates), "frames/s a core", Want::AtLeast, targetFramesPerSecond);
    return report(name + "_allocations", allocations, "for all frames", Want::AtMost, 0) && fast;
}

bool benchFormats()
{
    const std::vector<TzVciMessage> classic = canTraffic(10 * batch, false);
    const std::vector<TzVciMessage> fd = canTraffic(10 * batch, true);
    const std::vector<TzVciMessage> lin = linTraffic(10 * batch);
    Common::CANLoggerConfig canCsv;
    canCsv.format = csvFormat;
    Common::LINLoggerConfig linCsv;
    linCsv.format = csvFormat;
    bool ok = benchFormat("recorder.can_asc", *Common::makeCanRecordFormatter({}), classic);
    ok = benchFormat("recorder.can_csv", *Common::makeCanRecordFormatter(canCsv), classic) && ok;
    ok = benchFormat("recorder.can_fd64_asc", *Common::makeCanRecordFormatter({}), fd) && ok;
    ok = benchFormat("recorder.can_fd64_csv", *Common::makeCanRecordFormatter(canCsv), fd) && ok;
    ok = benchFormat("recorder.lin_asc", *Common::makeLinRecordFormatter({}), lin) && ok;
    return benchFormat("recorder.lin_csv", *Common::makeLinRecordFormatter(linCsv), lin) && ok;
}

/// Counts the records of the files that a running recorder has done with, and removes them, so that a run of any length
/// needs the disk space of a few files alone.
class KeptFiles
{
public:
    /// @param linesAround  lines of each file that are no records
    KeptFiles(Common::RecordingPath path, std::uint64_t linesAround)
        : m_path(std::move(path))
        , m_linesAround(linesAround)
        , m_buffer(1 << 20)
    {
    }

    void takeFinished()
    {
        for (; std::filesystem::exists(m_path.keptPath(m_next + 1)); ++m_next)
            take(m_path.keptPath(m_next));
    }
    void takeRest()
    {
        for (; std::filesystem::exists(m_path.keptPath(m_next)); ++m_next)
            take(m_path.keptPath(m_next));
        take(m_path.path());
    }
    std::uint64_t records() const { return m_records; }
    int files() const { return m_next; }

private:
    void take(const std::string &path)
    {
        std::ifstream file(path, std::ios::binary);
        std::uint64_t lines = 0;
        while (file) {
            file.read(m_buffer.data(), static_cast<std::streamsize>(m_buffer.size()));
            lines += static_cast<std::uint64_t>(std::count(m_buffer.begin(), m_buffer.begin() + file.gcount(), '\n'));
        }
        m_records += lines - m_linesAround;
        std::filesystem::remove(path);
    }

    const Common::RecordingPath m_path;
    const std::uint64_t m_linesAround;
    std::vector<char> m_buffer;
    std::uint64_t m_records = 0;
    int m_next = 1;
};

struct Can
{
    using Logger = Common::CANLogger;
    using Config = Common::CANLoggerConfig;
    static constexpr auto makeFormatter = Common::makeCanRecordFormatter;
};
struct Lin
{
    using Logger = Common::LINLogger;
    using Config = Common::LINLoggerConfig;
    static constexpr auto makeFormatter = Common::makeLinRecordFormatter;
};

struct Paced
{
    std::uint64_t sent = 0;
    std::int64_t peakWaiting = 0; ///< frames that waited for the flush thread at the worst moment
};

/// Hands over a million frames a second, as a drain worker does, and removes full files on the way.
template <typename Logger>
Paced recordPaced(Logger &logger, const std::vector<TzVciMessage> &traffic, KeptFiles &kept, Clock::duration length)
{
    const auto start = Clock::now();
    Paced paced;
    for (auto step = start; step < start + length; step += std::chrono::milliseconds(1)) {
        std::this_thread::sleep_until(step);
        logger.addMessages({&traffic[paced.sent % traffic.size()], framesPerStep});
        paced.sent += framesPerStep;
        paced.peakWaiting = std::max(paced.peakWaiting, logger.waitingRecords());
        if (paced.sent % (1'000 * framesPerStep) == 500 * framesPerStep) // not at the end, when it would be timed
            kept.takeFinished();
    }
    return paced;
}

std::uint64_t linesIn(std::string_view text)
{
    return static_cast<std::uint64_t>(std::count(text.begin(), text.end(), '\n'));
}

template <typename Family>
bool benchSustained(const std::string &name, int format, const std::vector<TzVciMessage> &traffic,
                    std::chrono::seconds length)
{
    QTemporaryDir directory;
    const Common::UnifiedTimeManager time;
    typename Family::Logger logger(&time);
    typename Family::Config config;
    config.filePath = directory.filePath("run.txt").toLocal8Bit().toStdString();
    config.format = format;
    config.sizeLimitMb = sizeLimitMb;
    logger.setConfig(config);
    const auto formatter = Family::makeFormatter(config);
    KeptFiles kept(Common::RecordingPath(config.filePath), linesIn(formatter->header()) + linesIn(formatter->footer()));
    if (!directory.isValid() || logger.start() != Common::LoggerResult::ok) {
        fmt::print(stderr, "the recorder could not be started\n");
        std::exit(2);
    }
    const Paced before = recordPaced(logger, traffic, kept, std::chrono::seconds(2)); // buffers and queue grow
    const double memoryBefore = tztest::ProcessFigures::of().residentMiB;
    const double cpuBefore = tztest::ProcessFigures::of().cpuSeconds;
    const auto start = Clock::now();
    const Paced paced = recordPaced(logger, traffic, kept, length);
    const double took = std::chrono::duration<double>(Clock::now() - start).count();
    const double memory = tztest::ProcessFigures::of().residentMiB - memoryBefore;
    const double cpu = tztest::ProcessFigures::of().cpuSeconds - cpuBefore;
    logger.stop();
    kept.takeRest();
    bool ok = report(name + "_sustained", static_cast<double>(paced.sent) / took, "frames/s", Want::AtLeast, 0.99e6);
    ok = report(name + "_lost", static_cast<double>(before.sent + paced.sent) - static_cast<double>(kept.records()),
                "frames", Want::AtMost, 0) &&
         ok;
    ok = report(name + "_files", kept.files(), "files", Want::AtLeast, 2) && ok;
    ok = report(name + "_cpu", 100.0 * cpu / took, "% of a core, all threads", Want::AtMost, 100) && ok;
    // A shared machine stalls for seconds, disks too; the queue keeps the memory of what waited meanwhile.
    const double backlog = static_cast<double>(paced.peakWaiting) / framesPerStep;
    const double backlogMiB = static_cast<double>(paced.peakWaiting) * sizeof(TzVciMessage) / (1 << 20);
    ok = report(name + "_backlog", backlog, "ms of traffic", Want::AtMost, 5'000) && ok;
    return report(name + "_memory_growth", std::max(0.0, memory - backlogMiB), "MiB beyond the backlog", Want::AtMost,
                  16) &&
           ok;
}

} // namespace

int main(int argc, char **argv)
{
    const auto length = std::chrono::seconds(argc > 1 ? std::max(1, std::atoi(argv[1])) : 30);
    Common::logInit("", Common::LogLevel::warning, 1, 1); // failures of the recorders are told
    Common::logStart(true);
    bool ok = benchFormats();
    const std::vector<TzVciMessage> can = canTraffic(100'000, false);
    const std::vector<TzVciMessage> lin = linTraffic(100'000);
    ok = benchSustained<Can>("recorder.can", csvFormat, can, length) && ok;
    ok = benchSustained<Lin>("recorder.lin", csvFormat, lin, length) && ok;
    ok = benchSustained<Can>("recorder.can_asc", ascFormat, can, length) && ok;
    ok = benchSustained<Lin>("recorder.lin_asc", ascFormat, lin, length) && ok;
    Common::logStop();
    return ok ? 0 : 1;
}
