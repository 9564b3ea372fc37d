// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/dbc/DbcStatements.h"

#include "database/dbc/DbcAttributeBlocks.h"
#include "tests/database/dbc/DbcSamples.h"

#include <QLocale>

#include <gtest/gtest.h>

#include <limits>

using tztest::makeMessage;
using tztest::makeNode;
using tztest::makeSignal;

namespace {

std::string fileText(const DbcFile &file)
{
    return DbcStatements::fileText(file).toStdString();
}

// The line of a signal in the text of a file that holds it alone.
std::string signalLine(const DbcSignal &signal)
{
    DbcFile file;
    file.messages = {makeMessage(1, "M", {signal})};
    const std::string text = fileText(file);
    const std::size_t begin = text.find(" SG_ ");
    return text.substr(begin, text.find('\n', begin) - begin);
}

DbcAttributeDefinition makeDefinition(const QString &name, const QString &type)
{
    DbcAttributeDefinition definition;
    definition.name = name;
    definition.valueType = type;
    return definition;
}

std::string defaultLine(const QString &type, const QVariant &value)
{
    DbcFile file;
    file.attributeDefinitions = {makeDefinition("A", type)};
    file.attributeDefinitions[0].defaultValue = value;
    return DbcStatements::attributeDefaultsText(file).toStdString();
}

DbcFile fullFile()
{
    DbcFile file;
    file.version = "1.0";
    file.newSymbols = QStringList{"CM_", "BA_"};
    file.nodes = {makeNode("Ecu"), makeNode("Tool")};
    file.nodes[0].comment = "never written";
    file.nodes[0].attributes = {{"NodeText", "on \\\"x\\\""}, {"NodeNumber", "7"}};
    file.valueTables = {{"Empty", {}}, {"OnOff", {{10, "ten"}, {0, "Off"}, {1, "On"}}}};

    DbcSignal speed = makeSignal("Speed", 7);
    speed.isBigEndian = true;
    speed.isSigned = true;
    speed.size = 16;
    speed.factor = 0.1;
    speed.offset = -40.0;
    speed.minimum = -40.0;
    speed.maximum = 6513.5;
    speed.unit = "km/h 100%1";
    speed.receivers = QStringList{"Tool", "Ecu"};
    speed.comment = "the speed";
    speed.valueDescriptions = {{300, "fast"}, {2, "slow"}};
    speed.attributes = {{"SigAttr", "3"}};
    DbcMessage message = makeMessage(0x123, "Status", {speed, makeSignal("Plain", 24)});
    message.comment = "a message";
    message.attributes = {{"MsgText", "hello"}};
    DbcMessage silent = makeMessage(5, "Silent", {makeSignal("Told")});
    silent.signals[0].comment = "only the signal";
    file.messages = {message, silent};

    DbcMessage special = makeMessage(0xC0000000, "VECTOR__INDEPENDENT_SIG_MSG", {makeSignal("Free")});
    special.size = 0;
    special.transmitter = "Vector__XXX";
    special.comment = "never written";
    special.attributes = {{"MsgText", "s"}};
    special.signals[0].valueDescriptions = {{1, "one"}};
    special.signals[0].attributes = {{"SigAttr", "4"}};
    file.specialMessages = {special};

    file.comments = QStringList{"global"};
    DbcAttributeDefinition number = makeDefinition("NodeNumber", "INT");
    number.objectType = "BU_";
    number.minimum = "0";
    number.maximum = "10";
    number.defaultValue = "5";
    DbcAttributeDefinition choice = makeDefinition("Choice", "ENUM");
    choice.enumValues = QStringList{"a", "b c"};
    choice.defaultValue = "a";
    DbcAttributeDefinition text = makeDefinition("NodeText", "STRING");
    text.objectType = "BU_";
    text.defaultValue = "";
    DbcAttributeDefinition factor = makeDefinition("Real", "FLOAT");
    factor.minimum = "-1.5";
    factor.maximum = "1e9";
    factor.defaultValue = "0.25";
    DbcAttributeDefinition untold = makeDefinition("NoDefault", "HEX");
    untold.minimum = "0";
    untold.maximum = "255";
    file.attributeDefinitions = {number, choice, text, factor, untold};
    file.attributes = {{"Choice", "1"}, {"Real", "2.5"}, {"Un\\\"known\\\"", "3\\\"4"}};
    file.signalValueTypes = {{0x123, "Speed", 1}};
    file.signalMultiplexValues = {{0x123, "Speed", "Plain", "1-2, 5-9"}};
    return file;
}

} // namespace

TEST(DbcStatements, AnEmptyFile)
{
    EXPECT_EQ(fileText(DbcFile()), "VERSION \"\"\n\nNS_ :\n\nBS_:\n\nBU_:\n\n\n\n\n\n\n\n\n\n\n");
}

