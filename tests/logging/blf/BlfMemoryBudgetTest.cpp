// SPDX-License-Identifier: GPL-3.0-or-later
// What records may hold, and a parser that comes to the end of it.
#include "logging/blf/BlfMemoryBudget.h"

#include "common/Log.h"
#include "logging/blf/BLFParser.h"
#include "tests/logging/blf/BlfTestWriter.h"
#include "tests/support/LogCapture.h"

#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>

#include <unistd.h>

using namespace BLF;
using namespace tztest;
using namespace Common::LogLevel;

namespace {

constexpr std::size_t longText = 1'000'000;

TEST(BlfMemoryBudget, CountsTheRecordItsPayloadAndItsText)
{
    BlfFrame record;
    EXPECT_EQ(BlfMemoryBudget::costOf(record), sizeof(BlfFrame));
    record.data = QByteArray(64, 'x');
    record.description = QString(1000, QLatin1Char('t'));
    EXPECT_EQ(BlfMemoryBudget::costOf(record), sizeof(BlfFrame) + 64 + 2000);
}

TEST(BlfMemoryBudget, GivesUpToItsEndAndNothingAfterARefusal)
{
    BlfFrame large;
    large.description = QString(1000, QLatin1Char('t'));
    BlfMemoryBudget budget(3 * sizeof(BlfFrame));
    EXPECT_TRUE(budget.take({}));
    EXPECT_TRUE(budget.take({}));
    EXPECT_FALSE(budget.isUsedUp());
    EXPECT_FALSE(budget.take(large));
    EXPECT_TRUE(budget.isUsedUp());
    EXPECT_FALSE(budget.take({})) << "there would be room, but records keep together";

    BlfMemoryBudget exact(sizeof(BlfFrame));
    EXPECT_TRUE(exact.take({}));
    EXPECT_FALSE(exact.isUsedUp());
    EXPECT_FALSE(exact.take({}));
}

TEST(BlfMemoryBudget, IsHalfOfTheMachinesMemory)
{
    const auto pages = static_cast<std::uint64_t>(::sysconf(_SC_PHYS_PAGES));
    EXPECT_EQ(BlfMemoryBudget::ofThisMachine(), pages * static_cast<std::uint64_t>(::sysconf(_SC_PAGESIZE)) / 2);
}

class BlfParserMemory : public testing::Test
{
protected:
    BlfParserMemory()
    {
        for (int i = 0; i < 10; ++i)
            m_log.add(CanMessageBody{});
    }
    bool parse() { return m_log.save(path()) && m_parser.parseFile(path(), m_frames); }
    QString path() const { return m_folder.filePath(QStringLiteral("log.blf")); }
    std::string errorOf(int count) const
    {
        return "Not enough memory for all of " + path().toStdString() + ": " + std::to_string(count) +
               " objects were read, the rest was not";
    }

    QTemporaryDir m_folder;
    BlfTestWriter m_log{{.level = 6}};
    BLFParser m_parser;
    BlfFrames m_frames;
    LogCapture m_lines;
};

TEST_F(BlfParserMemory, WhereItEndsWhatWasReadStands)
{
    m_parser.setMemoryBudget(4 * (sizeof(BlfFrame) + 8));
    EXPECT_TRUE(parse());
    EXPECT_EQ(m_frames.size(), 4U);
    EXPECT_TRUE(m_lines.has(error, errorOf(4)));
    EXPECT_TRUE(m_lines.has(info, "Parsed 4 objects from BLF file"));
}

TEST_F(BlfParserMemory, TooLittleForOneRecordIsNoRecord)
{
    m_parser.setMemoryBudget(sizeof(BlfFrame));
    EXPECT_FALSE(parse());
    EXPECT_TRUE(m_frames.empty());
    EXPECT_TRUE(m_lines.has(error, errorOf(0)));
}

TEST_F(BlfParserMemory, ThatSufficesIsNotSpokenOf)
{
    m_parser.setMemoryBudget(10 * (sizeof(BlfFrame) + 8));
    EXPECT_TRUE(parse());
    EXPECT_EQ(m_frames.size(), 10U);
    EXPECT_EQ(m_lines.countContaining(error, ""), 0U);
}

TEST_F(BlfParserMemory, EachRunHasAllOfIt)
{
    m_parser.setMemoryBudget(10 * (sizeof(BlfFrame) + 8));
    EXPECT_TRUE(parse());
    EXPECT_TRUE(parse());
    EXPECT_EQ(m_frames.size(), 20U);
    EXPECT_EQ(m_lines.countContaining(error, ""), 0U);
}

TEST_F(BlfParserMemory, SmallFileOfHugeTextsIsBounded)
{
    for (int i = 0; i < 20; ++i)
        m_log.add(SystemVariableBody{.valueType = 3, .name = "v", .value = BlfBytes(longText, 't')});
    m_parser.setMemoryBudget(7 * longText); // of two bytes each
    EXPECT_TRUE(parse());
    EXPECT_LT(QFileInfo(path()).size(), qint64{longText}) << "packed, it is small";
    EXPECT_EQ(m_frames.size(), 13U);
    EXPECT_TRUE(m_lines.has(error, errorOf(13)));
}

TEST_F(BlfParserMemory, RecordBeyondItIsNotReported)
{
    std::size_t reports = 0;
    QObject::connect(&m_parser, qOverload<const QString &>(&BLFParser::sigProcessReport), &m_parser,
                     [&] { ++reports; });
    m_parser.setMemoryBudget(4 * (sizeof(BlfFrame) + 8));
    EXPECT_TRUE(parse());
    EXPECT_EQ(reports, 4U);
}

} // namespace
