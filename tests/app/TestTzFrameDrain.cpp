// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/app/TestTzFrameDrain.h"

#include "app/TzFrameDrain.h"
#include "app/TzFrameInlet.h"
#include "app/TzFrameQueue.h"
#include "tests/support/LogCapture.h"
#include "tests/support/WaitFor.h"
#include "vci/TzVciTypes.h"

#include <QtTest>

#include <array>
#include <mutex>
#include <thread>

namespace {

constexpr TzFrameDrain::Family canFamily{.protocol = 1, .threadName = "test-drain", .repeats = true};
constexpr TzFrameDrain::Family linFamily{.protocol = 5, .threadName = "test-drain", .repeats = false};
constexpr const char *fullBatch = "UI message buffer may be full, continuing to drain...";
constexpr const char *dropWarning =
    "CAN frames arrive while no CAN channel is open: 20000 are kept, further ones are dropped";
constexpr int warning = 2;

std::vector<TzVciMessage> frames(std::size_t count, std::uint64_t first = 0, std::uint8_t device = 0)
{
    std::vector<TzVciMessage> batch(count);
    for (std::size_t i = 0; i < count; ++i) {
        batch[i].deviceIndex = device;
        batch[i].timestamp = first + i;
    }
    return batch;
}

/// Collects what a drain hands on.
class Collector
{
public:
    TzFrameDrain::Deliver deliver()
    {
        return [this](const std::vector<TzVciMessage> &batch) {
            const std::lock_guard lock(m_mutex);
            m_batchSizes.push_back(batch.size());
            m_frames.insert(m_frames.end(), batch.begin(), batch.end());
        };
    }
    std::size_t count() const
    {
        const std::lock_guard lock(m_mutex);
        return m_frames.size();
    }
    std::vector<std::size_t> batchSizes() const
    {
        const std::lock_guard lock(m_mutex);
        return m_batchSizes;
    }
    std::vector<TzVciMessage> all() const
    {
        const std::lock_guard lock(m_mutex);
        return m_frames;
    }

private:
    mutable std::mutex m_mutex; // protects both
    std::vector<std::size_t> m_batchSizes;
    std::vector<TzVciMessage> m_frames;
};

} // namespace

void TestTzFrameDrain::stoppedQueueKeepsAtMost20000FramesAndWarnsOnce()
{
    const tztest::LogCapture log;
    TzFrameQueue queue("CAN");
    for (int i = 0; i < 15; ++i)
        queue.put(frames(2000));
    QCOMPARE(queue.waiting(), TzFrameQueue::idleLimit);
    QCOMPARE(log.count(warning, dropWarning), std::size_t{1});
    std::vector<TzVciMessage> batch;
    std::size_t taken = 0;
    while (queue.take(batch) > 0)
        taken += batch.size();
    QCOMPARE(taken, TzFrameQueue::idleLimit);
    QCOMPARE(queue.waiting(), std::size_t{0});
}

void TestTzFrameDrain::aBatchAcrossTheLimitIsKeptInPart()
{
    TzFrameQueue queue("CAN");
    queue.put(frames(TzFrameQueue::idleLimit - 1));
    queue.put(frames(32, 500000));
    QCOMPARE(queue.waiting(), TzFrameQueue::idleLimit);
    std::vector<TzVciMessage> batch;
    std::uint64_t last = 0;
    while (queue.take(batch) > 0)
        last = batch.back().timestamp;
    QCOMPARE(last, std::uint64_t{500000});
}

void TestTzFrameDrain::theNextStandstillWarnsAgain()
{
    const tztest::LogCapture log;
    TzFrameQueue queue("CAN");
    queue.put(frames(30000));
    queue.setDrained(true);
    queue.setDrained(false);
    queue.put(frames(1));
    queue.put(frames(1));
    QCOMPARE(log.count(warning, dropWarning), std::size_t{2});
}

void TestTzFrameDrain::drainedQueueGrowsAsItNeedsTo()
{
    const tztest::LogCapture log;
    TzFrameQueue queue("CAN");
    queue.setDrained(true);
    queue.put(frames(100000));
    QCOMPARE(queue.waiting(), std::size_t{100000});
    QCOMPARE(log.lines().size(), std::size_t{0});
}

void TestTzFrameDrain::aTakeYieldsAtMost2000Frames()
{
    TzFrameQueue queue("CAN");
    queue.put(frames(2001));
    std::vector<TzVciMessage> batch;
    QCOMPARE(queue.take(batch), std::size_t{2000});
    QCOMPARE(batch.size(), std::size_t{2000});
    QCOMPARE(queue.take(batch), std::size_t{1});
    QCOMPARE(std::uint64_t{batch.front().timestamp}, std::uint64_t{2000});
    QCOMPARE(queue.take(batch), std::size_t{0});
}

void TestTzFrameDrain::canTickEndsOnlyWhenTheQueueIsEmptyAndWarnsOfFullBatches()
{
    const tztest::LogCapture log;
    TzFrameQueue queue("CAN");
    queue.put(frames(4100));
    Collector collector;
    TzFrameDrain drain(canFamily, queue, collector.deliver());
    QVERIFY(drain.start());
    QVERIFY(tztest::waitFor([&] { return collector.count() == 4100; }));
    QCOMPARE(collector.batchSizes(), (std::vector<std::size_t>{2000, 2000, 100}));
    QCOMPARE(log.count(warning, fullBatch), std::size_t{2});
}

