// SPDX-License-Identifier: GPL-3.0-or-later
// Files whose parts multiply one another: each could keep a careless reader busy for hours, or fill the memory.
#include "common/LogSink.h"
#include "database/ldf/LdfConfig.h"
#include "tests/database/ldf/LdfSource.h"
#include "tests/support/LogCapture.h"
#include "tests/support/ProcessFigures.h"
#include "tests/support/QuietLog.h"
#include "tests/support/ThreadSeconds.h"

#include <QByteArray>
#include <QString>

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <functional>
#include <limits>
#include <unordered_set>

namespace {

constexpr int megabyte = 1'000'000;
constexpr double patienceSeconds = 10.0; // for a megabyte

// Times that of the file. A quadratic reader has 4 or 10 here; the rest is left to the machine's unrest, to caches that
// hold the small file alone, and to programs that press on them. How near to linear a reader is, the benchmarks tell.
constexpr double growthAllowed = 2.0;

double secondsToLoad(const QByteArray &bytes, int runs)
{
    double best = std::numeric_limits<double>::max();
    for (int run = 0; run < runs; ++run) {
        const double start = tztest::threadSeconds();
        EXPECT_TRUE(loadLdfBytes(bytes));
        best = std::min(best, tztest::threadSeconds() - start);
    }
    return best;
}

/// How many times longer the larger file takes, for each time that it is larger: 1 for a linear reader.
double growth(double smallSeconds, const QByteArray &small, double largeSeconds, const QByteArray &large)
{
    return largeSeconds / smallSeconds * static_cast<double>(small.size()) / static_cast<double>(large.size());
}

/// What else the machine does slows down one attempt or the other; a quadratic reader is slow in each.
void expectLinearTime(const QByteArray &small, const QByteArray &large)
{
    constexpr int attempts = 3;
    double smallSeconds = std::numeric_limits<double>::max();
    double largeSeconds = std::numeric_limits<double>::max();
    double grown = growthAllowed;
    for (int attempt = 0; attempt < attempts && grown >= growthAllowed; ++attempt) {
        largeSeconds = std::min(largeSeconds, secondsToLoad(large, 1));
        smallSeconds = std::min(smallSeconds, secondsToLoad(small, 2));
        grown = growth(smallSeconds, small, largeSeconds, large);
    }
    EXPECT_LT(largeSeconds, patienceSeconds);
    EXPECT_LT(grown, growthAllowed);
}

/// A text of about @p size characters, made by @p piece for 0, 1, 2 and so on.
QString series(int size, const std::function<QString(int index)> &piece)
{
    QString text;
    for (int index = 0; text.size() < size; ++index)
        text += piece(index);
    return text;
}

QString repeated(const char *piece, int size)
{
    return QString::fromLatin1(piece).repeated(size / static_cast<int>(qstrlen(piece)));
}

/// The longest line and how many there were; the lines themselves would fill the memory.
class LineMeter : private Common::LogSink
{
public:
    LineMeter() { Common::addLogSink(this); }
    ~LineMeter() override { Common::removeLogSink(this); }
    LineMeter(const LineMeter &) = delete;
    LineMeter &operator=(const LineMeter &) = delete;

    std::size_t lines() const { return m_lines; }
    std::size_t longest() const { return m_longest; }

private:
    void onLogLine(int, const std::string &text) override
    {
        ++m_lines;
        m_longest = std::max(m_longest.load(), text.size());
    }

