// SPDX-License-Identifier: GPL-3.0-or-later
// Objects that are damaged or cut: what is sound is read, and error lines tell what was not.
#include "tests/logging/blf/BlfExample.h"
#include "tests/logging/blf/BlfLogFixture.h"

#include <QFile>

#include <algorithm>

using namespace tztest;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr std::size_t frameSize = 56;
constexpr std::size_t fileHeaderSize = 144;
constexpr std::size_t containerHeaderSize = 32;

// What is told of the end of a stream that is cut after so many bytes of frames.
std::vector<std::string> linesOfCutFrame(std::size_t stream)
{
    constexpr std::size_t baseHeaderSize = 16;
    const std::size_t rest = stream % frameSize;
    if (rest == 0)
        return {};
    if (rest < baseHeaderSize)
        return {fmt::format("passed over {} bytes at byte {} of the unpacked data that are no object", rest,
                            stream - rest)};
    return {fmt::format("the object at byte {} of the unpacked data is cut: {} of 56 bytes are there", stream - rest,
                        rest)};
}

using BlfDamage = BlfLogFixture;

TEST_F(BlfDamage, AFileCutAnywhereGivesTheFramesThatAreWhole)
{
    constexpr std::size_t containerSize = 100;
    constexpr std::uint32_t frames = 6;
    BlfTestWriter writer({.containerSize = containerSize});
    for (std::uint32_t number = 0; number < frames; ++number)
        addFrame(writer, number);
    const BlfBytes file = writer.file();
    for (std::size_t length = fileHeaderSize; length <= file.size(); ++length) {
        log.clear();
        const std::size_t containers = (length - fileHeaderSize) / (containerHeaderSize + containerSize);
        const std::size_t rest = (length - fileHeaderSize) % (containerHeaderSize + containerSize);
        const std::size_t stream =
            containers * containerSize + (rest > containerHeaderSize ? rest - containerHeaderSize : 0);
        const BlfBytes cut(file.begin(), file.begin() + static_cast<std::ptrdiff_t>(length));
        ASSERT_EQ(objectsOf(cut), seenFrames(static_cast<std::uint32_t>(stream / frameSize))) << length;
        std::vector<std::string> expected;
        if (rest >= 16 && length < file.size()) {
            const std::size_t size = std::min(containerHeaderSize + containerSize, file.size() - (length - rest));
            expected = {
                fmt::format("the container at byte {} is cut: {} of {} bytes are there", length - rest, rest, size)};
        } else {
            expected = linesOfCutFrame(stream);
            if (rest > 0 && length < file.size())
                expected.insert(expected.begin(),
                                fmt::format("passed over {} bytes at byte {} that are no object", rest, length - rest));
        }
        ASSERT_EQ(errors(), expected) << length;
    }
}

TEST_F(BlfDamage, APackedFileCutAnywhereGivesTheFramesThatCanBeUnpacked)
{
    constexpr std::size_t containers = 3;
    constexpr std::uint32_t framesOfEach = 5;
    BlfTestWriter writer({.level = 6, .containerSize = framesOfEach * frameSize});
    std::vector<std::size_t> borders{fileHeaderSize};
    for (std::uint32_t number = 0; number < containers * framesOfEach; ++number) {
        addFrame(writer, number);
        if (const std::size_t size = writer.file().size(); number % framesOfEach == framesOfEach - 1)
            borders.push_back(size);
    }
    const BlfBytes file = writer.file();
    const SeenObjects all = seenFrames(containers * framesOfEach);
    std::size_t framesBefore = 0;
    for (std::size_t length = fileHeaderSize; length <= file.size(); ++length) {
        log.clear();
        const SeenObjects objects =
            objectsOf(BlfBytes(file.begin(), file.begin() + static_cast<std::ptrdiff_t>(length)));
        const auto whole = static_cast<std::size_t>(std::ranges::upper_bound(borders, length) - borders.begin()) - 1;
        ASSERT_GE(objects.size(), std::max(framesBefore, whole * framesOfEach)) << length;
        ASSERT_TRUE(std::equal(objects.begin(), objects.end(), all.begin())) << length;
        ASSERT_LE(errors().size(), 1u) << length;
        framesBefore = objects.size();
    }
    EXPECT_EQ(framesBefore, all.size());
}

TEST_F(BlfDamage, ACutContainerIsTold)
{
    BlfTestWriter writer({.level = 6});
    for (std::uint32_t number = 0; number < 100; ++number)
        addFrame(writer, number);
    BlfBytes file = writer.file();
    const std::size_t whole = file[fileHeaderSize + 8] + 256u * file[fileHeaderSize + 9];
    file.resize(fileHeaderSize + whole - 7);
    const SeenObjects objects = objectsOf(file);
    EXPECT_GE(objects.size(), 95u);
    EXPECT_THAT(errors(), ElementsAre(fmt::format("the container at byte 144 is cut: {} of {} bytes are there",
                                                  whole - 7, whole)));
}

