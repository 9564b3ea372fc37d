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

namespace {

constexpr std::uint64_t handOvers = 10; // after which the readers are under way

template <typename Condition> bool waitUntil(const std::stop_token &stop, Condition condition)
{
    while (!condition()) {
        if (stop.stop_requested())
            return false;
        std::this_thread::yield();
    }
    return true;
}

/// Two readers that hand a mutex to each other and never let go of it together: each keeps it until the other has it as
/// well. A mutex that lets readers in as long as another reads would keep a writer out for ever.
///
/// A reader that stands before the mutex and is not let in for a while is taken to give way to a writer; only then the
/// one inside lets go.
template <typename Mutex> class ReaderRelay
{
public:
    explicit ReaderRelay(Mutex &mutex)
        : m_mutex(mutex)
        , m_readers{std::jthread([this](const std::stop_token &stop) { read(stop, 0); }),
                    std::jthread([this](const std::stop_token &stop) { read(stop, 1); })}
    {
    }
    std::uint64_t entries() const { return m_entered; }
    void stop()
    {
        for (std::jthread &reader : m_readers)
            reader.request_stop();
        for (std::jthread &reader : m_readers)
            reader.join();
    }

private:
    static constexpr auto patience = std::chrono::milliseconds(100);

    // The entries are numbered from 0; each reader makes every other one.
    void read(const std::stop_token &stop, std::uint64_t number)
    {
        for (; waitUntil(stop, [&] { return m_entered == number; }); number += 2) {
            m_waiting = number + 1;
            const std::shared_lock lock(m_mutex);
            m_entered = number + 1;
            (void)waitUntil(stop, [&] { return m_waiting == number + 2; });
            const auto end = std::chrono::steady_clock::now() + patience;
            (void)waitUntil(stop, [&] { return m_entered == number + 2 || std::chrono::steady_clock::now() > end; });
        }
    }

    Mutex &m_mutex;
    std::atomic<std::uint64_t> m_entered{0}; // entries so far
    std::atomic<std::uint64_t> m_waiting{0}; // the last entry that was asked for, counted from 1
    std::jthread m_readers[2];               // last: they end before what they use
};

} // namespace

void TestTzYieldingSharedMutex::aWriterGetsThroughReadersThatNeverLetGoTogether()
{
    TzYieldingSharedMutex mutex;
    ReaderRelay relay(mutex);
    QVERIFY(tztest::waitFor([&] { return relay.entries() > handOvers; }));
    std::atomic<int> writes{0};
    const std::jthread writer([&](const std::stop_token &stop) {
        // More than once: when a reader is kept from running for long, any mutex lets a writer through.
        for (std::uint64_t next = 0; waitUntil(stop, [&] { return relay.entries() >= next; }); ++writes) {
            const std::unique_lock lock(mutex);
            next = relay.entries() + handOvers;
        }
    });
    const bool gotThrough = tztest::waitFor([&] { return writes >= 3; });
    relay.stop(); // else the writer might wait for ever
    QVERIFY(gotThrough);
}
