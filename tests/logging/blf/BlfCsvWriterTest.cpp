// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/logging/blf/BlfSavedText.h"

#include <string>

using namespace BLF;
using namespace tztest;

namespace {

const std::string shortHeader = "Time,Channel,ID,Dir,FrameType,DLC,Data,Ext,RTR,Description\n";
const std::string longHeader = "Time,Channel,ID,Dir,FrameType,DLC,Data,Ext,RTR,FD,BRS,ESI,WU,NERR,FrameLength,"
                               "BitCount,ArbBitCount,ArbBitrate,DataBitrate,BRS_Offset,CRC_Del_Offset,CRC,"
                               "Description\n";

// The lines behind the short header, which is checked.
std::string csvLines(const BlfExportOptions &options, const BlfFrames &frames)
{
    const std::string text = savedText(blfCsvSaver, options, frames);
    EXPECT_EQ(text.substr(0, shortHeader.size()), shortHeader);
    return text.substr(std::min(text.size(), shortHeader.size()));
}

TEST(BlfCsvWriter, ClassicFrameIsTheSameWithAndWithoutAdditionalInfo)
{
    BlfFrame frame = blfDataRecord(1.234567);
    frame.frameLength = 1;
    frame.bitCount = 2;
    for (const auto &options : {blfFramesAlone, blfWithEvents, blfWithInfo, blfWithAll})
        EXPECT_EQ(csvLines(options, {frame}), "1.234567,1,0X123,Rx,Data,1,AB,0,0,\n");
}

TEST(BlfCsvWriter, ExtendedIdsHaveEightDigitsAndStandardIdsThree)
{
    BlfFrame frame = blfDataRecord();
    frame.id = 0xa;
    EXPECT_EQ(csvLines(blfFramesAlone, {frame}), "1.000000,1,0X00A,Rx,Data,1,AB,0,0,\n");
    frame.isExtended = true;
    EXPECT_EQ(csvLines(blfFramesAlone, {frame}), "1.000000,1,0X0000000A,Rx,Data,1,AB,1,0,\n");
    frame.id = 0x1abcdef0;
    EXPECT_EQ(csvLines(blfFramesAlone, {frame}), "1.000000,1,0X1ABCDEF0,Rx,Data,1,AB,1,0,\n");
    frame.isExtended = false;
    EXPECT_EQ(csvLines(blfFramesAlone, {frame}), "1.000000,1,0X1ABCDEF0,Rx,Data,1,AB,0,0,\n") << "padded, never cut";
}

TEST(BlfCsvWriter, RemoteFrameWithDlcEightHasEmptyData)
{
    EXPECT_EQ(csvLines(blfWithAll, {blfRemoteRecord(2)}), "2.000000,1,0X123,Rx,RTR,8,,0,1,\n");
}

TEST(BlfCsvWriter, DataIsUpperCaseAndEmptyWhereThereIsNone)
{
    BlfFrame frame = blfDataRecord();
    frame.dlc = 8;
    frame.data = QByteArray::fromHex("0123456789abcdef");
    EXPECT_EQ(csvLines(blfFramesAlone, {frame}), "1.000000,1,0X123,Rx,Data,8,01 23 45 67 89 AB CD EF,0,0,\n");
    frame.dlc = 0;
    frame.data.clear();
    EXPECT_EQ(csvLines(blfFramesAlone, {frame}), "1.000000,1,0X123,Rx,Data,0,,0,0,\n");
}

TEST(BlfCsvWriter, FieldsAreWrittenAsTheyAre)
{
    BlfFrame frame = blfDataRecord();
    frame.channel = 4'294'967'295;
    frame.dlc = 255;
    frame.dir = QString::fromUtf8("\xE2\x86\x92,\"");
    frame.description = QString::fromUtf8("a,\"b\" \xC3\xBC");
    EXPECT_EQ(csvLines(blfFramesAlone, {frame}),
              "1.000000,4294967295,0X123,\xE2\x86\x92,\",Data,255,AB,0,0,a,\"b\" \xC3\xBC\n");
}

TEST(BlfCsvWriter, FdFrameWithoutAdditionalInfoHasOneFieldMore)
{
    EXPECT_EQ(csvLines(blfFramesAlone, {blfFdRecord()}),
              "1.000000,2,0X18DAF110,Tx,Data,9,00 11 22 33 44 55 66 77 88 99 AA BB,1,0,1,\n");
}

TEST(BlfCsvWriter, FdFrameWithAdditionalInfoHasAllFields)
{
    EXPECT_EQ(savedText(blfCsvSaver, blfWithInfo, {blfFdRecord()}),
              longHeader + "1.000000,2,0X18DAF110,Tx,Data,9,00 11 22 33 44 55 66 77 88 99 AA BB,1,0,"
                           "1,1,0,1,0,268000,134,29,1179648592,1260912976,1001,2002,2147501637,\n");
    BlfFrame other = blfFdRecord();
    other.isBrs = false;
    other.isEsi = true;
    other.isWakeUp = false;
    other.isNerr = true;
    other.isRtr = true;
    other.frameType = FrameType::remote;
    other.data.clear();
    EXPECT_EQ(savedText(blfCsvSaver, blfWithInfo, {other}),
              longHeader + "1.000000,2,0X18DAF110,Tx,RTR,9,,1,1,"
                           "1,0,1,0,1,268000,134,29,1179648592,1260912976,1001,2002,2147501637,\n");
}

TEST(BlfCsvWriter, AllFieldsAtTheirGreatest)
{
    BlfFrame frame = blfGreatestRecord();
    frame.isEsi = frame.isNerr = frame.isRtr = true;
    std::string data = "FF";
    for (int i = 1; i < 64; ++i)
        data += " FF";
    EXPECT_EQ(savedText(blfCsvSaver, blfWithAll, {frame}),
              longHeader + QString::number(frame.time, 'f', 6).toStdString() + ",4294967295,0XFFFFFFFF,Tx,Data,255," +
                  data +
                  ",1,1,1,1,1,1,1,4294967295,65535,65535,4294967295,4294967295,4294967295,4294967295,4294967295,\n");
}

TEST(BlfCsvWriter, ClassicalAndFdFramesWithAdditionalInfoHaveLinesOfTwoLengths)
{
    EXPECT_EQ(savedText(blfCsvSaver, blfWithInfo, {blfDataRecord(1), blfFdRecord(2), blfRemoteRecord(3)}),
              longHeader + "1.000000,1,0X123,Rx,Data,1,AB,0,0,\n"
                           "2.000000,2,0X18DAF110,Tx,Data,9,00 11 22 33 44 55 66 77 88 99 AA BB,1,0,"
                           "1,1,0,1,0,268000,134,29,1179648592,1260912976,1001,2002,2147501637,\n"
                           "3.000000,1,0X123,Rx,RTR,8,,0,1,\n");
}

TEST(BlfCsvWriter, HeaderIsShortWithoutFdFramesOrWithoutAdditionalInfo)
{
    EXPECT_EQ(savedText(blfCsvSaver, blfWithInfo, {blfEventRecord(FrameType::error, {})}), shortHeader);
    EXPECT_EQ(savedText(blfCsvSaver, blfWithEvents, {blfFdRecord()}).substr(0, shortHeader.size()), shortHeader);
    EXPECT_EQ(savedText(blfCsvSaver, blfWithAll, {blfDataRecord()}).substr(0, shortHeader.size()), shortHeader);
}

TEST(BlfCsvWriter, EachTypeOfEventHasItsText)
{
    EXPECT_EQ(csvLines(blfWithEvents, blfEventRecords()), "1.000000,,,,Error,,,,,a\n"
                                                          "1.000000,,,,FD_Error,,,,,b\n"
                                                          "1.000000,,,,Driver_Error,,,,,c\n"
                                                          "1.000000,,,,Overload,,,,,d\n"
                                                          "1.000000,,,,Setting,,,,,e\n"
                                                          "1.000000,,,,SysVar,,,,,f\n"
                                                          "1.000000,,,,Statistic,,,,,g\n"
                                                          "1.000000,,,,Unknown,,,,,h\n");
}

TEST(BlfCsvWriter, EventsHaveThirteenFieldsMoreWithAdditionalInfo)
{
    const BlfFrame event = blfEventRecord(FrameType::error, QStringLiteral("ErrorFrame"), 0.5);
    EXPECT_EQ(csvLines(blfWithAll, {event}), "0.500000,,,,Error,,,,,,,,,,,,,,,,,,ErrorFrame\n");
    EXPECT_EQ(savedText(blfCsvSaver, blfWithAll, {blfFdRecord(), event}).substr(longHeader.size()),
              "1.000000,2,0X18DAF110,Tx,Data,9,00 11 22 33 44 55 66 77 88 99 AA BB,1,0,"
              "1,1,0,1,0,268000,134,29,1179648592,1260912976,1001,2002,2147501637,\n"
              "0.500000,,,,Error,,,,,,,,,,,,,,,,,,ErrorFrame\n");
}

} // namespace
