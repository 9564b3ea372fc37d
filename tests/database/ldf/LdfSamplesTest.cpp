// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/ldf/LdfConversions.h"
#include "database/ldf/LdfISO17987Parser.h"
#include "database/ldf/LdfJ2602Parser.h"
#include "tests/database/ldf/LdfSource.h"
#include "tests/support/LogCapture.h"

#include <QFile>
#include <QTextCodec>

#include <gtest/gtest.h>

#include <memory>

namespace {

QString samplePath(const char *name)
{
    return QStringLiteral(TZ_LDF_SAMPLES "/") + QLatin1String(name);
}

QByteArray sampleBytes(const char *name)
{
    QFile file(samplePath(name));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    return file.readAll();
}

struct SampleCase
{
    const char *file;
    LdfProtocolVersion version;
    std::size_t frames;
    std::size_t slaves;
};
class LdfSamples : public testing::TestWithParam<SampleCase>
{
};

TEST_P(LdfSamples, LoadWithoutWarningOfTheFormat)
{
    tztest::LogCapture log;
    LdfConfig config;
    ASSERT_TRUE(Common::LdfParser::loadLdfConfig(config, samplePath(GetParam().file), QStringLiteral("UTF-8")));
    EXPECT_EQ(config.protocolVersion, GetParam().version);
    EXPECT_EQ(config.frames.size(), GetParam().frames);
    EXPECT_EQ(config.slaves.size(), GetParam().slaves);
    EXPECT_FALSE(config.scheduleTables.empty());
    EXPECT_EQ(log.countContaining(3, ""), 0U);
    EXPECT_EQ(log.countContaining(2, ""), 0U);
    EXPECT_EQ(log.countContaining(1, "LDF file parsed successfully: "), 1U);
}
INSTANTIATE_TEST_SUITE_P(All, LdfSamples,
                         testing::Values(SampleCase{"lin13.ldf", LdfProtocolVersion::lin13, 3, 2},
                                         SampleCase{"lin20.ldf", LdfProtocolVersion::lin20, 2, 1},
                                         SampleCase{"lin21.ldf", LdfProtocolVersion::lin21, 5, 2},
                                         SampleCase{"lin22.ldf", LdfProtocolVersion::lin22, 5, 2},
                                         SampleCase{"j2602.ldf", LdfProtocolVersion::j2602Rev110, 3, 1},
                                         SampleCase{"iso17987.ldf", LdfProtocolVersion::iso17987Year2015, 2, 1}),
                         [](const auto &test) {
                             return std::string(test.param.file, std::strlen(test.param.file) - 4);
                         });

TEST(LdfSeatSample, IsReadFieldByField)
{
    LdfConfig config;
    ASSERT_TRUE(Common::LdfParser::loadLdfConfig(config, samplePath("lin21.ldf"), QString()));
    EXPECT_EQ(config.fileRevision, QStringLiteral("14.01.07"));
    EXPECT_EQ(config.busSpeed, 19.2);
    EXPECT_EQ(config.channelName, QStringLiteral("Seat"));
    EXPECT_FALSE(config.isBigEndian);
    EXPECT_EQ(config.master.name, QStringLiteral("SeatMaster"));
    EXPECT_EQ(config.master.timeBase, 5.0);
    EXPECT_EQ(config.master.jitter, 0.1);
    const LdfNode &back = config.slaves.at(QStringLiteral("BackMotor"));
    EXPECT_EQ(back.configuredNad, 0x21);
    EXPECT_EQ(back.initialNad, 1);
    EXPECT_EQ(back.supplierId, 0x11);
    EXPECT_EQ(back.functionId, 0x22);
    EXPECT_EQ(back.responseError, QStringLiteral("BackError"));
    EXPECT_EQ(back.p2Min, 60.0);
    EXPECT_EQ(back.stMin, 5.0);
    EXPECT_EQ(back.nAsTimeout, 900.0);
    EXPECT_EQ(back.nCrTimeout, 800.0);
    EXPECT_EQ(back.configurableFrames, QStringList({QStringLiteral("BackCommand"), QStringLiteral("BackState")}));
    EXPECT_EQ(config.slaves.at(QStringLiteral("HeightMotor")).initialNad, 0x22);
    EXPECT_TRUE(config.frames.at(QStringLiteral("BackState")).isEventTriggered);
    EXPECT_TRUE(config.frames.at(QStringLiteral("BackCommand")).isMasterFrame);
    EXPECT_EQ(config.frames.at(QStringLiteral("Serial")).signals.at(QStringLiteral("SerialNumber")).value, 0x04030201U);
    EXPECT_EQ(config.sporadicFrames.at(QStringLiteral("Commands")).size(), 2);
    EXPECT_EQ(config.eventTriggeredFrames.at(QStringLiteral("AnyState")).collisionTable, QStringLiteral("Collisions"));
    EXPECT_EQ(config.eventTriggeredFrames.at(QStringLiteral("AnyState")).id, 6);
    EXPECT_EQ(config.scheduleTables.at(0).type, LdfScheduleTableType::init);
    EXPECT_EQ(config.scheduleTables.at(0).entries.at(0).command, QStringLiteral("AssignNAD"));
    EXPECT_EQ(config.scheduleTables.at(0).entries.at(0).arguments.at(1), QStringLiteral("0x01"));
    EXPECT_EQ(config.scheduleTables.at(3).type, LdfScheduleTableType::masterRequest);
    EXPECT_EQ(config.scheduleTables.at(4).type, LdfScheduleTableType::slaveResponse);
    const LdfFrame &request = config.diagnosticFrames.at(QStringLiteral("MasterReq"));
    EXPECT_TRUE(request.isMasterFrame);
    EXPECT_EQ(request.signals.at(QStringLiteral("MasterReqB1")).startBit, 8);
    const LdfFrame &response = config.diagnosticFrames.at(QStringLiteral("SlaveResp"));
    EXPECT_EQ(response.publisher, QStringLiteral("BackMotor"));
    EXPECT_FALSE(response.isMasterFrame);
}

TEST(LdfParserChoice, FollowsTheProtocol)
{
    const auto make = [](const char *name) {
        return std::unique_ptr<Common::LdfParser>(
            Common::LdfParser::createParser(samplePath(name), QStringLiteral("UTF-8")));
    };
    EXPECT_NE(qobject_cast<Common::LdfJ2602Parser *>(make("j2602.ldf").get()), nullptr);
    EXPECT_NE(qobject_cast<Common::LdfISO17987Parser *>(make("iso17987.ldf").get()), nullptr);
    const auto plain = make("lin21.ldf");
    ASSERT_NE(plain, nullptr);
    EXPECT_EQ(plain->metaObject(), &Common::LdfParser::staticMetaObject);
}

TEST(LdfParserChoice, ParserReadsOneFileAfterTheOther)
{
    Common::LdfParser parser;
    ASSERT_TRUE(parser.parseFile(samplePath("lin21.ldf"), QStringLiteral("UTF-8")));
    ASSERT_TRUE(parser.parseFile(samplePath("lin13.ldf"), QStringLiteral("UTF-8")));
    EXPECT_EQ(parser.config().frames.size(), 3U);
    EXPECT_TRUE(parser.config().eventTriggeredFrames.empty());
    EXPECT_EQ(parser.filePath(), samplePath("lin13.ldf"));
}

TEST(LdfParserChoice, ParserForgetsWhatItAcceptedInTheFileBefore)
{
    Common::LdfISO17987Parser parser;
    ASSERT_TRUE(parser.parseFile(samplePath("iso17987.ldf"), QStringLiteral("UTF-8")));
    const QStringList tables = parser.acceptedTables();
    EXPECT_EQ(static_cast<std::size_t>(tables.size()), parser.config().scheduleTables.size());
    ASSERT_TRUE(parser.parseFile(samplePath("iso17987.ldf"), QStringLiteral("UTF-8")));
    EXPECT_EQ(parser.acceptedTables(), tables);
    EXPECT_TRUE(parser.hasAcceptedTable());
    EXPECT_FALSE(parser.parseFile(samplePath("no such file"), QStringLiteral("UTF-8")));
    EXPECT_TRUE(parser.acceptedTables().isEmpty());
    EXPECT_FALSE(parser.hasAcceptedTable());
}

TEST(LdfTextEncodings, KeepUnitsAndTextsIntact)
{
    const QString text = QString::fromUtf8(sampleBytes("iso17987.ldf"));
    for (const char *name : {"UTF-8", "GB18030", "UTF-16"}) {
        SCOPED_TRACE(name);
        QString content = text;
        if (qstrcmp(name, "GB18030") == 0)
            content.replace(QStringLiteral("unbekannt ü"), QStringLiteral("未知"));
        QByteArray bytes = QTextCodec::codecForName(name)->fromUnicode(content); // UTF-16 with its byte order mark
        const auto config = loadLdfBytes(bytes, QString::fromLatin1(name));
        ASSERT_TRUE(config);
        const LdfSignal &target =
            config->frames.at(QStringLiteral("FlapCommand")).signals.at(QStringLiteral("FlapTarget"));
        EXPECT_EQ(getSignalUnit(target), QStringLiteral("°"));
        EXPECT_EQ(target.encoding->logicalValues.at(255),
                  content == text ? QStringLiteral("unbekannt ü") : QStringLiteral("未知"));
    }
}

TEST(LdfTextEncodings, Windows1252AndAByteOrderMark)
{
    const QByteArray utf8 = sampleBytes("iso17987.ldf");
    const QByteArray windows = QTextCodec::codecForName("windows-1252")->fromUnicode(QString::fromUtf8(utf8));
    const auto unit = [](const std::optional<LdfConfig> &config) {
        return getSignalUnit(config->frames.at(QStringLiteral("FlapCommand")).signals.begin()->second);
    };
    const auto config = loadLdfBytes(windows, QStringLiteral(" windows-1252 "));
    ASSERT_TRUE(config);
    EXPECT_EQ(unit(config), QStringLiteral("°"));
    const auto marked = loadLdfBytes("\xEF\xBB\xBF" + utf8, QStringLiteral("windows-1252")); // the mark wins
    ASSERT_TRUE(marked);
    EXPECT_EQ(unit(marked), QStringLiteral("°"));
}

TEST(LdfTextEncodings, UnknownCodecIsLoggedOnceAndTheSystemsTaken)
{
    tztest::LogCapture log;
    ASSERT_TRUE(loadLdfBytes(sampleBytes("lin21.ldf"), QStringLiteral("no-such-codec")));
    EXPECT_EQ(log.count(2, "Failed to find codec for encoding no-such-codec, trying system default"), 1U);
}

} // namespace
