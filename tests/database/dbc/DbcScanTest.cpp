// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/dbc/DbcScan.h"
#include "tests/database/dbc/DbcPatterns.h"
#include "tests/database/dbc/RandomTexts.h"

#include <gtest/gtest.h>

#include <QRegularExpression>
#include <QStringList>

namespace {

using RandomTexts::anyOf;
using RandomTexts::mutated;
using Captures = QStringList;
using Statements = std::vector<Captures>; // of each statement: its captures, the last one its end

Statements byPattern(const QRegularExpression &expression, const QString &text)
{
    Statements statements;
    for (auto match = expression.globalMatch(text); match.hasNext();) {
        const QRegularExpressionMatch next = match.next();
        Captures captures;
        for (int group = 1; group <= expression.captureCount(); ++group)
            captures.append(next.captured(group));
        captures.append(QString::number(next.capturedEnd()));
        statements.push_back(captures);
    }
    return statements;
}

template <typename Find, typename Fields> Statements byHand(const QString &text, Find find, Fields fields)
{
    Statements statements;
    qsizetype position = 0;
    while (const auto statement = find(QStringView(text), position)) {
        Captures captures;
        for (const QStringView field : fields(*statement))
            captures.append(field.toString());
        captures.append(QString::number(statement->end));
        statements.push_back(captures);
        position = statement->end;
    }
    return statements;
}

template <typename Find, typename Fields>
void expectSame(const QString &pattern, const QStringList &samples, Find find, Fields fields)
{
    const QRegularExpression expression(pattern);
    std::mt19937 random(static_cast<unsigned>(pattern.size()));
    std::size_t found = 0;
    for (int run = 0; run < 40000; ++run) {
        QString text;
        for (std::size_t count = 1 + random() % 3; count > 0; --count) {
            text += mutated(anyOf(samples, random), random) + (random() % 2 == 0 ? QStringLiteral("\n") : QString());
        }
        const Statements wanted = byPattern(expression, text);
        found += wanted.size();
        ASSERT_EQ(byHand(text, find, fields), wanted) << text.toStdString();
    }
    EXPECT_GT(found, 10000U) << "the texts are too seldom statements to show anything";
}

using Fields = std::vector<QStringView>;
} // namespace

TEST(DbcScan, MessageHeadsAsThePattern)
{
    expectSame(DbcPatterns::messageHead,
               {QStringLiteral("BO_ 100 Msg: 8 Ecu"), QStringLiteral("BO_  1\nBO_:\t 0 Vector__XXX"),
                QStringLiteral("CM_ BO_ 1 \"x\";")},
               DbcScan::findMessageHead, [](const DbcScan::MessageHead &head) {
                   return Fields{head.number, head.name, head.size, head.transmitter};
               });
}

TEST(DbcScan, AttributeDefinitionsAsThePattern)
{
    expectSame(DbcPatterns::attributeDefinition,
               {QStringLiteral("BA_DEF_ BO_ \"Cycle\" INT 0 100;"), QStringLiteral("BA_DEF_ \"Name\" STRING ;"),
                QStringLiteral("BA_DEF_  SG_  \"E\" ENUM  \"a\",\"b\";")},
               DbcScan::findAttributeDefinition, [](const DbcScan::AttributeDefinition &definition) {
                   return Fields{definition.objectType, definition.name, definition.valueType, definition.range};
               });
}

TEST(DbcScan, AttributeDefaultsAsThePattern)
{
    expectSame(DbcPatterns::attributeDefault,
               {QStringLiteral("BA_DEF_DEF_ \"Cycle\" 100;"), QStringLiteral("BA_DEF_DEF_  \"A\"  ;"),
                QStringLiteral("BA_DEF_DEF_ \"A\" ;"), QStringLiteral("BA_DEF_DEF_ \"A\" \"text\" ;")},
               DbcScan::findAttributeDefault, [](const DbcScan::AttributeDefault &attribute) {
                   return Fields{attribute.name, attribute.value};
               });
}

