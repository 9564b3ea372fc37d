// SPDX-License-Identifier: GPL-3.0-or-later
#include "vci/TzVciDropReporter.h"

#include "tests/support/LogCapture.h"

#include <gtest/gtest.h>

using namespace std::chrono_literals;

namespace {

const TzVciDropReporter::Clock::time_point start = TzVciDropReporter::Clock::now();

std::string warning(std::uint32_t count)
{
    return "Lost " + std::to_string(count) + " datagrams from 127.1.1.130 on this host: the receive buffer was full.";
}

} // namespace

TEST(DropReporter, SaysNothingWhileNothingIsLost)
{
    const tztest::LogCapture log;
    TzVciDropReporter reporter("127.1.1.130");
    reporter.update(0, start);
    reporter.finish(0);
    EXPECT_TRUE(log.lines().empty());
}

TEST(DropReporter, WarnsAtOnceAndThenAtMostOnceASecond)
{
    const tztest::LogCapture log;
    TzVciDropReporter reporter("127.1.1.130");
    reporter.update(5, start);
    EXPECT_TRUE(log.has(2, warning(5)));
    reporter.update(9, start + 400ms);
    reporter.update(15, start + 999ms);
    EXPECT_EQ(log.lines().size(), 1u);
    reporter.update(15, start + 1000ms);
    EXPECT_TRUE(log.has(2, warning(10)));
    reporter.update(15, start + 5s);
    EXPECT_EQ(log.lines().size(), 2u);
}

TEST(DropReporter, CountsAcrossTheWrap)
{
    const tztest::LogCapture log;
    TzVciDropReporter reporter("127.1.1.130");
    reporter.update(0xFFFFFFFE, start);
    reporter.update(3, start + 2s);
    EXPECT_TRUE(log.has(2, warning(5)));
}

TEST(DropReporter, TheEndTellsWhatIsLeftAndTheNextSocketCountsFromZero)
{
    const tztest::LogCapture log;
    TzVciDropReporter reporter("127.1.1.130");
    reporter.update(5, start);
    reporter.finish(8);
    EXPECT_TRUE(log.has(2, warning(3)));
    reporter.update(2, start + 60s);
    EXPECT_TRUE(log.has(2, warning(2)));
}
