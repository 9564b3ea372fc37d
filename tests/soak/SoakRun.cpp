// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/soak/SoakRun.h"

#include "vci/TzVciTypes.h"
#include "views/ui/TzVciBaseViewWindow.h"

#include <QEventLoop>

#include <fmt/format.h>

#include <thread>
#include <utility>

namespace tzsoak {

namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;
using SteadyClock = std::chrono::steady_clock;

constexpr seconds longestStandstill{120};
constexpr seconds longestAwait{60};
constexpr milliseconds pollPeriod{50};
// As long as several lost boxes may hold the event loop: the queues of the views reach their full length at once, and
// not some time in the run.
constexpr seconds standstill{4};
constexpr milliseconds restTime{1500};
constexpr milliseconds quietTime{400}; // nothing arrives for so long: it is all through
constexpr milliseconds finaleTime{2000};
constexpr std::size_t samplesPerLine = 30;

} // namespace

SoakRun::SoakRun(const Options &options)
    : m_options(options)
    , m_userRandom(options.seed)
    , m_faultRandom(options.seed + 1)
    , m_watchdog("The soak run", longestStandstill)
    , m_judge(options.logFile)
    , m_faults(m_boxes, m_workbench, m_judge, m_faultRandom)
    , m_canRecorder(m_workbench, TzVciProtocolId::can, options.seed + 2)
    , m_linRecorder(m_workbench, TzVciProtocolId::lin, options.seed + 3)
    , m_user(m_workbench, m_faults, {&m_canRecorder, &m_linRecorder}, m_userRandom)
{
    m_timer.setInterval(samplePeriod);
    connect(&m_timer, &QTimer::timeout, this, &SoakRun::tick);
}

bool SoakRun::run()
{
    fmt::print(
        "soak of {} s, seed {}: {} boxes, {:.0f} frames/s wanted (each box: CAN {:.0f}, CAN FD {:.0f}, LIN {:.0f})\n",
        m_options.duration.count(), m_options.seed, boxCount, framesPerSecond, classicFramesPerSecond,
        fdFramesPerSecond, linFramesPerSecond);
    std::fflush(stdout);
    if (begin() && soak() && putRight() && finalTraffic())
        judge();
    m_verdict.print();
    return m_verdict.isGood();
}

// The traffic begins once the window has heard of all channels and has emptied the views for them.
bool SoakRun::begin()
{
    if (!m_boxes.start(QStringLiteral("--boxes")))
        return fail(m_boxes.error().toStdString());
    for (int box = 0; box < boxCount; ++box) {
        if (!m_workbench.open(box))
            return fail(fmt::format("box {} does not open", box));
    }
    runFor(restTime);
    m_start = {SteadyClock::now(), tztest::ProcessFigures::of().cpuSeconds,
               tztest::ProcessFigures::of(m_boxes.processId()).cpuSeconds};
    if (!setTraffic(true))
        return false;
    std::this_thread::sleep_for(standstill);
    m_gaps.restart();
    runFor(restTime);
    m_atRestBefore = tztest::ProcessFigures::of();
    return true;
}

bool SoakRun::soak()
{
    m_timer.start();
    m_faults.start();
    m_user.start();
    m_canRecorder.start();
    m_linRecorder.start();
    const auto end = SteadyClock::now() + m_options.duration;
    while (SteadyClock::now() < end) {
        runFor(pollPeriod);
        if (const std::string reason = failure(); !reason.empty())
            return fail(reason);
    }
    return true;
}

// Everything as at the beginning: all boxes open, nobody at the windows.
bool SoakRun::putRight()
{
    m_canRecorder.stop();
    m_linRecorder.stop();
    if (!await([this] { return m_canRecorder.isIdle() && m_linRecorder.isIdle(); }, "the recorders do not end"))
        return false;
    m_user.stop();
    m_faults.stop();
    if (!await([this] { return m_user.isIdle(); }, "a dialog does not come or does not end") ||
        !await([this] { return m_faults.isIdle(); }, "a fault does not end"))
        return false;
    m_timer.stop();
    if (const std::string reason = failure(); !reason.empty())
        return fail(reason);
    if (!m_user.restore())
        return fail("a channel that the user stopped does not open again");
    tellLoad();
    runFor(restTime);
    m_atRestAfter = tztest::ProcessFigures::of();
    return setTraffic(false) && awaitQuiet();
}

