// SPDX-License-Identifier: GPL-3.0-or-later
// How well the period sender keeps its grid: 64 frames at 1 ms, beside a bare absolute-sleep loop in the same process
// with the same priority, on the same processor, half a millisecond apart. What the machine does to both of them
// cancels out in the ratio. usage: bench_period_sender [SECONDS]   (default: 60)
#include "bench/BenchReport.h"
#include "bench/LatenessRecorder.h"
#include "common/PeriodSender.h"
#include "common/Thread.h"
#include "common/Utils.h"

#include <atomic>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <ctime>
#include <pthread.h>
#include <sys/prctl.h>
#include <thread>

namespace {

using Clock = std::chrono::steady_clock;
using tzbench_report::LatenessRecorder;
using tzbench_report::Want;

constexpr int frameCount = 64;
constexpr std::size_t frameSize = 29; // a CAN frame of eight bytes on the wire
constexpr double ratioTarget = 1.2;
constexpr double driftTargetUs = 50.0; // over the whole run; a sleep that adds up its lateness drifts by milliseconds

/// What the system has granted to a thread, so that another one can run under the same conditions.
struct Conditions
{
    cpu_set_t processors{};
    int policy = SCHED_OTHER;
    sched_param priority{};
    long timerSlackNs = 0;

    void readFromThisThread()
    {
        pthread_getaffinity_np(pthread_self(), sizeof(processors), &processors);
        pthread_getschedparam(pthread_self(), &policy, &priority);
        timerSlackNs = ::prctl(PR_GET_TIMERSLACK, 0UL, 0UL, 0UL, 0UL);
    }
    bool applyToThisThread() const
    {
        ::prctl(PR_SET_TIMERSLACK, static_cast<unsigned long>(timerSlackNs), 0UL, 0UL, 0UL);
        return pthread_setaffinity_np(pthread_self(), sizeof(processors), &processors) == 0 &&
               pthread_setschedparam(pthread_self(), policy, &priority) == 0;
    }
};

std::vector<Common::SendFrame> makeFrames()
{
    std::vector<Common::SendFrame> frames(frameCount);
    for (unsigned i = 0; i < frameCount; ++i) {
        frames[i].key = Common::Utils::makeUtilsKey(1, 0, i);
        frames[i].bytes.assign(frameSize, static_cast<char>(i));
        frames[i].period = 1;
    }
    return frames;
}

void runBareLoop(LatenessRecorder &recorder, Clock::time_point origin, const std::atomic<bool> &stop)
{
    while (!stop.load(std::memory_order_relaxed)) {
        const auto next = (origin + recorder.points() * LatenessRecorder::period).time_since_epoch();
        const auto seconds = std::chrono::floor<std::chrono::seconds>(next);
        const timespec deadline{.tv_sec = static_cast<time_t>(seconds.count()),
                                .tv_nsec = static_cast<long>((next - seconds).count())};
        while (clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &deadline, nullptr) == EINTR) {
        }
        recorder.serve(Clock::now());
    }
}

/// The sender's side of the run.
class SenderSide
{
public:
    explicit SenderSide(std::size_t points)
        : m_recorder(points)
    {
        m_sender.setSendCallback([this](const std::vector<char> &, int count) {
            m_recorder.serve(Clock::now());
            m_frames += static_cast<std::uint64_t>(count);
            if (!m_conditionsKnown.load(std::memory_order_relaxed)) {
                m_conditions.readFromThisThread();
                m_conditionsKnown.store(true, std::memory_order_release);
                m_conditionsKnown.notify_one();
            }
            return 0;
        });
        m_sender.enableCpuAffinity(true);
    }
    bool start()
    {
        auto frames = makeFrames();
        m_recorder.setOrigin(Clock::now()); // the sender's own grid starts within the next call
        return m_sender.addFrames(std::move(frames)) == Common::PeriodSender::Ok;
    }
    const Conditions &conditions() const
    {
        m_conditionsKnown.wait(false, std::memory_order_acquire);
        return m_conditions;
    }
    /// The recorder may be read from then on.
    void stop() { m_sender.clear(); }

    const LatenessRecorder &recorder() const { return m_recorder; }
    std::uint64_t skipped() const { return m_sender.statistics().skippedFrames; }
    /// Frames that were neither handed over nor told as skipped, or handed over too often.
    double lost() const
    {
        const auto due = static_cast<double>(m_recorder.points()) * frameCount;
        return std::abs(due - static_cast<double>(m_frames + skipped()));
    }

private:
    LatenessRecorder m_recorder;
    std::uint64_t m_frames = 0;
    Conditions m_conditions;
    std::atomic<bool> m_conditionsKnown{false};
    Common::PeriodSender m_sender; // last: its thread uses the others
};

void printTable(const SenderSide &sender, const LatenessRecorder &bare)
{
    fmt::print(stderr, "{:>9}{:>14}{:>14}\n", "", "sender (us)", "bare (us)");
    for (const double share : {0.5, 0.9, 0.99, 0.999, 1.0})
        fmt::print(stderr, "{:>8.5g}%{:>14.1f}{:>14.1f}\n", share * 100.0, sender.recorder().percentile(share),
                   bare.percentile(share));
    fmt::print(stderr, "{} grid points, {} frames skipped after stalls\n", sender.recorder().points(),
               sender.skipped());
}

void reportAll(const SenderSide &sender, const LatenessRecorder &bare)
{
    const auto ratio = [&](double share) { return sender.recorder().percentile(share) / bare.percentile(share); };
    using tzbench_report::report;
    report("period_sender_p50", ratio(0.5), "x bare loop", Want::AtMost, ratioTarget);
    report("period_sender_p99", ratio(0.99), "x bare loop", Want::AtMost, ratioTarget);
    report("period_sender_p99.9", ratio(0.999), "x bare loop", Want::AtMost, ratioTarget);
    report("period_sender_drift", std::abs(sender.recorder().drift()), "us", Want::AtMost, driftTargetUs);
    report("period_sender_lost", sender.lost(), "frames", Want::AtMost, 0.0);
}

} // namespace

int main(int argc, char **argv)
{
    int seconds = 60;
    if (argc > 1) {
        const std::string_view text = argv[1];
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), seconds);
        if (error != std::errc() || end != text.data() + text.size() || seconds < 1) {
            fmt::print(stderr, "usage: {} [SECONDS]\n", argv[0]);
            return EXIT_FAILURE;
        }
    }
    const auto points = static_cast<std::size_t>(seconds) * 1000;

    SenderSide sender(points);
    if (!sender.start()) {
        fmt::print(stderr, "the sender does not start\n");
        return EXIT_FAILURE;
    }
    const Conditions conditions = sender.conditions();
    const auto origin = sender.recorder().origin() + 100 * LatenessRecorder::period + LatenessRecorder::period / 2;
    LatenessRecorder bare(points);
    bare.setOrigin(origin);
    std::atomic<bool> stop{false};
    std::atomic<bool> sameConditions{true};
    std::thread loop([&] {
        Common::setThreadName("tz-bare-loop");
        sameConditions = conditions.applyToThisThread();
        runBareLoop(bare, origin, stop);
    });
    std::this_thread::sleep_for(std::chrono::seconds(seconds));
    sender.stop();
    stop = true;
    loop.join();

    if (!sameConditions)
        fmt::print(stderr, "the bare loop did not get the sender's priority and processor\n");
    printTable(sender, bare);
    reportAll(sender, bare);
    return EXIT_SUCCESS;
}
