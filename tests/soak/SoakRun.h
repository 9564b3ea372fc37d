// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tests/soak/BoxesRemote.h"
#include "tests/soak/FaultPlayer.h"
#include "tests/soak/GapWatch.h"
#include "tests/soak/LogJudge.h"
#include "tests/soak/Recorder.h"
#include "tests/soak/Samples.h"
#include "tests/soak/UserActions.h"
#include "tests/soak/Verdict.h"
#include "tests/soak/Workbench.h"
#include "tests/support/Watchdog.h"

#include <QObject>
#include <QTimer>

#include <chrono>
#include <filesystem>
#include <random>
#include <string>

namespace tzsoak {

/// One soak run: traffic, a user and faults for the time asked for, then the reckoning. UI thread.
class SoakRun : public QObject
{
    Q_OBJECT
public:
    struct Options
    {
        std::chrono::seconds duration{120};
        std::uint32_t seed = 1;
        std::filesystem::path logFile;
    };

    static constexpr std::chrono::seconds shortestDuration{40}; ///< each fault once, and something to compare

    explicit SoakRun(const Options &options);

    /// Runs it all in event loops of its own. @return whether everything was as it must be; the table is printed
    bool run();

private:
    /// What the two processes had used when the traffic began.
    struct Start
    {
        std::chrono::steady_clock::time_point at;
        double cpuSeconds = 0;
        double boxesCpuSeconds = 0;
    };

    bool begin();
    bool soak();
    bool putRight();
    bool finalTraffic();
    void tick();
    void tellProgress() const;
    void noteStalls();
    bool setTraffic(bool on);
    bool awaitQuiet();
    void runFor(std::chrono::milliseconds time);
    template <typename Condition> bool await(Condition condition, const char *what);
    bool fail(const std::string &reason);
    std::string failure() const;

    void judge();
    void tellLoad();
    void judgeCounters();
    void judgeViews();
    void judgeRecorders();
    void judgeResources();
    void judgeFreezes();
    void judgeLog();

    const Options m_options;
    std::mt19937 m_userRandom; // one each: the course of one does not hang on the timing of the other
    std::mt19937 m_faultRandom;
    tztest::Watchdog m_watchdog;
    BoxesRemote m_boxes;
    Workbench m_workbench;
    LogJudge m_judge;
    GapWatch m_gaps;
    Samples m_samples;
    FaultPlayer m_faults;
    Recorder m_canRecorder;
    Recorder m_linRecorder;
    UserActions m_user;
    QTimer m_timer;
    Verdict m_verdict;
    std::size_t m_gapsNoted = 0;
    std::size_t m_stallsNoted = 0;
    Start m_start;
    tztest::ProcessFigures m_atRestBefore;
    tztest::ProcessFigures m_atRestAfter;
    FrameCounts m_sent;         // at the end
    FrameCounts m_beforeFinale; // received before the last traffic, for which the free views were emptied
};

} // namespace tzsoak
