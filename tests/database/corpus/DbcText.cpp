// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/database/corpus/DbcText.h"

#include <QRegularExpression>

#include <algorithm>

namespace tzcorpus {

namespace {

constexpr int largestPayload = 64;

QString withoutBlockComments(QString text)
{
    const QRegularExpression comment(QStringLiteral("/\\*.*?\\*/"), QRegularExpression::DotMatchesEverythingOption);
    return text.remove(comment).replace(QLatin1String("\r\n"), QLatin1String("\n")).replace(u'\r', u'\n');
}

std::size_t endOfStatement(const std::vector<Token> &tokens, std::size_t at)
{
    while (at < tokens.size() && !tokens[at].is(";"))
        ++at;
    return at;
}

std::size_t endOfLine(const std::vector<Token> &tokens, std::size_t at)
{
    const int line = tokens[at].line;
    while (at < tokens.size() && tokens[at].line == line)
        ++at;
    return at;
}

} // namespace

bool TextMessage::isSpecial() const
{
    static const QStringList names{QStringLiteral("VECTOR__INDEPENDENT_SIG_MSG"), QStringLiteral("CAPL_IDS"),
                                   QStringLiteral("CAPL_MSG")};
    return names.contains(name);
}

bool TextMessage::hasAsciiName() const
{
    return std::all_of(name.begin(), name.end(), [](QChar character) {
        return character.unicode() < 0x80 && (character.isLetterOrNumber() || character == u'_');
    });
}

bool TextMessage::isOrdinary() const
{
    return !isSpecial() && !hasBlankBeforeColon && hasAsciiName() && !isLastWord && (size & 0xFFU) <= largestPayload;
}

DbcText::DbcText(const QString &content)
    : m_content(withoutBlockComments(content))
{
    readTokens(tokensOf(m_content));
}

bool DbcText::isLoadable() const
{
    return m_hasNewSymbols &&
           std::any_of(m_messages.begin(), m_messages.end(), [](const auto &message) { return message.isOrdinary(); });
}

// All messages first: statements about them may stand before them.
void DbcText::readTokens(const std::vector<Token> &tokens)
{
    std::vector<Statement> statements;
    for (std::size_t at = 0; at < tokens.size();) {
        const Token &token = tokens[at];
        if (!token.opensLine || token.isQuoted) {
            ++at;
        } else if (token.is("NS_") || token.is("NS_:")) {
            m_hasNewSymbols = true;
            while (at < tokens.size() && !(tokens[at].opensLine && tokens[at].is("BS_")))
                ++at;
        } else if (token.is("BO_")) {
            at = readMessage(tokens, at);
        } else if (token.is("SG_")) {
            at = readSignal(tokens, at);
        } else {
            static const QStringList keywords{QStringLiteral("CM_"),         QStringLiteral("VAL_"),
                                              QStringLiteral("BA_"),         QStringLiteral("BA_DEF_"),
                                              QStringLiteral("SG_MUL_VAL_"), QStringLiteral("SIG_VALTYPE_")};
            const std::size_t begin = at++;
            if (!keywords.contains(token.text))
                continue;
            at = endOfStatement(tokens, at);
            statements.emplace_back(tokens.begin() + static_cast<std::ptrdiff_t>(begin),
                                    tokens.begin() + static_cast<std::ptrdiff_t>(at));
        }
    }
    std::for_each(statements.begin(), statements.end(), [this](const auto &statement) { readStatement(statement); });
}

std::size_t DbcText::readMessage(const std::vector<Token> &tokens, std::size_t at)
{
    if (at + 5 >= tokens.size() || !tokens[at + 3].is(":"))
        return at + 1;
    TextMessage message;
    message.number = tokens[at + 1].text.toUInt();
    message.name = tokens[at + 2].text;
    message.hasBlankBeforeColon = tokens[at + 3].begin != tokens[at + 2].end;
    message.size = tokens[at + 4].text.toUInt();
    message.transmitter = tokens[at + 5].text;
    message.isLastWord = tokens[at + 5].end == m_content.size();
    const int next = m_content.indexOf(QLatin1String("BO_"), static_cast<int>(tokens[at + 5].end));
    m_bodyEnd = next < 0 ? m_content.size() : next;
    m_messages.push_back(message);
    return at + 6;
}

std::size_t DbcText::readSignal(const std::vector<Token> &tokens, std::size_t at)
{
    const std::size_t end = endOfLine(tokens, at);
    const std::size_t colon = tokens[at + 2].is(":") ? at + 2 : at + 3;
    // name [word] : start | size @ order-and-sign ( factor , offset ) [ minimum | maximum ] "unit" receivers
    const std::size_t layout = colon + 1;
    const std::size_t unit = colon + 16;
    if (m_messages.empty() || unit >= end || !tokens[colon].is(":") || !tokens[unit].isQuoted)
        return end;
    TextSignal signal;
    signal.name = tokens[at + 1].text;
    signal.multiplexWord = colon == at + 3 ? tokens[at + 2].text : QString();
    signal.startBit = tokens[layout].text.toUInt();
    signal.size = tokens[layout + 2].text.toUInt();
    signal.isBigEndian = tokens[layout + 4].text.startsWith(u'0');
    signal.isSigned = tokens[layout + 4].text.endsWith(u'-');
    signal.factor = tokens[layout + 6].text.toDouble();
    signal.offset = tokens[layout + 8].text.toDouble();
    signal.range = QStringList{tokens[layout + 11].text, tokens[layout + 13].text};
    signal.unit = tokens[unit].text;
    for (std::size_t receiver = unit + 1; receiver < end; ++receiver) {
        if (!tokens[receiver].is(","))
            signal.receivers += tokens[receiver].text;
    }
    signal.isCut = tokens[end - 1].end > m_bodyEnd;
    m_messages.back().signals.push_back(signal);
    return end;
}

void DbcText::readStatement(const Statement &statement)
{
    if (statement.size() < 4)
        return;
    if (statement[0].is("CM_"))
        readComment(statement);
    else if (statement[0].is("VAL_"))
        readDescriptions(statement);
    else if (statement[0].is("SG_MUL_VAL_"))
        readMultiplexRanges(statement);
    else if (statement[0].is("SIG_VALTYPE_")) {
        if (TextSignal *signal = findSignal(statement[1].text, statement[2].text))
            signal->valueType = statement.back().text.toInt();
    } else
        readAttribute(statement);
}

void DbcText::readComment(const Statement &statement)
{
    if (statement[1].is("BO_")) {
        if (TextMessage *message = findMessage(statement[2].text))
            message->comment = statement[3].text;
    } else if (statement[1].is("SG_") && statement.size() > 4) {
        if (TextSignal *signal = findSignal(statement[2].text, statement[3].text))
            signal->comment = statement[4].text;
    }
}

void DbcText::readDescriptions(const Statement &statement)
{
    TextSignal *signal = findSignal(statement[1].text, statement[2].text);
    for (std::size_t at = 3; signal != nullptr && at + 1 < statement.size(); at += 2)
        signal->descriptions.emplace_back(statement[at].text, statement[at + 1].text);
}

void DbcText::readMultiplexRanges(const Statement &statement)
{
    TextSignal *signal = findSignal(statement[1].text, statement[2].text);
    for (std::size_t at = 4; signal != nullptr && at < statement.size(); ++at)
        signal->multiplexRanges += statement[at].text;
}

void DbcText::readAttribute(const Statement &statement)
{
    const bool isDefinition = statement[0].is("BA_DEF_");
    const std::size_t name = isDefinition ? 2 : 1;
    if (statement[name].text != QLatin1String("VFrameFormat") || !statement[isDefinition ? 1 : 2].is("BO_"))
        return;
    if (!isDefinition) {
        TextMessage *message = findMessage(statement[3].text);
        if (message != nullptr && statement.size() > 4)
            message->frameFormat = statement[4].text.toInt();
        return;
    }
    for (const Token &token : statement) {
        if (token.isQuoted && &token != &statement[name])
            m_frameFormats += token.text;
    }
}

TextMessage *DbcText::findMessage(const QString &number)
{
    bool isNumber = false;
    const std::uint32_t value = number.toUInt(&isNumber);
    const auto find = [this, isNumber](std::uint32_t wanted) {
        return std::find_if(m_messages.rbegin(), m_messages.rend(), [&](const TextMessage &message) {
            return isNumber &&
                   (message.isSpecial() ? message.number == wanted : message.isOrdinary() && message.id() == wanted);
        });
    };
    auto found = find(value);
    if (found == m_messages.rend())
        found = find(value & 0x1FFF'FFFF);
    return found == m_messages.rend() ? nullptr : &*found;
}

TextSignal *DbcText::findSignal(const QString &number, const QString &name)
{
    TextMessage *message = findMessage(number);
    if (message == nullptr)
        return nullptr;
    const auto found = std::find_if(message->signals.rbegin(), message->signals.rend(),
                                    [&](const TextSignal &signal) { return signal.name == name; });
    return found == message->signals.rend() ? nullptr : &*found;
}

} // namespace tzcorpus
