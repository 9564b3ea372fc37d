// SPDX-License-Identifier: GPL-3.0-or-later
// Whole logs in all the forms that writers give them, none of them damaged: no case may log anything.
#include "tests/logging/blf/BlfExample.h"
#include "tests/logging/blf/BlfLogFixture.h"

#include <QDir>

#include <limits>

#include <sys/stat.h>

using namespace tztest;

namespace {

class BlfReading : public BlfLogFixture
{
protected:
    void TearDown() override { EXPECT_THAT(errors(), testing::IsEmpty()); }

    SeenObject onlyObject(BlfTestWriter &writer)
    {
        const SeenObjects objects = objectsOf(writer);
        EXPECT_EQ(objects.size(), 1u);
        return objects.empty() ? SeenObject{} : objects.front();
    }
    // A file of the example's objects in the one container.
    SeenObjects objectsOfContainer(const BlfBytes &container)
    {
        BlfTestWriter writer;
        return objectsOf(writer.addTopLevel(container).file());
    }
};

TEST_F(BlfReading, TheExampleHasItsThreeObjects)
{
    ASSERT_EQ(exampleFile().size(), 372u);
    EXPECT_EQ(objectsOf(exampleFile()), exampleObjects());
}

TEST_F(BlfReading, ContainersOfAnySizeCutTheStreamAnywhere)
{
    for (const int level : {0, 6}) {
        for (const std::size_t size : {1u, 2u, 3u, 7u, 15u, 16u, 17u, 31u, 32u, 33u, 50u, 100u, 131'072u}) {
            BlfTestWriter writer({.level = level, .containerSize = size});
            EXPECT_EQ(objectsOf(writer.addRaw(exampleStream()).file()), exampleObjects()) << size << " level " << level;
        }
    }
}

// Inside the base header, the body and the padding.
TEST_F(BlfReading, TwoContainersMayBeCutAtEveryByte)
{
    const BlfBytes stream = exampleStream();
    for (const int level : {0, 9}) {
        for (std::size_t cut = 0; cut <= stream.size(); ++cut) {
            BlfTestWriter writer({.level = level, .containerSize = 0});
            writer.addTopLevel(blfContainer(std::span(stream).first(cut), {.level = level}));
            writer.addTopLevel(blfContainer(std::span(stream).subspan(cut), {.level = level}));
            ASSERT_EQ(objectsOf(writer), exampleObjects()) << "cut at " << cut << " level " << level;
        }
    }
}

struct TimeCase
{
    const char *name;
    BlfHeader header;
    std::uint64_t expectedNs;
};

class BlfTimes : public BlfReading, public testing::WithParamInterface<TimeCase>
{
};

TEST_P(BlfTimes, AreNanosecondsWhateverTheHeader)
{
    BlfTestWriter writer;
    writer.add(numberedFrame(5), GetParam().header);
    const SeenObject object = onlyObject(writer);
    EXPECT_EQ(object.timeNs, GetParam().expectedNs);
    EXPECT_EQ(object.id, 5u); // the body begins behind the header
}

constexpr std::uint64_t highBit = 0x8000'0000'0000'0001;
INSTANTIATE_TEST_SUITE_P(
    Blf, BlfTimes,
    testing::Values(TimeCase{"Nanoseconds", {.timeStamp = 1'500'000'001, .flags = 2}, 1'500'000'001},
                    TimeCase{"TenMicroseconds", {.timeStamp = 123'456, .flags = 1}, 1'234'560'000},
                    TimeCase{"Version2", {.timeStamp = 7, .version = 2, .originalTimeStamp = 9}, 7},
                    TimeCase{"Version2InTenMicroseconds", {.timeStamp = 7, .flags = 1, .version = 2}, 70'000},
                    TimeCase{"Version3", {.timeStamp = 7, .version = 3, .bits16 = 12}, 7},
                    TimeCase{"Version1WithFortyBytes", {.timeStamp = 7, .version = 1, .length = 40}, 7},
                    TimeCase{"LongerThanAnyKnown", {.timeStamp = 7, .length = 256}, 7},
                    TimeCase{"NoUnitIsNanoseconds", {.timeStamp = 7, .flags = 0}, 7},
                    TimeCase{"BothUnitsAreNanoseconds", {.timeStamp = 7, .flags = 3}, 7},
                    TimeCase{"OtherFlagsBeside", {.timeStamp = 7, .flags = 0xFFFFFFFD}, 70'000},
                    TimeCase{"HighBitIsNoSign", {.timeStamp = highBit}, highBit},
                    TimeCase{"TooManyTenMicroseconds", {.timeStamp = highBit, .flags = 1}, highBit * 10'000}),
    [](const auto &test) { return std::string(test.param.name); });

TEST_F(BlfReading, HeaderTellsTypeAndSizes)
{
    BlfTestWriter writer;
    writer.add(160, BlfBytes(21), {.timeStamp = 3, .version = 2});
    ASSERT_TRUE(opens(writer.file()));
    BLF::ObjectHeader header;
    ASSERT_TRUE(reader.peek(header));
    EXPECT_EQ(header.type, 160u);
    EXPECT_EQ(header.objectSize, 61u);
    EXPECT_EQ(header.headerSize, 40);
    EXPECT_EQ(header.timeNs, 3u);
}

TEST_F(BlfReading, UnknownTypesAreShownToo)
{
    BlfTestWriter writer;
    addFrame(writer, 0);
    writer.add(160, BlfBytes(16, 0xEE)).add(0xFFFF0000, BlfBytes(3, 0xEE)).add(115, BlfBytes(32));
    addFrame(writer, 1);
    EXPECT_EQ(objectsOf(writer),
              (SeenObjects{seenFrame(0), {.type = 160}, {.type = 0xFFFF0000}, {.type = 115}, seenFrame(1)}));
}

TEST_F(BlfReading, PaddingMayHaveAnyLength)
{
    for (std::size_t size = 0; size < 4; ++size) {
        for (const std::size_t padding : {0u, 1u, 2u, 3u, 4u, 5u, 6u, 7u, 8u, 27u, 1000u, 600'000u}) {
            BlfTestWriter writer({.level = 1});
            writer.add(65, BlfBytes(size, 0xEE), {.padding = padding});
            addFrame(writer, 1);
            writer.addRaw(BlfBytes(padding)); // at the end, too
            EXPECT_EQ(objectsOf(writer), (SeenObjects{{.type = 65}, seenFrame(1)})) << size << " and " << padding;
        }
    }
}

TEST_F(BlfReading, PaddingNeedNotBeZero)
{
    BlfTestWriter writer;
    addFrame(writer, 0);
    writer.addRaw(BlfBytes(7, 'L'));
    addFrame(writer, 1);
    EXPECT_EQ(objectsOf(writer), seenFrames(2));
}

TEST_F(BlfReading, ZerosBetweenContainersAreNoDamage)
{
    BlfTestWriter writer;
    addFrame(writer, 0);
    writer.addTopLevel(BlfBytes(300'000));
    addFrame(writer, 1);
    writer.addTopLevel(BlfBytes(5));
    EXPECT_EQ(objectsOf(writer), seenFrames(2));
}

TEST_F(BlfReading, ObjectsWithoutATimeArePassedOver)
{
    BlfTestWriter writer;
    writer.add(6, BlfBytes(20, 0xEE), {.length = 16}).add(86, BlfBytes(20, 0xEE), {.length = 31});
    addFrame(writer, 0);
    EXPECT_EQ(objectsOf(writer), seenFrames(1));
}

TEST_F(BlfReading, ContainersInsideContainersArePassedOver)
{
    BlfTestWriter writer;
    writer.addRaw(blfContainer(frameObject(7)));
    writer.add(10, BlfBytes(24), {}); // the same with a time stamp
    addFrame(writer, 0);
    EXPECT_EQ(objectsOf(writer), seenFrames(1));
}

TEST_F(BlfReading, ObjectsMayStandOutsideContainers)
{
    BlfTestWriter writer;
    for (std::uint32_t number = 0; number < 3; ++number)
        writer.addTopLevel(frameObject(number));
    EXPECT_EQ(objectsOf(writer), seenFrames(3));
}

TEST_F(BlfReading, AnObjectOutsideContainersDoesNotTearThatWhichStraddlesThem)
{
    const BlfBytes straddler = frameObject(1);
    BlfTestWriter writer;
    writer.addTopLevel(blfContainer(std::span(straddler).first(30)));
    writer.addTopLevel(frameObject(0)).addTopLevel(blfObject(160, BlfBytes(3)));
    writer.addTopLevel(blfContainer(std::span(straddler).subspan(30)));
    EXPECT_EQ(objectsOf(writer), (SeenObjects{seenFrame(0), {.type = 160}, seenFrame(1)}));
}

TEST_F(BlfReading, LargeObjectsAreRead)
{
    constexpr std::size_t largest = 16 * 1024 * 1024;
    for (const std::size_t containerSize : {std::size_t{5'000}, std::size_t{0}}) {
        BlfTestWriter writer({.level = 1, .containerSize = containerSize});
        writer.add(160, BlfBytes(largest - 32, 0xEE));
        addFrame(writer, 1);
        EXPECT_EQ(objectsOf(writer), (SeenObjects{{.type = 160}, seenFrame(1)}));
    }
}

TEST_F(BlfReading, EmptyLogsHaveNoObjects)
{
    BlfTestWriter header;
    EXPECT_THAT(objectsOf(header), testing::IsEmpty());
    BlfTestWriter container;
    EXPECT_THAT(objectsOf(container.addTopLevel(blfContainer({})).file()), testing::IsEmpty());
}

TEST_F(BlfReading, AContainerMayBePackedFromNothing)
{
    BlfTestWriter writer;
    addFrame(writer, 0);
    writer.addTopLevel(blfContainer({}, {.level = 6, .leftOver = 32'760}));
    addFrame(writer, 1);
    EXPECT_EQ(objectsOf(writer), seenFrames(2));
}

TEST_F(BlfReading, AContainerThatStatesMoreThanItHoldsIsReadToItsEnd)
{
    for (const int level : {0, 6}) {
        for (const std::uint32_t stated : {195u, 131'072u, 0x10000001u, 0xFFFFFFFFu})
            EXPECT_EQ(objectsOfContainer(blfContainer(exampleStream(), {.level = level, .uncompressedSize = stated})),
                      exampleObjects());
    }
}

TEST_F(BlfReading, AStoredContainerMayCallItselfPacked)
{
    for (const std::uint16_t method : {std::uint16_t{1}, std::uint16_t{2}, std::uint16_t{99}})
        EXPECT_EQ(objectsOfContainer(blfContainer(exampleStream(), {.method = method})), exampleObjects());
}

// A time stamp stands where others have method and size.
TEST_F(BlfReading, AContainerMayHaveTheHeaderOfAnObject)
{
    const BlfBytes stream = exampleStream();
    for (const std::uint32_t flags : {0u, 1u, 2u}) {
        const BlfHeader header{.timeStamp = 3, .flags = flags};
        for (const std::size_t cut : {std::size_t{0}, std::size_t{30}, std::size_t{190}, stream.size()}) {
            const auto first = std::span(stream).first(cut);
            const auto second = std::span(stream).subspan(cut);
            BlfTestWriter stored;
            stored.addTopLevel(blfObject(10, first, header)).addTopLevel(blfObject(10, second, header));
            EXPECT_EQ(objectsOf(stored), exampleObjects());
            BlfTestWriter packed;
            packed.addTopLevel(blfObject(10, blfDeflated(first), header));
            packed.addTopLevel(blfObject(10, blfDeflated(second), header));
            EXPECT_EQ(objectsOf(packed), exampleObjects());
        }
    }
}

TEST_F(BlfReading, BytesBehindThePackedStreamAreIgnored)
{
    BlfBytes container = blfContainer(exampleStream(), {.level = 6, .padding = 0});
    container.insert(container.end(), 5, 0xEE);
    container[8] = static_cast<std::uint8_t>(container.size());
    EXPECT_EQ(objectsOfContainer(container), exampleObjects());
}

TEST_F(BlfReading, TheFirstObjectStandsBehindTheFilesHeader)
{
    struct Case
    {
        std::uint32_t said;
        std::size_t length;
    };
    constexpr auto senseless = std::numeric_limits<std::uint32_t>::max();
    for (const Case &test : {Case{144, 144}, Case{72, 72}, Case{200, 200}, Case{0, 144}, Case{71, 144},
                             Case{100'000, 144}, Case{senseless, 144}}) {
        BlfTestWriter writer({.header = {.headerSize = test.said, .length = test.length}});
        addFrame(writer, 0);
        EXPECT_EQ(objectsOf(writer), seenFrames(1)) << test.said;
    }
}

TEST_F(BlfReading, CountsOfTheFilesHeaderDoNotMatter)
{
    for (const std::uint32_t count : {0u, 1u, 0xFFFFFFFFu}) {
        BlfTestWriter writer({.header = {.apiNumber = count,
                                         .compressionLevel = 10,
                                         .fileSize = count,
                                         .uncompressedSize = count,
                                         .objectCount = count,
                                         .restorePointsOffset = count}});
        addFrame(writer, 0);
        EXPECT_EQ(objectsOf(writer), seenFrames(1));
    }
}

TEST_F(BlfReading, WhatIsNoLogIsNotOpened)
{
    EXPECT_FALSE(reader.open(path)); // missing
    EXPECT_FALSE(reader.open({}));
    EXPECT_FALSE(reader.open(QDir::currentPath()));
    ASSERT_EQ(::mkfifo("pipe", 0600), 0);
    EXPECT_FALSE(reader.open(QStringLiteral("pipe"))); // and nobody waits for its other end
    EXPECT_FALSE(reader.open(QStringLiteral("/dev/zero")));
    BlfBytes file = exampleFile();
    file[3] = 'H';
    EXPECT_FALSE(opens(file));
    BLF::ObjectHeader header;
    EXPECT_FALSE(reader.peek(header));
}

TEST_F(BlfReading, AFileShorterThanItsHeaderIsNotOpened)
{
    BlfBytes file = exampleFile();
    for (file.resize(144); !file.empty(); file.pop_back())
        EXPECT_EQ(opens(file), file.size() == 144) << file.size();
    EXPECT_FALSE(opens(file));
}

TEST_F(BlfReading, PeekShowsTheSameObjectUntilItIsReadOrSkipped)
{
    BlfTestWriter writer;
    for (std::uint32_t number = 0; number < 4; ++number)
        addFrame(writer, number);
    ASSERT_TRUE(opens(writer.file()));
    BLF::ObjectHeader header;
    for (int i = 0; i < 3; ++i) {
        ASSERT_TRUE(reader.peek(header));
        EXPECT_EQ(header.timeNs, 0u);
    }
    reader.release(); // nothing has been read
    reader.skip();
    BLF::CanMessage message;
    ASSERT_TRUE(reader.peek(header));
    EXPECT_EQ(header.timeNs, 1'000'000u);
    ASSERT_TRUE(reader.read(message));
    EXPECT_EQ(message.id, 1u);
    ASSERT_TRUE(reader.peek(header)); // lets go of it, too
    EXPECT_EQ(header.timeNs, 2'000'000u);
    ASSERT_TRUE(reader.read(message));
    reader.release();
    reader.release();
    ASSERT_TRUE(reader.peek(header));
    EXPECT_EQ(header.timeNs, 3'000'000u);
    reader.skip();
    for (int i = 0; i < 3; ++i) {
        EXPECT_FALSE(reader.peek(header));
        EXPECT_FALSE(reader.read(message));
        reader.skip();
        reader.release();
    }
}

TEST_F(BlfReading, ACloseReaderHasNothingAndMayBeOpenedAgain)
{
    BLF::ObjectHeader header;
    BLF::CanMessage message;
    EXPECT_FALSE(reader.peek(header));
    EXPECT_FALSE(reader.read(message));
    reader.skip();
    reader.release();
    reader.close();
    for (int i = 0; i < 2; ++i) {
        ASSERT_TRUE(opens(exampleFile()));
        ASSERT_TRUE(reader.peek(header));
        EXPECT_EQ(header.timeNs, 1'234'560'000u);
    }
    reader.close();
    EXPECT_FALSE(reader.peek(header));
}

TEST_F(BlfReading, PulseComesForEachContainer)
{
    constexpr int containers = 40;
    BlfTestWriter writer({.containerSize = 100});
    writer.addRaw(BlfBytes(100 * containers));
    int pulses = 0;
    reader.setPulse([&] { ++pulses; });
    objectsOf(writer);
    EXPECT_GE(pulses, containers);
    reader.setPulse({});
    objectsOf(writer);
}

} // namespace
