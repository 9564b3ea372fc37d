// SPDX-License-Identifier: GPL-3.0-or-later
// Objects whose sizes are wrong: they cost themselves, or what they hide is told.
#include "tests/logging/blf/BlfLogFixture.h"

using namespace tztest;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr std::size_t frameSize = 56;
constexpr std::size_t fileHeaderSize = 144;

using BlfObjectSizes = BlfLogFixture;

struct SizeCase
{
    std::uint32_t objectSize;
    std::uint16_t headerSize;
};

TEST_F(BlfObjectSizes, AnObjectWithSenselessSizesCostsItselfAlone)
{
    constexpr std::uint32_t most = 0xFFFFFFFF;
    for (const SizeCase &sizes :
         {SizeCase{0, 32}, SizeCase{1, 32}, SizeCase{15, 32}, SizeCase{31, 32}, SizeCase{frameSize, 0},
          SizeCase{frameSize, 15}, SizeCase{frameSize, frameSize + 1}, SizeCase{frameSize, 0xFFFF}, SizeCase{1000, 257},
          SizeCase{16 * 1024 * 1024 + 1, 32}, SizeCase{0x80000000, 32}, SizeCase{most, 32}, SizeCase{0, 0}}) {
        const BlfBytes second =
            blfObject(numberedFrame(1), {.headerSize = sizes.headerSize, .objectSize = sizes.objectSize, .padding = 0});
        EXPECT_EQ(objectsWithSecond(second), firstAndThird) << sizes.objectSize << ' ' << sizes.headerSize;
        EXPECT_THAT(errors(), ElementsAre("passed over 56 bytes at byte 56 of the unpacked data that are no object"));
    }
}

TEST_F(BlfObjectSizes, AnObjectThatReachesBeyondTheEndDoesNotTakeTheOthersWithIt)
{
    const BlfBytes second = blfObject(160, BlfBytes(24, 0xEE), {.objectSize = 10'000, .padding = 0});
    EXPECT_EQ(objectsWithSecond(second), firstAndThird);
    EXPECT_THAT(errors(),
                ElementsAre("the object at byte 56 of the unpacked data is cut: 56 of 10000 bytes are there"));
}

// Where its end would be stands another frame, or nothing.
TEST_F(BlfObjectSizes, AFrameWithTooGreatASizeDoesNotHideThoseBehindIt)
{
    constexpr std::uint32_t frames = 300;
    constexpr std::uint32_t wrong = 7;
    SeenObjects expected = seenFrames(frames);
    expected.erase(expected.begin() + wrong);
    for (const std::uint32_t size : {560u, 5600u, 56u | 0x800000u}) {
        const BlfBytes frame =
            blfObject(numberedFrame(wrong), {.timeStamp = wrong * 1'000'000ull, .objectSize = size, .padding = 0});
        for (const bool isInContainer : {true, false}) {
            log.clear();
            BlfTestWriter writer;
            for (std::uint32_t number = 0; number < frames; ++number) {
                const BlfBytes object = number == wrong ? frame : frameObject(number);
                isInContainer ? writer.addRaw(object) : writer.addTopLevel(object);
            }
            EXPECT_EQ(objectsOf(writer), expected) << size;
            EXPECT_THAT(errors(), ElementsAre(fmt::format("passed over 56 bytes at byte {} that are no object",
                                                          isInContainer ? "392 of the unpacked data" : "536")));
        }
    }
}

TEST_F(BlfObjectSizes, ObjectsOfAFixedFormHaveALimitAndOthersHaveNot)
{
    constexpr std::size_t header = 32;
    for (const std::uint32_t type : {2u, 4u, 31u, 73u, 91u, 100u, 101u, 104u, 129u}) {
        EXPECT_EQ(objectsWithSecond(blfObject(type, BlfBytes(512 - header, 0xEE))),
                  (SeenObjects{seenFrame(0), {.type = type}, seenFrame(2)}));
        EXPECT_THAT(errors(), IsEmpty());
        EXPECT_EQ(objectsWithSecond(blfObject(type, BlfBytes(513 - header, 0xEE))), firstAndThird) << type;
        EXPECT_THAT(errors(), ElementsAre("passed over 514 bytes at byte 56 of the unpacked data that are no object"))
            << "with the padding";
    }
    for (const std::uint32_t type : {1u, 86u}) {
        EXPECT_EQ(objectsWithSecond(blfObject(type, BlfBytes(512 - header, 0xEE))).size(), 3u);
        EXPECT_EQ(objectsWithSecond(blfObject(type, BlfBytes(513 - header, 0xEE))), firstAndThird) << type;
    }
    for (const std::uint32_t type : {6u, 9u, 65u, 115u, 118u, 160u}) {
        EXPECT_EQ(objectsWithSecond(blfObject(type, BlfBytes(100'000, 0xEE))),
                  (SeenObjects{seenFrame(0), {.type = type}, seenFrame(2)}));
        EXPECT_THAT(errors(), IsEmpty());
    }
}

// It may have hidden frames, whose number nobody knows.
TEST_F(BlfObjectSizes, AGreatObjectThatEndsAmidAnotherIsNamed)
{
    constexpr std::uint32_t claimed = 1000; // its own 56 bytes, 16 frames and 48 bytes of one more
    for (const bool isInContainer : {true, false}) {
        log.clear();
        BlfTestWriter writer;
        const auto add = [&](const BlfBytes &object) {
            isInContainer ? writer.addRaw(object) : writer.addTopLevel(object);
        };
        add(blfObject(160, BlfBytes(24, 0xEE), {.objectSize = claimed, .padding = 0}));
        for (std::uint32_t number = 1; number < 20; ++number)
            add(frameObject(number));
        add(BlfBytes(9, 'L')); // follows a frame, which nobody suspects
        add(frameObject(20));
        EXPECT_EQ(objectsOf(writer), (SeenObjects{{.type = 160}, seenFrame(18), seenFrame(19), seenFrame(20)}));
        const char *where = isInContainer ? " of the unpacked data" : "";
        const std::size_t begin = isInContainer ? 0 : fileHeaderSize;
        EXPECT_THAT(errors(),
                    ElementsAre(fmt::format("passed over 8 bytes at byte {}{} that are no object, behind one of type "
                                            "160 whose size of 1000 bytes may be wrong",
                                            begin + claimed, where),
                                fmt::format("passed over 9 bytes at byte {}{} that are no object",
                                            begin + 20 * frameSize, where)));
    }
}

} // namespace
