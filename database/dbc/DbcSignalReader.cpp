// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/dbc/DbcSignalReader.h"

#include "common/Log.h"
#include "database/dbc/DbcFile.h"
#include "database/dbc/DbcNames.h"
#include "database/dbc/DbcOverlapCheck.h"
#include "database/dbc/DbcScan.h"
#include "database/dbc/DbcSignalCheck.h"
#include "database/dbc/DbcSignalFields.h"
#include "database/text/LogText.h"
#include "database/text/Numbers.h"
#include "database/text/TextCursor.h"
#include "database/text/TextLines.h"

#include <optional>
#include <utility>

using Common::LogText;
using Common::TextCursor;

namespace DbcSignalReader {

namespace {

constexpr QStringView keyword = u"SG_";

bool isNoBlank(QChar character)
{
    return !Common::TextClass::isBlank(character);
}

// "M" for a multiplexor, "m3" for a multiplexed signal. "m3M", which is both, has no number that could be read: the
// signal counts as multiplexed, by no value.
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
    TextCursor cursor(text.trimmed());
    cursor.takeBlanks();
    signal.name = cursor.takeWhile(isNoBlank).toString();
    cursor.takeBlanks();
    readMultiplexing(cursor.takeWhile(isNoBlank), signal);
    return !signal.name.isEmpty();
}

// @param line  trimmed, from the keyword on
std::optional<DbcSignal> readLine(QStringView line)
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
    DbcSignalFields::apply(*body, signal);
    return signal;
}

} // namespace

void readSignals(QStringView text, DbcMessage &message, DbcFile &file)
{
    if (text.isEmpty())
        return;
    const bool mayOverlap = message.name == DbcNames::independentSignals;
    DbcOverlapCheck overlapCheck(message);
    QStringView rest = text;
    while (!rest.isEmpty()) {
        const QStringView line = Common::takeLine(rest).trimmed();
        if (!line.startsWith(keyword))
            continue;
        auto signal = readLine(line);
        if (!signal || !DbcSignalCheck::accept(*signal, file))
            continue;
        if (!mayOverlap)
            overlapCheck.add(*signal);
        message.signals.push_back(std::move(*signal));
    }
    if (message.signals.empty()) {
        Common::logWarning("Parse signals exception for message({}, {}): {}", LogText(message.name), message.id,
                           LogText(text));
    }
}

} // namespace DbcSignalReader
