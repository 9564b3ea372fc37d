// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/ldf/LdfParser.h"
#include "tests/database/ldf/LdfSource.h"
#include "tests/support/LogCapture.h"
#include "tests/support/QuietLog.h"
#include "tests/support/ThreadSeconds.h"

#include <QFile>

#include <gtest/gtest.h>

namespace {

constexpr double patienceSeconds = 10.0;

/// Loads and tells whether the file was taken; hanging fails the test.
bool loadsInTime(const QByteArray &bytes)
{
    const double start = tztest::threadSeconds();
    const bool isTaken = loadLdfBytes(bytes).has_value();
    EXPECT_LT(tztest::threadSeconds() - start, patienceSeconds);
    return isTaken;
}

QString repeated(const char *piece, int size = 200'000)
{
    const QString text = QString::fromLatin1(piece);
    return text.repeated(size / text.size());
}

TEST(LdfHostile, EmptyAndBinaryFilesAreRefusedWithALine)
{
    tztest::LogCapture log;
    EXPECT_FALSE(loadsInTime({}));
    QByteArray binary;
    for (int index = 0; index < 100'000; ++index)
        binary.append(static_cast<char>(index * 7919 >> 3));
    EXPECT_FALSE(loadsInTime(binary));
    EXPECT_FALSE(loadsInTime(QByteArray(100'000, '\0')));
    EXPECT_EQ(log.countContaining(3, "LDF protocol version not detected: "), 3U);
}

TEST(LdfHostile, Utf16WithoutAMarkIsRefusedAndHalfAPairIsHarmless)
{
    const QString text = LdfSource().text();
    EXPECT_FALSE(loadsInTime(QByteArray(reinterpret_cast<const char *>(text.utf16()), text.size() * 2)));
    QString broken = QChar(0xFEFF) + text + QChar(0xD800) + QStringLiteral("x");
    EXPECT_TRUE(loadsInTime(QByteArray(reinterpret_cast<const char *>(broken.utf16()), broken.size() * 2)));
}

TEST(LdfHostile, TruncatedAtEveryByte)
{
    QFile file(QStringLiteral(TZ_LDF_SAMPLES "/lin20.ldf"));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QByteArray bytes = file.readAll();
    for (int length = 0; length <= bytes.size(); ++length)
        loadLdfBytes(bytes.left(length));
    EXPECT_TRUE(loadLdfBytes(bytes));
}

TEST(LdfHostile, EveryByteOfAFileTurnedIntoABraceOrAQuote)
{
    const QByteArray bytes = LdfSource().text().toUtf8();
    for (int index = 0; index < bytes.size(); ++index) {
        for (const char replacement : {'{', '}', '"', ';'}) {
            QByteArray changed = bytes;
            changed[index] = replacement;
            loadLdfBytes(changed);
        }
    }
}

TEST(LdfHostile, LongSectionsOfOnePieceDoNotHang)
{
    for (const char *piece : {" ", "a", "1", "{", "}", "\"", ";", ",", "a:1,", "a{", "a{}", "/", "*", "/*", "a:1,{"}) {
        SCOPED_TRACE(piece);
        const QString content = repeated(piece);
        LdfSource source;
        for (QString *section :
             {&source.nodes, &source.signalList, &source.frames, &source.attributes, &source.schedules}) {
            const QString before = *section;
            *section += u'\n' + content;
            loadsInTime(source.text().toUtf8());
            *section = before;
        }
        source.encodings = QStringLiteral("E {\nphysical_value, ") + content + u'}';
        source.representations = content;
        source.diagnosticSignals = content;
        source.sporadicFrames = content;
        source.eventFrames = content;
        source.diagnosticFrames = content;
        loadsInTime(source.text().toUtf8());
    }
}

TEST(LdfHostile, OneMegabyteInOneLine)
{
    for (const char *piece :
         {"a", " ", "LIN_protocol_version", "LIN_protocol_version=\"", "LIN_speed = 1", "Nodes {"}) {
        SCOPED_TRACE(piece);
        EXPECT_FALSE(loadsInTime(repeated(piece, 1'000'000).toLatin1()));
    }
}

TEST(LdfHostile, FiftyMegabytesInOneLine)
{
    const QString line = repeated("x", 50'000'000);
    EXPECT_FALSE(loadsInTime(line.toLatin1()));
    LdfSource source;
    source.frames += u'\n' + line;
    EXPECT_TRUE(loadsInTime(source.text().toUtf8()));
}

TEST(LdfHostile, HundredThousandFrames)
{
    const tztest::QuietLog quiet;
    constexpr int count = 100'000;
    LdfSource source;
    for (int index = 0; index < count; ++index)
        source.frames += QStringLiteral("\nF%1: 0x23, Slave1, 1 {\nError1, 0;\n}").arg(index);
    const auto config = loadLdf(source);
    ASSERT_TRUE(config);
    EXPECT_EQ(config->frames.size(), count + 3U);
    EXPECT_EQ(config->frames.at(QStringLiteral("F99999")).signals.size(), 1U);
}

TEST(LdfHostile, LongPathsAreLoggedWhole)
{
    tztest::LogCapture log;
    const QString path = QStringLiteral("/none/") + repeated("long/", 3'000) + QStringLiteral("which.ldf");
    LdfConfig config;
    EXPECT_FALSE(Common::LdfParser::loadLdfConfig(config, path, QStringLiteral("UTF-8")));
    EXPECT_TRUE(log.has(3, "Failed to open file: " + path.toStdString()));
    EXPECT_FALSE(Common::LdfParser().parseFile(path, QStringLiteral("UTF-8")));
    EXPECT_TRUE(log.has(1, "Load LDF file: " + path.toStdString() + ", UTF-8"));
    EXPECT_TRUE(log.has(3, "Failed to open LDF file: " + path.toStdString()));
}

TEST(LdfHostile, BlocksWithinBlocksAreGivenUp)
{
    tztest::LogCapture log;
    constexpr int depth = 20'000;
    QString names;
    QString opened;
    for (int index = 0; index < depth; ++index) {
        const QString name = QStringLiteral("N%1").arg(index, 6, 10, QLatin1Char('0'));
        names += name + u',';
        opened += name + u'{';
    }
    LdfSource source;
    source.nodes = QStringLiteral("Master: Master1, 5 ms, 0.1 ms;\nSlaves: %1;").arg(names);
    source.attributes = opened + QStringLiteral("LIN_protocol = 2.1;") + QString(depth, u'}');
    EXPECT_FALSE(loadsInTime(source.text().toUtf8()));
    EXPECT_EQ(log.countContaining(3, "Blocks are nested too deeply"), 1U);
}

TEST(LdfHostile, NumbersBeyondSixtyFourBitsReadZero)
{
    const QString huge(400, u'9');
    LdfSource source;
    source.header.replace(QStringLiteral("19.2"), huge);
    source.nodes.replace(QStringLiteral("5 ms"), huge + QStringLiteral(" ms"));
    source.signalList.replace(QStringLiteral("Level1: 10, 5"), QStringLiteral("Level1: %1, %1").arg(huge));
    source.frames.replace(QStringLiteral("0x21"), QStringLiteral("0x") + huge);
    source.frames.replace(QStringLiteral("Level1, 1"), QStringLiteral("Level1, ") + huge);
    source.schedules.replace(QStringLiteral("10 ms"), huge + QStringLiteral(" ms"));
    const auto config = loadLdf(source);
    ASSERT_TRUE(config);
    EXPECT_EQ(config->busSpeed, 0.0);
    EXPECT_EQ(config->master.timeBase, 5.0);
    const LdfFrame &frame = config->frames.at(QStringLiteral("Status1"));
    EXPECT_EQ(frame.id, 0);
    EXPECT_EQ(frame.minPeriod, 0.0);
    const LdfSignal &signal = frame.signals.at(QStringLiteral("Level1"));
    EXPECT_EQ(signal.size, 0);
    EXPECT_EQ(signal.value, 0U);
    EXPECT_EQ(signal.startBit, 0);
}

} // namespace
