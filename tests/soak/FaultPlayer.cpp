// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/soak/FaultPlayer.h"

#include "tests/soak/Workbench.h"
#include "vci/TzVciTypes.h"

#include <fmt/format.h>

#include <algorithm>
#include <optional>
#include <utility>

namespace tzsoak {

namespace {

using std::chrono::milliseconds;

constexpr milliseconds silenceLeast{1000};
constexpr int silenceMostMs = 4000;
constexpr int lateByMs = 700; // beyond the time that a request waits
constexpr milliseconds settleTime{250};
constexpr milliseconds lossPoll{50};
constexpr int farewellPolls = 40;
constexpr milliseconds arrivalPoll{50};
constexpr int mostArrivalPolls = 40;
// A link notices that its box is gone by a datagram of its own: the keep-alive, at the latest after three seconds.
constexpr int absenceLeastMs = 500;
constexpr int absenceMostMs = 6000;

} // namespace

FaultPlayer::FaultPlayer(BoxesRemote &boxes, Workbench &workbench, LogJudge &judge, std::mt19937 &random)
    : m_boxes(boxes)
    , m_workbench(workbench)
    , m_judge(judge)
    , m_random(random)
{
    m_timer.setSingleShot(true);
    connect(&m_timer, &QTimer::timeout, this, &FaultPlayer::playNext);
}

void FaultPlayer::start()
{
    m_running = true;
    m_timer.start(shortestFaultPause);
}

void FaultPlayer::stop()
{
    m_running = false;
    m_timer.stop();
}

bool FaultPlayer::isIdle() const
{
    return std::none_of(m_busy.begin(), m_busy.end(), [](bool busy) { return busy; });
}

int FaultPlayer::between(int least, int most)
{
    return std::uniform_int_distribution<int>(least, most)(m_random);
}

// One that is well, and never the keeper. Always one number of the generator, so that a seed gives one course.
int FaultPlayer::chooseBox()
{
    const int first = between(0, boxCount - 1);
    for (int i = 0; i < boxCount; ++i) {
        const int box = (first + i) % boxCount;
        if (box != keeperBox && !isFaulty(box))
            return box;
    }
    return -1;
}

void FaultPlayer::playNext()
{
    if (!m_running || !m_failure.empty())
        return;
    const auto cause =
        static_cast<Cause>(m_opening < causes ? m_opening++ : static_cast<std::size_t>(between(0, causes - 1)));
    const int box = chooseBox();
    const auto busy = std::count(m_busy.begin(), m_busy.end(), true);
    if (box >= 0 && busy < mostFaultsAtOnce)
        play(cause, box);
    const bool opening = m_opening < causes;
    m_timer.start(opening ? shortestFaultPause
                          : milliseconds(between(static_cast<int>(shortestFaultPause.count()),
                                                 static_cast<int>(longestFaultPause.count()))));
}

void FaultPlayer::play(Cause cause, int box)
{
    m_busy[static_cast<std::size_t>(box)] = true;
    ++m_played[static_cast<std::size_t>(cause)];
    switch (cause) {
    case Cause::Silence: playSilence(box); break;
    case Cause::LateReplies: playLateReplies(box); break;
    case Cause::Empty: playEmpty(box); break;
    case Cause::Refusal: playRefusal(box); break;
    case Cause::Vanish: playVanish(box); break;
    default: playDatagram(cause, box); break;
    }
}

void FaultPlayer::playSilence(int box)
{
    const std::size_t fault = m_judge.begin(Cause::Silence, box);
    tell(QStringLiteral("silence %1 1").arg(box));
    const bool closes = between(0, 2) == 0;
    const milliseconds duration(between(static_cast<int>(silenceLeast.count()), silenceMostMs));
    if (closes) // the box acts on it, though the program never hears so
        m_workbench.manager().closeChannel(box, TzVciProtocolId::can, fdChannel);
    later(duration, [this, box, fault, closes] {
        tell(QStringLiteral("silence %1 0").arg(box));
        if (closes && m_workbench.manager().openChannel(box, TzVciProtocolId::can, fdChannel) != TzVciResult::ok)
            fail(fmt::format("box {} does not open its channel after a silence", box));
        finish(box, fault);
    });
}

void FaultPlayer::playLateReplies(int box)
{
    const std::size_t fault = m_judge.begin(Cause::LateReplies, box);
    tell(QStringLiteral("late %1 %2").arg(box).arg(lateByMs));
    m_workbench.manager().closeChannel(box, TzVciProtocolId::can, classicChannel);
    tell(QStringLiteral("late %1 0").arg(box));
    later(milliseconds(lateByMs) + settleTime, [this, box, fault] {
        if (m_workbench.manager().openChannel(box, TzVciProtocolId::can, classicChannel) != TzVciResult::ok)
            fail(fmt::format("box {} does not open its channel after a late reply", box));
        finish(box, fault);
    });
}

// Single datagrams that are not as they should be, and many at once.
void FaultPlayer::playDatagram(Cause cause, int box)
{
    const std::size_t fault = m_judge.begin(cause, box);
    if (cause == Cause::Junk)
        tell(QStringLiteral("junk %1 %2").arg(box).arg(between(9, 1400)));
    else if (cause == Cause::Cut)
        tell(QStringLiteral("cut %1 %2").arg(box).arg(between(9, 32)));
    else
        tell(QStringLiteral("burst %1 %2 %3").arg(box).arg(between(0, canChannels - 1)).arg(burstFrames));
    later(settleTime, [this, box, fault] { finish(box, fault); });
}

void FaultPlayer::playRefusal(int box)
{
    TzVciDeviceManager &manager = m_workbench.manager();
    const std::size_t fault = m_judge.begin(Cause::Refusal, box);
    const int channel = between(0, canChannels - 1);
    if (manager.closeChannel(box, TzVciProtocolId::can, channel) != TzVciResult::ok)
        fail(fmt::format("box {} does not close its channel", box));
    tell(QStringLiteral("refuse %1 %2 %3").arg(box).arg(TzVciProtocolId::can).arg(channel));
    if (manager.openChannel(box, TzVciProtocolId::can, channel) != TzVciResult::openChannelRefused)
        fail(fmt::format("box {} does not refuse to open its channel", box));
    if (manager.openChannel(box, TzVciProtocolId::can, channel) != TzVciResult::ok)
        fail(fmt::format("box {} does not open its channel after it refused once", box));
    later(settleTime, [this, box, fault] { finish(box, fault); });
}

// Ends the link by what looks like the box's own farewell. The traffic ends before it: what follows nobody would read.
void FaultPlayer::playEmpty(int box)
{
    const std::size_t fault = m_judge.begin(Cause::Empty, box);
    tell(QStringLiteral("stop %1").arg(box));
    tell(QStringLiteral("empty %1").arg(box));
    awaitLoss(box, 0, [this, box, fault] { reopen(box, fault); });
}

// The traffic ends before the box does, so that what is under way arrives: the refusal that tells the host of the loss
// would overtake it.
void FaultPlayer::playVanish(int box)
{
    const std::size_t fault = m_judge.begin(Cause::Vanish, box);
    tell(QStringLiteral("stop %1").arg(box));
    later(settleTime, [this, box, fault] { awaitArrival(box, 0, [this, box, fault] { vanishNow(box, fault); }); });
}

void FaultPlayer::vanishNow(int box, std::size_t fault)
{
    tell(QStringLiteral("vanish %1").arg(box));
    const int userAct = between(0, 2);
    if (userAct == 0) // sees it sooner than the program and closes it
        m_workbench.manager().closeDevice(box);
    else if (userAct == 1) { // and tries in vain to have it back
        m_workbench.manager().closeDevice(box);
        if (m_workbench.open(box))
            fail(fmt::format("box {} opens though it is not there", box));
    }
    later(milliseconds(between(absenceLeastMs, absenceMostMs)), [this, box, fault] { returnOf(box, fault); });
}

// A box that comes back within the keep-alive's period has forgotten its host, which never learns of it.
void FaultPlayer::returnOf(int box, std::size_t fault)
{
    tell(QStringLiteral("return %1").arg(box));
    reopen(box, fault);
}

void FaultPlayer::reopen(int box, std::size_t fault)
{
    if (m_workbench.isOpen(box))
        m_workbench.manager().closeDevice(box);
    tell(QStringLiteral("start %1").arg(box));
    if (!m_workbench.open(box))
        fail(fmt::format("box {} does not open again", box));
    finish(box, fault);
}

// On a machine that stands still the kernel may have dropped the farewell: it is said again.
void FaultPlayer::awaitLoss(int box, int polls, const std::function<void()> &then)
{
    later(lossPoll, [this, box, polls, then] {
        if (m_workbench.hasLost(box)) {
            then();
            return;
        }
        if (polls % farewellPolls == farewellPolls - 1)
            tell(QStringLiteral("empty %1").arg(box));
        awaitLoss(box, polls + 1, then);
    });
}

// On a busy machine the link may be behind by any time. What was lost never arrives: then it has had time enough.
void FaultPlayer::awaitArrival(int box, int polls, const std::function<void()> &then)
{
    const std::optional<FrameCounts> sent = m_boxes.sent();
    if (!sent)
        fail(m_boxes.error().toStdString());
    const FrameCounts received = m_workbench.ledger().counts();
    const auto index = static_cast<std::size_t>(box);
    if (!sent || polls == mostArrivalPolls || received.boxes[index] == sent->boxes[index])
        then();
    else
        later(arrivalPoll, [this, box, polls, then] { awaitArrival(box, polls + 1, then); });
}

void FaultPlayer::finish(int box, std::size_t fault)
{
    m_judge.end(fault);
    m_busy[static_cast<std::size_t>(box)] = false;
}

void FaultPlayer::later(milliseconds delay, std::function<void()> what)
{
    QTimer::singleShot(delay, this, std::move(what));
}

void FaultPlayer::tell(const QString &command)
{
    if (!m_boxes.command(command))
        fail(m_boxes.error().toStdString());
}

void FaultPlayer::fail(const std::string &text)
{
    if (m_failure.empty())
        m_failure = text;
}

} // namespace tzsoak
