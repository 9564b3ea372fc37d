// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/dbc/DbcParser.h"
#include "database/dbc/DbcWriter.h"
#include "database/ldf/LdfParser.h"
#include "tests/support/TempWorkDir.h"

#include <QFile>

#include <gtest/gtest.h>

namespace {

/// One way to put the texts of a small file into bytes. The bytes are written out, so that they don't hang on the
/// codecs that read them.
struct EncodingCase
{
    const char *name;
    const char *codec; ///< as a user names it
    QByteArray mark;   ///< byte order mark
    QByteArray unit;
    QByteArray comment;
    QByteArray description;
    QString unitText;
    QString commentText;
    QString descriptionText;
};

void PrintTo(const EncodingCase &encoding, std::ostream *stream)
{
    *stream << encoding.name;
}

const QString degree = QString(QChar(0x00B0)) + u'C';
const QString chinese = QString(QChar(0x6E29)) + QChar(0x5EA6);                          // "temperature"
const QString german = QStringLiteral("K") + QChar(0x00FC) + QStringLiteral("hlmittel"); // "coolant"
const QString danish =
    QStringLiteral("K") + QChar(0x00F8) + QStringLiteral("lemiddel"); // the same, four bytes in GB18030
const QString euro = QString(QChar(0x20AC));

std::vector<EncodingCase> encodingCases()
{
    return {
        {"Utf8", "UTF-8", "", "\xC2\xB0\x43", "\xE6\xB8\xA9\xE5\xBA\xA6", "\xE2\x82\xAC", degree, chinese, euro},
        {"Utf8WithMark", "UTF-8", "\xEF\xBB\xBF", "\xC2\xB0\x43", "\xE6\xB8\xA9\xE5\xBA\xA6", "\xE2\x82\xAC", degree,
         chinese, euro},
        {"MarkOverridesTheName", "windows-1252", "\xEF\xBB\xBF", "\xC2\xB0\x43", "K\xC3\xBChlmittel", "\xE2\x82\xAC",
         degree, german, euro},
        {"Gb18030", "GB18030", "", "\xA1\xE3\x43", "\xCE\xC2\xB6\xC8", "\xCE\xC2\xB6\xC8", degree, chinese, chinese},
        {"Gb18030FourBytes", "GB18030", "", "\xA1\xE3\x43",
         "K\x81\x30\x8B\x33"
         "lemiddel",
         "\xCE\xC2", degree, danish, chinese.left(1)},
        {"Gbk", "GBK", "", "\xA1\xE3\x43", "\xCE\xC2\xB6\xC8", "\xB6\xC8", degree, chinese, chinese.mid(1)},
        {"Windows1252", "Windows-1252", "", "\xB0\x43", "K\xFChlmittel", "\x80", degree, german, euro},
    };
}

class EncodingCorpus : public testing::TestWithParam<EncodingCase>
{
protected:
    QString write(const QString &name, const QByteArray &bytes)
    {
        const QString path = m_folder.filePath(name);
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
        return path;
    }

    QByteArray dbcBytes() const
    {
        const EncodingCase &encoding = GetParam();
        return encoding.mark +
               "VERSION \"\"\n\nNS_ :\n\nBS_:\n\nBU_: Ecu\n\n"
               "BO_ 100 Coolant: 8 Ecu\n"
               " SG_ Temperature : 0|8@1+ (1,-40) [-40|215] \"" +
               encoding.unit + "\" Ecu\n\nCM_ BO_ 100 \"" + encoding.comment + "\";\nCM_ SG_ 100 Temperature \"" +
               encoding.comment + "\";\nVAL_ 100 Temperature 255 \"" + encoding.description + "\" ;\n";
    }

    static void expectTexts(const DbcFile &file)
    {
        ASSERT_EQ(file.messages.size(), 1U);
        ASSERT_EQ(file.messages[0].signals.size(), 1U);
        const DbcSignal &signal = file.messages[0].signals[0];
        EXPECT_EQ(signal.unit, GetParam().unitText);
        EXPECT_EQ(signal.comment, GetParam().commentText);
        EXPECT_EQ(file.messages[0].comment, GetParam().commentText);
        EXPECT_EQ(signal.valueDescriptions.at(255), GetParam().descriptionText);
    }

