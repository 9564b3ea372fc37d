// SPDX-License-Identifier: GPL-3.0-or-later
// Public BLF logs against what an independent reader found in them. Ours differs on purpose in one respect: of a gap of
// padding or zeroes between objects, of which the other warns, it says nothing.
#include "common/Log.h"
#include "logging/blf/BLFParser.h"
#include "logging/blf/BlfAscWriter.h"
#include "logging/blf/BlfCsvWriter.h"
#include "logging/blf/BlfReader.h"
#include "tests/logging/blf/BlfExpectation.h"
#include "tests/logging/blf/BlfFieldCompare.h"
#include "tests/logging/blf/BlfGolden.h"
#include "tests/support/LogCapture.h"
#include "tests/support/TempWorkDir.h"

#include <QFileInfo>

#include <algorithm>
#include <map>
#include <set>

namespace tztest {

namespace LogLevel = Common::LogLevel;

namespace {

const QString csvName = QStringLiteral("out.csv");
const QString ascName = QStringLiteral("out.asc");

/// Objects that are passed over without a record and without a word.
const std::set<std::uint32_t> silentTypes{6, 7, 8, 9, 65, 115, 118, 119};

QStringList linesOf(const QString &path)
{
    QStringList lines = QString::fromUtf8(tzcorpus::readBytes(path)).split(u'\n');
    EXPECT_EQ(lines.takeLast(), QString()) << "the last line has no end";
    return lines;
}

void expectSameLines(const QStringList &expected, const QStringList &actual)
{
    ASSERT_EQ(expected.size(), actual.size());
    for (int at = 0; at < expected.size(); ++at)
        ASSERT_EQ(expected[at].toStdString(), actual[at].toStdString()) << "line " << at + 1;
}

void expectSameFrame(const BLF::BlfFrame &expected, const BLF::BlfFrame &actual)
{
    EXPECT_EQ(expected.id, actual.id);
    EXPECT_EQ(expected.dlc, actual.dlc);
    EXPECT_EQ(expected.data.toHex(), actual.data.toHex());
    EXPECT_EQ(expected.isFd, actual.isFd);
    EXPECT_EQ(expected.isExtended, actual.isExtended);
    EXPECT_EQ(expected.isBrs, actual.isBrs);
    EXPECT_EQ(expected.isEsi, actual.isEsi);
    EXPECT_EQ(expected.isRtr, actual.isRtr);
    EXPECT_EQ(expected.isWakeUp, actual.isWakeUp);
    EXPECT_EQ(expected.isNerr, actual.isNerr);
    EXPECT_EQ(expected.arbBitCount, actual.arbBitCount);
    EXPECT_EQ(expected.bitCount, actual.bitCount);
    EXPECT_EQ(expected.frameLength, actual.frameLength);
    EXPECT_EQ(expected.arbBitrate, actual.arbBitrate);
    EXPECT_EQ(expected.dataBitrate, actual.dataBitrate);
    EXPECT_EQ(expected.brsOffset, actual.brsOffset);
    EXPECT_EQ(expected.crcDelOffset, actual.crcDelOffset);
    EXPECT_EQ(expected.crc, actual.crc);
}

void expectSameRecord(const BLF::BlfFrame &expected, const BLF::BlfFrame &actual)
{
    EXPECT_EQ(expected.time, actual.time); // one multiplication, so every bit is the same
    EXPECT_EQ(expected.frameType, actual.frameType);
    EXPECT_EQ(expected.channel, actual.channel);
    EXPECT_EQ(expected.description.toStdString(), actual.description.toStdString());
    if (!expected.dir.isEmpty()) {
        EXPECT_EQ(expected.dir, actual.dir);
    }
    if (isBlfDataOrRemote(expected))
        expectSameFrame(expected, actual);
}

} // namespace

class BlfCorpus : public testing::TestWithParam<tzcorpus::File>
{
protected:
    void SetUp() override
    {
        const tzcorpus::File &file = GetParam();
        if (file.name.isEmpty())
            GTEST_SKIP() << tzcorpus::skipReason;
        ASSERT_FALSE(file.goldenPath.isEmpty()) << file.name.toStdString() << " has no results";
        m_golden = GoldenBlf::of(file);
    }

    static const QString &path() { return GetParam().path; }

    std::vector<BLF::BlfFrame> expectedRecords() const
    {
        std::vector<BLF::BlfFrame> records;
        std::transform(m_golden.objects.begin(), m_golden.objects.end(), std::back_inserter(records),
                       expectedBlfRecord);
        return records;
    }

    /// Converts the file with the options of both writers and compares every line.
    void expectConversions(const BLF::BlfExportOptions &options)
    {
        const std::vector<BLF::BlfFrame> records = expectedRecords();
        BLF::BlfCsvWriter::options = options;
        BLF::BlfAscWriter::options = options;
        BLF::BlfFrames frames;
        BLF::BLFParser parser;
        ASSERT_EQ(parser.parseFile(path(), frames), !records.empty());
        ASSERT_EQ(BLF::BlfCsvWriter::saveCsv(m_folder.filePath(csvName), frames), !records.empty());
        ASSERT_EQ(BLF::BlfAscWriter::saveAsc(m_folder.filePath(ascName), frames), !records.empty());
        if (records.empty())
            return;
        expectSameLines(expectedCsv(records, options), linesOf(m_folder.filePath(csvName)));
        QStringList asc = linesOf(m_folder.filePath(ascName));
        EXPECT_TRUE(asc.first().startsWith(QStringLiteral("date "))) << asc.first().toStdString();
        asc.first().clear();
        expectSameLines(expectedAsc(records, options), asc);
    }

