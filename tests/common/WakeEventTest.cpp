// SPDX-License-Identifier: GPL-3.0-or-later
#include "common/platform/WakeEvent.h"

#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <thread>

using namespace std::chrono_literals;

using Common::platform::WakeEvent;

TEST(WakeEvent, StaysSetUntilAWaitTakesIt)
{
    WakeEvent event;
    EXPECT_FALSE(event.wait(0ms));
    event.set();
    event.set();
    EXPECT_TRUE(event.wait(0ms));
    EXPECT_FALSE(event.wait(1ms));
}

TEST(WakeEvent, TellsWhichOfSeveralIsSet)
{
    WakeEvent first;
    WakeEvent second;
    const std::array events{&first, &second};
    EXPECT_EQ(WakeEvent::waitAny(events, 0ms), -1);
    second.set();
    EXPECT_EQ(WakeEvent::waitAny(events, WakeEvent::noLimit), 1);
}

TEST(WakeEvent, ALimitBelowZeroIsOver)
{
    WakeEvent event;
    EXPECT_FALSE(event.wait(-2ms));
    EXPECT_FALSE(event.wait(std::chrono::milliseconds::min()));
}

// Limits that the clock or the system call cannot count to must not run out at once.
TEST(WakeEvent, TheLongestLimitsWait)
{
    for (const auto limit : {std::chrono::milliseconds::max(), std::chrono::milliseconds(std::chrono::hours(24 * 30)),
                             std::chrono::milliseconds(0x1'0000'0000)}) {
        WakeEvent event;
        std::thread setter([&event] {
            std::this_thread::sleep_for(20ms); // long enough for a wait that ends at once to be seen
            event.set();
        });
        EXPECT_TRUE(event.wait(limit)) << limit.count();
        setter.join();
    }
}
