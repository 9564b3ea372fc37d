// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/dbc/DbcSignalReader.h"

#include "common/Log.h"
#include "database/dbc/DbcFile.h"
#include "database/dbc/DbcIdentifier.h"
#include "database/dbc/DbcNames.h"
#include "database/dbc/DbcOverlapCheck.h"
#include "database/dbc/DbcScan.h"
#include "database/dbc/DbcSignalCheck.h"
#include "database/dbc/DbcSignalFields.h"
#include "database/text/LogText.h"
#include "database/text/Numbers.h"
#include "database/text/TextLines.h"

#include <optional>
#include <utility>

using Common::LogText;

namespace DbcSignalReader {

namespace {

constexpr QStringView keyword = u"SG_";

// "M" for a multiplexor, "m3" for a multiplexed signal. "m3M", which is both, has no number that could be read: the
// signal counts as multiplexed, by no value. So does one whose number is too large.
void readMultiplexing(QStringView mark, DbcSignal &signal)
{
    if (mark == QStringView(u"M")) {
        signal.isMultiplexor = true;
    } else if (mark.startsWith(u'm')) {
        signal.isMultiplexed = true;
        if (const auto value = Common::Numbers::readInteger<std::int32_t>(mark.mid(1)))
            signal.multiplexValue = *value;
    }
}

bool readName(QStringView text, DbcSignal &signal)
{
    const QStringView words = text.trimmed();
    qsizetype position = 0;
    signal.name = DbcScan::nextWord(words, position).toString();
    readMultiplexing(DbcScan::nextWord(words, position), signal);
    return !signal.name.isEmpty();
}

// @param line  trimmed, from the keyword on
std::optional<DbcSignal> readLine(QStringView line, DbcSharedTexts &texts)
{
    const QStringView statement = line.mid(keyword.size()).trimmed();
    const qsizetype colon = statement.indexOf(u':');
    if (colon < 0) {
        Common::logWarning("No colon found in signal line, skip: {}", LogText(line));
        return std::nullopt;
    }
    DbcSignal signal;
    if (!readName(statement.left(colon), signal)) {
        Common::logWarning("No signal name found, skip: {}", LogText(line));
        return std::nullopt;
    }
    const auto body = DbcScan::readSignalBody(statement.mid(colon + 1).trimmed());
    if (!body) {
        Common::logWarning("Signal format not match, skip: {}", LogText(line));
        return std::nullopt;
    }
    DbcSignalFields::apply(*body, texts, signal);
    return signal;
}

// The next line of @p rest, trimmed, that is one of a signal; empty at the end.
QStringView takeSignalLine(QStringView &rest)
{
    while (!rest.isEmpty()) {
        const QStringView line = Common::takeLine(rest).trimmed();
        if (line.startsWith(keyword))
            return line;
    }
    return {};
}

// How many signals to make room for at once: as many as there are lines, but no room for the lines of a damaged file.
std::size_t roomFor(QStringView text)
{
    constexpr std::size_t mostAtOnce = 256;
    std::size_t count = 0;
    while (count < mostAtOnce && !takeSignalLine(text).isEmpty())
        ++count;
    return count;
}

// The number of the message's statement, as far as the message has kept it.
std::uint32_t numberOf(const DbcMessage &message)
{
    return message.isExtended ? message.id | DbcIdentifier::extendedBit : message.id;
}

} // namespace

void readSignals(QStringView text, DbcMessage &message, DbcFile &file, DbcSharedTexts &texts)
{
    if (text.isEmpty())
        return;
    const bool mayOverlap = message.name == DbcNames::independentSignals;
    DbcOverlapCheck overlapCheck(message);
    message.signals.reserve(message.signals.size() + roomFor(text));
    QStringView rest = text;
    for (QStringView line = takeSignalLine(rest); !line.isEmpty(); line = takeSignalLine(rest)) {
        auto signal = readLine(line, texts);
        if (!signal || !DbcSignalCheck::accept(*signal, file))
            continue;
        if (!mayOverlap)
            overlapCheck.add(*signal);
        message.signals.push_back(std::move(*signal));
    }
    if (message.signals.empty()) {
        Common::logWarning("Parse signals exception for message({}, {}): {}", LogText(message.name), numberOf(message),
                           LogText::whole(text));
    }
}

} // namespace DbcSignalReader
