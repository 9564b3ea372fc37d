// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QStringList>
#include <QStringView>

#include <array>
#include <optional>

/// Finds statements in the text of a DBC file. Each function does by hand, in one pass, what the pattern in its comment
/// says to the letter, its odd corners included: files hold tens of thousands of these statements, and some of the
/// patterns would take quadratic time on a damaged file. Tests hold each function against its pattern.
///
/// All views are into the text that was passed in; `end` is the position behind the statement, where to go on.
namespace DbcScan {

/// `BO_\s+(\d+)\s+(\w+):\s+(\d+)\s+(\w+)`
struct MessageHead
{
    QStringView number, name, size, transmitter;
    qsizetype end = 0;
};
std::optional<MessageHead> findMessageHead(QStringView text, qsizetype from);

/// `VERSION\s+"([^"]*)"`: what stands between the quotes of the first one.
std::optional<QStringView> findVersion(QStringView text);

/// `^[a-zA-Z_][a-zA-Z0-9_]*$`, for a name without line ends.
bool isNodeName(QStringView name);

/// `^\s*(\d+\|\d+@[01][+-])\s*\(([^\)]*)\)\s*\[([^\]]*)\]\s*("[^"]*"|[^\s]*)\s*(.*)$`, the first part as
/// `(\d+)\|(\d+)@([01])([+-])`. To be applied to one line. What the first pattern takes as its first part the second
/// one takes as well, so a signal fails as a whole or not at all: there is no line in the log for a layout alone.
struct SignalBody
{
    QStringView startBit, size;
    bool isBigEndian = false;
    bool isSigned = false;
    QStringView scaling, range, unit, receivers;
};
std::optional<SignalBody> readSignalBody(QStringView line);

/// `CM_\s+(BO_|SG_|BU_)\s+[\s\S]*?"[\s\S]*?"\s*;`
struct CommentBlock
{
    QStringView text; ///< the whole statement
    qsizetype end = 0;
};
std::optional<CommentBlock> findCommentBlock(QStringView text, qsizetype from);

/// What one of the three patterns below takes from a comment block.
struct Comment
{
    QStringView number; ///< empty for a node
    QStringView name;   ///< empty for a message
    QStringView text;
};
std::optional<Comment> findMessageComment(QStringView block); ///< `CM_\s+BO_\s+(\d+)\s+"([\s\S]*?)"\s*;`
std::optional<Comment> findSignalComment(QStringView block);  ///< `CM_\s+SG_\s+(\d+)\s+([^\s]+)\s+"([\s\S]*?)"\s*;`
std::optional<Comment> findNodeComment(QStringView block);    ///< `CM_\s+BU_\s+([^\s]+)\s+"([\s\S]*?)"\s*;`

/// `BA_DEF_\s+(?:(\w+)\s+)?"([^"]+)"\s+(\w+)\s*([^;]*);`
struct AttributeDefinition
{
    QStringView objectType, name, valueType, range;
    qsizetype end = 0;
};
std::optional<AttributeDefinition> findAttributeDefinition(QStringView text, qsizetype from);

/// `BA_DEF_DEF_\s+"([^"]+)"\s+([^;]+);`
struct AttributeDefault
{
    QStringView name, value;
    qsizetype end = 0;
};
std::optional<AttributeDefault> findAttributeDefault(QStringView text, qsizetype from);

/// `BA_\s+"([^"]+)"\s+(?:(SG_|BO_|BU_)\s+(?:(\d+)\s+)?(?:([^\s;]+)\s+)?)?([^;]+);`
struct AttributeValue
{
    QStringView name, objectKind, number, objectName, value;
    qsizetype end = 0;
};
std::optional<AttributeValue> findAttributeValue(QStringView text, qsizetype from);

/// `(\d+)\s+"([^"]*)"`: the next pair from @p from on.
struct ValuePair
{
    QStringView key, text;
    qsizetype end = 0;
};
std::optional<ValuePair> findValuePair(QStringView text, qsizetype from);

/// `^VAL_\s*(\d+)?\s+([\w\d_]+)\s+(.*);$`, to be applied to one joined statement.
struct ValueDescription
{
    QStringView number; ///< empty: a value table
    QStringView name, pairs;
};
std::optional<ValueDescription> readValueDescription(QStringView statement);

/// `(\d+)-(\d+)`: the next range from @p from on.
struct NumberRange
{
    QStringView first, last;
    qsizetype end = 0;
};
std::optional<NumberRange> findNumberRange(QStringView text, qsizetype from);

/// The next part from @p position on of a text split at `\s+`, without the empty parts; moves @p position behind it.
/// Empty at the end.
QStringView nextWord(QStringView text, qsizetype &position);

/// The two parts of a text split at `\s+`, empty parts included; nothing where there are more or fewer.
std::optional<std::array<QStringView, 2>> twoWords(QStringView text);

/// Split at `\s*,\s*|\s+`, without the empty parts.
QStringList splitReceivers(QStringView text);

/// Without a quote at the begin, `^\s*"`, and at the end, `"\s*$`, split at `"\s*,\s*"`. To be applied to a trimmed
/// text.
QStringList splitEnumValues(QStringView text);

} // namespace DbcScan