TEST(DbcScan, AttributeValuesAsThePattern)
{
    expectSame(DbcPatterns::attributeValue,
               {QStringLiteral("BA_ \"A\" 5;"), QStringLiteral("BA_ \"A\" BO_ 100 5;"),
                QStringLiteral("BA_ \"A\"  BO_  100  ;"), QStringLiteral("BA_ \"A\" SG_ 100 Sig 5 ;"),
                QStringLiteral("BA_ \"A\" SG_ 100 Sig  ;"), QStringLiteral("BA_ \"A\" BU_ Ecu \"x y\";"),
                QStringLiteral("BA_ \"A\" BO_ ;"), QStringLiteral("BA_ \"A\" BO_;"), QStringLiteral("BA_ \"A\" BO_  ;"),
                QStringLiteral("BA_ \"A\" BO_ 100 ;"), QStringLiteral("BA_ \"A\" ;"), QStringLiteral("BA_ \"A\"  ;"),
                QStringLiteral("BA_ \"A\" SG_ 7x 1 2  ;")},
               DbcScan::findAttributeValue, [](const DbcScan::AttributeValue &attribute) {
                   return Fields{attribute.name, attribute.objectKind, attribute.number, attribute.objectName,
                                 attribute.value};
               });
}

TEST(DbcScan, ValuePairsAsThePattern)
{
    expectSame(
        DbcPatterns::valuePair,
        {QStringLiteral("0 \"off\" 1 \"on\""), QStringLiteral("-1 \"\" 12x 3  \"y\""), QStringLiteral("5 \"open")},
        DbcScan::findValuePair, [](const DbcScan::ValuePair &pair) {
            return Fields{pair.key, pair.text};
        });
}

TEST(DbcScan, NumberRangesAsThePattern)
{
    expectSame(DbcPatterns::numberRange,
               {QStringLiteral("0-3, 5-5"), QStringLiteral("1-2-3-4"), QStringLiteral("12 -3-")},
               DbcScan::findNumberRange, [](const DbcScan::NumberRange &range) {
                   return Fields{range.first, range.last};
               });
}

TEST(DbcScan, CommentBlocksAsThePattern)
{
    const QStringList samples = {QStringLiteral("CM_ BO_ 100 \"text\";"),
                                 QStringLiteral("CM_ SG_ 100 Sig \"say \"hello\", world\" ;"),
                                 QStringLiteral("CM_ BU_ Ecu \"line\nline\";"), QStringLiteral("CM_ \"global\";"),
                                 QStringLiteral("CM_ BO_ x CM_ SG_ 1 A \"t\" ; ")};
    std::mt19937 random(11);
    const QRegularExpression pattern(DbcPatterns::commentBlock);
    for (int run = 0; run < 40000; ++run) {
        QString text;
        for (std::size_t count = 1 + random() % 3; count > 0; --count)
            text += mutated(anyOf(samples, random), random);
        Captures wanted;
        for (auto match = pattern.globalMatch(text); match.hasNext();)
            wanted.append(match.next().captured());
        Captures found;
        qsizetype position = 0;
        while (const auto block = DbcScan::findCommentBlock(text, position)) {
            found.append(block->text.toString());
            position = block->end;
        }
        ASSERT_EQ(found, wanted) << text.toStdString();
    }
}

namespace {

using CommentFinder = std::optional<DbcScan::Comment> (*)(QStringView);

void expectSameComment(const QRegularExpression &pattern, CommentFinder find, const QString &block)
{
    const auto match = pattern.match(block);
    const auto comment = find(block);
    ASSERT_EQ(comment.has_value(), match.hasMatch()) << block.toStdString();
    if (!comment)
        return;
    Captures found;
    for (const QStringView field : {comment->number, comment->name})
        if (!field.isEmpty())
            found.append(field.toString());
    found.append(comment->text.toString());
    EXPECT_EQ(found, match.capturedTexts().mid(1)) << block.toStdString();
}

} // namespace