TEST(DbcStatements, EveryStatementInItsPlace)
{
    EXPECT_EQ(fileText(fullFile()), "VERSION \"1.0\"\n\n"
                                    "NS_ :\n\tCM_\n\tBA_\n\n"
                                    "BS_:\n\n"
                                    "BU_: Ecu Tool\n\n"
                                    "VAL_TABLE_ OnOff 0 \"Off\" 1 \"On\" 10 \"ten\" ;\n"
                                    "\n"
                                    "BO_ 3221225472 VECTOR__INDEPENDENT_SIG_MSG: 0 Vector__XXX\n"
                                    " SG_ Free : 0|8@1+ (1,0) [0|255] \"\" Vector__XXX\n"
                                    "\n"
                                    "BO_ 291 Status: 8 Ecu\n"
                                    " SG_ Speed : 7|16@0- (0.1,-40) [-40|6513.5] \"km/h 100%1\" Tool,Ecu\n"
                                    " SG_ Plain : 24|8@1+ (1,0) [0|255] \"\" Vector__XXX\n"
                                    "\n"
                                    "BO_ 5 Silent: 8 Ecu\n"
                                    " SG_ Told : 0|8@1+ (1,0) [0|255] \"\" Vector__XXX\n"
                                    "\n"
                                    "\n"
                                    "CM_ \"global\";\n"
                                    "CM_ BO_ 291 \"a message\";\n"
                                    "CM_ SG_ 291 Speed \"the speed\";\n"
                                    "CM_ SG_ 5 Told \"only the signal\";\n"
                                    "\n"
                                    "BA_DEF_ BU_ \"NodeNumber\" INT 0 10;\n"
                                    "BA_DEF_ \"Choice\" ENUM \"a\",\"b c\";\n"
                                    "BA_DEF_ BU_ \"NodeText\" STRING ;\n"
                                    "BA_DEF_ \"Real\" FLOAT -1.5 1e9;\n"
                                    "BA_DEF_ \"NoDefault\" HEX 0 255;\n"
                                    "\n"
                                    "BA_DEF_DEF_ \"NodeNumber\" 5;\n"
                                    "BA_DEF_DEF_ \"Choice\" \"a\";\n"
                                    "BA_DEF_DEF_ \"NodeText\" \"\";\n"
                                    "BA_DEF_DEF_ \"Real\" 0.250000;\n"
                                    "\n"
                                    "BA_ \"Choice\" \"1\";\n"
                                    "BA_ \"Real\" 2.5;\n"
                                    "BA_ \"Un\"known\"\" 3\\\"4;\n"
                                    "BA_ \"NodeText\" BU_ Ecu \"on \\\"x\\\"\";\n"
                                    "BA_ \"NodeNumber\" BU_ Ecu 7;\n"
                                    "BA_ \"MsgText\" BO_ 3221225472 s;\n"
                                    "BA_ \"SigAttr\" SG_ 3221225472 Free 4;\n"
                                    "BA_ \"MsgText\" BO_ 291 hello;\n"
                                    "BA_ \"SigAttr\" SG_ 291 Speed 3;\n"
                                    "\n"
                                    "VAL_ 3221225472 Free 1 \"one\";\n"
                                    "VAL_ 291 Speed 2 \"slow\" 300 \"fast\";\n"
                                    "\n"
                                    "SIG_VALTYPE_ 291 Speed : 1;\n"
                                    "\n"
                                    "SG_MUL_VAL_ 291 Speed Plain 1-2, 5-9;\n"
                                    "\n");
}

TEST(DbcStatements, AFileTextAttributeLosesTheMarksBeforeItsQuotes)
{
    DbcFile file;
    file.attributeDefinitions = {makeDefinition("T", "STRING")};
    file.attributes = {{"T", "say \\\"hi\\\""}};
    EXPECT_EQ(DbcStatements::attributeValuesText(file), "BA_ \"T\" \"say \"hi\"\";\n");
}

TEST(DbcStatements, TheFirstDefinitionOfANameDecidesOnQuotes)
{
    DbcFile file;
    file.attributeDefinitions = {makeDefinition("A", "INT"), makeDefinition("A", "STRING")};
    file.attributes = {{"A", "1"}};
    EXPECT_EQ(DbcStatements::attributeValuesText(file), "BA_ \"A\" 1;\n");
}

