// SPDX-License-Identifier: GPL-3.0-or-later
// The road from the receive threads to the views under full load: 16 devices with 8 CAN channels each, every bus full
// of the shortest CAN FD frames, put into the queue of the main window's helper by one thread a device; four views
// open.
#include "app/TZBenchWindow.h"
#include "app/TzBenchWindowHelper.h"
#include "app/TzViewTiler.h"
#include "bench/BenchReport.h"
#include "common/Log.h"
#include "common/ui/WorkbenchStyle.h"
#include "vci/TzVciDeviceManager.h"
#include "vci/TzVciDeviceScanner.h"
#include "vci/TzVciDeviceStore.h"
#include "vci/TzVciTypes.h"
#include "views/ui/TzVciBaseViewWindow.h"

#include <QApplication>
#include <QDir>
#include <QEventLoop>
#include <QTemporaryDir>
#include <QTimer>

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;
using tzbench_report::report;
using tzbench_report::Want;

constexpr int devices = 16;
constexpr int channels = 8;
constexpr int framesPerMillisecond = 16 * channels; // of one device: 16 000 frames/s a channel
constexpr std::size_t batchSize = 32;               // what a receive thread delivers at once
/// A machine that stood still delivers no more than the sockets held meanwhile.
constexpr std::chrono::milliseconds longestCatchUp{50};
constexpr std::size_t views = tzMaxViews;
constexpr std::chrono::milliseconds fillingTime{400}; // until then the models' queues take every frame
constexpr std::chrono::seconds fullLoadTime{8};
constexpr std::chrono::seconds sharedLoadTime{8};
constexpr std::chrono::seconds settlingTime{3}; // until the models' bounded queues are full
constexpr double mebibyte = 1024.0 * 1024.0;

/// CPU time of a thread of this process in nanoseconds; 0 if there is none of that name.
std::uint64_t cpuNanoseconds(const std::filesystem::path &task)
{
    std::uint64_t nanoseconds = 0;
    std::ifstream(task / "schedstat") >> nanoseconds;
    return nanoseconds;
}

std::filesystem::path taskNamed(const std::string &name)
{
    for (const auto &task : std::filesystem::directory_iterator("/proc/self/task")) {
        std::string found;
        std::getline(std::ifstream(task.path() / "comm"), found);
        if (found == name)
            return task.path();
    }
    return {};
}

double residentMiB()
{
    std::size_t total = 0;
    std::size_t resident = 0;
    std::ifstream("/proc/self/statm") >> total >> resident;
    return static_cast<double>(resident) * 4096.0 / mebibyte;
}

/// The receive threads of 16 devices.
class Producers
{
public:
    explicit Producers(TzFrameInlet &inlet)
    {
        for (int device = 0; device < devices; ++device)
            m_threads.emplace_back([this, &inlet, device] { produce(inlet, static_cast<std::uint8_t>(device)); });
    }
    ~Producers() { stop(); }
    void stop()
    {
        m_go.store(false);
        for (std::thread &thread : m_threads)
            thread.join();
        m_threads.clear();
    }
    std::uint64_t count() const { return m_count.load(); }

private:
    void produce(TzFrameInlet &inlet, std::uint8_t device)
    {
        std::vector<TzVciMessage> batch(batchSize);
        std::uint64_t number = 0;
        auto due = Clock::now();
        while (m_go.load(std::memory_order_relaxed)) {
            for (int sent = 0; sent < framesPerMillisecond; sent += static_cast<int>(batchSize)) {
                for (TzVciMessage &frame : batch)
                    fill(frame, device, number++);
                inlet.putCan(batch);
                m_count.fetch_add(batchSize, std::memory_order_relaxed);
            }
            due = std::max(due + std::chrono::milliseconds(1), Clock::now() - longestCatchUp);
            std::this_thread::sleep_until(due);
        }
    }
    static void fill(TzVciMessage &frame, std::uint8_t device, std::uint64_t number)
    {
        frame.deviceIndex = device;
        frame.channelIndex = static_cast<std::uint8_t>(number % channels);
        frame.timestamp = number * 78; // 128 frames a millisecond in units of 0.1 microsecond
        frame.frame.can.canId = static_cast<std::uint32_t>(0x100 + number % 64);
        frame.frame.can.flags = TzVciCanFlag::fd;
        frame.frame.can.frameType = TzVciCanFrameType::received;
        frame.frame.can.timestampLow = static_cast<std::uint32_t>(frame.timestamp);
    }

    std::atomic<bool> m_go{true};
    std::atomic<std::uint64_t> m_count{0};
    std::vector<std::thread> m_threads; // last: they use the above
};

void runEvents(std::chrono::milliseconds time)
{
    QEventLoop loop;
    QTimer::singleShot(time, Qt::PreciseTimer, &loop, &QEventLoop::quit);
    loop.exec();
}

