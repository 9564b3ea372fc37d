// SPDX-License-Identifier: GPL-3.0-or-later
// The tests' own writer against bytes that were put together by hand, so that reader and writer cannot agree on a
// mistake.
#include "tests/logging/blf/BlfTestWriter.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include <QByteArray>

#include <string>

namespace tztest {

namespace {

std::string hexOf(std::span<const std::uint8_t> bytes)
{
    return QByteArray(reinterpret_cast<const char *>(bytes.data()), static_cast<int>(bytes.size()))
        .toHex()
        .toStdString();
}

std::string hexOf(const BlfBytes &bytes, std::size_t from, std::size_t length)
{
    return hexOf(std::span(bytes).subspan(from, length));
}

constexpr std::size_t fileHeaderLength = 144;

// A whole log: times in both units, an object of odd size and its padding, one stored container.
constexpr const char *wholeLog = "4c4f474790000000d41a3e0000000000"
                                 "74010000000000007201000000000000"
                                 "0300000000000000e807030002000500"
                                 "0e001e000f00fa00e807030002000500"
                                 "0e001e001100fa000000000000000000"
                                 "00000000000000000000000000000000"
                                 "00000000000000000000000000000000"
                                 "00000000000000000000000000000000"
                                 "00000000000000000000000000000000"
                                 "4c4f424a10000100e20000000a000000"
                                 "0000000000000000c200000000000000"
                                 "4c4f424a200001003800000056000000"
                                 "010000000000000040e2010000000000"
                                 "0200010310f1da981122330000000000"
                                 "e0160400860000004c4f424a20000100"
                                 "51000000480000000200000000000000"
                                 "002f6859000000000200000000000000"
                                 "00000000000000000d00000004000000"
                                 "00000000000000003a3a42656e63683a"
                                 "3a4d6f6465f9ffffff004c4f424a2000"
                                 "01003800000056000000010000000000"
                                 "0000400d0300000000000200010310f1"
                                 "da981122330000000000e01604008600"
                                 "00000000";

BlfTestWriter wholeLogWriter()
{
    BlfTestWriter::Options options;
    options.header.applicationId = 0;
    options.header.compressionLevel = 0;
    options.header.applicationMajor = 0;
    options.header.applicationMinor = 0;
    options.header.applicationBuild = 0;
    const CanMessage2Body message{.channel = 2,
                                  .flags = BlfFlags::canTx,
                                  .dlc = 3,
                                  .id = 0x98DAF110,
                                  .data = {0x11, 0x22, 0x33},
                                  .frameLength = 268'000,
                                  .bitCount = 134};
    BlfTestWriter log(options);
    log.add(message, {.timeStamp = 123'456, .flags = blfTenMicroseconds});
    log.add(SystemVariableBody{.name = "::Bench::Mode", .value = blfValue(-7)}, {.timeStamp = 1'500'000'000});
    log.add(message, {.timeStamp = 200'000, .flags = blfTenMicroseconds});
    return log;
}

} // namespace

TEST(BlfTestWriter, MakesAWholeLogByteForByte)
{
    EXPECT_EQ(hexOf(wholeLogWriter().file()), wholeLog);
}

TEST(BlfTestWriter, CutsContainersWithinObjects)
{
    BlfTestWriter::Options options;
    options.containerSize = 50;
    BlfTestWriter log(options);
    const BlfBytes object = blfObject(CanMessageBody{}, {});
    log.addRaw(object).addRaw(object).addRaw(object);
    const BlfBytes file = log.file();
    // 144 bytes in containers of 50, 50 and 44, each after 32 bytes of its own and before 2, 2 and 0 of padding
    ASSERT_EQ(file.size(), fileHeaderLength + 3 * 32 + 144 + 2 * 2);
    EXPECT_EQ(hexOf(file, fileHeaderLength + 32 + 48, 6), "4c4f"
                                                          "0000"
                                                          "4c4f");
    EXPECT_EQ(hexOf(file, fileHeaderLength + 24, 4), "32000000");
    EXPECT_EQ(hexOf(file, fileHeaderLength + 2 * 84 + 24, 4), "2c000000");
}

TEST(BlfTestWriter, DeflatesContainers)
{
    const BlfBytes stream(10'000, 0x5A);
    const BlfBytes container = blfContainer(stream, {.level = 6});
    EXPECT_EQ(hexOf(container, 16, 2), "0200");
    EXPECT_EQ(hexOf(container, 24, 4), "10270000");
    BlfBytes inflated(stream.size());
    uLongf length = inflated.size();
    ASSERT_EQ(uncompress(inflated.data(), &length, container.data() + 32, container.size() - 32), Z_OK);
    EXPECT_EQ(inflated, stream);
}

TEST(BlfTestWriter, MakesHeadersOfAllVersions)
{
    const BlfBytes body(8);
    const BlfHeader second{.timeStamp = 0x1122334455667788, .version = 2, .bits16 = 1, .originalTimeStamp = 0x99};
    EXPECT_EQ(hexOf(blfObject(2, body, second)), "4c4f424a28000200"
                                                 "3000000002000000"
                                                 "0200000001000000"
                                                 "8877665544332211"
                                                 "9900000000000000"
                                                 "0000000000000000");
    const BlfBytes third = blfObject(2, body, {.version = 3, .objectVersion = 1, .bits16 = 8});
    EXPECT_EQ(hexOf(third, 4, 8), "2000030028000000");
    EXPECT_EQ(hexOf(third, 20, 4), "08000100");
}

TEST(BlfTestWriter, SaysAnySizes)
{
    const BlfBytes object = blfObject(CanErrorFrameBody{}, {.headerSize = 7, .objectSize = 0, .padding = 5});
    ASSERT_EQ(object.size(), 32U + 8U + 5U);
    EXPECT_EQ(hexOf(object, 4, 2), "0700");
    EXPECT_EQ(hexOf(object, 8, 4), "00000000");
    const BlfBytes container = blfContainer(object, {.uncompressedSize = 0xFFFFFFFF, .objectSize = 0x12});
    EXPECT_EQ(hexOf(container, 8, 4), "12000000");
    EXPECT_EQ(hexOf(container, 24, 4), "ffffffff");
}

TEST(BlfTestWriter, PutsTheExtensionBehindTheStoredBytes)
{
    const FdExtension extension{0x01020304, 0x05060708};
    const BlfBytes message = blfObject(CanFdMessage64Body{.data = BlfBytes(8, 0xAB), .extension = extension});
    ASSERT_EQ(message.size(), 88U);
    EXPECT_EQ(message[32 + 35], 80);
    EXPECT_EQ(hexOf(message, 80, 8), "0403020108070605");

    const BlfBytes error = blfObject(CanFdErrorFrame64Body{.data = BlfBytes(64, 0xAB), .extension = extension});
    ASSERT_EQ(error.size(), 152U);
    EXPECT_EQ(error[32 + 10], 140);
    EXPECT_EQ(hexOf(error, 140, 12), "040302010807060500000000");
}

TEST(BlfTestWriter, BodiesHaveTheirSizes)
{
    EXPECT_EQ(bodyBytes(CanMessageBody{}).size(), 16U);
    EXPECT_EQ(bodyBytes(CanMessage2Body{}).size(), 24U);
    EXPECT_EQ(bodyBytes(CanErrorFrameBody{}).size(), 8U);
    EXPECT_EQ(bodyBytes(CanStatisticBody{}).size(), 32U);
    EXPECT_EQ(bodyBytes(CanDriverErrorBody{}).size(), 8U);
    EXPECT_EQ(bodyBytes(SystemVariableBody{}).size(), 32U);
    EXPECT_EQ(bodyBytes(CanErrorFrameExtBody{}).size(), 32U);
    EXPECT_EQ(bodyBytes(OverrunBody{}).size(), 8U);
    EXPECT_EQ(bodyBytes(CanFdMessageBody{}).size(), 88U);
    EXPECT_EQ(bodyBytes(CanFdMessage64Body{}).size(), 40U);
    EXPECT_EQ(bodyBytes(CanFdErrorFrame64Body{}).size(), 44U);
    EXPECT_EQ(bodyBytes(CanSettingChangedBody{}).size(), 16U);
    EXPECT_EQ(bodyBytes(CanSettingChangedBody{.packed = true}).size(), 11U);
}

} // namespace tztest