TEST(DbcScan, CommentsAsTheirPatterns)
{
    const QStringList samples = {
        QStringLiteral("CM_ BO_ 100 \"text\";"), QStringLiteral("CM_ SG_ 100 Sig \"say \"hello\", world\" ;"),
        QStringLiteral("CM_ BU_ Ecu \"\";"), QStringLiteral("CM_ SG_ 1 CM_ BO_ 5 \"a\"b\" ; ")};
    const QRegularExpression messageComment(DbcPatterns::messageComment);
    const QRegularExpression signalComment(DbcPatterns::signalComment);
    const QRegularExpression nodeComment(DbcPatterns::nodeComment);
    std::mt19937 random(12);
    for (int run = 0; run < 20000; ++run) {
        const QString block = mutated(anyOf(samples, random), random);
        expectSameComment(messageComment, DbcScan::findMessageComment, block);
        expectSameComment(signalComment, DbcScan::findSignalComment, block);
        expectSameComment(nodeComment, DbcScan::findNodeComment, block);
    }
}

TEST(DbcScan, SignalBodiesAsThePattern)
{
    const QRegularExpression pattern(DbcPatterns::signalBody);

    const QRegularExpression layoutPattern(DbcPatterns::signalLayout);
    const QStringList samples = {QStringLiteral("0|8@1+ (1,0) [0|255] \"V\" Ecu,B"),
                                 QStringLiteral("7|16@0-(0.5,-40)[ -1 | 2 ]\"\" Vector__XXX"),
                                 QStringLiteral("1|1@1+ (1,0) [0|1] unit  A B"),
                                 QStringLiteral("1|1@1+ (1,0) [0|1] \"open A")};
    std::mt19937 random(13);
    for (int run = 0; run < 40000; ++run) {
        QString line = mutated(anyOf(samples, random), random);
        line.remove(u'\n');
        const auto match = pattern.match(line);
        const auto body = DbcScan::readSignalBody(line);
        ASSERT_EQ(body.has_value(), match.hasMatch()) << line.toStdString();
        if (!body)
            continue;
        const auto layout = layoutPattern.match(match.captured(1));
        ASSERT_TRUE(layout.hasMatch());
        const Captures found = {body->startBit.toString(), body->size.toString(), body->scaling.toString(),
                                body->range.toString(),    body->unit.toString(), body->receivers.toString()};
        EXPECT_EQ(found, (Captures{layout.captured(1), layout.captured(2), match.captured(2), match.captured(3),
                                   match.captured(4), match.captured(5)}))
            << line.toStdString();
        EXPECT_EQ(body->isBigEndian, layout.captured(3) == QStringLiteral("0"));
        EXPECT_EQ(body->isSigned, layout.captured(4) == QStringLiteral("-"));
    }
}

TEST(DbcScan, ValueDescriptionsAsThePattern)
{
    const QRegularExpression pattern(DbcPatterns::valueDescription);
    const QStringList samples = {QStringLiteral("VAL_ 100 Sig 0 \"a\" ;"),
                                 QStringLiteral("VAL_ Table 0 \"a\";"),
                                 QStringLiteral("VAL_ 100 ;"),
                                 QStringLiteral("VAL_ 100 Sig;"),
                                 QStringLiteral("VAL_100 Sig 5 ;"),
                                 QStringLiteral("VAL_ 1x y z;")};
    std::mt19937 random(14);
    for (int run = 0; run < 40000; ++run) {
        QString text = mutated(anyOf(samples, random), random);
        text.remove(u'\n');
        const auto match = pattern.match(text);
        const auto description = DbcScan::readValueDescription(text);
        ASSERT_EQ(description.has_value(), match.hasMatch()) << text.toStdString();
        if (!description)
            continue;
        EXPECT_EQ(
            (Captures{description->number.toString(), description->name.toString(), description->pairs.toString()}),
            (Captures{match.captured(1), match.captured(2), match.captured(3)}))
            << text.toStdString();
    }
}