    tztest::TempWorkDir m_folder;
};

TEST_P(EncodingCorpus, DbcKeepsUnitsCommentsAndDescriptionsThroughLoadAndSave)
{
    const QString codec = QString::fromLatin1(GetParam().codec);
    Common::DbcParser parser;
    ASSERT_TRUE(parser.parseFile(write(QStringLiteral("own.dbc"), dbcBytes()), codec));
    expectTexts(Common::DbcParser::model());

    const DbcFile loaded = Common::DbcParser::model();
    const QString saved = m_folder.filePath(QStringLiteral("saved.dbc"));
    ASSERT_TRUE(DbcWriter(loaded).save(saved, codec));
    ASSERT_TRUE(parser.parseFile(saved, codec));
    expectTexts(Common::DbcParser::model());

    const bool isAsNamed = GetParam().mark.isEmpty() || codec == QLatin1String("UTF-8");
    if (!isAsNamed)
        return; // written in the named codec, whatever the mark said
    QFile file(saved);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QByteArray bytes = file.readAll();
    EXPECT_TRUE(bytes.contains("\"" + GetParam().unit + "\"")) << bytes.toHex(' ').toStdString();
    EXPECT_TRUE(bytes.contains("\"" + GetParam().comment + "\"")) << bytes.toHex(' ').toStdString();
}

TEST_P(EncodingCorpus, LdfKeepsUnitsAndDescriptions)
{
    const EncodingCase &encoding = GetParam();
    const QByteArray bytes =
        encoding.mark +
        "LIN_description_file;\nLIN_protocol_version = \"2.1\";\nLIN_speed = 19.2 kbps;\n"
        "Nodes {\n  Master: Ecu, 5 ms, 0.1 ms;\n  Slaves: Sensor;\n}\n"
        "Signals {\n  Temperature: 8, 0, Sensor, Ecu;\n}\n"
        "Frames {\n  Coolant: 16, Sensor, 2 {\n    Temperature, 0;\n  }\n}\n"
        "Node_attributes {\n  Sensor {\n    LIN_protocol = \"2.1\";\n    configured_NAD = 0x01;\n  }\n}\n"
        "Schedule_tables {\n  Normal {\n    Coolant delay 10 ms;\n  }\n}\n"
        "Signal_encoding_types {\n  Celsius {\n    physical_value, 0, 254, 1, -40, \"" +
        encoding.unit + "\";\n    logical_value, 255, \"" + encoding.description +
        "\";\n  }\n}\nSignal_representation {\n  Celsius: Temperature;\n}\n";
    LdfConfig config;
    ASSERT_TRUE(Common::LdfParser::loadLdfConfig(config, write(QStringLiteral("own.ldf"), bytes),
                                                 QString::fromLatin1(encoding.codec)));
    const LdfSignal &signal = config.frames.at(QStringLiteral("Coolant")).signals.at(QStringLiteral("Temperature"));
    ASSERT_TRUE(signal.encoding);
    EXPECT_EQ(signal.encoding->physicalRanges.at(254).unit, encoding.unitText);
    EXPECT_EQ(signal.encoding->logicalValues.at(255), encoding.descriptionText);
}

TEST_P(EncodingCorpus, MergeKeepsTheTextsOfTheFile)
{
    const QString codec = QString::fromLatin1(GetParam().codec);
    const QString merged = m_folder.filePath(QStringLiteral("merged.dbc"));
    DbcMessage message;
    message.id = 200;
    message.name = QStringLiteral("Added");
    message.size = 8;
    message.transmitter = QStringLiteral("Ecu");
    ASSERT_TRUE(DbcWriter::merge(write(QStringLiteral("own.dbc"), dbcBytes()), merged, {message}, codec));
    Common::DbcParser parser;
    ASSERT_TRUE(parser.parseFile(merged, codec));
    const DbcFile &file = Common::DbcParser::model();
    ASSERT_EQ(file.messages.size(), 2U);
    EXPECT_EQ(file.messages[0].signals.at(0).unit, GetParam().unitText);
    EXPECT_EQ(file.messages[0].comment, GetParam().commentText);
    EXPECT_EQ(file.messages[1].name, QStringLiteral("Added"));
}

INSTANTIATE_TEST_SUITE_P(All, EncodingCorpus, testing::ValuesIn(encodingCases()),
                         [](const auto &test) { return std::string(test.param.name); });

} // namespace
