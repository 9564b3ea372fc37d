// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/ldf/LdfSectionReaders.h"

#include "common/Log.h"
#include "database/ldf/LdfNumbers.h"
#include "database/ldf/LdfSections.h"
#include "database/ldf/LdfStatements.h"
#include "database/text/LogText.h"

namespace Common {
namespace {

void addPhysicalRange(const LdfMatch &match, LdfEncoding &encoding)
{
    LdfPhysicalRange range;
    range.minRaw = ldfCIntegerOrZero<std::uint32_t>(match[1]);
    range.maxRaw = ldfCIntegerOrZero<std::uint32_t>(match[2]);
    range.factor = Numbers::doubleOrZero(match[3]);
    range.offset = Numbers::doubleOrZero(match[4]);
    range.unit = match.text(5);
    encoding.physicalRanges[range.maxRaw] = range;
}

// False where the key is too large, and the pair is left out; one that is no number is 0.
bool addLogicalValue(const LdfMatch &match, LdfEncoding &encoding)
{
    const auto key = readLdfCInteger<std::uint32_t>(match[1]);
    if (!key && isLdfCNumber(match[1]))
        return false;
    encoding.logicalValues[key.value_or(0)] = match.text(2);
    return true;
}

// False where nothing of the encoding could be read.
bool readValues(QStringView text, LdfEncoding &encoding)
{
    bool hasValue = false;
    for (const QStringView part : ldfParts(text, u';')) {
        if (const LdfMatch physical = matchLdfPhysicalValue(part)) {
            addPhysicalRange(physical, encoding);
            hasValue = true;
        } else if (const LdfMatch logical = matchLdfLogicalValue(part)) {
            hasValue |= addLogicalValue(logical, encoding);
        }
    }
    return hasValue;
}

} // namespace

bool readLdfEncodings(const QString &text, const LdfReading &reading)
{
    const auto section = findLdfSection(text, u"Signal_encoding_types");
    if (!section) {
        logInfo("No signal encoding types section found");
        return true;
    }
    for (const QStringView part : ldfParts(*section, u'}')) {
        const LdfMatch start = matchLdfBlockStart(part);
        if (!start)
            continue;
        auto encoding = std::make_shared<LdfEncoding>();
        encoding->name = start.text(1);
        if (!readValues(part.mid(start.end), *encoding)) {
            logError("Failed to parse encoding values for {}", LogText(encoding->name));
            return false;
        }
        reading.encodings[encoding->name] = encoding;
    }
    return true;
}

} // namespace Common