void TestTzFrameDrain::linTickTakesOneBatch()
{
    const tztest::LogCapture log;
    TzFrameQueue queue("LIN");
    queue.put(frames(10000));
    std::mutex mutex;
    std::vector<std::chrono::steady_clock::time_point> times;
    TzFrameDrain drain(linFamily, queue, [&](const std::vector<TzVciMessage> &batch) {
        const std::lock_guard lock(mutex);
        times.push_back(std::chrono::steady_clock::now());
        QCOMPARE(batch.size(), std::size_t{2000});
    });
    QVERIFY(drain.start());
    QVERIFY(tztest::waitFor([&] { return queue.waiting() == 0; }));
    drain.stop();
    QCOMPARE(times.size(), std::size_t{5});
    // Wake-ups lie on a grid of 10 ms, so five of them span at least three whole intervals even if the first was late.
    QVERIFY(times.back() - times.front() >= std::chrono::milliseconds(30));
    QCOMPARE(log.count(warning, fullBatch), std::size_t{0});
}

void TestTzFrameDrain::framesKeptWhileStoppedAreDeliveredAtTheNextStart()
{
    TzFrameQueue queue("CAN");
    Collector collector;
    TzFrameDrain drain(canFamily, queue, collector.deliver());
    QVERIFY(drain.start());
    drain.stop();
    queue.put(frames(7));
    QVERIFY(drain.start());
    QVERIFY(tztest::waitFor([&] { return collector.count() == 7; }));
}

void TestTzFrameDrain::stopDrainsToEmpty()
{
    TzFrameQueue queue("LIN");
    Collector collector;
    TzFrameDrain drain(linFamily, queue, collector.deliver());
    QVERIFY(drain.start());
    QVERIFY(drain.start()); // a second start changes nothing
    queue.put(frames(9000));
    drain.stop();
    QVERIFY(!drain.isRunning());
    QCOMPARE(queue.waiting(), std::size_t{0});
    QCOMPARE(collector.count(), std::size_t{9000});
    drain.stop(); // may be repeated
}

void TestTzFrameDrain::stopEndsWhileFramesKeepComing()
{
    TzFrameQueue queue("CAN");
    std::atomic<bool> go{true};
    // A consumer slower than the producer: the queue never runs empty by itself.
    TzFrameDrain drain(canFamily, queue, [](const std::vector<TzVciMessage> &) {
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    });
    QVERIFY(drain.start());
    std::thread producer([&] {
        const auto batch = frames(2000);
        while (go.load()) {
            if (queue.waiting() < 100000)
                queue.put(batch);
        }
    });
    QVERIFY(tztest::waitFor([&] { return queue.waiting() > 10000; }));
    drain.stop();
    QVERIFY(!drain.isRunning());
    go.store(false);
    producer.join();
}

void TestTzFrameDrain::manyProducersLoseNothingAndKeepTheirOrder()
{
    constexpr std::size_t producers = 4;
    constexpr std::uint64_t perProducer = 32 * 1000;
    TzFrameQueue queue("CAN");
    Collector collector;
    TzFrameDrain drain(canFamily, queue, collector.deliver());
    QVERIFY(drain.start());
    std::vector<std::thread> threads;
    for (std::size_t p = 0; p < producers; ++p) {
        threads.emplace_back([&queue, p] {
            for (std::uint64_t first = 0; first < perProducer; first += 32)
                queue.put(frames(32, first, static_cast<std::uint8_t>(p)));
        });
    }
    for (std::thread &thread : threads)
        thread.join();
    QVERIFY(tztest::waitFor([&] { return collector.count() == producers * perProducer; }));
    std::array<std::uint64_t, producers> next{};
    for (const TzVciMessage &frame : collector.all()) {
        QCOMPARE(std::uint64_t{frame.timestamp}, next.at(frame.deviceIndex));
        ++next.at(frame.deviceIndex);
    }
}

void TestTzFrameDrain::aClosedInletDoesNothing()
{
    int reports = 0;
    TzFrameInlet inlet([&](int, std::uint8_t) { ++reports; });
    inlet.reportStatus(0, VciStatus::deviceOpened);
    inlet.putCan(frames(1));
    inlet.putLin(frames(2));
    QCOMPARE(inlet.canQueue().waiting(), std::size_t{1});
    QCOMPARE(inlet.linQueue().waiting(), std::size_t{2});
    inlet.close();
    inlet.close();
    inlet.reportStatus(0, VciStatus::deviceClosed);
    inlet.putCan(frames(1));
    inlet.putLin(frames(1));
    QVERIFY(inlet.isClosed());
    QCOMPARE(reports, 1);
    QCOMPARE(inlet.canQueue().waiting(), std::size_t{1});
    QCOMPARE(inlet.linQueue().waiting(), std::size_t{2});
}

void TestTzFrameDrain::closeWaitsForAStatusReport()
{
    std::atomic<bool> entered{false};
    std::atomic<bool> left{false};
    const TzFrameInlet *closing = nullptr;
    TzFrameInlet inlet([&](int, std::uint8_t) {
        entered.store(true);
        (void)tztest::waitBlocking([&] { return closing->isClosed(); }); // close() is under way
        for (int i = 0; i < 100; ++i)
            std::this_thread::yield(); // one that does not wait would be over by now
        left.store(true);
    });
    closing = &inlet;
    std::thread reporter([&] { inlet.reportStatus(0, VciStatus::deviceOpened); });
    QVERIFY(tztest::waitFor([&] { return entered.load(); }));
    inlet.close();
    QVERIFY(left.load());
    reporter.join();
}