    std::atomic<std::size_t> m_lines{0};
    std::atomic<std::size_t> m_longest{0};
};

class LdfGrowth : public testing::Test
{
protected:
    /// @p make makes a file of about as many characters as it is told.
    static void expectLinear(const std::function<LdfSource(int size)> &make)
    {
        expectLinearTime(make(megabyte / 4).text().toUtf8(), make(megabyte).text().toUtf8());
    }

private:
    tztest::QuietLog m_quiet; // some of the files are worth hundreds of thousands of lines
};

LdfSource withFrames(int count)
{
    LdfSource source;
    for (int index = 0; index < count; ++index) {
        const QString number = QString::number(index);
        source.signalList += QStringLiteral("\nS%1: 8, 0, Slave1, Master1;").arg(number);
        source.frames += QStringLiteral("\nF%1: 0x20, Slave1, 1 { S%1, 0; }").arg(number);
    }
    return source;
}

QString longEncoding(int size)
{
    const auto value = [](int index) { return QStringLiteral("logical_value,%1,\"\";").arg(index); };
    return QStringLiteral("E {\n%1\n}").arg(series(size, value));
}

TEST_F(LdfGrowth, OfAnOrdinaryFileIsThatOfItsSize)
{
    expectLinearTime(withFrames(1'000).text().toUtf8(), withFrames(10'000).text().toUtf8());
}

TEST_F(LdfGrowth, OneEncodingForTheSameSignalAgainAndAgain)
{
    expectLinear([](int size) {
        LdfSource source;
        source.encodings = longEncoding(size / 2);
        source.representations =
            QStringLiteral("E: ") + repeated("Level1,", size / 4) + u';' + repeated("E:Level1;", size / 4);
        return source;
    });
}

TEST_F(LdfGrowth, OneEncodingForEachOfManySignals)
{
    const auto make = [](int size) {
        LdfSource source;
        source.encodings = longEncoding(size / 3);
        source.representations = QStringLiteral("E: Level1");
        source.frames += QStringLiteral("\nAll: 0x23, Slave1, 1 {\n");
        for (int index = 0; index < size / 50; ++index) {
            source.signalList += QStringLiteral("\nS%1:0,0,Slave1,M;").arg(index);
            source.representations += QStringLiteral(",S%1").arg(index);
            source.frames += QStringLiteral("S%1,0;").arg(index);
        }
        source.representations += u';';
        source.frames += QStringLiteral("\n}");
        return source;
    };
    expectLinear(make);
    const double before = tztest::ProcessFigures::of().residentMiB;
    const auto config = loadLdf(make(megabyte));
    ASSERT_TRUE(config);
    EXPECT_GT(config->frames.at(QStringLiteral("All")).signals.size(), 10'000U);
    EXPECT_LT(tztest::ProcessFigures::of().residentMiB - before, 500.0);
}

TEST_F(LdfGrowth, LongInitialValueInManyFrames)
{
    for (const char *value : {"{%1}", "%1"}) {
        SCOPED_TRACE(value);
        expectLinear([value](int size) {
            const QString text = *value == '{' ? repeated("1,", size / 2) : repeated("1", size / 2);
            LdfSource source;
            source.signalList += QStringLiteral("\nLong: 8, %1, Slave1, M;").arg(QString::fromLatin1(value).arg(text));
            const auto frame = [](int index) { return QStringLiteral("\nF%1:32,Slave1,1{Long,0;}").arg(index); };
            source.frames += series(size / 2, frame);
            return source;
        });
    }
}

TEST_F(LdfGrowth, LongNamesInManyLogLines)
{
    const QString name(megabyte * 3 / 10, u'n');
    LdfSource source;
    source.encodings = name + QStringLiteral(" {\nlogical_value, 0, \"\";\n}");
    source.representations = name + QStringLiteral(": ") + repeated("a,", megabyte * 6 / 10) + u';';
    LineMeter meter;
    EXPECT_LT(secondsToLoad(source.text().toUtf8(), 1), patienceSeconds);
    EXPECT_GT(meter.lines(), 300'000U);
    EXPECT_LT(meter.longest(), 2'500U);
}

TEST_F(LdfGrowth, LongNodeNameInManyLogLines)
{
    const QString name(megabyte / 5, u'n');
    LdfSource source;
    source.setProtocol("ISO17987:2016");
    source.nodes = QStringLiteral("Master: Master1, 5 ms, 0.1 ms;\nSlaves: Slave1, Slave2, %1;").arg(name);
    source.attributes += QStringLiteral("%1 {\nLIN_protocol = ISO17987; configured_NAD = 5;\n"
                                        "fault_state_signals = %2;\n}")
                             .arg(name, repeated("a,", megabyte / 2));
    LineMeter meter;
    EXPECT_LT(secondsToLoad(source.text().toUtf8(), 1), patienceSeconds);
    EXPECT_GT(meter.lines(), 250'000U);
    EXPECT_LT(meter.longest(), 2'500U);
}

/// An event-triggered frame of many members with many slots, and the name of its collision table.
LdfSource withEvent(int members, int slots_, const QString &collisionTable)
{
    LdfSource source = withFrames(members);
    source.eventFrames = QStringLiteral("Event: %1, 0x30").arg(collisionTable);
    for (int index = 0; index < members; ++index)
        source.eventFrames += QStringLiteral(", F%1").arg(index);
    source.eventFrames += u';';
    source.schedules += QStringLiteral("\nT {\n%1}\n%2 {\nStatus1 delay 17 ms;\n}")
                            .arg(QStringLiteral("Event delay 5 ms;\n").repeated(slots_), collisionTable);
    return source;
}

TEST_F(LdfGrowth, EventTriggeredFramesMayHaveAnySlotsWhereNoRuleAsksForThem)
{
    expectLinear([](int size) { return withEvent(size / 120, size / 50, QStringLiteral("Normal")); });
    LdfSource source; // names listed again and again are the same few members
    source.eventFrames =
        QStringLiteral("Event: Normal, 0x30, ") + repeated("Status1,", megabyte / 2) + QStringLiteral("Status1;");
    source.schedules += QStringLiteral("\nT {\n") + repeated("Event delay 5 ms;\n", megabyte / 2) + u'}';
    EXPECT_LT(secondsToLoad(source.text().toUtf8(), 1), patienceSeconds);
}

TEST_F(LdfGrowth, EventTriggeredFramesWithTooManySlotsAreGivenUpWhereARuleUpdatesTheirMembers)
{
    for (const char *protocol : {"J2602_1_1.0", "ISO17987:2016"}) {
        SCOPED_TRACE(protocol);
        tztest::LogCapture log;
        LdfSource source = withEvent(1'000, 100, QStringLiteral("Normal"));
        source.setProtocol(protocol);
        EXPECT_TRUE(loadLdf(source));
        source = withEvent(1'000, 1'000, QStringLiteral("Normal"));
        source.setProtocol(protocol);
        EXPECT_FALSE(loadLdf(source));
        EXPECT_EQ(log.count(3, "Too many slots for event triggered frame Event"), 1U);
    }
}

TEST_F(LdfGrowth, LongNameOfACollisionTableIsLookedUpOnce)
{
    LdfSource source = withEvent(100, 1'900, QString(megabyte * 4 / 10, u'c'));
    source.setProtocol("J2602_1_1.0");
    const QByteArray bytes = source.text().toUtf8();
    EXPECT_LT(secondsToLoad(bytes, 1), patienceSeconds / 5);
    EXPECT_EQ(loadLdfBytes(bytes)->frames.at(QStringLiteral("F7")).maxPeriod, 17.0);
}

TEST_F(LdfGrowth, ManySlavesThatListOneFrameOfManySignals)
{
    LdfSource source;
    source.setProtocol("J2602_1_1.0");
    source.frames += QStringLiteral("\nAll: 0x23, Master1, 1 {\n");
    for (int index = 0; index < 12'000; ++index) {
        source.signalList += QStringLiteral("\nS%1:0,0,Master1,M;").arg(index);
        source.frames += QStringLiteral("S%1,0;").arg(index);
    }
    source.signalList += QStringLiteral("\nZ:0,0,Master1,M");
    for (int index = 0; index < 4'000; ++index) {
        const QString name = QStringLiteral("N%1").arg(index);
        source.nodes.chop(1);
        source.nodes += QStringLiteral(", %1;").arg(name);
        source.signalList += u',' + name;
        source.attributes += QStringLiteral("%1{LIN_protocol=J2602;configured_NAD=0x61;response_error=Error1;"
                                            "response_tolerance=40%;configurable_frames{All;}}\n")
                                 .arg(name);
    }
    source.signalList += u';';
    source.frames += QStringLiteral("Z,0;\n}");
    EXPECT_LT(secondsToLoad(source.text().toUtf8(), 1), patienceSeconds / 5);
}

TEST_F(LdfGrowth, LongSignalNameWithManySubscribers)
{
    LdfSource source;
    source.setProtocol("J2602_1_1.0");
    const QString name(megabyte * 2 / 10, u's');
    source.signalList += QStringLiteral("\n%1: 1, 0, Master1, %2").arg(name, repeated("a,", megabyte / 10));
    source.signalList += series(megabyte / 3, [](int index) { return QStringLiteral("N%1,").arg(index); });
    source.signalList += QStringLiteral("Slave1;");
    source.frames += QStringLiteral("\nLong: 0x23, Master1, 1 {\n%1, 0;\n}").arg(name);
    source.attributes = LdfSource::slaveAttributes("Slave1", "0x61", "Error1", "J2602",
                                                   "response_tolerance = 40 %; configurable_frames { Long; }") +
                        LdfSource::slaveAttributes("Slave2", "0x62", "Error2");
    EXPECT_LT(secondsToLoad(source.text().toUtf8(), 1), patienceSeconds / 5);
}

TEST_F(LdfGrowth, LongPublisherNameInManySlots)
{
    for (const char *protocol : {"J2602_1_1.0", "ISO17987:2016"}) {
        SCOPED_TRACE(protocol);
        expectLinear([protocol](int size) {
            const QString name(size / 9, u'p');
            LdfSource source;
            source.setProtocol(protocol);
            source.nodes = QStringLiteral("Master: %1M, 5 ms, 0.1 ms;\nSlaves: %1A, %1B;").arg(name);
            source.attributes = LdfSource::slaveAttributes(qPrintable(name + u'A'), "1", "Error1") +
                                LdfSource::slaveAttributes(qPrintable(name + u'B'), "2", "Error1");
            source.frames = QStringLiteral("F: 0x21, %1B, 1 {\nError1, 0;\n}").arg(name);
            source.schedules = QStringLiteral("T {\n%1\n}").arg(repeated("F delay 1ms;", size / 3));
            return source;
        });
    }
}

TEST_F(LdfGrowth, NetworkAddressesThatMeetInOneBucket)
{
    // Of a table that hashes a number to itself and has as many buckets for so many of them.
    std::unordered_set<std::int32_t> plain;
    for (int index = 0; index < megabyte / 55; ++index)
        plain.insert(index);
    const auto step = static_cast<int>(plain.bucket_count());
    expectLinear([step](int size) {
        LdfSource source;
        for (int index = 0; index < size / 55; ++index) {
            const QString name = QStringLiteral("N%1").arg(index);
            source.nodes.chop(1);
            source.nodes += QStringLiteral(", %1;").arg(name);
            source.attributes += QStringLiteral("%1{LIN_protocol=2.1;configured_NAD=%2;}").arg(name).arg(index * step);
        }
        return source;
    });
}

} // namespace
