// SPDX-License-Identifier: GPL-3.0-or-later
// Which line of the log is explained by what happened, and which is held against the run.
#include "tests/soak/LogJudge.h"
#include "tests/support/TempWorkDir.h"
#include "vci/TzVciNetwork.h"

#include <fmt/chrono.h>
#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>

using namespace std::chrono_literals;
using tzsoak::Cause;
using tzsoak::LogJudge;

namespace {

constexpr int someBox = 3;
constexpr int otherBox = 4;
const std::string drainText = "UI message buffer may be full, continuing to drain...";
const std::string viewText = "CAN view buffer is full";

std::string lossOf(int box, int datagrams = 12)
{
    return fmt::format("Lost {} datagrams from {} on this host: the receive buffer was full.", datagrams,
                       TzVciNetwork::current().deviceAddress(box));
}

class SoakLogJudge : public testing::Test
{
protected:
    /// Writes a warning that is stamped so long after the start.
    void warn(std::chrono::milliseconds at, const std::string &text)
    {
        const auto time = start + at;
        const auto fraction = std::chrono::duration_cast<std::chrono::milliseconds>(time.time_since_epoch()) % 1s;
        file << fmt::format("{:%Y-%m-%d %H:%M:%S}.{:03} [warning] {}\n",
                            fmt::localtime(LogJudge::Clock::to_time_t(time)), fraction.count(), text)
             << std::flush;
    }
    void note(Cause cause, int box, std::chrono::milliseconds from, std::chrono::milliseconds to)
    {
        judge.note(cause, box, start + from, start + to);
    }
    const std::vector<std::string> &unexplained()
    {
        judge.readAll();
        return judge.unexplained();
    }

