// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/database/dbc/DbcFixture.h"

#include <QTextCodec>

namespace {

using DbcFiles = DbcFixture;

} // namespace

TEST_F(DbcFiles, AGoodFileIsReadAndCounted)
{
    ASSERT_TRUE(parse("BO_ 1 A: 64 Ecu\n SG_ M M : 0|8@1+ (1,0) [0|1] \"\" B\n\nBO_ 9 CAPL_MSG: 8 Ecu\n\n"
                      "VAL_TABLE_ T 0 \"x\" ;\nBA_DEF_ \"X\" STRING ;\nSIG_VALTYPE_ 1 M : 0;\n"
                      "SG_MUL_VAL_ 1 M M 0-1;\n"));
    const auto lines = log.lines();
    EXPECT_EQ(lines.front(), (tztest::LogCapture::Line{info, "Loading DBC file: file.dbc, encoding: UTF-8"}));
    EXPECT_EQ(lines.back(), (tztest::LogCapture::Line{info, "Successfully parsed DBC file: file.dbc"}));
    const std::vector<std::string> statistics = {"DBC Parsing Statistics:",
                                                 "- File: file.dbc",
                                                 "- Version: 1",
                                                 "- Nodes: 2",
                                                 "  Node names: B, Ecu",
                                                 "- Messages: 1",
                                                 "  * Multiplexed Messages: 1",
                                                 "  * J1939 Messages: 0",
                                                 "  * CAN FD Messages: 1",
                                                 "  * Special Messages: 1",
                                                 "- Total Signals: 1",
                                                 "- Value Tables: 1",
                                                 "- Attributes: 1",
                                                 "- Signal Value Types: 1",
                                                 "- Signal Multiplex Values: 1"};
    ASSERT_GT(lines.size(), statistics.size());
    for (std::size_t index = 0; index < statistics.size(); ++index)
        EXPECT_EQ(lines[lines.size() - 1 - statistics.size() + index],
                  (tztest::LogCapture::Line{debug, statistics[index]}));
}

TEST_F(DbcFiles, WithoutNodesNoNamesAreCounted)
{
    ASSERT_TRUE(parseBytes("NS_ :\nBS_:\nBU_:\nBO_ 1 A: 8 Vector__XXX\n\n"));
    EXPECT_TRUE(log.has(debug, "- Nodes: 0"));
    EXPECT_EQ(log.countContaining(debug, "Node names"), 0U);
}

TEST_F(DbcFiles, AllNodeNamesAreToldHoweverMany)
{
    QByteArray nodes;
    std::string names;
    for (int number = 1000; number < 1300; ++number) {
        const std::string name = "Ecu" + std::to_string(number);
        nodes += ' ' + QByteArray::fromStdString(name);
        names += (names.empty() ? "" : ", ") + name;
    }
    ASSERT_TRUE(parseBytes("NS_ :\nBS_:\nBU_:" + nodes + "\nBO_ 1 A: 8 Vector__XXX\n\n"));
    EXPECT_TRUE(log.has(debug, "  Node names: " + names));
}

TEST_F(DbcFiles, AFileThatCannotBeOpenedFails)
{
    log.clear();
    EXPECT_FALSE(parser.parseFile(QStringLiteral("missing.dbc"), QString()));
    EXPECT_TRUE(log.has(info, "Loading DBC file: missing.dbc, encoding: "));
    EXPECT_TRUE(log.has(error, "Failed to open DBC file: missing.dbc"));
    EXPECT_EQ(log.lines().size(), 2U);
}

TEST_F(DbcFiles, AFileWithMessagesButNoNewSymbolsFails)
{
    EXPECT_FALSE(parseBytes("VERSION \"\"\nBU_: Ecu\n" + message()));
    EXPECT_TRUE(log.has(warning, "NS_ section not found"));
    EXPECT_TRUE(log.has(warning, "NS_ section not found or empty"));
    EXPECT_TRUE(log.has(error, "Failed to parse DBC file"));
    EXPECT_TRUE(model.messages.empty());
}

