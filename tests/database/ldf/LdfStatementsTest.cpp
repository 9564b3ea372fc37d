// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/ldf/LdfStatements.h"
#include "tests/support/ThreadSeconds.h"

#include <QRegularExpression>
#include <QStringList>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <functional>
#include <random>
#include <vector>

namespace {

using Common::LdfMatch;

const QString real = QStringLiteral("[-+]?[0-9]*\\.?[0-9]+(?:[eE][-+]?[0-9]+)?");
const QString raw = QStringLiteral("0x[0-9A-Fa-f]+|") + real;

struct PatternCase
{
    const char *name;
    QString pattern;
    std::function<LdfMatch(QStringView)> match;
    QStringList atoms; // what the random texts are made of
};

std::vector<PatternCase> patternCases()
{
    using namespace Common;
    const auto text = [](const char *pattern) { return QString::fromLatin1(pattern); };
    const auto words = [](const char *list) { return QString::fromLatin1(list).split(u'|'); };
    return {
        {"BlockStart", text("([\\w_]+)\\s*\\{"), [](QStringView v) { return matchLdfBlockStart(v); },
         words("a|b1|_|{|}| |\t|-")},
        {"NodeProtocol", text("LIN_protocol\\s*=\\s*\"?([^;\"\\s]+)\"?\\s*;"), matchLdfNodeProtocol,
         words("LIN_protocol|=|\"|2.1|;| |\n|{")},
        {"Slaves", text("Slaves\\s*:\\s*([\\w_,\\s]+)\\s*;"), matchLdfSlaves, words("Slaves|:|a|,| |\n|;|-|b_2")},
        {"FaultStateSignals", text("fault_state_signals\\s*=\\s*([\\w_,\\s]+)\\s*;"), matchLdfFaultStateSignals,
         words("fault_state_signals|=|a|,| |;|-")},
        {"ConfigurableFrame", text("([\\w_]+)\\s*(?:=\\s*(?:0x[0-9A-Fa-f]+|\\d+)\\s*)?;"),
         [](QStringView v) { return matchLdfConfigurableFrame(v); }, words("a|bc|=|0x|1F|7|;| |{|0")},
        {"PhysicalValue",
         text("physical_value\\s*,\\s*(%1)\\s*,\\s*(%1)\\s*,\\s*(%2)\\s*,\\s*(%2)\\s*(?:,\\s*\"([^\"]*)\")?")
             .arg(raw, real),
         matchLdfPhysicalValue, words("physical_value|,|,|0x|1A|1|0|.|e|-|+|\"| |V|1.5,|,0,|,255,")},
        {"LogicalValue", text("logical_value\\s*,\\s*(0x[0-9A-Fa-f]+|\\d+)\\s*,\\s*\"([^\"]*)\""), matchLdfLogicalValue,
         words("logical_value|,|,|0x|F|1|\"|\"| |on")},
        {"ArraySignal",
         text("(\\w+)\\s*:\\s*(\\d+)\\s*,\\s*\\{([^}]+)\\}\\s*,\\s*(\\w+)\\s*,\\s*([\\w\\s,]+)(?:\\s*;?\\s*//"
              "\\s*(.+))?"),
         matchLdfArraySignal, words("a|b:8,{1},|b|:|8|,|,b,|{|}|,c|;|//| |x")},
        {"ScalarSignal",
         text("(\\w+)\\s*:\\s*(\\d+)\\s*,\\s*([^,]+?)\\s*,\\s*(\\w+)\\s*,\\s*([\\w\\s,]+?)(?:\\s*;?\\s*//"
              "\\s*(.+))?\\s*;?\\s*$"),
         matchLdfScalarSignal, words("a|b|:|a:8,|8|,|,|-|;|//| |x")},
        {"DiagnosticSignal", text("([\\w_]+)\\s*:\\s*(\\d+)\\s*,\\s*(\\d+|\\{[^}]+\\})"), matchLdfDiagnosticSignal,
         words("a|:|:|8|,|,|{|}| |-")},
        {"NamedList", text("(\\w+)\\s*:\\s*([\\w\\s,]+)"), matchLdfNamedList, words("a|b|:|,| |\n|-|;")},
        {"Frame", text("([\\w_]+)\\s*:\\s*(0x[0-9A-Fa-f]+|\\d+)\\s*,\\s*([\\w_]+)\\s*,\\s*(\\d+)\\s*\\{([^}]+)\\}"),
         matchLdfFrame, words("a|:|:|0x|1|,|,|,|M|{|}| |f:1,M,|2{")},
        {"Placement", text("([\\w_]+)\\s*,\\s*(\\d+)"), matchLdfPlacement, words("a|,|,|1| |/|b")},
        {"DiagnosticFrame", text("(\\w+)\\s*:\\s*(0x[0-9A-Fa-f]+|[0-9]+)\\s*\\{([^}]+)\\}"),
         [](QStringView v) { return matchLdfDiagnosticFrame(v); }, words("a|:|:|0x|3C|6|{|}| |;")},
        {"EventTriggeredFrame", text("([\\w_]+)\\s*:\\s*([\\w_]+)\\s*,\\s*(0x[0-9A-Fa-f]+|\\d+)\\s*,\\s*([\\w_,\\s]+)"),
         matchLdfEventTriggeredFrame, words("a|:|:|b|,|,|0x|1|F| |-")},
        {"FrameSlot", text("([\\w_]+)\\s+delay\\s+(\\d+(?:\\.\\d+)?)\\s*ms"), matchLdfFrameSlot,
         words("a|delay| | |delay |10|.|5|ms|-")},
        {"CommandSlot", text("([\\w_]+)\\s*\\{([^}]+)\\}\\s*delay\\s+(\\d+(?:\\.\\d+)?)\\s*ms"), matchLdfCommandSlot,
         words("a|{|}|,|delay | |10|.|5|ms|{b}")},
    };
}

QString randomText(std::mt19937 &random, const QStringList &atoms, unsigned mostAtoms)
{
    QString text;
    for (unsigned length = 2 + static_cast<unsigned>(random() % mostAtoms); length > 0; --length)
        text += atoms[static_cast<int>(random() % static_cast<unsigned>(atoms.size()))];
    return text;
}

void compareWithEngine(const PatternCase &test, const QRegularExpression &pattern, const QString &text)
{
    const auto expected = pattern.match(text);
    const LdfMatch found = test.match(text);
    ASSERT_EQ(static_cast<bool>(found), expected.hasMatch()) << text.toStdString();
    if (!expected.hasMatch())
        return;
    ASSERT_EQ(found.end, expected.capturedEnd(0)) << text.toStdString();
    for (int number = 1; number <= pattern.captureCount(); ++number)
        ASSERT_EQ(found.text(static_cast<std::size_t>(number)).toStdString(), expected.captured(number).toStdString())
            << "capture " << number << " in " << text.toStdString();
}

// Three statements are read one after the other, each from the end of the one before.
struct RepeatedReader
{
    const char *name; // of its pattern case
    LdfMatch (*match)(QStringView text, qsizetype from);
    const char *statement; // whole, so that the texts hold several
};
constexpr std::array repeatedReaders{
    RepeatedReader{"BlockStart", &Common::matchLdfBlockStart, "a {"},
    RepeatedReader{"ConfigurableFrame", &Common::matchLdfConfigurableFrame, "a=0x1F;"},
    RepeatedReader{"DiagnosticFrame", &Common::matchLdfDiagnosticFrame, "a:60{;}"},
};

QStringList allFound(const RepeatedReader &reader, const QString &text)
{
    QStringList found;
    for (LdfMatch each; (each = reader.match(text, qMax(each.end, qsizetype{0})));)
        found += QStringLiteral("%1 until %2").arg(each.text(1)).arg(each.end);
    return found;
}

QStringList allExpected(const QRegularExpression &pattern, const QString &text)
{
    QStringList found;
    for (auto matches = pattern.globalMatch(text); matches.hasNext();) {
        const auto match = matches.next();
        found += QStringLiteral("%1 until %2").arg(match.captured(1)).arg(match.capturedEnd(0));
    }
    return found;
}

TEST(LdfStatements, FindWhatTheirPatternsFind)
{
    std::mt19937 random(20240611);
    for (const PatternCase &test : patternCases()) {
        SCOPED_TRACE(test.name);
        const QRegularExpression pattern(test.pattern);
        ASSERT_TRUE(pattern.isValid()) << pattern.errorString().toStdString();
        int matches = 0;
        for (int round = 0; round < 12'000; ++round) {
            QString text = randomText(random, test.atoms, 18);
            if (round % 2 == 0) // half of the texts begin as a statement does
                text.prepend(test.atoms.front());
            compareWithEngine(test, pattern, text);
            matches += test.match(text) ? 1 : 0;
            if (HasFatalFailure())
                return;
        }
        EXPECT_GT(matches, 5) << "the texts should match now and then";
    }
}

TEST(LdfStatements, ReadOneAfterTheOtherAreAllThatTheirPatternsFind)
{
    std::mt19937 random(20260111);
    const std::vector<PatternCase> cases = patternCases();
    for (const RepeatedReader &reader : repeatedReaders) {
        SCOPED_TRACE(reader.name);
        const auto test = std::find_if(cases.begin(), cases.end(), [&reader](const PatternCase &each) {
            return qstrcmp(each.name, reader.name) == 0;
        });
        ASSERT_NE(test, cases.end());
        const QRegularExpression pattern(test->pattern);
        const QStringList atoms = test->atoms + QStringList(QString::fromLatin1(reader.statement));
        int several = 0;
        for (int round = 0; round < 12'000; ++round) {
            const QString text = randomText(random, atoms, 30);
            const QStringList found = allFound(reader, text);
            ASSERT_EQ(found, allExpected(pattern, text)) << text.toStdString();
            several += found.size() > 1 ? 1 : 0;
        }
        EXPECT_GT(several, 100) << "the texts should hold several now and then";
    }
}

TEST(LdfStatements, WrittenByHandAgreeWithTheirPatterns)
{
    const QStringList texts{
        QStringLiteral("Speed: 16, 0, Master1, Slave1, Slave2 ; // in rpm ;"),
        QStringLiteral("Speed : 16 , 0x10 , Master1 , Slave1;"),
        QStringLiteral("Speed:16, , Master1,   ;"),
        QStringLiteral("Text: 16, {1, 2}, Slave1, Master1; //   "),
        QStringLiteral("// Old: 8, 1, A, B;"),
        QStringLiteral("physical_value, 0, 0xFF, 0.5, -40, \"\u00B0C\""),
        QStringLiteral("physical_value, 0, 250, .5, +1e3, \"\""),
        QStringLiteral("physical_value, 0, 250, 1., 0"),
        QStringLiteral("physical_value, 0x, 250, 1, 0"),
        QStringLiteral("logical_value, 0x1, \"a; b\""),
        QStringLiteral("LIN_protocol=LIN_protocol=\"2.1\";"),
        QStringLiteral("LIN_protocol = x LIN_protocol = 2.0 ;"),
        QStringLiteral("LIN_protocol = \"\"; LIN_protocol = \"2.2\" ;"),
        QStringLiteral("Slaves: ;"),
        QStringLiteral("Slaves:;"),
        QStringLiteral("Slaves: A Slaves: B;"),
        QStringLiteral("F: 0x1F, M, 8 { A, 0; B, 8; }"),
        QStringLiteral("F: 0X1F, M, 8 { A, 0; }"),
        QStringLiteral("a{}b{c}delay 1ms"),
        QStringLiteral("a{b{}delay 1 ms;a{1}delay 2.5 ms"),
        QStringLiteral("F delay 10.5.5 ms"),
        QStringLiteral("delay delay delay 5ms"),
        QStringLiteral("\u00C4F: 1, \u00E9"),
    };
    for (const PatternCase &test : patternCases()) {
        SCOPED_TRACE(test.name);
        const QRegularExpression pattern(test.pattern);
        for (const QString &text : texts)
            compareWithEngine(test, pattern, text);
    }
}

void expectQuick(const PatternCase &test, const QString &text)
{
    const double start = tztest::threadSeconds();
    test.match(text);
    EXPECT_LT(tztest::threadSeconds() - start, 2.0) << test.name << " on " << text.left(60).toStdString();
}

TEST(LdfStatements, StayLinearOnLongTextsOfAnything)
{
    constexpr int size = 60'000; // a quadratic reader needs far more than the time allowed
    const QStringList pieces{QStringLiteral(" "),       QStringLiteral("a"),          QStringLiteral("1"),
                             QStringLiteral(","),       QStringLiteral("{"),          QStringLiteral("a:1,{"),
                             QStringLiteral("a:1, "),   QStringLiteral("a{"),         QStringLiteral("LIN_protocol="),
                             QStringLiteral("\""),      QStringLiteral("Slaves:"),    QStringLiteral("a "),
                             QStringLiteral("a:1,b,1"), QStringLiteral("a:1,b,1,"),   QStringLiteral("a delay 1"),
                             QStringLiteral("a = 0x1"), QStringLiteral("a:1,{1},b,"), QStringLiteral("a:1,2,b,")};
    for (const QString &piece : pieces) {
        const QString tail = piece.repeated(size / piece.size());
        for (const PatternCase &test : patternCases()) {
            expectQuick(test, tail);
            expectQuick(test, test.atoms.front() + QStringLiteral(":1,") + tail);
            expectQuick(test, test.atoms.front() + u'=' + tail + u'}');
        }
    }
}

} // namespace