TEST_F(BlfDamage, ACutObjectIsTold)
{
    BlfTestWriter writer;
    addFrame(writer, 0);
    const BlfBytes cut = frameObject(1);
    writer.addRaw(std::span(cut).first(46));
    EXPECT_EQ(objectsOf(writer), seenFrames(1));
    EXPECT_THAT(errors(), ElementsAre("the object at byte 56 of the unpacked data is cut: 46 of 56 bytes are there"));
}

TEST_F(BlfDamage, ACutObjectOutsideContainersIsTold)
{
    BlfTestWriter writer;
    const BlfBytes cut = frameObject(1);
    writer.addTopLevel(frameObject(0)).addTopLevel(std::span(cut).first(46));
    EXPECT_EQ(objectsOf(writer), seenFrames(1));
    EXPECT_THAT(errors(), ElementsAre("the object at byte 200 is cut: 46 of 56 bytes are there"));
}

TEST_F(BlfDamage, EveryByteOfAFileMayBeWrong)
{
    for (const int level : {0, 6}) {
        BlfTestWriter writer({.level = level, .containerSize = 100});
        writer.addRaw(exampleStream());
        const BlfBytes file = writer.file();
        for (std::size_t index = 0; index < file.size(); ++index) {
            for (const int change : {0x01, 0xFE}) {
                BlfBytes damaged = file;
                damaged[index] = static_cast<std::uint8_t>(damaged[index] ^ change);
                log.clear();
                ASSERT_TRUE(saveBytes(path, damaged));
                std::size_t objects = 0;
                if (reader.open(path)) {
                    for (BLF::ObjectHeader header; reader.peek(header); ++objects) {
                        BLF::SystemVariable variable; // refuses what is too short for one
                        reader.read(variable);
                    }
                }
                ASSERT_LE(objects, 3u);
                ASSERT_LE(errors().size(), 7u);
            }
        }
    }
}

TEST_F(BlfDamage, AWrongSignatureCostsItsObjectAlone)
{
    for (std::size_t index = 0; index < 4; ++index) {
        BlfBytes second = frameObject(1);
        ++second[index];
        EXPECT_EQ(objectsWithSecond(second), firstAndThird);
        EXPECT_THAT(errors(), ElementsAre("passed over 56 bytes at byte 56 of the unpacked data that are no object"));
    }
}

TEST_F(BlfDamage, BehindDamageOnlyWhatLooksLikeAnObjectIsTaken)
{
    const BlfBytes junk(9, 'L');
    for (const BlfHeader &header : {BlfHeader{.version = 0}, BlfHeader{.version = 4}, BlfHeader{.version = 0xFFFF}}) {
        BlfBytes second = junk;
        appendObject(second, 86, bodyBytes(numberedFrame(1)), header);
        EXPECT_EQ(objectsWithSecond(second), firstAndThird);
        EXPECT_THAT(errors(), ElementsAre("passed over 65 bytes at byte 56 of the unpacked data that are no object"));
    }
    BlfBytes second = junk;
    appendObject(second, 1000, bodyBytes(numberedFrame(1)));
    EXPECT_EQ(objectsWithSecond(second), firstAndThird);
    second = junk;
    appendObject(second, 999, bodyBytes(numberedFrame(1)));
    EXPECT_EQ(objectsWithSecond(second), (SeenObjects{seenFrame(0), {.type = 999}, seenFrame(2)}));
    EXPECT_THAT(errors(), ElementsAre("passed over 9 bytes at byte 56 of the unpacked data that are no object"));
}

