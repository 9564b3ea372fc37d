// SPDX-License-Identifier: GPL-3.0-or-later
// What the parser says while it reads: reports of frames and pulses.
#include "logging/blf/BLFParser.h"

#include "common/Log.h"
#include "logging/blf/BlfPulse.h"
#include "tests/logging/blf/BlfTestWriter.h"
#include "tests/support/LogCapture.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <thread>
#include <vector>

using namespace BLF;
using namespace tztest;
using namespace Common::LogLevel;

namespace {

const std::string dataText = "Frame Parsed: Time=1.500000 Ch=2 Dir=Tx Type=Data ID=0xABC DLC=3 Data=01 02 ff";
const std::string errorText = "Frame Parsed: Time=0.000000 Ch=1 Dir=Rx Type=Error ID=0x0 DLC=0 Data=";

struct Report
{
    std::string text;
    int value = 0;
    bool isError = false;
    bool operator==(const Report &) const = default;
};

class BlfReport : public testing::Test
{
protected:
    BlfReport()
    {
        m_log
            .add(CanMessageBody{.channel = 2, .flags = BlfFlags::canTx, .dlc = 3, .id = 0xABC, .data = {1, 2, 255}},
                 {.timeStamp = 1'500'000'000})
            .add(CanErrorFrameBody{});
    }
    bool parse() { return m_log.save(path()) && m_parser.parseFile(path(), m_frames); }
    QString path() const { return m_folder.filePath(QStringLiteral("log.blf")); }

    QTemporaryDir m_folder;
    BlfTestWriter m_log;
    BLFParser m_parser;
    BlfFrames m_frames;
    LogCapture m_lines;
};

TEST_F(BlfReport, GoesToReceiversBeforeTheRecordIsStored)
{
    std::vector<Report> reports;
    std::vector<std::size_t> stored;
    QObject::connect(&m_parser, qOverload<const QString &, int, bool>(&BLFParser::sigProcessReport), &m_parser,
                     [&](const QString &text, int value, bool isError) {
                         reports.push_back({text.toStdString(), value, isError});
                         stored.push_back(m_frames.size());
                     });
    ASSERT_TRUE(parse());
    EXPECT_EQ(reports, (std::vector<Report>{{dataText, 100, false}, {errorText, 100, true}}));
    EXPECT_EQ(stored, (std::vector<std::size_t>{0, 1}));
    EXPECT_EQ(m_lines.countContaining(debug, ""), 0U);
}

TEST_F(BlfReport, ReachesReceiversOfTheShorterSignalsAlone)
{
    std::vector<Report> reports;
    const auto withValue = QObject::connect(&m_parser, qOverload<const QString &, int>(&BLFParser::sigProcessReport),
                                            &m_parser, [&](const QString &text, int value) {
                                                reports.push_back({text.toStdString(), value, false});
                                            });
    ASSERT_TRUE(parse());
    EXPECT_EQ(reports, (std::vector<Report>{{dataText, 100, false}, {errorText, 100, false}}));

    QObject::disconnect(withValue);
    reports.clear();
    QObject::connect(&m_parser, qOverload<const QString &>(&BLFParser::sigProcessReport), &m_parser,
                     [&](const QString &text) {
                         reports.push_back({text.toStdString(), 0, false});
                     });
    ASSERT_TRUE(parse());
    EXPECT_EQ(reports, (std::vector<Report>{{dataText, 0, false}, {errorText, 0, false}}));
}

TEST_F(BlfReport, GoesToTheLogOnlyWhenAskedFor)
{
    EXPECT_FALSE(m_parser.logFrames);
    ASSERT_TRUE(parse());
    EXPECT_EQ(m_lines.countContaining(debug, ""), 0U);
    m_parser.logFrames = true;
    ASSERT_TRUE(parse());
    EXPECT_EQ(m_lines.count(debug, dataText), 1U);
    EXPECT_EQ(m_lines.count(debug, errorText), 1U);
    EXPECT_EQ(m_lines.countContaining(debug, ""), 2U);
}

TEST_F(BlfReport, FramesThatAreRefusedAreNotReported)
{
    m_parser.logFrames = true;
    m_log.add(1, BlfBytes(2, 0));
    ASSERT_TRUE(parse());
    EXPECT_EQ(m_lines.countContaining(debug, ""), 2U);
}

TEST_F(BlfReport, ReceiverThatLeavesDuringTheRunGetsNoMore)
{
    int reports = 0;
    QMetaObject::Connection connection;
    connection = QObject::connect(&m_parser, qOverload<const QString &>(&BLFParser::sigProcessReport), &m_parser,
                                  [&](const QString &) {
                                      ++reports;
                                      QObject::disconnect(connection);
                                  });
    ASSERT_TRUE(parse());
    EXPECT_EQ(reports, 1);
    EXPECT_EQ(m_frames.size(), 2U);
}

class BlfParserPulse : public BlfReport
{
protected:
    // So many objects that the parser looks at the clock; each report takes so long that pulses are due.
    void addManyObjects()
    {
        for (std::size_t i = 0; i < 3 * BlfPulse::stepsBetweenBeats; ++i)
            m_log.add(CanMessageBody{});
    }
    void slowDown()
    {
        QObject::connect(&m_parser, qOverload<const QString &>(&BLFParser::sigProcessReport), &m_parser, [] {
            const auto end = std::chrono::steady_clock::now() + std::chrono::microseconds(60);
            while (std::chrono::steady_clock::now() < end) {
            }
        });
    }
};

TEST_F(BlfParserPulse, ComesNowAndThenInALongRun)
{
    addManyObjects();
    slowDown();
    int pulses = 0;
    m_parser.setPulse([&pulses] { ++pulses; });
    ASSERT_TRUE(parse());
    EXPECT_GE(pulses, 2);
    EXPECT_LE(pulses, 20);
}

TEST_F(BlfParserPulse, MayBeTakenAwayAndReceiversMayComeWhileItRuns)
{
    addManyObjects();
    slowDown();
    int pulses = 0;
    std::size_t reports = 0;
    m_parser.setPulse([&, token = std::vector<int>(100, 7)] { // something to be freed too early
        m_parser.setPulse({});
        m_parser.disconnect();
        pulses += token.at(99);
    });
    ASSERT_TRUE(parse());
    EXPECT_EQ(pulses, 7);
    EXPECT_EQ(m_frames.size(), m_log.objectCount());

    slowDown();
    m_parser.setPulse([&] {
        if (reports == 0) {
            QObject::connect(&m_parser, qOverload<const QString &, int, bool>(&BLFParser::sigProcessReport), &m_parser,
                             [&reports] { ++reports; });
        }
    });
    ASSERT_TRUE(parse());
    EXPECT_GT(reports, 0U);
    EXPECT_LT(reports, m_log.objectCount());
}

TEST_F(BlfParserPulse, MayEndTheRunByThrowing)
{
    struct Enough
    {
    };
    addManyObjects();
    slowDown();
    m_parser.setPulse([] { throw Enough(); });
    EXPECT_THROW(parse(), Enough);
    EXPECT_GT(m_frames.size(), 0U);
    EXPECT_LT(m_frames.size(), m_log.objectCount());
    EXPECT_EQ(m_lines.countContaining(info, ""), 0U);
}

TEST_F(BlfParserPulse, IsNotNeeded)
{
    addManyObjects();
    ASSERT_TRUE(parse());
    EXPECT_EQ(m_frames.size(), m_log.objectCount());
}

} // namespace
