// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/dbc/DbcCommentReader.h"

#include "common/Log.h"
#include "database/dbc/DbcFile.h"
#include "database/dbc/DbcScan.h"
#include "database/text/LogText.h"
#include "database/text/Numbers.h"

using Common::LogText;

namespace DbcCommentReader {

namespace {

constexpr qsizetype shownOfUnknownBlock = 80;

void commentMessage(const DbcScan::Comment &comment, DbcFile &file)
{
    const auto number = Common::Numbers::integerOrZero<std::uint32_t>(comment.number);
    if (DbcMessage *message = file.findMessage(number))
        message->comment = comment.text.trimmed().toString();
    else
        Common::logWarning("Message not found for comment: {}", number);
}

void commentSignal(const DbcScan::Comment &comment, DbcFile &file)
{
    const auto number = Common::Numbers::integerOrZero<std::uint32_t>(comment.number);
    if (DbcSignal *signal = file.findSignal(number, comment.name))
        signal->comment = comment.text.trimmed().toString();
    else
        Common::logWarning("Signal {} not found in message {} for comment", LogText(comment.name), number);
}

void commentNode(const DbcScan::Comment &comment, DbcFile &file)
{
    if (DbcNode *node = file.findNode(comment.name))
        node->comment = comment.text.trimmed().toString();
}

void readBlock(QStringView block, DbcFile &file)
{
    if (const auto ofMessage = DbcScan::findMessageComment(block)) {
        commentMessage(*ofMessage, file);
    } else if (const auto ofSignal = DbcScan::findSignalComment(block)) {
        commentSignal(*ofSignal, file);
    } else if (const auto ofNode = DbcScan::findNodeComment(block)) {
        commentNode(*ofNode, file);
    } else {
        Common::logWarning("Unknown comment block: {}", LogText(block.left(shownOfUnknownBlock)));
    }
}

} // namespace

void readComments(QStringView text, DbcFile &file)
{
    qsizetype position = 0;
    while (const auto block = DbcScan::findCommentBlock(text, position)) {
        readBlock(block->text, file);
        position = block->end;
    }
}

} // namespace DbcCommentReader
