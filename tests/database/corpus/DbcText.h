// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tests/database/corpus/DbcTokens.h"

#include <QString>
#include <QStringList>

#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

namespace tzcorpus {

/// A signal as its line, and the statements about it, write it.
struct TextSignal
{
    QString name;
    QString multiplexWord; ///< "M", "m3", "m3M"; empty without one
    std::uint32_t startBit = 0;
    std::uint32_t size = 0;
    bool isBigEndian = false;
    bool isSigned = false;
    double factor = 1.0;
    double offset = 0.0;
    QStringList range; ///< both limits as written
    QString unit;
    QStringList receivers;
    bool isCut = false; ///< the letters that open a message stand in its line, or in an earlier one of its message
    QString comment;
    std::vector<std::pair<QString, QString>> descriptions; ///< number and text as written
    std::optional<int> valueType;                          ///< of SIG_VALTYPE_
    QString multiplexRanges;                               ///< of SG_MUL_VAL_
};

struct TextMessage
{
    std::uint32_t number = 0; ///< as written
    QString name;
    bool hasBlankBeforeColon = false;
    std::uint32_t size = 0;
    QString transmitter;
    bool isLastWord = false; ///< nothing stands behind its line
    QString comment;
    std::optional<int> frameFormat; ///< its own value of VFrameFormat
    std::vector<TextSignal> signals;

    std::uint32_t id() const { return number & 0x1FFF'FFFF; }
    bool isExtended() const { return (number >> 31) != 0; }
    bool isSpecial() const; ///< no frame on a bus
    bool hasAsciiName() const;
    /// Whether the reader is to find it among the ordinary messages.
    bool isOrdinary() const;
};

/// What stands in a DBC file, read by other means than the program's: token by token, without patterns. Statements
/// about a message reach the last one of its identifier, and its last signal of a name.
class DbcText
{
public:
    explicit DbcText(const QString &content);

    bool hasNewSymbols() const { return m_hasNewSymbols; }
    const QStringList &frameFormats() const { return m_frameFormats; }
    const std::vector<TextMessage> &messages() const { return m_messages; }
    /// Whether the reader is to load the file.
    bool isLoadable() const;

private:
    using Statement = std::vector<Token>;

    void readTokens(const std::vector<Token> &tokens);
    std::size_t readMessage(const std::vector<Token> &tokens, std::size_t at);
    std::size_t readSignal(const std::vector<Token> &tokens, std::size_t at);
    void readStatement(const Statement &statement);
    void readComment(const Statement &statement);
    void readDescriptions(const Statement &statement);
    void readMultiplexRanges(const Statement &statement);
    void readAttribute(const Statement &statement);
    TextMessage *findMessage(const QString &number);
    TextSignal *findSignal(const QString &number, const QString &name);

    QString m_content; // without block comments, lines ending in "\n"
    bool m_hasNewSymbols = false;
    qsizetype m_bodyEnd = 0; // of the message that is being read
    QStringList m_frameFormats;
    std::vector<TextMessage> m_messages;
};

} // namespace tzcorpus