TEST_F(DbcFiles, AnEmptyNewSymbolsBlockIsFine)
{
    ASSERT_TRUE(parseBytes("VERSION \"\"\nNS_ :\nBS_:\nBU_: Ecu\n" + message()));
    EXPECT_TRUE(model.newSymbols.isEmpty());
}

TEST_F(DbcFiles, NewSymbolsAreTheLinesUpToTheBitTiming)
{
    ASSERT_TRUE(parseBytes("NS_\n:\n\tCM_\n :\n\n\tBA_ \nBS_ :\nBU_: Ecu\n" + message()));
    EXPECT_EQ(model.newSymbols, (QStringList{QStringLiteral("CM_"), QStringLiteral("BA_")}));
    EXPECT_TRUE(log.has(warning, "VERSION section not found or empty"));
}

TEST_F(DbcFiles, AnEmptyVersionIsNoWarning)
{
    ASSERT_TRUE(parseBytes("VERSION \"\"\nNS_ :\nBS_:\nBU_: Ecu\n" + message()));
    EXPECT_TRUE(model.version.isEmpty());
    EXPECT_EQ(countWarningsAndErrors(), 0U);
}

TEST_F(DbcFiles, ARepeatedNodeIsOneNodeAndOneWarning)
{
    ASSERT_TRUE(parseBytes("NS_ :\nBS_:\nBU_: A A Vector__XXX 9x\n" + message()));
    EXPECT_TRUE(log.has(warning, "Duplicate node name: A"));
    EXPECT_EQ(log.countContaining(warning, "Duplicate node name"), 1U);
    EXPECT_TRUE(log.has(error, "Invalid node name format: 9x"));
    EXPECT_EQ(model.nodes.size(), 2U); // A, and the receiver Ecu
    EXPECT_EQ(model.nodes.at(0).address, 255);
}

TEST_F(DbcFiles, AMissingOrMalformedNodeListIsAnErrorButNoFailure)
{
    EXPECT_TRUE(parseBytes("NS_ :\nBS_:\n" + message()));
    EXPECT_TRUE(log.has(debug, "Section 'BU_' not found in content"));
    EXPECT_TRUE(log.has(error, "BU_ section not found"));
    EXPECT_TRUE(parseBytes("NS_ :\nBS_:\nBU_ A B\n" + message()));
    EXPECT_TRUE(log.has(error, "Invalid BU_ section format"));
}

TEST_F(DbcFiles, EachParseBeginsWithAnEmptyModel)
{
    ASSERT_TRUE(parseBehindMessage("CM_ BO_ 100 \"x\";\n"));
    ASSERT_TRUE(parse("BO_ 5 Other: 8 Ecu\n\n"));
    EXPECT_EQ(model.messages.size(), 1U);
    EXPECT_EQ(model.findMessage(100), nullptr);
    EXPECT_FALSE(parser.parseFile(QStringLiteral("missing.dbc"), QString()));
    EXPECT_TRUE(model.messages.empty());
}

TEST_F(DbcFiles, AllParsersShareOneModel)
{
    ASSERT_TRUE(parseBehindMessage(""));
    const Common::DbcParser other;
    EXPECT_EQ(&Common::DbcParser::model(), &model);
    EXPECT_EQ(Common::DbcParser::model().messages.size(), 1U);
}

TEST_F(DbcFiles, BlockCommentsAndLineEndsArePrepared)
{
    QByteArray text = head() + "/* BO_ 7 Hidden: 8 Ecu \n * more **/" + message();
    ASSERT_TRUE(parseBytes(text.replace("\n", "\r")));
    EXPECT_EQ(model.messages.size(), 1U);
    ASSERT_TRUE(parseBytes(text.replace("\r", "\r\n")));
    EXPECT_EQ(model.messages.size(), 1U);
}

