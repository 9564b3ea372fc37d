// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tests/soak/BoxesRemote.h"
#include "tests/soak/LogJudge.h"
#include "tests/soak/SoakPlan.h"

#include <QObject>
#include <QTimer>

#include <array>
#include <functional>
#include <random>
#include <string>

namespace tzsoak {

class Workbench;

/// Lets the boxes go wrong, one after the other and some at a time, tells the judge of the log what it does, and puts
/// each right again: whatever a fault has closed is opened anew. UI thread.
class FaultPlayer : public QObject
{
    Q_OBJECT
public:
    FaultPlayer(BoxesRemote &boxes, Workbench &workbench, LogJudge &judge, std::mt19937 &random);

    /// Plays each fault once, then random ones until stop().
    void start();
    /// Begins no further fault.
    void stop();
    /// All boxes are as they should be.
    bool isIdle() const;
    bool isFaulty(int box) const { return m_busy[static_cast<std::size_t>(box)]; }
    /// What could not be put right; the run has failed then.
    const std::string &failure() const { return m_failure; }
    std::uint64_t played(Cause cause) const { return m_played[static_cast<std::size_t>(cause)]; }

private:
    static constexpr std::size_t causes = static_cast<std::size_t>(Cause::Stall);

    void playNext();
    void play(Cause cause, int box);
    void playSilence(int box);
    void playLateReplies(int box);
    void playDatagram(Cause cause, int box);
    void playEmpty(int box);
    void playRefusal(int box);
    void playVanish(int box);
    void vanishNow(int box, std::size_t fault);
    void returnOf(int box, std::size_t fault);
    void reopen(int box, std::size_t fault);
    void awaitLoss(int box, int polls, const std::function<void()> &then);
    void awaitArrival(int box, int polls, const std::function<void()> &then);
    void finish(int box, std::size_t fault);
    void later(std::chrono::milliseconds delay, std::function<void()> what);
    void tell(const QString &command);
    void fail(const std::string &text);
    int chooseBox();
    int between(int least, int most);

    BoxesRemote &m_boxes;
    Workbench &m_workbench;
    LogJudge &m_judge;
    std::mt19937 &m_random;
    QTimer m_timer;
    bool m_running = false;
    std::size_t m_opening = 0; ///< the faults that every run begins with
    std::array<bool, boxCount> m_busy{};
    std::array<std::uint64_t, causes> m_played{};
    std::string m_failure;
};

} // namespace tzsoak
