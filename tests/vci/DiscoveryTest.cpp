// SPDX-License-Identifier: GPL-3.0-or-later
#include "vci/TzVciDiscovery.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

namespace {

using Bytes = std::vector<std::uint8_t>;

// A reply with that payload behind its type; the length can be given apart from it.
Bytes replyOf(const Bytes &records, int length = -1)
{
    const int size = length < 0 ? static_cast<int>(records.size()) + 2 : length;
    Bytes bytes{0xAA, 0x55, 0, 0xFF, 0, 0, static_cast<std::uint8_t>(size), static_cast<std::uint8_t>(size >> 8), 2, 0};
    bytes.insert(bytes.end(), records.begin(), records.end());
    return bytes;
}

struct ReplyCase
{
    const char *name;
    Bytes datagram;
    int canChannels; // -1: no reply
    int linChannels;
};

} // namespace

class DiscoveryReply : public testing::TestWithParam<ReplyCase>
{
};

TEST_P(DiscoveryReply, IsReadOrLeft)
{
    const auto reply = parseDiscoveryReply(GetParam().datagram);
    ASSERT_EQ(reply.has_value(), GetParam().canChannels >= 0);
    if (reply) {
        EXPECT_EQ(reply->canChannels, GetParam().canChannels);
        EXPECT_EQ(reply->linChannels, GetParam().linChannels);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Datagrams, DiscoveryReply,
    testing::Values(ReplyCase{"BothFamilies", replyOf({1, 0, 8, 0, 5, 0, 2, 0}), 8, 2},
                    // A reply with length 2 registers a device with no channels at all.
                    ReplyCase{"Length2", replyOf({}), 0, 0},
                    // A reply with only key 1 gives a LIN count of 0.
                    ReplyCase{"OnlyKey1", replyOf({1, 0, 4, 0}), 4, 0},
                    ReplyCase{"OtherKeysAreSkipped", replyOf({2, 0, 9, 0, 5, 0, 3, 0, 1, 1, 7, 0}), 0, 3},
                    ReplyCase{"Key0Ends", replyOf({1, 0, 4, 0, 0, 0, 0, 0, 5, 0, 3, 0}), 4, 0},
                    ReplyCase{"RepeatedKeyCountsLast", replyOf({1, 0, 4, 0, 1, 0, 6, 0}), 6, 0},
                    ReplyCase{"CountAbove255", replyOf({1, 0, 0, 1, 5, 0, 0xFF, 0xFF}), 256, 65535},
                    ReplyCase{"CutRecordIsLeft", replyOf({1, 0, 4, 0, 5, 0, 3}), 4, 0},
                    ReplyCase{"RecordBeyondTheLengthIsLeft", replyOf({1, 0, 4, 0, 5, 0, 3, 0}, 6), 4, 0},
                    ReplyCase{"PlaceholderByteBehind", replyOf({1, 0, 4, 0, 0xFF}, 6), 4, 0},
                    ReplyCase{"Empty", {}, -1, 0}, ReplyCase{"SevenBytes", {0xAA, 0x55, 0, 0xFF, 0, 0, 2}, -1, 0},
                    ReplyCase{"EightBytesLength0", {0xAA, 0x55, 0, 0xFF, 0, 0, 0, 0}, -1, 0},
                    ReplyCase{"Length1", {0xAA, 0x55, 0, 0xFF, 0, 0, 1, 0, 2, 0}, -1, 0},
                    ReplyCase{"LengthBeyondTheDatagram", replyOf({1, 0, 4, 0}, 7), -1, 0},
                    ReplyCase{"LengthHuge", replyOf({1, 0, 4, 0}, 0xFFFF), -1, 0},
                    ReplyCase{"SyncOfTheOtherPort", {0x55, 0xAA, 0, 0xFF, 0, 0, 2, 0, 2, 0}, -1, 0},
                    // Our own broadcast comes back on some networks.
                    ReplyCase{"OwnRequest", {0xAA, 0x55, 0, 0xFF, 0, 0, 2, 0, 0, 0, 0xFF}, -1, 0},
                    ReplyCase{"OtherType", {0xAA, 0x55, 0, 0xFF, 0, 0, 2, 0, 2, 1}, -1, 0}),
    [](const auto &test) { return std::string(test.param.name); });
