// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/history/CallersFirstMutex.h"

#include "tests/support/WaitFor.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>

TEST(CallersFirstMutex, ACallerGoesBeforeTheNextPieceOfWorkInTheBackground)
{
    CallersFirstMutex mutex;
    for (int round = 0; round < 20; ++round) { // a plain lock would go to the thread that asks at once, nearly always
        std::string order;                     // protected by mutex
        mutex.lockInBackground();
        std::thread caller([&] {
            mutex.lock();
            order += 'c';
            mutex.unlock();
        });
        const bool waits = tztest::waitBlocking([&] { return mutex.waitingCallers() == 1; });
        mutex.unlock();
        mutex.lockInBackground();
        order += 'b';
        mutex.unlock();
        caller.join();
        EXPECT_TRUE(waits);
        EXPECT_EQ(order, "cb");
        EXPECT_EQ(mutex.waitingCallers(), 0);
    }
}

TEST(CallersFirstMutex, OneAtATime)
{
    CallersFirstMutex mutex;
    int count = 0; // the sanitizer watches it
    const auto work = [&](bool inBackground) {
        for (int i = 0; i < 500; ++i) {
            if (inBackground)
                mutex.lockInBackground();
            else
                mutex.lock();
            ++count;
            mutex.unlock();
        }
    };
    std::thread first(work, true);
    std::thread second(work, false);
    std::thread third(work, true);
    first.join();
    second.join();
    third.join();
    EXPECT_EQ(count, 1500);
}
