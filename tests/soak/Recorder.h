// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tests/soak/RecordingFiles.h"
#include "views/ui/TzRawViewWindow.h"

#include <QObject>
#include <QPointer>
#include <QTimer>

#include <functional>
#include <future>
#include <random>
#include <string>

namespace tzsoak {

class Workbench;

/// Records from the free view of a family through its recorder window, one recording after the other, and compares what
/// the files hold with what the view has counted meanwhile. The view is paused while a recording is started and
/// stopped, so that the two counts begin and end at the same frame; in between the user may pause it as he likes. UI
/// thread.
class Recorder : public QObject
{
    Q_OBJECT
public:
    struct Totals
    {
        int recordings = 0;
        int files = 0;
        std::uint64_t frames = 0;
        std::uint64_t bytes = 0;
    };

    /// @param family  TzVciProtocolId
    Recorder(Workbench &workbench, std::uint8_t family, std::mt19937::result_type seed);

    void start();
    /// Ends the recording under way and begins no other.
    void stop();
    bool isIdle() const { return m_state == State::Off; }
    /// The view that records or is about to; its counters must not be cleared, nor must it be closed.
    bool isUsing(const TzRawViewWindow *view) const { return m_state != State::Off && m_view == view; }
    const Totals &totals() const { return m_totals; }
    const std::string &failure() const { return m_failure; }

private:
    enum class State
    {
        Off,       ///< between two recordings
        Starting,  ///< paused until the counters stand
        Recording, ///< the user is at it
        Stopping,  ///< paused until the counters stand
        Checking   ///< the files are read on a thread
    };

    void step();
    void begin();
    void press();
    void finish();
    void check();
    void pauseView(bool paused);
    bool countersStand();
    int between(int least, int most);
    void fail(const std::string &text);

    Workbench &m_workbench;
    const std::uint8_t m_family;
    std::mt19937 m_random;
    QTimer m_timer;
    State m_state = State::Off;
    bool m_running = false;
    QPointer<TzRawViewWindow> m_view;
    std::string m_path;
    std::uint64_t m_lastCount = 0;
    std::uint64_t m_countAtStart = 0;
    std::uint64_t m_wanted = 0;
    int m_stepsLeft = 0;
    Totals m_totals;
    std::string m_failure;
    std::future<RecordedFrames> m_check; // last: its thread ends before the rest
};

} // namespace tzsoak