    // A whole second, since to_time_t() may round; a minute ago.
    const LogJudge::Clock::time_point start =
        std::chrono::floor<std::chrono::seconds>(LogJudge::Clock::now()) - std::chrono::minutes(1);
    tztest::TempWorkDir workDir;
    std::ofstream file{"soak.log"};
    LogJudge judge{"soak.log"};
};

TEST_F(SoakLogJudge, LossesAreCountedForTheBoxThatTheAddressNames)
{
    warn(0ms, lossOf(someBox, 12));
    warn(0ms, lossOf(someBox, 3));
    judge.readAll();
    EXPECT_EQ(judge.lostDatagrams(someBox), 15U);
    EXPECT_EQ(judge.lostDatagrams(otherBox), 0U);
}

TEST_F(SoakLogJudge, ALossIsExplainedByALongStallOfTheMachineAlone)
{
    note(Cause::Stall, LogJudge::anyBox, 0ms, 49ms);
    note(Cause::Freeze, LogJudge::anyBox, 0ms, 900ms);
    warn(500ms, lossOf(someBox));
    EXPECT_THAT(unexplained(), testing::ElementsAre(lossOf(someBox)));
    note(Cause::Stall, LogJudge::anyBox, 0ms, 50ms);
    warn(500ms, lossOf(otherBox));
    EXPECT_EQ(unexplained().size(), 1U);
}

TEST_F(SoakLogJudge, ALossIsExplainedForLittleMoreThanTheSecondAfterWhichItIsTold)
{
    note(Cause::Stall, LogJudge::anyBox, 0ms, 60ms);
    warn(1100ms, lossOf(someBox));
    EXPECT_TRUE(unexplained().empty());
    warn(1200ms, lossOf(someBox));
    EXPECT_EQ(unexplained().size(), 1U);
}

TEST_F(SoakLogJudge, AFullViewIsExplainedForLittleMoreThanTheSecondAfterWhichItIsTold)
{
    note(Cause::Freeze, LogJudge::anyBox, 0ms, 3500ms);
    warn(4600ms, viewText);
    EXPECT_TRUE(unexplained().empty());
    warn(4700ms, viewText);
    EXPECT_EQ(unexplained().size(), 1U);
}

TEST_F(SoakLogJudge, ALossBeforeTheStallIsNotItsDoing)
{
    note(Cause::Stall, LogJudge::anyBox, 500ms, 600ms);
    warn(400ms, lossOf(someBox));
    EXPECT_EQ(unexplained().size(), 1U);
}

TEST_F(SoakLogJudge, ABurstExplainsLossesOfItsOwnBoxAlone)
{
    note(Cause::Burst, someBox, 0ms, 250ms);
    warn(300ms, lossOf(someBox));
    EXPECT_TRUE(unexplained().empty());
    warn(300ms, lossOf(otherBox));
    EXPECT_THAT(unexplained(), testing::ElementsAre(lossOf(otherBox)));
}

TEST_F(SoakLogJudge, ALossFromAnAddressOfNoBoxIsNeverExplained)
{
    const std::string text = "Lost 1 datagrams from 192.0.2.1 on this host: the receive buffer was full.";
    note(Cause::Stall, LogJudge::anyBox, 0ms, 500ms);
    warn(100ms, text);
    EXPECT_THAT(unexplained(), testing::ElementsAre(text));
}

TEST_F(SoakLogJudge, AFullViewIsExplainedByALongStandstillOfTheEventLoopAlone)
{
    note(Cause::Freeze, LogJudge::anyBox, 0ms, 2900ms);
    note(Cause::Stall, LogJudge::anyBox, 0ms, 3500ms);
    warn(2800ms, viewText);
    EXPECT_THAT(unexplained(), testing::ElementsAre(viewText));
    note(Cause::Freeze, LogJudge::anyBox, 0ms, 3100ms);
    warn(2800ms, viewText);
    EXPECT_EQ(unexplained().size(), 1U);
}

TEST_F(SoakLogJudge, TheDrainCatchesUpAfterAnyPileUp)
{
    note(Cause::Burst, someBox, 0ms, 250ms);
    note(Cause::Stall, LogJudge::anyBox, 5s, 5s + 9ms);
    note(Cause::Freeze, LogJudge::anyBox, 10s, 10s + 200ms);
    for (const auto at : {300ms, 5100ms, 14'000ms})
        warn(at, drainText);
    EXPECT_TRUE(unexplained().empty());
    EXPECT_EQ(judge.explained().at("drain catches up"), 3U);
    EXPECT_TRUE(judge.unseen().empty());
}

TEST_F(SoakLogJudge, ADrainThatCatchesUpWithoutACauseIsCountedApart)
{
    note(Cause::Stall, LogJudge::anyBox, 0ms, 9ms);
    warn(5s, drainText);
    warn(6s, viewText); // for others there is no such leave
    EXPECT_THAT(unexplained(), testing::ElementsAre(viewText));
    EXPECT_EQ(judge.unseen().at("drain catches up"), 1U);
    EXPECT_EQ(judge.unseen().size(), 1U);
}

// Three batches that one late drain was behind, and another one later; a drain that never catches up is told anew.
TEST_F(SoakLogJudge, LinesWithoutACauseThatComeTogetherCountOnce)
{
    for (const auto at : {5000ms, 5001ms, 5003ms, 9000ms})
        warn(at, drainText);
    EXPECT_TRUE(unexplained().empty());
    EXPECT_EQ(judge.unseen().at("drain catches up"), 2U);
    for (auto at = 10'000ms; at < 11'000ms; at += 10ms)
        warn(at, drainText);
    EXPECT_TRUE(unexplained().empty());
    EXPECT_EQ(judge.unseen().at("drain catches up"), 2U + 10U);
}

TEST_F(SoakLogJudge, ALateReplyIsWaitedForLonger)
{
    const std::string text = fmt::format("Request Device{} timed out after 500 ms", someBox);
    note(Cause::LateReplies, someBox, 0ms, 100ms);
    warn(4000ms, text);
    EXPECT_TRUE(unexplained().empty());
    warn(4200ms, text);
    warn(1000ms, fmt::format("Request Device{} timed out after 500 ms", otherBox));
    EXPECT_EQ(unexplained().size(), 2U);
}

TEST_F(SoakLogJudge, AWarningThatNoRuleKnowsFailsWhateverHappens)
{
    note(Cause::Stall, LogJudge::anyBox, 0ms, 500ms);
    warn(100ms, "Something else");
    EXPECT_THAT(unexplained(), testing::ElementsAre("Something else"));
}

} // namespace
