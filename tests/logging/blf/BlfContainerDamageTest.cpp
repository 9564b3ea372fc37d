// SPDX-License-Identifier: GPL-3.0-or-later
// Containers that are damaged, or claim what is not so.
#include "tests/logging/blf/BlfLogFixture.h"
#include "tests/support/AllocationCounter.h"
#include "tests/support/ProcessFigures.h"

#include <zlib.h>

#include <algorithm>

using namespace tztest;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr std::uint32_t claimed4GB = 0xFFFFFFFF;
#if defined(__SANITIZE_ADDRESS__)
constexpr double mostGrowthMiB = 250; // what is freed is kept for a while, to see whether somebody uses it
#else
constexpr double mostGrowthMiB = 16;
#endif

constexpr std::size_t frameBodyOffset = 32;

BlfBytes framesObjects(std::uint32_t first, std::uint32_t end)
{
    BlfBytes bytes;
    for (std::uint32_t number = first; number < end; ++number)
        appendObject(bytes, 86, bodyBytes(numberedFrame(number)), {.timeStamp = number * 1'000'000ull});
    return bytes;
}

// zlib's form of so many MiB of zeros: the same piece again and again, without a checksum.
BlfBytes packedZeros(std::size_t mebibytes)
{
    const BlfBytes zeros(1024 * 1024);
    BlfBytes packed;
    z_stream zlib{};
    if (deflateInit(&zlib, 6) != Z_OK)
        return packed;
    std::array<BlfBytes, 2> pieces; // the second repeats
    for (BlfBytes &piece : pieces) {
        piece.resize(64 * 1024);
        zlib.next_in = const_cast<Bytef *>(zeros.data());
        zlib.avail_in = static_cast<uInt>(zeros.size());
        zlib.next_out = piece.data();
        zlib.avail_out = static_cast<uInt>(piece.size());
        deflate(&zlib, Z_FULL_FLUSH);
        piece.resize(piece.size() - zlib.avail_out);
    }
    deflateEnd(&zlib);
    for (std::size_t i = 0; i < mebibytes; ++i) {
        const BlfBytes &piece = pieces[i == 0 ? 0 : 1];
        packed.insert(packed.end(), piece.begin(), piece.end());
    }
    return packed;
}

// A container of bytes that are packed already.
BlfBytes packedContainer(const BlfBytes &payload, std::uint32_t stated)
{
    return blfContainer(payload, {.method = std::uint16_t{2}, .uncompressedSize = stated});
}

class BlfContainerDamage : public BlfLogFixture
{
protected:
    // Frames 0 to 8 in three containers, of which the second is made by a test; it begins at byte 344.
    SeenObjects objectsWithSecond(const BlfBytes &second)
    {
        log.clear();
        BlfTestWriter writer;
        writer.addTopLevel(blfContainer(framesObjects(0, 3))).addTopLevel(second);
        writer.addTopLevel(blfContainer(framesObjects(6, 9)));
        return objectsOf(writer);
    }
    static SeenObjects frames(std::uint32_t withoutFirst, std::uint32_t withoutEnd)
    {
        SeenObjects objects;
        for (std::uint32_t number = 0; number < 9; ++number) {
            if (number < withoutFirst || number >= withoutEnd)
                objects.push_back(seenFrame(number));
        }
        return objects;
    }
};

