// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/dbc/DbcWriter.h"
#include "tests/database/corpus/DbcCorpusFixture.h"
#include "tests/database/corpus/RuleBook.h"

#include <algorithm>

namespace tzcorpus {

namespace {

bool isPlainNumber(const Token &token)
{
    return std::all_of(token.text.begin(), token.text.end(),
                       [](QChar character) { return character.isDigit() || QStringView(u"+-.").contains(character); });
}

// "0|8@1+", "(1,0)", "[0|255]": written without a blank
bool isTight(const std::vector<Token> &tokens, std::size_t first, std::size_t last)
{
    for (std::size_t at = first; at < last; ++at) {
        if (tokens[at].end != tokens[at + 1].begin)
            return false;
    }
    return true;
}

/// Whether a merge takes the line for one of a signal: no multiplexing, and numbers without exponent.
bool isPlainSignal(const QString &line)
{
    const std::vector<Token> tokens = tokensOf(line);
    constexpr std::size_t wanted = 19; // SG_ name : start | size @ sign ( factor , offset ) [ minimum | maximum ] unit
    TextMessage name;
    if (tokens.size() < wanted || !tokens[0].is("SG_") || !tokens[2].is(":") || !tokens[18].isQuoted)
        return false;
    name.name = tokens[1].text;
    return name.hasAsciiName() && isTight(tokens, 3, 7) && isTight(tokens, 8, 12) && isTight(tokens, 13, 17) &&
           isPlainNumber(tokens[9]) && isPlainNumber(tokens[11]) && isPlainNumber(tokens[14]) &&
           isPlainNumber(tokens[16]);
}

bool isSignal(const QString &line)
{
    return line.trimmed().startsWith(QLatin1String("SG_ "));
}

int lastLine(const QStringList &lines, bool (*isWanted)(const QString &))
{
    const auto found = std::find_if(lines.rbegin(), lines.rend(), isWanted);
    return static_cast<int>(std::distance(found, lines.rend())) - 1;
}

DbcMessage addedMessage()
{
    DbcSignal signal;
    signal.name = QStringLiteral("AddedSignal");
    signal.size = 8;
    signal.maximum = 255.0;
    signal.receivers = QStringList{QStringLiteral("Vector__XXX")};
    DbcMessage message;
    message.id = 0x7FF;
    message.name = QStringLiteral("AddedMessage");
    message.size = 8;
    message.transmitter = QStringLiteral("Vector__XXX");
    message.signals.push_back(signal);
    return message;
}

std::size_t signalCount(const DbcFile &file)
{
    std::size_t count = 0;
    for (const auto *list : {&file.messages, &file.specialMessages}) {
        for (const DbcMessage &message : *list)
            count += message.signals.size();
    }
    return count;
}

void countPlace(int plain, int last)
{
    RuleBook &book = RuleBook::instance();
    book.add("merge: at the top", "where no signal line is plain (multiplexing, exponents), messages go to the top");
    book.add("merge: before others", "messages go behind the last plain signal line, which need not be the last one");
    book.count("merge: at the top", plain < 0 && last >= 0 ? 1 : 0);
    book.count("merge: before others", plain >= 0 && plain < last ? 1 : 0);
}

} // namespace

TEST_P(DbcCorpus, MergedMessageGoesBehindTheLastPlainSignal)
{
    if (!load())
        return;
    const std::size_t messages = model().messages.size();
    const std::size_t signalsBefore = signalCount(model());
    const QString merged = m_folder.filePath(QStringLiteral("merged.dbc"));
    ASSERT_TRUE(DbcWriter::merge(m_loadedPath, merged, {addedMessage()}, m_encoding));

    QStringList expected = decode(m_loadedPath).replace(QLatin1String("\r\n"), QLatin1String("\n")).split(u'\n');
    const int plain = lastLine(expected, &isPlainSignal);
    countPlace(plain, lastLine(expected, &isSignal));
    expected.insert(plain + 1, QStringLiteral("BO_ 2047 AddedMessage: 8 Vector__XXX\n"
                                              " SG_ AddedSignal : 0|8@1+ (1,0) [0|255] \"\" Vector__XXX\n"));
    if (plain >= 0)
        expected.insert(plain + 1, QStringLiteral("\n"));
    EXPECT_EQ(decode(merged).toStdString(), expected.join(u'\n').toStdString());

    ASSERT_TRUE(parse(merged));
    EXPECT_EQ(model().messages.size(), messages + 1);
    EXPECT_EQ(signalCount(model()), signalsBefore + 1);
    ++s_totals.merged;
}

} // namespace tzcorpus
