// SPDX-License-Identifier: GPL-3.0-or-later
// From a file to records: which objects, and what the log says of the others.
#include "logging/blf/BLFParser.h"

#include "common/Log.h"
#include "tests/logging/blf/BlfSavedText.h"
#include "tests/logging/blf/BlfTestWriter.h"
#include "tests/support/LogCapture.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace BLF;
using namespace tztest;
using namespace Common::LogLevel;

namespace {

constexpr std::uint32_t silentTypes[] = {6, 7, 8, 9, 65, 115, 118, 119};

class BlfParser : public testing::Test
{
protected:
    QString save(BlfTestWriter &log) const
    {
        EXPECT_TRUE(log.save(path()));
        return path();
    }
    QString path() const { return m_folder.filePath(QStringLiteral("log.blf")); }
    bool parse(BlfTestWriter &log) { return m_parser.parseFile(save(log), m_frames); }
    std::vector<std::uint32_t> frameTypes() const
    {
        std::vector<std::uint32_t> types;
        for (const BlfFrame &frame : m_frames)
            types.push_back(frame.frameType);
        return types;
    }
    std::size_t lines(int level) const { return m_log.countContaining(level, ""); }

    QTemporaryDir m_folder;
    LogCapture m_log;
    BLFParser m_parser;
    BlfFrames m_frames;
};

TEST_F(BlfParser, EmptyPathIsAnError)
{
    EXPECT_FALSE(m_parser.parseFile(QString(), m_frames));
    EXPECT_TRUE(m_log.has(error, "File path is empty or file doesn't exist: "));
    EXPECT_EQ(m_log.lines().size(), 1U);
}

TEST_F(BlfParser, MissingFileIsAnError)
{
    EXPECT_FALSE(m_parser.parseFile(path(), m_frames));
    EXPECT_TRUE(m_log.has(error, "File path is empty or file doesn't exist: " + path().toStdString()));
    EXPECT_EQ(m_log.lines().size(), 1U);
}

TEST_F(BlfParser, FileThatIsNoLogIsRefused)
{
    ASSERT_TRUE(saveBytes(path(), BlfBytes(500, 'x')));
    EXPECT_FALSE(m_parser.parseFile(path(), m_frames));
    EXPECT_TRUE(m_log.has(error, "BLCreateFile failed: " + path().toStdString()));
    EXPECT_EQ(lines(info), 0U);

    EXPECT_FALSE(m_parser.parseFile(m_folder.path(), m_frames)) << "a folder";
    EXPECT_TRUE(m_log.has(error, "BLCreateFile failed: " + m_folder.path().toStdString()));
    EXPECT_TRUE(m_frames.empty());
}

TEST_F(BlfParser, NamesBeyondAsciiAreFound)
{
    const QString name = m_folder.filePath(QString::fromUtf8("T\xC3\xBCr \xE2\x82\xAC.blf"));
    ASSERT_TRUE(BlfTestWriter().add(CanMessageBody{}).save(name));
    EXPECT_TRUE(m_parser.parseFile(name, m_frames));
    EXPECT_EQ(m_frames.size(), 1U);
}

TEST_F(BlfParser, LogWithoutObjectsIsFalse)
{
    BlfTestWriter log;
    EXPECT_FALSE(parse(log));
    EXPECT_TRUE(m_log.has(info, "Parsed 0 objects from BLF file"));
    EXPECT_EQ(m_log.lines().size(), 1U);
}

TEST_F(BlfParser, EachHandledTypeBecomesARecordInTheOrderOfTheFile)
{
    BlfTestWriter log({.level = 6, .containerSize = 50});
    log.add(CanMessageBody{})
        .add(CanMessage2Body{.flags = BlfFlags::canRemote, .frameLength = 5, .bitCount = 6})
        .add(CanErrorFrameBody{})
        .add(CanStatisticBody{})
        .add(CanDriverErrorBody{})
        .add(SystemVariableBody{.name = "n", .value = blfValue(std::int32_t{1})})
        .add(CanErrorFrameExtBody{})
        .add(OverrunBody{})
        .add(CanFdMessageBody{})
        .add(CanFdMessage64Body{.data = BlfBytes(64, 1)})
        .add(CanFdErrorFrame64Body{.data = BlfBytes(64, 1)})
        .add(CanSettingChangedBody{});
    EXPECT_TRUE(parse(log));
    EXPECT_EQ(frameTypes(), (std::vector<std::uint32_t>{0, 1, 2, 8, 4, 7, 2, 5, 0, 0, 3, 6}));
    EXPECT_EQ(m_frames[1].frameLength, 5U);
    EXPECT_TRUE(m_log.has(info, "Parsed 12 objects from BLF file"));
    EXPECT_EQ(m_log.lines().size(), 1U);
}

TEST_F(BlfParser, OnlyTheNewerCanMessageHasLengths)
{
    const BlfBytes body = bodyBytes(CanMessage2Body{.frameLength = 239'972, .bitCount = 124});
    BlfTestWriter log;
    log.add(1, body).add(86, body);
    EXPECT_TRUE(parse(log));
    EXPECT_EQ(m_frames[0].frameLength, 0U);
    EXPECT_EQ(m_frames[0].bitCount, 0);
    EXPECT_EQ(m_frames[1].frameLength, 239'972U);
    EXPECT_EQ(m_frames[1].bitCount, 124);
}

TEST_F(BlfParser, OnlySkippedObjectsIsFalseAndSilent)
{
    BlfTestWriter log;
    for (const std::uint32_t type : silentTypes)
        log.add(type, BlfBytes(24, 0));
    EXPECT_FALSE(parse(log));
    EXPECT_TRUE(m_frames.empty());
    EXPECT_TRUE(m_log.has(info, "Parsed 0 objects from BLF file"));
    EXPECT_EQ(m_log.lines().size(), 1U);
}

TEST_F(BlfParser, ObjectsOfOtherTypesAreEachWarnedAboutAndPassedOver)
{
    BlfTestWriter log;
    for (const std::uint32_t type : {3U, 11U, 11U, 128U, 999U})
        log.add(type, BlfBytes(24, 0)).add(CanMessageBody{});
    EXPECT_TRUE(parse(log));
    EXPECT_EQ(m_frames.size(), 5U);
    EXPECT_EQ(m_log.count(warning, "Unhandled object type: 3"), 1U);
    EXPECT_EQ(m_log.count(warning, "Unhandled object type: 11"), 2U);
    EXPECT_EQ(m_log.count(warning, "Unhandled object type: 128"), 1U);
    EXPECT_EQ(m_log.count(warning, "Unhandled object type: 999"), 1U);
    EXPECT_EQ(lines(warning), 5U);
    EXPECT_EQ(lines(error), 0U);
}

TEST_F(BlfParser, OnlyOtherObjectsIsFalse)
{
    BlfTestWriter log;
    log.add(11, BlfBytes(24, 0));
    EXPECT_FALSE(parse(log));
    EXPECT_TRUE(m_log.has(info, "Parsed 0 objects from BLF file"));
}

TEST_F(BlfParser, WarningsOfOneFileAreBounded)
{
    BlfTestWriter log;
    for (int i = 0; i < 3000; ++i)
        log.add(11, BlfBytes(4, 0));
    log.add(CanMessageBody{});
    EXPECT_TRUE(parse(log));
    EXPECT_EQ(m_log.count(warning, "Unhandled object type: 11"), 1000U);
    EXPECT_EQ(m_log.count(warning, "More than 1000 unhandled objects, the others are not logged"), 1U);
    EXPECT_EQ(lines(warning), 1001U);
}

TEST_F(BlfParser, ExactlyAsManyWarningsAsAreLoggedNeedNoLastLine)
{
    BlfTestWriter log;
    for (int i = 0; i < 1000; ++i)
        log.add(11, BlfBytes(4, 0));
    parse(log);
    EXPECT_EQ(lines(warning), 1000U);
    EXPECT_EQ(m_log.count(warning, "Unhandled object type: 11"), 1000U);
}

TEST_F(BlfParser, FailedReadLosesThatObjectAndNothingElse)
{
    BlfTestWriter log;
    log.add(CanMessageBody{.id = 1});
    for (const std::uint32_t type : {1U, 2U, 4U, 31U, 72U, 73U, 86U, 91U, 100U, 101U, 104U, 129U})
        log.add(type, BlfBytes(2, 0)); // too short for each of them
    log.add(SystemVariableBody{.name = "n", .nameLength = 4'000'000'000});
    log.add(CanMessageBody{.id = 2});
    EXPECT_TRUE(parse(log));
    ASSERT_EQ(m_frames.size(), 2U);
    EXPECT_EQ(m_frames[0].id, 1U);
    EXPECT_EQ(m_frames[1].id, 2U);
    EXPECT_TRUE(m_log.has(info, "Parsed 2 objects from BLF file"));
    EXPECT_EQ(lines(warning), 0U) << "they are no unhandled types";
}

TEST_F(BlfParser, OnlyFailedReadsIsFalse)
{
    BlfTestWriter log;
    log.add(1, BlfBytes(2, 0));
    EXPECT_FALSE(parse(log));
    EXPECT_TRUE(m_frames.empty());
}

TEST_F(BlfParser, RecordsAreAppendedToThoseThatAreThere)
{
    BlfTestWriter log;
    log.add(CanMessageBody{.id = 7});
    EXPECT_TRUE(parse(log));
    EXPECT_TRUE(m_parser.parseFile(path(), m_frames));
    ASSERT_EQ(m_frames.size(), 2U);
    EXPECT_EQ(m_log.count(info, "Parsed 1 objects from BLF file"), 2U);
}

TEST_F(BlfParser, BothTimeUnitsBecomeSeconds)
{
    BlfTestWriter log;
    log.add(CanMessageBody{}, {.timeStamp = 123'456, .flags = blfTenMicroseconds})
        .add(CanMessageBody{}, {.timeStamp = 123'456, .flags = blfNanoseconds});
    EXPECT_TRUE(parse(log));
    EXPECT_EQ(m_frames[0].time, 1'234'560'000 * 1e-9);
    EXPECT_EQ(m_frames[1].time, 123'456 * 1e-9);
}

TEST_F(BlfParser, TimeStampWithTheHighBitSetIsALargePositiveTime)
{
    BlfTestWriter log;
    log.add(CanMessageBody{.dlc = 0, .id = 1}, {.timeStamp = 0x8000'0000'0000'0000});
    EXPECT_TRUE(parse(log));
    EXPECT_EQ(m_frames[0].time, 9223372036854775808.0 * 1e-9);
    EXPECT_NE(savedText(blfCsvSaver, {}, m_frames).find("\n9223372036.854776,1,0X001,"), std::string::npos);
    EXPECT_NE(savedText(blfAscSaver, {}, m_frames).find("\n9223372036.854776 1 001 Rx d 0"), std::string::npos);
}

TEST_F(BlfParser, RemoteFrameWithDlcEightHasEmptyDataInBothOutputs)
{
    BlfTestWriter log;
    log.add(CanMessageBody{.flags = BlfFlags::canRemote, .dlc = 8, .id = 0x321, .data = {1, 2, 3, 4, 5, 6, 7, 8}});
    EXPECT_TRUE(parse(log));
    const BlfExportOptions plain{.exportInternalEvents = true, .exportAdditionalInfo = false};
    EXPECT_NE(savedText(blfCsvSaver, plain, m_frames).find("\n0.000000,1,0X321,Rx,RTR,8,,0,1,\n"), std::string::npos);
    EXPECT_NE(savedText(blfAscSaver, plain, m_frames).find("\n0.000000 1 321 Rx d 8\n"), std::string::npos);
}

TEST_F(BlfParser, ErrorFrameCountsButIsInNeitherOutputWithoutInternalEvents)
{
    BlfTestWriter log;
    log.add(CanMessageBody{}).add(CanErrorFrameBody{});
    EXPECT_TRUE(parse(log));
    EXPECT_EQ(m_frames.size(), 2U);
    EXPECT_TRUE(m_log.has(info, "Parsed 2 objects from BLF file"));
    const BlfExportOptions noEvents{.exportInternalEvents = false, .exportAdditionalInfo = true};
    for (const BlfSaver &saver : {blfCsvSaver, blfAscSaver}) {
        EXPECT_EQ(savedText(saver, noEvents, m_frames).find("Error"), std::string::npos) << saver.name;
        EXPECT_NE(savedText(saver, {}, m_frames).find("Error"), std::string::npos) << saver.name;
    }
}

TEST_F(BlfParser, ClassicalAndFdFramesWithAdditionalInfoHaveLinesOfTwoLengths)
{
    BlfTestWriter log;
    log.add(CanMessageBody{.dlc = 1, .id = 1, .data = {0xAB}})
        .add(CanFdMessageBody{.dlc = 1,
                              .id = 2,
                              .frameLength = 99,
                              .arbBitCount = 7,
                              .canFdFlags = 7,
                              .validDataBytes = 1,
                              .data = {0xCD}});
    EXPECT_TRUE(parse(log));
    const std::string csv = savedText(blfCsvSaver, {}, m_frames);
    EXPECT_EQ(csv.substr(csv.find('\n')), "\n0.000000,1,0X001,Rx,Data,1,AB,0,0,\n"
                                          "0.000000,1,0X002,Rx,Data,1,CD,0,0,1,1,1,0,0,99,0,7,0,0,0,0,0,\n");
}

TEST_F(BlfParser, TextsWithLineBreaksOrPlaceholdersKeepToTheirLine)
{
    BlfTestWriter log;
    log.add(SystemVariableBody{.valueType = 3, .name = "%3\n%1", .value = blfValue(std::string_view("a\r\nb"))});
    EXPECT_TRUE(parse(log));
    EXPECT_EQ(m_frames[0].description.toStdString(), "SV: 3 %3 %1 = \"a  b\"");
}

} // namespace
