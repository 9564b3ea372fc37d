// SPDX-License-Identifier: GPL-3.0-or-later
// Boxes that are opened and closed a thousand times with the main window, its views, their recorders and further
// subscribers on them, under full load and error frames, half of the times with the box gone before it is closed.
#include "common/Log.h"
#include "common/platform/AllocatorPolicy.h"
#include "logging/ui/LoggerWindow.h"
#include "tests/app/AppFixture.h"
#include "tests/integration/PlugProbe.h"
#include "tests/support/ProcessFigures.h"
#include "tests/support/Watchdog.h"
#include "vci/TzVciProtocol.h"
#include "views/TzRawViewModel.h"
#include "views/ui/TzRawViewWindow.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QFileInfo>
#include <QLineEdit>

#include <algorithm>
#include <malloc.h>
#include <vector>

namespace tztest {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr int wantedCycles = 128; // a sanitizer slows each of them many times, and keeps freed memory
constexpr bool judgesMemory = false;
constexpr double canFramesPerSecond = 500; // what is left of the machine then
#else
constexpr int wantedCycles = 1000;
constexpr bool judgesMemory = true;
constexpr double canFramesPerSecond = 16000; // a bus full of the shortest CAN FD frames
#endif

constexpr int boxes = tzVciMaxDevices; // a vanished box costs 500 ms a channel, which all 16 wait at the same time
constexpr int rounds = (wantedCycles + boxes - 1) / boxes;
constexpr int warmUpRounds = 6; // each way of closing once
constexpr double mostSteadyGrowthMiB = 2;
constexpr double mostGrowthMiB = 64; // with the queues' longest backlog
constexpr seconds longestStep{60};
constexpr double linFramesPerSecond = 150; // a bus full at 19.2 kbit/s
constexpr milliseconds errorFramePeriod{1};
constexpr milliseconds requestTimeout{tzVciRequestTimeoutMs};

/// How a round ends.
enum class Ending
{
    OneByOne,        ///< each box is closed by itself
    AllAtOnce,       ///< all boxes are closed together
    VanishedAtOnce,  ///< all boxes have vanished before they are closed together
    VanishedNoticed, ///< as before, but the program has noticed the loss of one by itself
};

// Every second round the boxes vanish.
Ending endingOf(int round)
{
    if (round % 2 == 0)
        return round % 4 == 0 ? Ending::OneByOne : Ending::AllAtOnce;
    return round % 32 == 5 ? Ending::VanishedNoticed : Ending::VanishedAtOnce;
}

/// Error frames on all CAN channels of all boxes, from a thread of its own.
class ErrorFrames
{
public:
    explicit ErrorFrames(tzsim::Simulator &simulator)
        : m_thread([&simulator](const std::stop_token &stop) {
            for (std::uint32_t code = 1; !stop.stop_requested(); ++code) {
                for (tzsim::Box *box : simulator.boxes())
                    box->injectCanError(static_cast<int>(code % AppFixture::canChannels), code);
                std::this_thread::sleep_for(errorFramePeriod);
            }
        })
    {
    }

private:
    std::jthread m_thread;
};

/// MiB that the program holds of the allocator; what that merely keeps does not count.
double heapInUseMiB()
{
    constexpr double mebibyte = 1024 * 1024;
    const struct mallinfo2 info = ::mallinfo2();
    return static_cast<double>(info.uordblks + info.hblkhd) / mebibyte;
}

/// The memory that was in use at the end of each round, in MiB.
class MemoryOfRounds
{
public:
    void add(double inUseMiB) { m_values.push_back(inUseMiB); }
    /// What is lost in every round, for all rounds. A moment in which the machine stands still leaves a step, since the
    /// queues keep the memory of their longest backlog: it does not count.
    double steadyGrowth() const
    {
        std::vector<double> steps;
        for (std::size_t i = roundsOfEachEnding; i < m_values.size(); ++i)
            steps.push_back(m_values[i] - m_values[i - roundsOfEachEnding]);
        if (steps.empty())
            return 0;
        const auto middle = steps.begin() + std::ssize(steps) / 2;
        std::nth_element(steps.begin(), middle, steps.end());
        return *middle * static_cast<double>(m_values.size()) / roundsOfEachEnding;
    }

private:
    static constexpr std::size_t roundsOfEachEnding = 4; // after so many the ways of closing come again

    std::vector<double> m_values;
};

class PlugUnplug : public testing::Test
{
protected:
    static constexpr auto logFile = "logs/plug.log";

