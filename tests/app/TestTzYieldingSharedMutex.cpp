// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/app/TestTzYieldingSharedMutex.h"

#include "app/TzYieldingSharedMutex.h"
#include "tests/support/WaitFor.h"

#include <QtTest>

#include <atomic>
#include <chrono>
#include <mutex>
#include <shared_mutex>
#include <thread>

// Two readers that hand the lock to each other: each keeps it until the other has it as well, or a writer waits.
void TestTzYieldingSharedMutex::aWriterGetsThroughReadersThatNeverLetGoTogether()
{
    TzYieldingSharedMutex mutex;
    std::atomic<bool> stop{false};
    std::atomic<bool> written{false};
    std::atomic<std::uint64_t> turns[2] = {};
    const auto read = [&](int self) {
        while (!stop) {
            const std::shared_lock lock(mutex);
            const std::uint64_t before = turns[1 - self].load();
            ++turns[self];
            const auto limit = std::chrono::steady_clock::now() + std::chrono::milliseconds(20);
            while (turns[1 - self] == before && std::chrono::steady_clock::now() < limit && !stop)
                std::this_thread::yield();
        }
    };
    std::thread first(read, 0);
    std::thread second(read, 1);
    QVERIFY(tztest::waitFor([&] { return turns[0] > 10 && turns[1] > 10; }));
    std::thread writer([&] {
        for (int i = 0; i < 20; ++i)
            const std::unique_lock lock(mutex);
        written = true;
    });
    const bool gotThrough = tztest::waitFor([&] { return written.load(); });
    stop = true;
    first.join();
    second.join();
    writer.join();
    QVERIFY(gotThrough);
}
