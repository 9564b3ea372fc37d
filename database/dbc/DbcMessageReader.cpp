// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/dbc/DbcMessageReader.h"

#include "common/Log.h"
#include "database/dbc/DbcFile.h"
#include "database/dbc/DbcIdentifier.h"
#include "database/dbc/DbcJ1939.h"
#include "database/dbc/DbcMessageCheck.h"
#include "database/dbc/DbcNames.h"
#include "database/dbc/DbcScan.h"
#include "database/text/LogText.h"
#include "database/text/Numbers.h"
#include "database/text/TextCursor.h"

#include <utility>

using Common::LogText;

namespace {

constexpr std::uint8_t largestClassicSize = 8;

} // namespace

struct DbcMessageReader::Statement
{
    std::uint32_t number = 0; // as written
    QStringView body;         // up to the next "BO_" or the end of the file
};

DbcMessageReader::DbcMessageReader(DbcFile &file, SignalReader readSignals)
    : m_file(file)
    , m_readSignals(std::move(readSignals))
{
}

bool DbcMessageReader::read(QStringView text)
{
    qsizetype position = 0;
    while (const auto head = DbcScan::findMessageHead(text, position)) {
        position = head->end;
        // The next "BO_" ends a message wherever it stands, in a comment statement as well.
        const qsizetype next = Common::findLiteral(text, u"BO_", position);
        const qsizetype end = next < 0 ? text.size() : next;
        const Statement statement{Common::Numbers::integerOrZero<std::uint32_t>(head->number),
                                  text.mid(position, end - position)};
        if (statement.body.isEmpty()) {
            Common::logWarning("Empty message content for message {} ({})", LogText(head->name), statement.number);
            continue;
        }
        DbcMessage message;
        message.name = head->name.toString();
        // Cut, not refused: a size of 300 is 44.
        message.size = static_cast<std::uint8_t>(Common::Numbers::integerOrZero<std::uint32_t>(head->size));
        message.transmitter = m_transmitters.valueOf(head->transmitter, std::identity());
        if (DbcNames::isSpecialMessage(head->name))
            readSpecial(statement, std::move(message));
        else
            readOrdinary(statement, std::move(message));
    }
    m_file.rebuildIndexes();
    return !m_file.messages.empty();
}

void DbcMessageReader::readOrdinary(const Statement &statement, DbcMessage &&message)
{
    message.isExtended = (statement.number & DbcIdentifier::extendedBit) != 0;
    message.id = statement.number & DbcIdentifier::mask;
    message.isFd = message.size > largestClassicSize;
    if (!m_readSignals(statement.body, message)) {
        Common::logError("Failed to parse signals for message: {} ({})", LogText(message.name), statement.number);
        return;
    }
    if (isKept(message))
        m_file.messages.push_back(std::move(message));
}

void DbcMessageReader::readSpecial(const Statement &statement, DbcMessage &&message)
{
    message.id = statement.number;
    if (!m_readSignals(statement.body, message)) {
        Common::logError("Failed to parse signals for independent message");
        return;
    }
    m_file.specialMessages.push_back(std::move(message));
}

bool DbcMessageReader::isKept(DbcMessage &message) const
{
    // The mark of an extended identifier was cut off when the id was stored, so no message of a file passes here, and
    // none is classified: users rely on the checks below, which would be skipped otherwise, to drop what they drop.
    const bool isClassified = (message.id & DbcIdentifier::extendedBit) != 0 && DbcJ1939::classify(message, m_file);
    return isClassified || DbcMessageCheck::isValid(message, m_file);
}