    PlugUnplug()
    {
        Common::platform::keepMemoryLevel();                    // as in the program
        Common::logInit(logFile, Common::LogLevel::info, 1, 2); // as in the program: nobody waits for a console
        Common::logStart(false);
        for (tzsim::Box *box : app.simulator.boxes()) {
            box->startLoad({.framesPerSecond = canFramesPerSecond, .canChannels = {0, 1}, .flags = tzsim::CanFlag::fd});
            box->startLoad({.framesPerSecond = linFramesPerSecond, .canChannels = {}, .linChannels = {0}});
        }
    }
    ~PlugUnplug() override { Common::logStop(); }

    void openAllBoxes();
    void closeBoxes(Ending ending);
    void closeOneByOne();
    void loseLinkOf(int box);
    void runRound(int round);
    void settle();
    void expectQuiet();
    std::vector<TzRawViewWindow *> views() const;
    void openViews();
    void closeViews();
    void letViewsCatchUp();

    AppFixture app{boxes};
    Watchdog watchdog{"Opening and closing boxes", longestStep};
    std::vector<PlugProbe> probes;
    std::vector<PlugProbe> oldProbes; // of the round before
    std::vector<std::weak_ptr<TzVciDevice>> devices;
    int cycles = 0;
    int vanishedCycles = 0;
    milliseconds longestClose{0};
    milliseconds longestVanishedClose{0};
};

void PlugUnplug::openAllBoxes()
{
    probes.clear();
    devices.clear();
    for (int box = 0; box < boxes; ++box) {
        ASSERT_EQ(app.manager.openDevice(box), TzVciResult::ok) << "box " << box;
        const auto device = app.manager.getDevice(box);
        probes.emplace_back(*device);
        devices.emplace_back(device);
        ASSERT_EQ(app.manager.openChannel(box, TzVciProtocolId::can, -1), TzVciResult::ok) << "box " << box;
        ASSERT_EQ(app.manager.openChannel(box, TzVciProtocolId::lin, -1), TzVciResult::ok) << "box " << box;
        watchdog.step("opened box " + std::to_string(box));
        letViewsCatchUp();
    }
    ASSERT_TRUE(waitFor([&] {
        return std::all_of(probes.begin(), probes.end(), [](const PlugProbe &probe) { return probe.hasTraffic(); });
    })) << "a box delivers nothing";
}

void PlugUnplug::closeOneByOne()
{
    for (int box = 0; box < boxes; ++box) {
        if (box % 2 == 0)
            probes[static_cast<std::size_t>(box)].unsubscribeCan(*app.manager.getDevice(box));
        EXPECT_EQ(app.manager.closeDevice(box), TzVciResult::ok) << "box " << box;
        watchdog.step("closed box " + std::to_string(box));
        letViewsCatchUp();
    }
}

// The first datagram to a box that is gone comes back as a refusal, of which the link dies.
void PlugUnplug::loseLinkOf(int box)
{
    const auto device = app.manager.getDevice(box);
    const QByteArray request = encodeProtocolData(makeReadFirmwareVersion());
    device->send(std::vector<char>(request.begin(), request.end()));
    EXPECT_TRUE(waitFor([&] { return device->deviceIndex() == -1; })) << "the loss of box " << box << " is not noticed";
    EXPECT_EQ(app.manager.closeDevice(box), TzVciResult::deviceClosed);
}

void PlugUnplug::closeBoxes(Ending ending)
{
    const bool vanishes = ending == Ending::VanishedAtOnce || ending == Ending::VanishedNoticed;
    if (vanishes) {
        for (tzsim::Box *box : app.simulator.boxes())
            box->vanish();
        vanishedCycles += boxes;
    }
    if (ending == Ending::VanishedNoticed)
        loseLinkOf(boxes - 1);
    watchdog.step("closing all boxes");
    const auto start = std::chrono::steady_clock::now();
    if (ending == Ending::OneByOne)
        closeOneByOne();
    else
        EXPECT_EQ(app.manager.closeAllDevices() == TzVciResult::ok, !vanishes);
    const auto took = std::chrono::duration_cast<milliseconds>(std::chrono::steady_clock::now() - start);
    milliseconds &longest = vanishes ? longestVanishedClose : longestClose;
    longest = std::max(longest, took);
    cycles += boxes;
}

// Until the window has heard of it all.
void PlugUnplug::settle()
{
    for (PlugProbe &probe : probes) {
        EXPECT_TRUE(probe.wasToldOfClose());
        probe.noteClosed();
    }
    EXPECT_TRUE(waitFor([&] {
        return !app.helper().isDraining(TzVciProtocolId::can) && !app.helper().isDraining(TzVciProtocolId::lin);
    })) << "the drains go on";
    QCoreApplication::processEvents();
    letViewsCatchUp();
    for (const auto &device : devices)
        EXPECT_TRUE(device.expired()) << "somebody keeps a closed device";
    EXPECT_FALSE(app.store.anyChannelOpen(-1));
    for (tzsim::Box *box : app.simulator.boxes()) {
        std::string error;
        EXPECT_TRUE(!box->vanished() || box->comeBack(&error)) << error;
        EXPECT_EQ(box->openChannels(), 0) << "box " << box->index();
        box->clearRequests(); // the simulator's own memory must not grow
    }
}

std::vector<TzRawViewWindow *> PlugUnplug::views() const
{
    std::vector<TzRawViewWindow *> result;
    for (TzVciBaseViewWindow *view : app.window->helper()->views().views())
        result.push_back(&dynamic_cast<TzRawViewWindow &>(*view));
    return result;
}

// Each records, into files that the next round overwrites.
void PlugUnplug::openViews()
{
    for (const std::uint8_t kind : {TzVciViewKind::can, TzVciViewKind::can, TzVciViewKind::lin})
        app.helper().newView(kind, TzBenchWindowHelper::Request::ByUser);
    for (TzRawViewWindow *view : views()) {
        const QString path = QStringLiteral("logs/%1.asc").arg(view->windowTitle());
        view->logger()->findChild<QLineEdit *>(QStringLiteral("lineEditPath"))->setText(path);
        view->logger()->startRecording();
        EXPECT_TRUE(view->logger()->isRecording());
    }
}

// A view keeps the memory of the longest queue that it ever had, and gives it back when it closes.
void PlugUnplug::closeViews()
{
    for (TzRawViewWindow *view : views()) {
        view->stopRecording();
        EXPECT_GT(QFileInfo(QStringLiteral("logs/%1.asc").arg(view->windowTitle())).size(), 0);
    }
    app.helper().closeViews();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_TRUE(views().empty());
}

// What 20 ms ticks would do were the UI thread not busy with opening and closing: more frames come than they could
// take.
void PlugUnplug::letViewsCatchUp()
{
    QCoreApplication::processEvents();
    for (const TzRawViewWindow *view : views()) {
        for (std::size_t moved = 0; moved < TzRawViewModel::maxWaiting; moved += TzRawViewModel::batchCapacity)
            view->model()->updateData();
    }
}

void PlugUnplug::runRound(int round)
{
    watchdog.step("round " + std::to_string(round));
    openViews();
    ASSERT_NO_FATAL_FAILURE(openAllBoxes());
    closeBoxes(endingOf(round));
    settle();
    closeViews();
    expectQuiet();
    oldProbes.swap(probes);
}

// Also of the round before: what calls too late may come late indeed.
void PlugUnplug::expectQuiet()
{
    for (const auto *all : {&probes, &oldProbes}) {
        for (const PlugProbe &probe : *all)
            EXPECT_EQ(probe.lateCalls(), 0U);
    }
}

TEST_F(PlugUnplug, NothingHangsLeaksOrSpeaksAfterAThousandCycles)
{
    ASSERT_TRUE(app.simulatorStarted) << app.simulatorError;
    const ErrorFrames errorFrames(app.simulator);
    ProcessFigures warm;
    MemoryOfRounds memory;
    double resident = 0;
    for (int round = 0; round < rounds; ++round) {
        ASSERT_NO_FATAL_FAILURE(runRound(round)) << "in round " << round;
        ::malloc_trim(0); // what the allocator merely keeps is no leak
        const ProcessFigures now = ProcessFigures::of();
        if (round == warmUpRounds)
            warm = now;
        if (round >= warmUpRounds) {
            EXPECT_EQ(now.threads, warm.threads)
                << "in round " << round << ": " << testing::PrintToString(threadNames());
            EXPECT_EQ(now.descriptors, warm.descriptors) << "in round " << round;
            memory.add(heapInUseMiB());
            resident = now.residentMiB;
        }
    }
    expectQuiet();
    if (judgesMemory) {
        EXPECT_LT(memory.steadyGrowth(), mostSteadyGrowthMiB);
        EXPECT_LT(resident - warm.residentMiB, mostGrowthMiB);
    }
    EXPECT_GE(cycles, wantedCycles);
    EXPECT_NEAR(vanishedCycles, cycles / 2, boxes);
    // Three channels, each of which waits its time: the boxes wait beside each other.
    constexpr int channels = AppFixture::canChannels + AppFixture::linChannels;
    EXPECT_GE(longestVanishedClose, channels * requestTimeout);
    EXPECT_LT(longestVanishedClose, 2 * channels * requestTimeout);
    fmt::print("{} cycles, {} of them vanished; closing all boxes took {} ms at most, {} ms where they had vanished; "
               "{:.1f} MiB, grown by {:.2f}, steadily by {:.2f}; {} threads, {} descriptors\n",
               cycles, vanishedCycles, longestClose.count(), longestVanishedClose.count(), resident,
               resident - warm.residentMiB, memory.steadyGrowth(), warm.threads, warm.descriptors);
}

} // namespace
} // namespace tztest
