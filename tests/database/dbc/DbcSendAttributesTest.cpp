// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/dbc/DbcSendAttributes.h"

#include "tests/database/dbc/DbcSamples.h"
#include "tests/support/LogCapture.h"

#include <gtest/gtest.h>

using tztest::LogCapture;
using Lines = std::vector<LogCapture::Line>;

namespace {

// An empty text leaves the attribute out.
DbcMessage makeSent(const char *sendType, const char *cycleTime)
{
    DbcMessage message = tztest::makeMessage(0x1AB, "M");
    if (*sendType)
        message.attributes.push_back({"GenMsgSendType", sendType});
    if (*cycleTime)
        message.attributes.push_back({"GenMsgCycleTime", cycleTime});
    return message;
}

DbcMessage makeDelayed(const char *delay)
{
    DbcMessage message = tztest::makeMessage(0x1AB, "M");
    message.attributes = {{"GenMsgStartDelayTime", delay}};
    return message;
}

struct CycleCase
{
    const char *name;
    const char *sendType;
    const char *cycleTime;
    int expected;
    const char *warning; // empty: none
};

class CycleTime : public testing::TestWithParam<CycleCase>
{
};

const char *const zero = "Message 0x1AB has invalid cycle time (0) for cyclic transmission";

} // namespace

TEST_P(CycleTime, FollowsTypeAndValue)
{
    const LogCapture log;
    EXPECT_EQ(getMessageCycleTime(makeSent(GetParam().sendType, GetParam().cycleTime)), GetParam().expected);
    const std::string warning = GetParam().warning;
    EXPECT_EQ(log.lines(), warning.empty() ? Lines() : (Lines{{2, warning}}));
}

INSTANTIATE_TEST_SUITE_P(
    Dbc, CycleTime,
    testing::Values(
        CycleCase{"NothingTold", "", "", 1000, ""}, CycleCase{"NoTime", "0", "", 1000, ""},
        CycleCase{"Plain", "0", "100", 100, ""}, CycleCase{"NoTypeIsCyclic", "", "100", 100, ""},
        CycleCase{"FiveWithTypeZero", "0", "5", 10, "Message 0x1AB cycle time (5) is less than minimum (10)"},
        CycleCase{"OneWithTypeThree", "3", "1", 10, "Message 0x1AB cycle time (1) is less than minimum (10)"},
        CycleCase{"Nine", "2", "9", 10, "Message 0x1AB cycle time (9) is less than minimum (10)"},
        CycleCase{"Ten", "2", "10", 10, ""}, CycleCase{"ZeroWithTypeOne", "1", "0", 1000, ""},
        CycleCase{"ZeroWithTypeThree", "3", "0", 0, ""}, CycleCase{"ZeroWithTypeZero", "0", "0", 1000, zero},
        CycleCase{"ZeroWithTypeTwo", "2", "0", 1000, zero}, CycleCase{"TypeOneIgnoresTheTime", "1", "50", 1000, ""},
        CycleCase{"TypeFiveIgnoresTheTime", "5", "50", 1000, ""}, CycleCase{"ZeroWithANegativeType", "-1", "0", 0, ""},
        CycleCase{"Largest", "0", "65535", 65535, ""}, CycleCase{"CutToSixteenBits", "0", "65636", 100, ""},
        CycleCase{"CutToZero", "0", "65536", 1000, zero}, CycleCase{"Negative", "0", "-1", 1000, zero},
        CycleCase{"TooLarge", "0", "4294967296", 1000, zero}, CycleCase{"NoNumber", "0", "fast", 1000, zero},
        CycleCase{"UnreadableTypeIsZero", "x", "0", 1000, zero}),
    [](const auto &test) { return std::string(test.param.name); });

TEST(DbcSendAttributes, TheFirstOfANameCounts)
{
    DbcMessage message = makeSent("3", "20");
    message.attributes.push_back({"GenMsgSendType", "1"});
    message.attributes.push_back({"GenMsgCycleTime", "40"});
    EXPECT_EQ(getMessageSendType(message), 3);
    EXPECT_EQ(getMessageCycleTime(message), 20);
}

TEST(DbcSendAttributes, SendTypeIsASignedDecimalZeroIfAbsent)
{
    EXPECT_EQ(getMessageSendType(makeSent("", "")), 0);
    EXPECT_EQ(getMessageSendType(makeSent("6", "")), 6);
    EXPECT_EQ(getMessageSendType(makeSent("-2", "")), -2);
    EXPECT_EQ(getMessageSendType(makeSent("0x2", "")), 0);
    EXPECT_EQ(getMessageSendType(makeSent("2147483648", "")), 0);
}

TEST(DbcSendAttributes, StartDelay)
{
    LogCapture log;
    EXPECT_EQ(getMessageStartDelay(makeSent("", "")), 10);
    EXPECT_EQ(getMessageStartDelay(makeDelayed("0")), 0);
    EXPECT_EQ(getMessageStartDelay(makeDelayed("1000")), 1000);
    EXPECT_EQ(getMessageStartDelay(makeDelayed("65537")), 1);
    EXPECT_TRUE(log.lines().empty());
    EXPECT_EQ(getMessageStartDelay(makeDelayed("1001")), 1001);
    EXPECT_EQ(log.lines(), (Lines{{2, "Message 0x1AB start delay time (1001) is greater than cycle time"}}));
}

TEST(DbcSendAttributes, TextsByTheLowEightBits)
{
    const char *const texts[] = {
        "Cyclic",   "Event Triggered", "Event + Cyclic", "Bit-Aligned Frame", "Event with Min Cycle",
        "Not Sent", "On Change"};
    for (int type = 0; type < 7; ++type) {
        EXPECT_EQ(getMessageSendTypeText(makeSent(std::to_string(type).c_str(), "")), texts[type]);
        EXPECT_EQ(getMessageSendTypeText(makeSent(std::to_string(type + 256).c_str(), "")), texts[type]);
    }
    EXPECT_EQ(getMessageSendTypeText(makeSent("7", "")), "Unknown");
    EXPECT_EQ(getMessageSendTypeText(makeSent("-1", "")), "Unknown");
}
