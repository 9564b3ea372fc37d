// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/dbc/DbcScan.h"
#include "database/text/TextCursor.h"

using Common::TextCursor;

namespace DbcScan {

namespace {

constexpr QStringView commentKeyword = u"CM_";
constexpr QStringView objectKinds[] = {u"BO_", u"SG_", u"BU_"};

// A comment may hold quotes: it ends at the first one that a semicolon follows.
bool takeCommentText(TextCursor &cursor, QStringView &taken)
{
    const qsizetype begin = cursor.position();
    QStringView piece;
    while (cursor.takeUpTo(u'"', piece)) {
        const QStringView text = cursor.since(begin);
        cursor.takeBlanks();
        if (cursor.take(u';')) {
            taken = text.chopped(1);
            return true;
        }
    }
    return false;
}

bool takeObjectKind(TextCursor &cursor)
{
    for (const QStringView kind : objectKinds) {
        if (cursor.take(kind))
            return true;
    }
    return false;
}

// Number, name or both, then the opening quote. [^\s]+ takes quotes too, so a name is all up to a blank.
bool takeCommentHead(TextCursor &cursor, QStringView kind, Comment &comment)
{
    if (cursor.takeBlanks().isEmpty() || !cursor.take(kind) || cursor.takeBlanks().isEmpty())
        return false;
    if (kind != objectKinds[2]) {
        comment.number = cursor.takeDigits();
        if (comment.number.isEmpty() || cursor.takeBlanks().isEmpty())
            return false;
    }
    if (kind != objectKinds[0]) {
        comment.name = cursor.takeWhile([](QChar character) { return !Common::TextClass::isBlank(character); });
        if (comment.name.isEmpty() || cursor.takeBlanks().isEmpty())
            return false;
    }
    return cursor.take(u'"');
}

std::optional<Comment> findComment(QStringView block, QStringView kind)
{
    for (qsizetype found = Common::findLiteral(block, commentKeyword, 0); found >= 0;
         found = Common::findLiteral(block, commentKeyword, found + commentKeyword.size())) {
        TextCursor cursor(block, found + commentKeyword.size());
        Comment comment;
        if (!takeCommentHead(cursor, kind, comment))
            continue;
        if (takeCommentText(cursor, comment.text))
            return comment;
        return std::nullopt; // no end here, so none further on
    }
    return std::nullopt;
}

} // namespace

std::optional<CommentBlock> findCommentBlock(QStringView text, qsizetype from)
{
    for (qsizetype found = Common::findLiteral(text, commentKeyword, from); found >= 0;
         found = Common::findLiteral(text, commentKeyword, found + commentKeyword.size())) {
        TextCursor cursor(text, found + commentKeyword.size());
        if (cursor.takeBlanks().isEmpty() || !takeObjectKind(cursor) || cursor.takeBlanks().isEmpty())
            continue;
        QStringView taken;
        if (!cursor.takeUpTo(u'"', taken) || !takeCommentText(cursor, taken))
            return std::nullopt; // no end here, so none further on
        return CommentBlock{cursor.since(found), cursor.position()};
    }
    return std::nullopt;
}

std::optional<Comment> findMessageComment(QStringView block)
{
    return findComment(block, objectKinds[0]);
}

std::optional<Comment> findSignalComment(QStringView block)
{
    return findComment(block, objectKinds[1]);
}

std::optional<Comment> findNodeComment(QStringView block)
{
    return findComment(block, objectKinds[2]);
}

} // namespace DbcScan