TEST_F(BlfContainerDamage, AContainerThatClaimsToReachFarBeyondTheFileIsReadAndTheNextToo)
{
    for (const int level : {0, 6}) {
        for (const std::uint32_t size : {2'000u, 0x80000000u, claimed4GB}) {
            const BlfBytes second =
                blfContainer(framesObjects(3, 6), {.level = level, .objectSize = size, .padding = 0});
            EXPECT_EQ(objectsWithSecond(second), frames(0, 0)) << level;
            EXPECT_THAT(errors(), ElementsAre(testing::MatchesRegex(fmt::format(
                                      "the container at byte 344 is cut: [0-9]+ of {} bytes are there", size))));
        }
    }
}

TEST_F(BlfContainerDamage, AContainerWithASizeBelowItsHeaderIsPassedOver)
{
    for (const std::uint32_t size : {0u, 15u, 31u}) {
        const BlfBytes second = blfContainer(framesObjects(3, 6), {.level = 6, .objectSize = size, .padding = 0});
        EXPECT_EQ(objectsWithSecond(second), frames(3, 6));
        EXPECT_THAT(errors(),
                    ElementsAre(fmt::format("passed over {} bytes at byte 344 that are no object", second.size())));
    }
}

// Then they stand in the file as they are.
TEST_F(BlfContainerDamage, ObjectsOfAStoredContainerWithoutItsHeaderAreFound)
{
    BlfBytes second = blfContainer(framesObjects(3, 6));
    second[0] = 'X';
    EXPECT_EQ(objectsWithSecond(second), frames(0, 0));
    EXPECT_THAT(errors(), ElementsAre("passed over 32 bytes at byte 344 that are no object"));
}

TEST_F(BlfContainerDamage, PackedDataThatCannotBeUnpackedCostTheRestOfTheirContainer)
{
    const BlfBytes whole = blfContainer(framesObjects(3, 6), {.level = 6, .padding = 0});
    std::size_t told = 0;
    for (std::size_t index = 32; index < whole.size(); ++index) {
        BlfBytes second = whole;
        second[index] ^= 0x55;
        const SeenObjects objects = objectsWithSecond(second);
        ASSERT_GE(objects.size(), 6u) << index;
        EXPECT_TRUE(std::equal(objects.begin(), objects.begin() + 3, frames(3, 6).begin())) << index;
        EXPECT_TRUE(std::equal(objects.end() - 3, objects.end(), frames(3, 6).begin() + 3)) << index;
        told += log.countContaining(3, "the container at byte 344");
    }
    EXPECT_EQ(told, whole.size() - 32); // at least by the checksum
}

TEST_F(BlfContainerDamage, WhatWasUnpackedBeforeTheDamageIsUsed)
{
    BlfBytes packed = blfDeflated(framesObjects(3, 6), 6);
    packed.resize(packed.size() - 12); // the checksum and the last of the data
    packed.insert(packed.end(), 30, 0xFF);
    const SeenObjects objects = objectsWithSecond(packedContainer(packed, 168));
    ASSERT_GE(objects.size(), 8u);
    EXPECT_EQ(objects[4], seenFrame(4));
    EXPECT_THAT(errors(), ElementsAre(testing::StartsWith("the container at byte 344 is damaged: 1")));
}

TEST_F(BlfContainerDamage, AWrongChecksumLosesNothing)
{
    BlfBytes packed = blfDeflated(framesObjects(3, 6));
    packed.back() ^= 1;
    EXPECT_EQ(objectsWithSecond(packedContainer(packed, 168)), frames(0, 0));
    EXPECT_THAT(errors(), ElementsAre("the container at byte 344 is damaged: 168 bytes could be unpacked"));
}

TEST_F(BlfContainerDamage, AWrongChecksumDoesNotTearThatWhichStraddlesItsEnd)
{
    const BlfBytes stream = framesObjects(0, 9);
    BlfBytes packed = blfDeflated(std::span(stream).first(100));
    packed.back() ^= 1;
    BlfTestWriter writer;
    writer.addTopLevel(packedContainer(packed, 100));
    writer.addTopLevel(blfContainer(std::span(stream).subspan(100)));
    EXPECT_EQ(objectsOf(writer), frames(0, 0));
    EXPECT_THAT(errors(), ElementsAre("the container at byte 144 is damaged: 100 bytes could be unpacked"));
}

TEST_F(BlfContainerDamage, PackedDataWithoutTheirEndAreTold)
{
    BlfBytes packed = blfDeflated(framesObjects(3, 6));
    packed.resize(packed.size() - 4); // all data are there
    EXPECT_EQ(objectsWithSecond(packedContainer(packed, 168)), frames(0, 0));
    EXPECT_THAT(errors(), ElementsAre("the container at byte 344 ends too early: 168 bytes could be unpacked"));
    EXPECT_EQ(objectsWithSecond(packedContainer({}, 168)), frames(3, 6));
    EXPECT_THAT(errors(), ElementsAre("the container at byte 344 ends too early: 0 bytes could be unpacked"));
}

TEST_F(BlfContainerDamage, AnUnknownMethodCostsTheContainer)
{
    BlfBytes stream = framesObjects(3, 6);
    stream[0] = 'X'; // no object to be seen either
    EXPECT_EQ(objectsWithSecond(blfContainer(stream, {.method = std::uint16_t{7}})), frames(3, 6));
    EXPECT_THAT(errors(), ElementsAre("the container at byte 344 is packed by the unknown method 7"));
}

TEST_F(BlfContainerDamage, ALostContainerIsNotMixedWithTheNext)
{
    struct Case
    {
        BlfBytes container; // from the second frame into the fifth
        const char *error;
    };
    const BlfBytes stream = framesObjects(0, 9);
    const BlfBytes junk(40, 0xFF);
    for (const Case &test : {Case{packedContainer(junk, 156), "is damaged: 0 bytes could be unpacked"},
                             Case{packedContainer({}, 156), "ends too early: 0 bytes could be unpacked"},
                             Case{blfContainer(junk, {.method = std::uint16_t{7}, .uncompressedSize = 156}),
                                  "is packed by the unknown method 7"}}) {
        log.clear();
        BlfTestWriter writer;
        writer.addTopLevel(blfContainer(std::span(stream).first(100)));
        writer.addTopLevel(test.container);
        writer.addTopLevel(blfContainer(std::span(stream).subspan(256)));
        EXPECT_EQ(objectsOf(writer), frames(1, 5));
        EXPECT_THAT(errors(), ElementsAre(std::string("the container at byte 276 ") + test.error));
    }
}

// A piece of a stream may begin like something packed, and a time stamp stands where others tell the method.
TEST_F(BlfContainerDamage, AStoredContainerThatOnlyBeginsLikeAPackedOneIsRead)
{
    constexpr std::size_t cut = frameBodyOffset + 8; // at the data of the first frame
    for (const BlfBytes &data : {BlfBytes{0x78, 0x9C, 0x07}, BlfBytes{0x78, 0x9C, 0x00, 0x01}, BlfBytes{0x78, 0x20},
                                 BlfBytes{0x98, 0x5C, 0x63, 0x00}}) {
        CanMessage2Body frame = numberedFrame(0);
        std::ranges::copy(data, frame.data.begin());
        BlfBytes stream = blfObject(frame);
        BlfByteWriter(stream).raw(framesObjects(1, 9));
        SeenObjects expected = frames(0, 0);
        expected.front().data = frame.data;
        log.clear();
        BlfTestWriter writer;
        writer.addTopLevel(blfObject(10, std::span(stream).first(cut)));
        writer.addTopLevel(blfObject(10, std::span(stream).subspan(cut)));
        EXPECT_EQ(objectsOf(writer), expected);
        EXPECT_THAT(errors(), IsEmpty());
    }
}

TEST_F(BlfContainerDamage, NoMoreIsTakenThanAContainerStates)
{
    const BlfBytes stream = framesObjects(3, 6);
    for (const std::uint32_t stated : {0u, 1u, 55u, 56u, 111u, 112u, 167u}) {
        const std::uint32_t lost = 3 + stated / 56;
        EXPECT_EQ(objectsWithSecond(blfContainer(stream, {.level = 6, .uncompressedSize = stated})), frames(lost, 6));
        EXPECT_THAT(errors(),
                    ElementsAre(fmt::format("the container at byte 344 unpacks to more than {} bytes", stated)));
        EXPECT_EQ(objectsWithSecond(blfContainer(stream, {.uncompressedSize = stated})), frames(lost, 6));
        EXPECT_THAT(errors(), ElementsAre(fmt::format("the container at byte 344 holds {} bytes more than it states",
                                                      168 - stated)));
    }
}

TEST_F(BlfContainerDamage, ABombIsStoppedAtTheLimitWithoutBeingHeldInMemory)
{
    const BlfBytes zeros = packedZeros(400);
    ASSERT_LT(zeros.size(), 500'000u);
    for (const BlfBytes &bomb : {packedContainer(zeros, claimed4GB), blfObject(10, zeros)}) {
        double most = 0;
        std::size_t pulses = 0;
        const double before = ProcessFigures::of().residentMiB;
        reader.setPulse([&] {
            ++pulses;
            most = std::max(most, ProcessFigures::of().residentMiB);
        });
        EXPECT_EQ(objectsWithSecond(bomb), frames(3, 6));
        EXPECT_THAT(errors(), ElementsAre("the container at byte 344 unpacks to more than 268435456 bytes"));
        EXPECT_GE(pulses, 256u); // so that a window lives meanwhile
        EXPECT_LT(most - before, mostGrowthMiB);
    }
}

TEST_F(BlfContainerDamage, MemoryIsNotTakenBeforeTheBytesCome)
{
    constexpr std::size_t most = 1024 * 1024; // in one piece
    const BlfBytes greedy = blfObject(160, {}, {.objectSize = 16u * 1024 * 1024, .padding = 0});
    BlfTestWriter writer;
    for (std::uint32_t number = 0; number < 1'000; ++number) {
        writer.addTopLevel(packedContainer(blfDeflated(frameObject(number)), claimed4GB));
        writer.addTopLevel(greedy).addTopLevel(blfContainer(greedy)); // in streams that end before
        writer.addTopLevel(blfContainer(greedy, {.uncompressedSize = claimed4GB}));
    }
    ASSERT_TRUE(opens(writer.file()));
    takeLargestAllocationOfThisThread();
    std::size_t objects = 0;
    for (BLF::ObjectHeader header; reader.peek(header); ++objects)
        reader.skip();
    EXPECT_EQ(objects, 1'000u);
    const std::size_t largest = takeLargestAllocationOfThisThread();
    EXPECT_GE(largest, 128u * 1024); // it is counted at all
    EXPECT_LE(largest, most);
}

} // namespace