TEST_F(DbcFiles, UnitsAndCommentsSurviveTheirEncoding)
{
    struct Case
    {
        const char *codec;
        QString unit;
    };
    for (const Case &one : {Case{"UTF-8", QStringLiteral("\u00b0C")}, Case{"GB18030", QStringLiteral("\u6e29\u5ea6")},
                            Case{"Windows-1252", QStringLiteral("\u00b0C \u20ac")}}) {
        QTextCodec *codec = QTextCodec::codecForName(one.codec);
        const QString text =
            QString::fromLatin1(head()) + QStringLiteral("BO_ 1 A: 8 Ecu\n SG_ S : 0|8@1+ (1,0) [0|1] \"%1\" Ecu\n"
                                                         "CM_ SG_ 1 S \"%1!\";\n")
                                              .arg(one.unit);
        ASSERT_TRUE(parseBytes(codec->fromUnicode(text), one.codec)) << one.codec;
        EXPECT_EQ(signal().unit, one.unit) << one.codec;
        EXPECT_EQ(signal().comment, one.unit + u'!') << one.codec;
    }
}

TEST_F(DbcFiles, AByteOrderMarkOverridesTheEncoding)
{
    const QByteArray text = "NS_ :\nBS_:\nBU_: Ecu\nBO_ 1 A: 8 Ecu\n SG_ S : 0|8@1+ (1,0) [0|1] \"\xc2\xb0\" Ecu\n";
    ASSERT_TRUE(parseBytes("\xef\xbb\xbf" + text, "Windows-1252"));
    EXPECT_EQ(signal().unit, QStringLiteral("\u00b0"));
}

TEST_F(DbcFiles, SectionsAreCalledInTheirOrderUpToTheFirstFailure)
{
    class Recorder : public Common::DbcParser
    {
    public:
        bool parseVersion(const QString &) override { return note("version"); }
        bool parseNewSymbols(const QString &) override { return note("symbols"); }
        bool parseValueTables(const QString &) override { return note("tables"); }
        bool parseNodes(const QString &) override { return note("nodes"); }
        bool parseMessages(const QString &) override { return note("messages"); }
        bool parseComments(const QString &) override { return note("comments"); }
        bool parseAttributeDefinitions(const QString &) override { return note("definitions"); }
        bool parseAttributeDefaults(const QString &) override { return note("defaults"); }
        bool parseAttributeValues(const QString &) override { return note("values"); }
        bool parseValueDescriptions(const QString &) override { return note("descriptions"); }
        bool parseSignalValueTypes(const QString &) override { return note("types"); }
        bool parseSignalMultiplexValues(const QString &) override { return note("multiplex"); }
        void printStatistics() override { note("statistics"); }
        bool note(const char *section)
        {
            sections.append(QString::fromLatin1(section));
            return sections.last() != failing;
        }
        QStringList sections;
        QString failing;
    };
    ASSERT_TRUE(parseBehindMessage(""));
    Recorder all;
    all.failing = QStringLiteral("definitions"); // of no consequence
    EXPECT_TRUE(all.parseFile(path, QString()));
    EXPECT_EQ(all.sections.join(u' '), QStringLiteral("version symbols tables nodes messages comments definitions "
                                                      "defaults values descriptions types multiplex statistics"));
    Recorder some;
    some.failing = QStringLiteral("nodes");
    EXPECT_FALSE(some.parseFile(path, QString()));
    EXPECT_EQ(some.sections.size(), 4);
}

TEST_F(DbcFiles, AReaderOfSignalsThatFailsLosesTheMessage)
{
    class Failing : public Common::DbcParser
    {
    public:
        bool parseSignals(QStringView, DbcMessage &) override { return false; }
    };
    ASSERT_TRUE(parseBehindMessage("BO_ 5 CAPL_MSG: 0 Ecu\n\n"));
    Failing failing;
    EXPECT_FALSE(failing.parseFile(path, QString()));
    EXPECT_TRUE(log.has(error, "Failed to parse signals for message: Msg (100)"));
    EXPECT_TRUE(log.has(error, "Failed to parse signals for independent message"));
}
