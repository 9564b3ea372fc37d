// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/dbc/DbcScan.h"
#include "database/text/TextCursor.h"

using Common::TextCursor;

namespace DbcScan {

namespace {

constexpr QStringView definitionKeyword = u"BA_DEF_";
constexpr QStringView defaultKeyword = u"BA_DEF_DEF_";
constexpr QStringView valueKeyword = u"BA_";
constexpr QStringView objectKinds[] = {u"SG_", u"BO_", u"BU_"};

enum class Outcome
{
    Found,
    NotHere,  ///< go on behind the keyword
    NoneLeft, ///< what was missing is missing further on as well
};

// `"([^"]+)"\s+`; tells how many blanks stand behind the name.
Outcome takeQuotedName(TextCursor &cursor, QStringView &name, qsizetype &blanks)
{
    if (!cursor.take(u'"'))
        return Outcome::NotHere;
    if (!cursor.takeUpTo(u'"', name))
        return Outcome::NoneLeft;
    blanks = cursor.takeBlanks().size();
    return name.isEmpty() || blanks == 0 ? Outcome::NotHere : Outcome::Found;
}

// `\s+([^;]+);` with the cursor behind the blanks, at least one: a value of nothing takes the last of several blanks.
Outcome takeValue(TextCursor &cursor, qsizetype blanks, QStringView &value)
{
    if (cursor.isAt(u';')) {
        if (blanks < 2)
            return Outcome::NotHere;
        cursor.setPosition(cursor.position() - 1);
    }
    return cursor.takeUpTo(u';', value) ? Outcome::Found : Outcome::NoneLeft;
}

Outcome readDefinition(TextCursor &cursor, AttributeDefinition &definition)
{
    definition.objectType = cursor.takeWord();
    if (!definition.objectType.isEmpty() && cursor.takeBlanks().isEmpty())
        return Outcome::NotHere;
    qsizetype blanks = 0;
    const Outcome outcome = takeQuotedName(cursor, definition.name, blanks);
    if (outcome != Outcome::Found)
        return outcome;
    definition.valueType = cursor.takeWord();
    if (definition.valueType.isEmpty())
        return Outcome::NotHere;
    cursor.takeBlanks();
    return cursor.takeUpTo(u';', definition.range) ? Outcome::Found : Outcome::NoneLeft;
}

Outcome readDefault(TextCursor &cursor, AttributeDefault &attribute)
{
    qsizetype blanks = 0;
    const Outcome outcome = takeQuotedName(cursor, attribute.name, blanks);
    if (outcome != Outcome::Found)
        return outcome;
    return takeValue(cursor, blanks, attribute.value);
}

QStringView takeObjectKind(TextCursor &cursor)
{
    for (const QStringView kind : objectKinds) {
        if (cursor.take(kind))
            return kind;
    }
    return {};
}

bool isObjectName(QChar character)
{
    return !Common::TextClass::isBlank(character) && character != u';';
}

// `(?:([^\s;]+)\s+)?([^;]+);`, at something that is neither blank nor a semicolon.
bool takeNamedValue(TextCursor &cursor, AttributeValue &attribute)
{
    const qsizetype begin = cursor.position();
    attribute.objectName = cursor.takeWhile(isObjectName);
    const qsizetype blanks = cursor.takeBlanks().size();
    if (blanks > 0) {
        const Outcome outcome = takeValue(cursor, blanks, attribute.value);
        if (outcome != Outcome::NotHere)
            return outcome == Outcome::Found;
    }
    attribute.objectName = {};
    cursor.setPosition(begin);
    return cursor.takeUpTo(u';', attribute.value);
}

// Behind the object kind: `\s+(?:(\d+)\s+)?(?:([^\s;]+)\s+)?([^;]+);`
Outcome takeObjectValue(TextCursor &cursor, AttributeValue &attribute)
{
    const qsizetype blanks = cursor.takeBlanks().size();
    if (blanks == 0)
        return Outcome::NotHere;
    if (cursor.atEnd())
        return Outcome::NoneLeft;
    if (cursor.isAt(u';'))
        return takeValue(cursor, blanks, attribute.value);
    const qsizetype begin = cursor.position();
    attribute.number = cursor.takeDigits();
    const qsizetype blanksBehind = attribute.number.isEmpty() ? 0 : cursor.takeBlanks().size();
    if (cursor.isAt(u';') && blanksBehind >= 2)
        return takeValue(cursor, blanksBehind, attribute.value);
    if (blanksBehind == 0 || cursor.isAt(u';')) { // what looked like a number is the value, or the begin of a name
        attribute.number = {};
        cursor.setPosition(begin);
    }
    if (cursor.atEnd())
        return Outcome::NoneLeft;
    return takeNamedValue(cursor, attribute) ? Outcome::Found : Outcome::NoneLeft;
}

Outcome readValue(TextCursor &cursor, AttributeValue &attribute)
{
    qsizetype blanks = 0;
    const Outcome outcome = takeQuotedName(cursor, attribute.name, blanks);
    if (outcome != Outcome::Found)
        return outcome;
    const qsizetype begin = cursor.position();
    attribute.objectKind = takeObjectKind(cursor);
    if (!attribute.objectKind.isEmpty()) {
        const Outcome ofObject = takeObjectValue(cursor, attribute);
        if (ofObject != Outcome::NotHere)
            return ofObject;
        attribute.objectKind = {};
        cursor.setPosition(begin);
    }
    return takeValue(cursor, blanks, attribute.value);
}

// The reader is called behind the keyword and the blanks that every one of these statements has there.
template <typename Statement, typename Reader>
std::optional<Statement> findStatement(QStringView text, qsizetype from, QStringView keyword, Reader reader)
{
    for (qsizetype found = Common::findLiteral(text, keyword, from); found >= 0;
         found = Common::findLiteral(text, keyword, found + 1)) {
        TextCursor cursor(text, found + keyword.size());
        Statement statement;
        const Outcome outcome = cursor.takeBlanks().isEmpty() ? Outcome::NotHere : reader(cursor, statement);
        if (outcome == Outcome::NoneLeft)
            return std::nullopt;
        if (outcome == Outcome::Found) {
            statement.end = cursor.position();
            return statement;
        }
    }
    return std::nullopt;
}

} // namespace

std::optional<AttributeDefinition> findAttributeDefinition(QStringView text, qsizetype from)
{
    return findStatement<AttributeDefinition>(text, from, definitionKeyword, readDefinition);
}

std::optional<AttributeDefault> findAttributeDefault(QStringView text, qsizetype from)
{
    return findStatement<AttributeDefault>(text, from, defaultKeyword, readDefault);
}

std::optional<AttributeValue> findAttributeValue(QStringView text, qsizetype from)
{
    return findStatement<AttributeValue>(text, from, valueKeyword, readValue);
}

} // namespace DbcScan