    void TearDown() override
    {
        BLF::BlfCsvWriter::options = {};
        BLF::BlfAscWriter::options = {};
    }

    GoldenBlf m_golden;
    TempWorkDir m_folder;
    LogCapture m_log;
};

TEST_P(BlfCorpus, OpensWhatHasTheMagic)
{
    BLF::BlfReader reader;
    EXPECT_EQ(reader.open(path()), m_golden.hasMagic);
}

TEST_P(BlfCorpus, CountsOfAllTypesMatch)
{
    BLF::BlfReader reader;
    ASSERT_EQ(reader.open(path()), m_golden.hasMagic);
    std::map<std::uint32_t, std::size_t> counts;
    for (BLF::ObjectHeader header; reader.peek(header); reader.skip())
        ++counts[header.type];
    EXPECT_EQ(counts, m_golden.counts);
}

TEST_P(BlfCorpus, FieldsMatch)
{
    BLF::BlfReader reader;
    ASSERT_EQ(reader.open(path()), m_golden.hasMagic);
    QStringList differences;
    std::size_t at = 0;
    for (BLF::ObjectHeader header; reader.peek(header);) {
        if (!isBlfRecordType(header.type)) {
            reader.skip();
            continue;
        }
        ASSERT_LT(at, m_golden.objects.size());
        const QString where = QStringLiteral("object %1 of type %2").arg(at).arg(header.type);
        differences += compareBlfObject(where, m_golden.objects[at], header, reader);
        ++at;
    }
    EXPECT_EQ(at, m_golden.objects.size());
    tzcorpus::reportDifferences(QFileInfo(path()).fileName(), differences);
}

TEST_P(BlfCorpus, TellsOfLossesAndOfNothingElse)
{
    BLF::BlfReader reader;
    ASSERT_EQ(reader.open(path()), m_golden.hasMagic);
    for (BLF::ObjectHeader header; reader.peek(header);)
        reader.skip();
    reader.close();
    const std::string name = GetParam().name.toStdString();
    EXPECT_EQ(m_log.countContaining(LogLevel::error, name) > 0, m_golden.isTruncated());
    EXPECT_EQ(m_log.countContaining(LogLevel::error, ""), m_log.countContaining(LogLevel::error, name))
        << "a line names no file";
}

TEST_P(BlfCorpus, RecordsMatch)
{
    const std::vector<BLF::BlfFrame> expected = expectedRecords();
    BLF::BlfFrames frames;
    BLF::BLFParser parser;
    EXPECT_EQ(parser.parseFile(path(), frames), !expected.empty());
    ASSERT_EQ(frames.size(), expected.size());
    for (std::size_t at = 0; at < expected.size(); ++at) {
        SCOPED_TRACE("record " + std::to_string(at));
        expectSameRecord(expected[at], frames[at]);
    }
    const std::string parsed = "Parsed " + std::to_string(expected.size()) + " objects from BLF file";
    EXPECT_EQ(m_log.has(LogLevel::info, parsed), m_golden.hasMagic);
}

TEST_P(BlfCorpus, WarnsOfEachObjectOfAnotherType)
{
    BLF::BlfFrames frames;
    BLF::BLFParser().parseFile(path(), frames);
    std::size_t unhandled = 0;
    for (const auto &[type, count] : m_golden.counts) {
        if (isBlfRecordType(type) || silentTypes.count(type) != 0)
            continue;
        unhandled += count;
        EXPECT_EQ(m_log.count(LogLevel::warning, "Unhandled object type: " + std::to_string(type)), count);
    }
    EXPECT_EQ(m_log.countContaining(LogLevel::warning, "Unhandled object type"), unhandled);
}

TEST_P(BlfCorpus, ConvertedLinesMatchWithEverything)
{
    expectConversions({.exportInternalEvents = true, .exportAdditionalInfo = true});
}

TEST_P(BlfCorpus, ConvertedLinesMatchWithoutEvents)
{
    expectConversions({.exportInternalEvents = false, .exportAdditionalInfo = true});
}

TEST_P(BlfCorpus, ConvertedLinesMatchWithoutAdditionalInfo)
{
    expectConversions({.exportInternalEvents = true, .exportAdditionalInfo = false});
}

TEST_P(BlfCorpus, ConvertedLinesMatchWithFramesAlone)
{
    expectConversions({.exportInternalEvents = false, .exportAdditionalInfo = false});
}

INSTANTIATE_TEST_SUITE_P(Files, BlfCorpus, testing::ValuesIn(blfCorpusFiles()), tzcorpus::testName);

} // namespace tztest
