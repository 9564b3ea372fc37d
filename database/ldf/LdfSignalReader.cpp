// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/ldf/LdfSectionReaders.h"

#include "common/Log.h"
#include "database/ldf/LdfConversions.h"
#include "database/ldf/LdfNumbers.h"
#include "database/ldf/LdfSections.h"
#include "database/ldf/LdfStatements.h"
#include "database/text/LogText.h"

#include <optional>
#include <utility>

namespace Common {
namespace {

constexpr std::uint16_t maximumDiagnosticSize = 64; // bits: the whole of a diagnostic frame

// The value is worked out here, once: all copies that frames hold have it, and the text may be long.
LdfSignal signalOf(const LdfMatch &match, const QString &initialValue)
{
    LdfSignal signal;
    signal.name = match.text(1);
    signal.size = Numbers::integerOrZero<std::uint16_t>(match[2]);
    signal.value = rawInitialValue(initialValue, signal.size);
    signal.initialValue = initialValue;
    signal.publisher = match.text(4);
    for (const QString &subscriber : ldfCommaList(match[5])) {
        if (!subscriber.isEmpty())
            signal.subscribers.append(subscriber);
    }
    signal.comment = match.text(6);
    return signal;
}

std::optional<LdfSignal> readSignalLine(QStringView line)
{
    if (const LdfMatch array = matchLdfArraySignal(line))
        return signalOf(array, u'{' + array.text(3) + u'}');
    if (const LdfMatch scalar = matchLdfScalarSignal(line))
        return signalOf(scalar, scalar.text(3));
    logWarning("Invalid signal format: {}", LogText(line));
    return std::nullopt;
}

bool isValidDiagnosticSignal(const LdfSignal &signal, const LdfReading &reading)
{
    return !signal.name.isEmpty() && signal.size <= maximumDiagnosticSize &&
           (signal.publisher.isEmpty() || reading.isNode(signal.publisher));
}

void represent(const std::shared_ptr<const LdfEncoding> &encoding, QStringView signalList, LdfSignalMap &signals)
{
    for (const QString &name : ldfCommaList(signalList)) {
        const auto signal = signals.find(name);
        if (signal == signals.end())
            logWarning("Signal {} not found for encoding {}", LogText(name), LogText(encoding->name));
        else
            signal->second.encoding = encoding;
    }
}

} // namespace

bool readLdfSignals(const QString &text, const LdfReading &reading)
{
    const auto section = findLdfSection(text, u"Signals");
    if (!section) {
        logInfo("No signals section found");
        return true;
    }
    for (const QStringView line : ldfParts(*section, u'\n')) {
        if (auto signal = readSignalLine(line))
            reading.signals[signal->name] = *std::move(signal);
    }
    return true;
}

bool readLdfDiagnosticSignals(const QString &text, const LdfReading &reading)
{
    const auto section = findLdfSection(text, u"Diagnostic_signals");
    if (!section) {
        logInfo("No diagnostic signals section found");
        return true;
    }
    for (const QStringView part : ldfParts(*section, u';')) {
        const LdfMatch match = matchLdfDiagnosticSignal(part);
        if (!match)
            continue;
        const LdfSignal signal = signalOf(match, match.text(3));
        if (!isValidDiagnosticSignal(signal, reading)) {
            logError("Invalid diagnostic signal: {}", LogText(signal.name));
            return false;
        }
        reading.signals[signal.name] = signal;
    }
    return true;
}

bool readLdfRepresentations(const QString &text, const LdfReading &reading)
{
    const auto section = findLdfSection(text, u"Signal_representation");
    if (!section) {
        logInfo("No signal representation section found");
        return true;
    }
    for (const QStringView part : ldfParts(*section, u';')) {
        const LdfMatch match = matchLdfNamedList(part);
        if (!match) {
            logWarning("Invalid signal representation format: {}", LogText(part));
            continue;
        }
        const auto encoding = reading.encodings.find(match[1]);
        if (encoding == reading.encodings.end())
            logWarning("Encoding {} not found, skipping representation", LogText(match[1]));
        else
            represent(encoding->second, match[2], reading.signals);
    }
    return true;
}

} // namespace Common