// Zeros are no damage, however many.
TEST_F(BlfDamage, BehindZerosEveryObjectIsTaken)
{
    BlfBytes second(1'000);
    appendObject(second, 86, bodyBytes(numberedFrame(1)), {.timeStamp = 1'000'000, .version = 0});
    EXPECT_EQ(objectsWithSecond(second), seenFrames(3));
    second.assign(1'000, 0);
    appendObject(second, 1000, bodyBytes(numberedFrame(1)));
    EXPECT_EQ(objectsWithSecond(second), (SeenObjects{seenFrame(0), {.type = 1000}, seenFrame(2)}));
    EXPECT_THAT(errors(), IsEmpty());
}

TEST_F(BlfDamage, TheSearchBehindDamageCrossesContainers)
{
    for (std::size_t containerSize = 1; containerSize < 80; ++containerSize) {
        log.clear();
        BlfTestWriter writer({.containerSize = containerSize});
        addFrame(writer, 0);
        writer.addRaw(BlfBytes(23, 'L'));
        addFrame(writer, 1);
        ASSERT_EQ(objectsOf(writer), seenFrames(2)) << containerSize;
        ASSERT_THAT(errors(), ElementsAre("passed over 23 bytes at byte 56 of the unpacked data that are no object"));
    }
}

TEST_F(BlfDamage, JunkAtTheEndIsTold)
{
    BlfTestWriter writer;
    addFrame(writer, 0);
    writer.addRaw(BlfBytes(12, 'L')).addTopLevel(BlfBytes(5, 'O'));
    EXPECT_EQ(objectsOf(writer), seenFrames(1));
    EXPECT_THAT(errors(),
                testing::UnorderedElementsAre("passed over 12 bytes at byte 56 of the unpacked data that are no object",
                                              "passed over 5 bytes at byte 244 that are no object"));
}

TEST_F(BlfDamage, ALogOfJunkHasNoObjects)
{
    BlfTestWriter writer;
    writer.addTopLevel(BlfBytes(600'000, 'L'));
    EXPECT_THAT(objectsOf(writer), IsEmpty());
    EXPECT_THAT(errors(), ElementsAre("passed over 600000 bytes at byte 144 that are no object"));
}

// The frame is not put together from bytes that do not belong together.
TEST_F(BlfDamage, WhatStraddlesDamageBetweenContainersIsGivenUp)
{
    const BlfBytes straddler = frameObject(1);
    BlfTestWriter writer;
    addFrame(writer, 0);
    writer.addRaw(std::span(straddler).first(30));
    writer.addTopLevel(BlfBytes(50, 'x'));
    writer.addRaw(std::span(straddler).subspan(30));
    addFrame(writer, 2);
    EXPECT_EQ(objectsOf(writer), firstAndThird);
    EXPECT_THAT(errors(), ElementsAre("passed over 52 bytes at byte 262 that are no object")) << "with the padding";
}

TEST_F(BlfDamage, ARefusedObjectIsToldAndTheNextIsRead)
{
    BlfTestWriter writer;
    writer.add(86, BlfBytes(15)).addTopLevel(blfObject(2, BlfBytes(3)));
    addFrame(writer, 1);
    ASSERT_TRUE(opens(writer.file()));
    BLF::ObjectHeader header;
    BLF::CanMessage message;
    ASSERT_TRUE(reader.peek(header));
    EXPECT_FALSE(reader.read(message));
    ASSERT_TRUE(reader.peek(header));
    BLF::CanErrorFrame error;
    EXPECT_FALSE(reader.read(error));
    ASSERT_TRUE(reader.peek(header));
    EXPECT_TRUE(reader.read(message));
    EXPECT_EQ(message.id, 1u);
    EXPECT_FALSE(reader.peek(header));
    EXPECT_THAT(errors(), ElementsAre("refused the object of type 86 with 47 bytes at byte 0 of the unpacked data",
                                      "refused the object of type 2 with 35 bytes at byte 228 of the file"));
}

TEST_F(BlfDamage, ErrorLinesAreBounded)
{
    constexpr std::uint32_t frames = 1000;
    BlfTestWriter writer;
    for (std::uint32_t number = 0; number < frames; ++number) {
        addFrame(writer, number);
        writer.addRaw(BlfBytes(9, 'L'));
    }
    EXPECT_EQ(objectsOf(writer), seenFrames(frames));
    const std::vector<std::string> lines = errors();
    ASSERT_EQ(lines.size(), 101u);
    EXPECT_EQ(lines[99], "passed over 9 bytes at byte 6491 of the unpacked data that are no object");
    EXPECT_EQ(lines.back(), "900 more errors");
}

// No other line: it was not the containers' fault.
TEST_F(BlfDamage, AFileThatShrinksMeanwhileIsReadAsFarAsItGoes)
{
    constexpr std::uint32_t frames = 60'000;
    constexpr std::size_t left = 400'000;
    for (const int level : {0, 1}) {
        log.clear();
        BlfTestWriter writer({.level = level});
        for (std::uint32_t number = 0; number < frames; ++number) {
            CanMessage2Body frame = numberedFrame(number);
            for (std::uint8_t &byte : frame.data) // so that they do not pack well
                byte = static_cast<std::uint8_t>((number * 2'654'435'761u) >> (&byte - frame.data.data()));
            writer.add(frame);
        }
        ASSERT_TRUE(opens(writer.file()));
        ASSERT_GT(writer.fileSize(), left + 100'000);
        ASSERT_TRUE(QFile::resize(path, left));
        std::uint32_t seen = 0;
        BLF::CanMessage frame;
        for (BLF::ObjectHeader header; reader.peek(header); ++seen) {
            ASSERT_TRUE(reader.read(frame));
            ASSERT_EQ(frame.id, seen);
        }
        EXPECT_GT(seen, level == 0 ? 7'000u : 10'000u);
        EXPECT_LT(seen, level == 0 ? 7'200u : 50'000u);
        EXPECT_THAT(errors(), ElementsAre("cannot be read beyond byte 400000: the file has become shorter"));
    }
}

} // namespace