TEST(DbcStatements, DefaultsByType)
{
    EXPECT_EQ(defaultLine("INT", "-12"), "BA_DEF_DEF_ \"A\" -12;\n");
    EXPECT_EQ(defaultLine("HEX", "9223372036854775807"), "BA_DEF_DEF_ \"A\" 9223372036854775807;\n");
    EXPECT_EQ(defaultLine("INT", "9223372036854775808"), "BA_DEF_DEF_ \"A\" 0;\n"); // beyond 64 bits
    EXPECT_EQ(defaultLine("HEX", "0x10"), "BA_DEF_DEF_ \"A\" 0;\n");
    EXPECT_EQ(defaultLine("INT", "1.5"), "BA_DEF_DEF_ \"A\" 0;\n");
    EXPECT_EQ(defaultLine("INT", ""), "BA_DEF_DEF_ \"A\" 0;\n");
    EXPECT_EQ(defaultLine("FLOAT", "1.23456789"), "BA_DEF_DEF_ \"A\" 1.234568;\n");
    EXPECT_EQ(defaultLine("FLOAT", "1e3"), "BA_DEF_DEF_ \"A\" 1000.000000;\n");
    EXPECT_EQ(defaultLine("FLOAT", "inf"), "BA_DEF_DEF_ \"A\" 0.000000;\n");
    EXPECT_EQ(defaultLine("FLOAT", "?"), "BA_DEF_DEF_ \"A\" 0.000000;\n");
    EXPECT_EQ(defaultLine("STRING", "x"), "BA_DEF_DEF_ \"A\" \"x\";\n");
    EXPECT_EQ(defaultLine("ENUM", "x"), "BA_DEF_DEF_ \"A\" \"x\";\n");
    EXPECT_EQ(defaultLine("ODD", "x"), "BA_DEF_DEF_ \"A\" ;\n");
    EXPECT_EQ(defaultLine("INT", QVariant()), "");
}

TEST(DbcStatements, DefinitionsWithoutARange)
{
    DbcFile file;
    file.attributeDefinitions = {makeDefinition("I", "INT"), makeDefinition("E", "ENUM"), makeDefinition("O", "ODD")};
    EXPECT_EQ(DbcStatements::attributeDefinitionsText(file),
              "BA_DEF_ \"I\" INT  ;\nBA_DEF_ \"E\" ENUM ;\nBA_DEF_ \"O\" ODD ;\n");
}

TEST(DbcStatements, MultiplexMarks)
{
    DbcSignal signal = makeSignal("S");
    signal.isMultiplexed = true;
    signal.multiplexValue = 3;
    EXPECT_EQ(signalLine(signal), " SG_ S m3 : 0|8@1+ (1,0) [0|255] \"\" Vector__XXX");
    signal.multiplexValue = -1;
    EXPECT_EQ(signalLine(signal), " SG_ S m-1 : 0|8@1+ (1,0) [0|255] \"\" Vector__XXX");
    signal.isMultiplexor = true; // goes first
    EXPECT_EQ(signalLine(signal), " SG_ S M : 0|8@1+ (1,0) [0|255] \"\" Vector__XXX");
}

TEST(DbcStatements, SixSignificantDigitsWhateverTheLocale)
{
    const QLocale before;
    QLocale::setDefault(QLocale(QLocale::German));
    DbcSignal signal = makeSignal("S");
    signal.factor = 0.123456789;
    signal.offset = -1234567.0;
    signal.minimum = -3.4028234663852886e38;
    signal.maximum = 12345.678;
    EXPECT_EQ(signalLine(signal), " SG_ S : 0|8@1+ (0.123457,-1.23457e+06) [-3.40282e+38|12345.7] \"\" Vector__XXX");
    QLocale::setDefault(before);
}

TEST(DbcStatements, IdentifiersAreWrittenAsStored)
{
    DbcFile file;
    file.messages = {makeMessage(1024, "M"), makeMessage(0x80000400, "N")};
    file.messages[0].isExtended = true;
    EXPECT_NE(fileText(file).find("BO_ 1024 M: 8 Ecu\n\nBO_ 2147484672 N: 8 Ecu\n"), std::string::npos);
}

TEST(DbcStatements, DescriptionsInAscendingOrderWhateverTheMap)
{
    DbcFile file;
    DbcSignal signal = makeSignal("S");
    std::string expected = "VAL_ 1 S";
    for (std::uint32_t i = 0; i < 200; ++i) {
        const std::uint32_t key = (i * 37) % 200;
        signal.valueDescriptions[key] = QString::number(key);
        expected += ' ' + std::to_string(i) + " \"" + std::to_string(i) + '"';
    }
    signal.valueDescriptions[std::numeric_limits<std::uint32_t>::max()] = "most";
    file.messages = {makeMessage(1, "M", {signal})};
    EXPECT_NE(fileText(file).find(expected + " 4294967295 \"most\";\n"), std::string::npos);
}
