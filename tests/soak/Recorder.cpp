// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/soak/Recorder.h"

#include "logging/ui/LoggerWindow.h"
#include "tests/soak/Workbench.h"
#include "vci/TzVciTypes.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QLineEdit>
#include <QSpinBox>

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <utility>

namespace tzsoak {

namespace {

constexpr std::chrono::milliseconds stepPeriod{100};
constexpr int leastSteps = 40; // of a recording
constexpr int mostSteps = 200;
constexpr int pauseSteps = 20; // between two
constexpr std::array sizeLimitsMb = {1, 10, 20, 100};
constexpr std::array extensions = {"asc", "csv"}; // in the order of the format box

template <typename Widget> Widget &child(const QWidget &window, const char *name)
{
    return *window.findChild<Widget *>(QLatin1String(name));
}

} // namespace

Recorder::Recorder(Workbench &workbench, std::uint8_t family, std::mt19937::result_type seed)
    : m_workbench(workbench)
    , m_family(family)
    , m_random(seed)
{
    m_timer.setInterval(stepPeriod);
    connect(&m_timer, &QTimer::timeout, this, &Recorder::step);
    m_timer.start();
}

void Recorder::start()
{
    m_running = true;
}

void Recorder::stop()
{
    m_running = false;
}

int Recorder::between(int least, int most)
{
    return std::uniform_int_distribution<int>(least, most)(m_random);
}

void Recorder::step()
{
    if (m_state != State::Off && m_state != State::Checking && !m_view) {
        fail("a view that records was closed");
        m_state = State::Off;
    }
    switch (m_state) {
    case State::Off:
        if (m_running && --m_stepsLeft <= 0)
            begin();
        break;
    case State::Starting:
        if (countersStand())
            press();
        break;
    case State::Recording:
        if (--m_stepsLeft <= 0 || !m_running) {
            pauseView(true);
            m_state = State::Stopping;
        }
        break;
    case State::Stopping:
        if (countersStand())
            finish();
        break;
    case State::Checking:
        if (m_check.wait_for(std::chrono::seconds(0)) == std::future_status::ready)
            check();
        break;
    }
}

void Recorder::begin()
{
    for (TzVciBaseViewWindow *view : m_workbench.freeViews()) {
        if (TzVciViewKind::familyProtocol(view->viewKind()) != m_family)
            continue;
        m_view = qobject_cast<TzRawViewWindow *>(view);
        pauseView(true);
        m_lastCount = UINT64_MAX;
        m_state = State::Starting;
        return;
    }
}

void Recorder::pauseView(bool paused)
{
    if (m_view->isPaused() != paused)
        child<QAbstractButton>(*m_view, "buttonPause").click();
}

// The user may have ended the pause meanwhile; then it begins anew.
bool Recorder::countersStand()
{
    pauseView(true);
    const std::uint64_t count = m_view->intake().counters().total;
    return std::exchange(m_lastCount, count) == count;
}

void Recorder::press()
{
    child<QAbstractButton>(*m_view, "buttonRecord").click();
    const Common::LoggerWindow &window = *m_view->logger();
    const auto format = static_cast<std::size_t>(between(0, 1));
    const int number = m_totals.recordings;
    m_path = fmt::format("logs/{}_{}.{}", m_family == TzVciProtocolId::lin ? "lin" : "can", number, extensions[format]);
    child<QComboBox>(window, "comboFormat").setCurrentIndex(static_cast<int>(format));
    child<QLineEdit>(window, "lineEditPath").setText(QString::fromStdString(m_path));
    child<QSpinBox>(window, "spinSizeLimit")
        .setValue(sizeLimitsMb[static_cast<std::size_t>(between(0, std::ssize(sizeLimitsMb) - 1))]);
    child<QAbstractButton>(window, "checkExtraInfo").setChecked(true); // tells the boxes apart
    m_countAtStart = m_lastCount;
    child<QAbstractButton>(window, "buttonStartStop").click();
    if (!window.isRecording())
        fail("a recording does not start");
    m_view->logger()->hide(); // it goes on
    pauseView(false);
    m_stepsLeft = between(leastSteps, mostSteps);
    m_state = State::Recording;
}

void Recorder::finish()
{
    child<QAbstractButton>(*m_view->logger(), "buttonStartStop").click();
    m_wanted = m_lastCount - m_countAtStart;
    pauseView(false);
    m_check = std::async(std::launch::async, takeRecording, std::filesystem::path(m_path));
    m_state = State::Checking;
}

void Recorder::check()
{
    const RecordedFrames recorded = m_check.get();
    if (!recorded.problem.empty())
        fail(recorded.problem);
    if (recorded.frames != m_wanted)
        fail(fmt::format("{} holds {} frames, the view counted {} meanwhile", m_path, recorded.frames, m_wanted));
    ++m_totals.recordings;
    m_totals.files += recorded.files;
    m_totals.frames += recorded.frames;
    m_totals.bytes += recorded.bytes;
    m_stepsLeft = pauseSteps;
    m_state = State::Off;
}

void Recorder::fail(const std::string &text)
{
    if (m_failure.empty())
        m_failure = text;
}

} // namespace tzsoak