// The views that the user has paused and emptied as he liked once more count exactly what comes.
bool SoakRun::finalTraffic()
{
    for (TzVciBaseViewWindow *view : m_workbench.freeViews())
        view->onClearViewWindow(view->viewKind());
    m_beforeFinale = m_workbench.ledger().counts();
    if (!setTraffic(true))
        return false;
    runFor(finaleTime);
    if (!setTraffic(false) || !awaitQuiet())
        return false;
    const std::optional<FrameCounts> sent = m_boxes.sent();
    if (!sent)
        return fail(m_boxes.error().toStdString());
    m_sent = *sent;
    runFor(seconds(4)); // the log is read when the causes of its last lines are known
    noteStalls();
    m_judge.readAll();
    return true;
}

void SoakRun::tick()
{
    m_samples.take();
    noteStalls();
    m_judge.read();
    m_watchdog.step(fmt::format("the sample {}", m_samples.count()));
    if (m_samples.count() % samplesPerLine == 0)
        tellProgress();
}

void SoakRun::tellProgress() const
{
    const tztest::ProcessFigures now = tztest::ProcessFigures::of();
    const FrameCounts counts = m_workbench.ledger().counts();
    fmt::print("after {} s: {} frames, {:.1f} MiB, {} threads, {} descriptors\n", m_samples.count(),
               counts.can() + counts.lin(), now.residentMiB, now.threads, now.descriptors);
    std::fflush(stdout);
}

// Of the machine and of the event loop: each lets frames pile up at places of its own.
void SoakRun::noteStalls()
{
    const auto noteNew = [this](Cause cause, const std::vector<GapWatch::Gap> &gaps, std::size_t &noted) {
        for (; noted < gaps.size(); ++noted)
            m_judge.note(cause, LogJudge::anyBox, gaps[noted].from, gaps[noted].to);
    };
    noteNew(Cause::Freeze, m_gaps.gaps(), m_gapsNoted);
    noteNew(Cause::Stall, m_gaps.machineStalls(), m_stallsNoted);
}

bool SoakRun::setTraffic(bool on)
{
    for (int box = 0; box < boxCount; ++box) {
        if (!m_boxes.command(
                QStringLiteral("%1 %2").arg(on ? QStringLiteral("start") : QStringLiteral("stop")).arg(box)))
            return fail(m_boxes.error().toStdString());
    }
    return true;
}

bool SoakRun::awaitQuiet()
{
    std::uint64_t last = 0;
    auto since = SteadyClock::now();
    return await(
        [&] {
            const FrameCounts counts = m_workbench.ledger().counts();
            const std::uint64_t now = counts.can() + counts.lin();
            if (std::exchange(last, now) != now || !m_workbench.isDrained())
                since = SteadyClock::now();
            return SteadyClock::now() - since > quietTime;
        },
        "frames come though the traffic has ended");
}

void SoakRun::runFor(milliseconds time)
{
    QEventLoop loop;
    QTimer::singleShot(time, Qt::PreciseTimer, &loop, &QEventLoop::quit);
    loop.exec();
}

template <typename Condition> bool SoakRun::await(Condition condition, const char *what)
{
    const auto end = SteadyClock::now() + longestAwait;
    while (!condition()) {
        if (SteadyClock::now() > end)
            return fail(what);
        runFor(pollPeriod);
    }
    m_watchdog.step(what);
    return true;
}

bool SoakRun::fail(const std::string &reason)
{
    m_verdict.fail(reason);
    return false;
}

std::string SoakRun::failure() const
{
    if (!m_boxes.error().isEmpty())
        return m_boxes.error().toStdString();
    for (const std::string *text :
         {&m_faults.failure(), &m_user.failure(), &m_canRecorder.failure(), &m_linRecorder.failure()}) {
        if (!text->empty())
            return *text;
    }
    return {};
}

} // namespace tzsoak
