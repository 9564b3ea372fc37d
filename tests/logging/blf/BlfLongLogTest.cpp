// SPDX-License-Identifier: GPL-3.0-or-later
// Long logs, sound and damaged: time grows with their length, memory does not.
#include "tests/logging/blf/BlfLogFixture.h"
#include "tests/support/ProcessFigures.h"

#include <QFile>

#include <algorithm>
#include <ctime>
#include <functional>

using namespace tztest;

namespace {

// Makes a log of about so many bytes.
using MakeLog = std::function<BlfBytes(std::size_t size)>;

BlfBytes repeated(const BlfBytes &piece, std::size_t size)
{
    BlfBytes bytes;
    bytes.reserve(size + piece.size());
    while (bytes.size() < size)
        bytes.insert(bytes.end(), piece.begin(), piece.end());
    return bytes;
}

BlfBytes logOf(const BlfBytes &stream, std::size_t containerSize, int level = 0)
{
    BlfTestWriter writer({.level = level, .containerSize = containerSize});
    return writer.addRaw(stream).file();
}

struct ShapeCase
{
    const char *name;
    BlfBytes (*make)(std::size_t size);
};

class BlfLongLog : public BlfLogFixture, public testing::WithParamInterface<ShapeCase>
{
protected:
    // Processor time to read the file to its end, the least of some runs.
    double secondsFor(const BlfBytes &file)
    {
        EXPECT_TRUE(saveBytes(path, file));
        double least = 1e9;
        for (int run = 0; run < 5; ++run) {
            const std::clock_t start = std::clock();
            EXPECT_TRUE(reader.open(path));
            for (BLF::ObjectHeader header; reader.peek(header);)
                reader.skip();
            least = std::min(least, static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC);
        }
        return least;
    }
};

// A reader that is quadratic takes 100 times the time; the rest is left to caches that hold the short log alone. How
// near to linear the reader is, the benchmarks tell.
TEST_P(BlfLongLog, OfTenTimesTheLengthTakesTenTimesTheTimeAndNotTheSquare)
{
    constexpr std::size_t size = 400'000;
    constexpr double clockSteps = 0.01; // and fresh memory, which comes page by page
    const double one = secondsFor(GetParam().make(size));
    const double ten = secondsFor(GetParam().make(10 * size));
    EXPECT_LE(ten, 25 * one + clockSteps);
}

INSTANTIATE_TEST_SUITE_P(
    Blf, BlfLongLog,
    testing::Values(
        ShapeCase{"Frames", [](std::size_t size) { return logOf(repeated(frameObject(1), size), 131'072); }},
        ShapeCase{"PackedFrames", [](std::size_t size) { return logOf(repeated(frameObject(1), size), 131'072, 1); }},
        ShapeCase{"FramesInTinyContainers", [](std::size_t size) { return logOf(repeated(frameObject(1), size), 50); }},
        ShapeCase{"OneGreatObjectInTinyContainers",
                  [](std::size_t size) { return logOf(blfObject(160, BlfBytes(size)), 50); }},
        ShapeCase{"FirstLettersOfASignature", [](std::size_t size) { return logOf(BlfBytes(size, 'L'), 131'072); }},
        ShapeCase{"SignaturesAlone",
                  [](std::size_t size) {
                      return logOf(repeated({'L', 'O', 'B', 'J'}, size), 131'072);
                  }},
        ShapeCase{"SignaturesBehindZeros",
                  [](std::size_t size) {
                      BlfBytes bytes(size / 2);
                      const BlfBytes tail = repeated({'L', 'O', 'B', 'J'}, size / 2);
                      bytes.insert(bytes.end(), tail.begin(), tail.end());
                      return logOf(bytes, 0);
                  }},
        ShapeCase{"ObjectsThatReachBeyondTheEnd",
                  [](std::size_t size) {
                      return logOf(repeated(blfObject(160, {}, {.objectSize = 16'000'000, .padding = 0}), size),
                                   131'072);
                  }},
        ShapeCase{"ObjectsThatReachBeyondTheFile",
                  [](std::size_t size) {
                      BlfTestWriter writer;
                      const BlfBytes object = blfObject(160, {}, {.objectSize = 16'000'000, .padding = 0});
                      return writer.addTopLevel(repeated(object, size)).file();
                  }},
        ShapeCase{"ContainersThatReachBeyondTheFile",
                  [](std::size_t size) {
                      BlfTestWriter writer;
                      const BlfBytes container = blfContainer({}, {.level = 6, .objectSize = 0xFFFFFFFF, .padding = 0});
                      return writer.addTopLevel(repeated(container, size)).file();
                  }},
        ShapeCase{"GapsEverywhere",
                  [](std::size_t size) {
                      BlfBytes piece = frameObject(1);
                      piece.insert(piece.end(), 9, 'L');
                      return logOf(repeated(piece, size), 131'072);
                  }},
        ShapeCase{"ObjectsOutsideContainers",
                  [](std::size_t size) {
                      BlfTestWriter writer;
                      return writer.addTopLevel(repeated(frameObject(1), size)).file();
                  }}),
    [](const auto &test) { return std::string(test.param.name); });

class BlfLongLogMemory : public BlfLogFixture
{
};

TEST_F(BlfLongLogMemory, DoesNotGrowWithTheLog)
{
    constexpr std::size_t size = 64 * 1024 * 1024;
    for (const int level : {0, 1}) {
        ASSERT_TRUE(saveBytes(path, logOf(repeated(frameObject(1), size), 131'072, level)));
        const double before = ProcessFigures::of().residentMiB;
        double most = before;
        std::size_t pulses = 0;
        reader.setPulse([&] {
            if (++pulses % 64 == 0)
                most = std::max(most, ProcessFigures::of().residentMiB);
        });
        ASSERT_TRUE(reader.open(path));
        std::size_t objects = 0;
        for (BLF::ObjectHeader header; reader.peek(header); ++objects)
            reader.skip();
        EXPECT_GE(objects, size / 56);
        EXPECT_LT(most - before, 8.0);
    }
}

// Most of the file is a hole, as the padding of its first container.
TEST_F(BlfLongLogMemory, PositionsBeyondFourGiBAreRight)
{
    constexpr std::uint32_t greatest = 4'294'967'292;
    constexpr qint64 second = 144 + qint64{greatest};
    BlfTestWriter writer;
    writer.addTopLevel(blfContainer(frameObject(0), {.level = 6, .objectSize = greatest, .padding = 0}));
    ASSERT_TRUE(saveBytes(path, writer.file()));
    BlfBytes tail = blfContainer(frameObject(1));
    const std::size_t junk = tail.size();
    tail.insert(tail.end(), 12, 'L');
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadWrite) && file.seek(second));
    ASSERT_EQ(file.write(reinterpret_cast<const char *>(tail.data()), static_cast<qint64>(tail.size())),
              static_cast<qint64>(tail.size()));
    file.close();
    EXPECT_EQ(objectsOfFile(), seenFrames(2));
    EXPECT_THAT(errors(), testing::ElementsAre(fmt::format("passed over 12 bytes at byte {} that are no object",
                                                           static_cast<std::size_t>(second) + junk)));
}

// A window lives also while a file gives no object.
TEST_F(BlfLongLogMemory, PulsesComeWhileNothingDoes)
{
    constexpr std::size_t size = 20'000'000;
    constexpr std::size_t block = 256 * 1024;
    const BlfBytes emptyBlock{0x00, 0x00, 0x00, 0xFF, 0xFF};
    BlfBytes nothing{0x78, 0x9C};
    BlfByteWriter(nothing).raw(repeated(emptyBlock, size));
    const auto packed = [&](std::uint32_t stated) {
        BlfTestWriter writer;
        return writer.addTopLevel(blfContainer(nothing, {.method = std::uint16_t{2}, .uncompressedSize = stated}))
            .file();
    };
    const auto plain = [](const BlfBytes &bytes) {
        BlfTestWriter writer;
        return writer.addTopLevel(bytes).file();
    };
    for (const BlfBytes &file :
         {packed(1000), packed(0), plain(repeated(blfContainer({}), size)), plain(BlfBytes(size, 'L'))}) {
        std::size_t pulses = 0;
        reader.setPulse([&] { ++pulses; });
        EXPECT_TRUE(objectsOf(file).empty());
        EXPECT_GE(pulses, size / block);
    }
}

} // namespace