class DrainBench
{
public:
    DrainBench()
    {
        m_window.resize(1600, 1000);
        for (std::size_t i = 0; i < views; ++i)
            helper().newView(TzVciViewKind::can, TzBenchWindowHelper::Request::ByUser);
        m_window.show();
        helper().inlet().reportStatus(0, VciStatus::canChannelOpened);
        runEvents(std::chrono::milliseconds(200));
    }
    ~DrainBench() { m_window.closeWithoutQuestion(); }

    bool run()
    {
        const bool full = measureFullLoad();
        const bool shared = measureSharedLoad();
        return full && shared;
    }

private:
    TzBenchWindowHelper &helper() { return *m_window.helper(); }
    std::uint64_t delivered()
    {
        std::uint64_t frames = 0;
        for (const TzVciBaseViewWindow *view : helper().views().views())
            frames += view->intake().counters().total;
        return frames;
    }
    void awaitEmptyQueue()
    {
        while (helper().inlet().canQueue().waiting() > 0)
            runEvents(std::chrono::milliseconds(20));
        runEvents(std::chrono::milliseconds(50)); // the last batch is on its way to the views
    }

    // Every view takes every frame: what the drain costs, and whether anything is lost on the way.
    bool measureFullLoad()
    {
        const std::filesystem::path drain = taskNamed("drain-can");
        const std::uint64_t cpuBefore = cpuNanoseconds(drain);
        const std::uint64_t before = delivered();
        const auto started = Clock::now();
        Producers producers(helper().inlet());
        runEvents(fillingTime);
        const auto fillingCpu = static_cast<double>(cpuNanoseconds(drain) - cpuBefore);
        const auto filled = static_cast<double>(delivered() - before);
        runEvents(settlingTime - fillingTime);
        const double settled = residentMiB();
        runEvents(fullLoadTime - settlingTime);
        producers.stop();
        const double seconds = std::chrono::duration<double>(Clock::now() - started).count();
        const double grown = residentMiB() - settled;
        awaitEmptyQueue();
        const auto handedOn = static_cast<double>(delivered() - before);
        const auto cpu = static_cast<double>(cpuNanoseconds(drain) - cpuBefore);
        const auto count = static_cast<double>(producers.count());
        bool ok = report("drain_load", count / seconds, "frames/s", Want::AtLeast, 0.98 * 2'048'000);
        ok = report("drain_lost", count * views - handedOn, "frames", Want::AtMost, 0) && ok;
        ok = report("drain_cost", fillingCpu / filled, "ns/frame/view", Want::AtMost, 250) && ok;
        ok = report("drain_cost_overloaded", cpu / handedOn, "ns/frame/view", Want::AtMost, 250) && ok;
        ok = report("drain_memory_growth", grown, "MiB", Want::AtMost, 64) && ok;
        return report("drain_memory", residentMiB(), "MiB", Want::AtMost, 1024) && ok;
    }

    // The same load, of which each view chooses two devices: what the models take in at most, 250 000 frames/s a view.
    bool measureSharedLoad()
    {
        std::uint8_t device = 0;
        for (TzVciBaseViewWindow *view : helper().views().views()) {
            TzViewIntake::Channels chosen;
            for (int i = 0; i < 2; ++i)
                chosen[device++] = {0, 1, 2, 3, 4, 5, 6, 7};
            view->onUpdateFilters(chosen);
            view->onClearViewWindow(TzVciViewKind::can);
        }
        const std::filesystem::path ui = "/proc/self/task/" + std::to_string(QCoreApplication::applicationPid());
        const std::uint64_t cpuBefore = cpuNanoseconds(ui);
        const std::uint64_t before = delivered();
        const auto started = Clock::now();
        Producers producers(helper().inlet());
        runEvents(sharedLoadTime);
        const double seconds = std::chrono::duration<double>(Clock::now() - started).count();
        const auto busy = static_cast<double>(cpuNanoseconds(ui) - cpuBefore) / 1e9 / seconds * 100;
        const double rate = static_cast<double>(delivered() - before) / views / seconds;
        producers.stop();
        awaitEmptyQueue();
        const bool rateOk = report("drain_view_rate", rate, "frames/s/view", Want::AtLeast, 0.98 * 250'000);
        return report("drain_ui_busy", busy, "%", Want::AtMost, 50) && rateOk;
    }

    TzVciDeviceStore m_store;
    TzVciDeviceManager m_manager{&m_store};
    TzVciDeviceScanner m_scanner{&m_store};
    TZBenchWindow m_window{&m_manager, &m_store, &m_scanner};
};

} // namespace

int main(int argc, char **argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    if (qEnvironmentVariableIsEmpty("TZVCI_NETWORK"))
        qputenv("TZVCI_NETWORK", "127.77.1"); // nothing is sent, but nothing could reach a real network either
    QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    Common::applyWorkbenchStyle(application);
    const QTemporaryDir workDir;
    QDir::setCurrent(workDir.path());
    Common::logInit("logs/TZBench.log", Common::LogLevel::info, 10, 5);
    Common::logStart(false); // as in the program: the drain's warnings must not wait for a console
    const bool ok = DrainBench().run();
    Common::logStop();
    return ok ? 0 : 1;
}
