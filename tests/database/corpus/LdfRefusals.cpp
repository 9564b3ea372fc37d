// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/database/corpus/LdfRefusals.h"

#include "tests/database/corpus/RuleBook.h"

#include <QRegularExpression>

#include <functional>

namespace tzcorpus {

namespace {

struct RefusalRule
{
    const char *name;
    const char *reason;
    void (*mend)(QString &text); ///< changes the text exactly if the rule applies
};

using Match = QRegularExpressionMatch;

/// Replaces every match of @p pattern in @p text by what @p change makes of it.
void replaceEach(QString &text, const QString &pattern, const std::function<QString(const Match &)> &change)
{
    QRegularExpressionMatchIterator matches = QRegularExpression(pattern).globalMatch(text);
    QString result;
    int done = 0;
    while (matches.hasNext()) {
        const Match match = matches.next();
        result += text.mid(done, match.capturedStart() - done) + change(match);
        done = match.capturedEnd();
    }
    text = result + text.mid(done);
}

void replaceIn(QString &text, const char *section, const QString &pattern,
               const std::function<QString(const Match &)> &change)
{
    const auto [begin, end] = ldfSection(text, QLatin1String(section));
    QString content = text.mid(begin, end - begin);
    replaceEach(content, pattern, change);
    text.replace(begin, end - begin, content);
}

// The standard fixes the size of a frame by its identifier where the file does not.
int standardSize(const QString &id)
{
    const int number = id.toInt(nullptr, 0);
    return number < 32 ? 2 : number < 48 ? 4 : 8;
}

void addSizes(QString &text)
{
    replaceIn(text, "Frames", QStringLiteral("(\\w+\\s*:\\s*(\\w+)\\s*,\\s*\\w+)(\\s*\\{)"), [](const Match &match) {
        return match.captured(1) + QStringLiteral(", %1").arg(standardSize(match.captured(2))) + match.captured(3);
    });
}

void lowerIdentifiers(QString &text)
{
    replaceIn(text, "Frames", QStringLiteral("(\\w+\\s*:\\s*)(\\w+)(\\s*,\\s*\\w+\\s*[,{])"), [](const Match &match) {
        const int number = match.captured(2).toInt(nullptr, 0);
        return number > 63 ? match.captured(1) + QString::number(number % 64) + match.captured(3) : match.captured();
    });
}

void removeCommands(QString &text)
{
    const auto withoutCommands = [](const Match &table) {
        QString content = table.captured(2);
        if (table.captured(1) != QLatin1String("InitTable"))
            content.remove(QRegularExpression(QStringLiteral("\\w+\\s*\\{[^{}]*\\}\\s*delay[^;]*;")));
        return table.captured(1) + u'{' + content + u'}';
    };
    const QString before = text;
    replaceIn(text, "Schedule_tables", QStringLiteral("(\\w+)\\s*\\{((?:[^{}]|\\{[^{}]*\\})*)\\}"), withoutCommands);
    if (text.count(QStringLiteral("delay")) == before.count(QStringLiteral("delay")))
        text = before; // blanks alone were lost
}

void removeEmptyEncodings(QString &text)
{
    replaceIn(text, "Signal_encoding_types", QStringLiteral("\\w+\\s*\\{([^{}]*)\\}"), [](const Match &encoding) {
        const bool hasValue = encoding.captured(1).contains(QLatin1String("physical_value")) ||
                              encoding.captured(1).contains(QLatin1String("logical_value"));
        return hasValue ? encoding.captured() : QString();
    });
}

void addSubscribers(QString &text)
{
    const auto [begin, end] = ldfSection(text, QStringLiteral("Frames"));
    const QString frames = text.mid(begin, end - begin);
    const auto isPlaced = [&](const QString &signal) {
        return frames.contains(QRegularExpression(QStringLiteral("\\b%1\\s*,\\s*\\d+\\s*;").arg(signal)));
    };
    replaceIn(text, "Signals", QStringLiteral("((\\w+)\\s*:\\s*\\d+\\s*,\\s*(?:\\{[^}]*\\}|\\w+)\\s*,\\s*\\w+)\\s*;"),
              [&](const Match &match) {
                  return isPlaced(match.captured(2)) ? match.captured(1) + QStringLiteral(", %1;").arg(invented)
                                                     : match.captured();
              });
}

void addNodeAttributes(QString &text)
{
    const auto [nodes, nodesEnd] = ldfSection(text, QStringLiteral("Nodes"));
    const Match slaves =
        QRegularExpression(QStringLiteral("Slaves\\s*:([^;]*);")).match(text.mid(nodes, nodesEnd - nodes));
    const auto [begin, end] = ldfSection(text, QStringLiteral("Node_attributes"));
    QString blocks;
    for (const QString &slave : slaves.captured(1).split(u',', Qt::SkipEmptyParts)) {
        const QString known = text.mid(begin, end - begin);
        if (!known.contains(QRegularExpression(QStringLiteral("\\b%1\\s*\\{").arg(slave.trimmed()))))
            blocks += QStringLiteral("%1 { LIN_protocol = \"1.3\"; }\n").arg(slave.trimmed());
    }
    if (blocks.isEmpty())
        return;
    if (begin == 0)
        text += QStringLiteral("\nNode_attributes {\n%1}\n").arg(blocks);
    else
        text.insert(begin, blocks);
}

constexpr RefusalRule refusalRules[] = {
    {"LDF refused: no size", "a frame must state its size; one that does not is unknown to the schedule tables",
     &addSizes},
    {"LDF refused: identifier", "identifiers end at 63", &lowerIdentifiers},
    {"LDF refused: commands", "commands may stand in the table InitTable alone", &removeCommands},
    {"LDF refused: encoding",
     "an encoding must have a physical or a logical value; ascii_value or bcd_value alone is none",
     &removeEmptyEncodings},
    {"LDF refused: subscribers", "a signal must have a subscriber; one that has none is unknown to its frame",
     &addSubscribers},
    {"LDF refused: attributes", "every slave must have node attributes, which LIN 1.3 does not know",
     &addNodeAttributes},
};

} // namespace

std::pair<int, int> ldfSection(const QString &text, const QString &name)
{
    const Match head = QRegularExpression(QStringLiteral("\\b%1\\s*\\{").arg(name)).match(text);
    if (!head.hasMatch())
        return {0, 0};
    int depth = 1;
    int end = head.capturedEnd();
    for (; end < text.size() && depth > 0; ++end)
        depth += text.at(end) == u'{' ? 1 : text.at(end) == u'}' ? -1 : 0;
    return {head.capturedEnd(), end - 1};
}

MendedLdf mendLdf(const QString &text, bool isCounting)
{
    MendedLdf mended{text, {}};
    for (const RefusalRule &rule : refusalRules) {
        const QString before = mended.text;
        rule.mend(mended.text);
        const bool applies = mended.text != before;
        RuleBook::instance().add(rule.name, rule.reason);
        RuleBook::instance().count(rule.name, applies && isCounting ? 1 : 0);
        if (applies)
            mended.rules += QString::fromLatin1(rule.name);
    }
    return mended;
}

} // namespace tzcorpus
