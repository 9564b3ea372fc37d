// SPDX-License-Identifier: GPL-3.0-or-later
// The reckoning at the end of a soak run.
#include "tests/soak/SoakRun.h"

#include "tests/soak/ToolkitWarnings.h"
#include "vci/TzVciTypes.h"
#include "views/ui/TzVciBaseViewWindow.h"

#include <fmt/format.h>

#include <algorithm>

namespace tzsoak {

namespace {

using std::chrono::milliseconds;

constexpr std::size_t mostLinesTold = 10;
constexpr milliseconds requestTimeout{tzVciRequestTimeoutMs};
constexpr milliseconds stampTolerance{20}; // between a log line's stamp and the clock of the gaps

std::string number(std::uint64_t value)
{
    return std::to_string(value);
}

// Exactly what is missing must have been told: a datagram carries 1 to maxFramesPerDatagram frames.
bool isAccounted(std::uint64_t sent, std::uint64_t received, std::uint64_t toldDatagrams)
{
    if (received > sent)
        return false;
    const std::uint64_t lost = sent - received;
    return lost >= toldDatagrams && lost <= toldDatagrams * maxFramesPerDatagram;
}

} // namespace

void SoakRun::judge()
{
    judgeCounters();
    judgeViews();
    judgeRecorders();
    judgeResources();
    judgeFreezes();
    judgeLog();
}

void SoakRun::tellLoad()
{
    const double elapsed = std::chrono::duration<double>(std::chrono::steady_clock::now() - m_start.at).count();
    const FrameCounts counts = m_workbench.ledger().counts();
    const double own = tztest::ProcessFigures::of().cpuSeconds - m_start.cpuSeconds;
    const double boxes = tztest::ProcessFigures::of(m_boxes.processId()).cpuSeconds - m_start.boxesCpuSeconds;
    m_verdict.tell("frames/s received",
                   fmt::format("{:.0f}", static_cast<double>(counts.can() + counts.lin()) / elapsed));
    m_verdict.tell("processor time of the workbench", fmt::format("{:.0f} % of a core", own / elapsed * 100));
    m_verdict.tell("processor time of the boxes", fmt::format("{:.0f} % of a core", boxes / elapsed * 100));
    m_verdict.tell("user actions", number(m_user.count()));
}

void SoakRun::judgeCounters()
{
    const FrameCounts received = m_workbench.ledger().counts();
    std::uint64_t told = 0;
    std::string wrong;
    for (int box = 0; box < boxCount; ++box) {
        const auto index = static_cast<std::size_t>(box);
        const auto &[sentCan, sentLin] = m_sent.boxes[index];
        const auto &[gotCan, gotLin] = received.boxes[index];
        const std::uint64_t toldHere = m_judge.lostDatagrams(box);
        told += toldHere;
        const bool hasMore = gotCan > sentCan || gotLin > sentLin; // which would hide what the other family lost
        if (hasMore || !isAccounted(sentCan + sentLin, gotCan + gotLin, toldHere))
            wrong += fmt::format(" box {}: {} + {} sent, {} + {} received, {} datagrams told;", box, sentCan, sentLin,
                                 gotCan, gotLin, toldHere);
    }
    m_verdict.tell("datagrams told lost", number(told));
    m_verdict.tell("frames sent by the boxes", number(m_sent.can() + m_sent.lin()));
    m_verdict.judge("frames received by the links", wrong.empty(), number(received.can() + received.lin()),
                    "as sent, but for what is told lost");
    if (!wrong.empty())
        m_verdict.fail("not accounted for:" + wrong);
}

void SoakRun::judgeViews()
{
    const FrameCounts received = m_workbench.ledger().counts();
    const auto judgeReference = [this](const char *name, const TzVciBaseViewWindow *view, std::uint64_t wanted) {
        const std::uint64_t counted = view ? view->intake().counters().total : 0;
        m_verdict.judge(name, counted == wanted, number(counted), number(wanted));
    };
    judgeReference("counted by the CAN view", m_workbench.canReference(), received.can());
    judgeReference("counted by the LIN view", m_workbench.linReference(), received.lin());
    for (const TzVciBaseViewWindow *view : m_workbench.freeViews()) {
        const bool isLin = TzVciViewKind::isLinFamily(view->viewKind());
        const std::uint64_t wanted =
            isLin ? received.lin() - m_beforeFinale.lin() : received.can() - m_beforeFinale.can();
        const TzViewIntake::Counters counters = view->intake().counters();
        m_verdict.judge(fmt::format("counted at last by {}", view->windowTitle().toStdString()),
                        counters.total == wanted && counters.rx + counters.tx + counters.err == wanted,
                        number(counters.total), number(wanted));
    }
}

// Each recording was compared when it ended.
void SoakRun::judgeRecorders()
{
    for (const Recorder *recorder : {&m_canRecorder, &m_linRecorder}) {
        const Recorder::Totals &totals = recorder->totals();
        const char *family = recorder == &m_canRecorder ? "CAN" : "LIN";
        m_verdict.judge(fmt::format("{} recordings as counted", family), totals.recordings > 0,
                        fmt::format("{} in {} files", totals.recordings, totals.files), "at least one");
        m_verdict.tell(fmt::format("{} frames recorded", family),
                       fmt::format("{}, {:.0f} MB", totals.frames, static_cast<double>(totals.bytes) / 1e6));
    }
}

void SoakRun::judgeResources()
{
    const Samples::Trend memory = m_samples.memoryMiB();
    const Samples::Trend descriptors = m_samples.descriptors();
    const Samples::Trend threads = m_samples.threads();
    const double mostGrowth = m_options.duration >= longRun ? mostMemoryGrowthMiB : mostEarlyMemoryGrowthMiB;
    m_verdict.judge("memory, second and last quarter", memory.growth() <= mostGrowth,
                    fmt::format("{:.1f} -> {:.1f} MiB", memory.early, memory.late),
                    fmt::format("+{:.1f} MiB at most", mostGrowth));
    m_verdict.judge("descriptors, second and last quarter", descriptors.growth() <= mostDescriptorGrowth,
                    fmt::format("{:.0f} -> {:.0f}", descriptors.early, descriptors.late),
                    fmt::format("+{:.0f} at most", mostDescriptorGrowth));
    m_verdict.tell("threads, second and last quarter", fmt::format("{:.0f} -> {:.0f}", threads.early, threads.late));
    m_verdict.judge("descriptors at rest", m_atRestAfter.descriptors == m_atRestBefore.descriptors,
                    number(m_atRestAfter.descriptors), number(m_atRestBefore.descriptors));
    m_verdict.judge("threads at rest", m_atRestAfter.threads == m_atRestBefore.threads, number(m_atRestAfter.threads),
                    number(m_atRestBefore.threads));
    m_verdict.tell("memory at rest, before and after",
                   fmt::format("{:.1f} -> {:.1f} MiB", m_atRestBefore.residentMiB, m_atRestAfter.residentMiB));
}

// Opening and closing wait for the box, by design: that time is told, and not judged.
void SoakRun::judgeFreezes()
{
    milliseconds longest{0};
    milliseconds unexplained{0};
    for (const GapWatch::Gap &gap : m_gaps.gaps()) {
        const milliseconds waited = m_judge.timeouts(gap.from, gap.to + stampTolerance) * requestTimeout;
        longest = std::max(longest, gap.length());
        unexplained = std::max(unexplained, gap.length() - waited - m_gaps.stalled(gap.from, gap.to));
    }
    m_verdict.tell("longest gap of the event loop", fmt::format("{} ms", longest.count()));
    m_verdict.judge("without waits for boxes and machine stalls", unexplained <= longestFreeze,
                    fmt::format("{} ms", unexplained.count()), fmt::format("{} ms at most", longestFreeze.count()));
    const auto stalls = m_gaps.machineStalls();
    milliseconds longestStall{0};
    for (const GapWatch::Gap &stall : stalls)
        longestStall = std::max(longestStall, stall.length());
    m_verdict.tell("stalls of the machine", fmt::format("{}, {} ms at most", stalls.size(), longestStall.count()));
}

void SoakRun::judgeLog()
{
    for (std::size_t cause = 0; cause < static_cast<std::size_t>(Cause::Stall); ++cause)
        m_verdict.tell(fmt::format("fault: {}", causeName(static_cast<Cause>(cause))),
                       number(m_faults.played(static_cast<Cause>(cause))));
    for (const auto &[name, count] : m_judge.explained())
        m_verdict.tell("explained: " + name, number(count));
    for (const LogRule &rule : logRules()) {
        if (rule.oneUnseenIn.count() == 0)
            continue;
        const auto found = m_judge.unseen().find(rule.name);
        const std::uint64_t count = found == m_judge.unseen().end() ? 0 : found->second;
        const auto most = static_cast<std::uint64_t>(1 + m_options.duration / rule.oneUnseenIn);
        m_verdict.judge(fmt::format("{}, no cause seen", rule.name), count <= most, number(count),
                        fmt::format("{} at most", most));
    }
    const auto &lines = m_judge.unexplained();
    m_verdict.judge("warnings and errors that no fault explains", lines.empty(), number(lines.size()), "0");
    for (std::size_t i = 0; i < std::min(lines.size(), mostLinesTold); ++i)
        m_verdict.fail("unexplained: " + lines[i]);
    for (const std::string &warning : ToolkitWarnings::seen())
        m_verdict.fail("the toolkit warns: " + warning);
}

} // namespace tzsoak
