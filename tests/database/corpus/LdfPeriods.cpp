// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/database/corpus/LdfPeriods.h"

#include "database/ldf/LdfConversions.h"
#include "tests/database/corpus/Comparison.h"

#include <algorithm>

namespace tzcorpus {

namespace {

bool isOrdinary(const GoldenLdfTable &table)
{
    static const QStringList others{QStringLiteral("InitTable"), QStringLiteral("ETFCollisionResolving"),
                                    QStringLiteral("MasterReqTable"), QStringLiteral("SlaveRespTable")};
    return !others.contains(table.name);
}

// The standards other than LIN itself raise the periods of slave frames to the time of their response.
bool mayBeRaised(const LdfFrame &frame, LdfProtocolVersion version)
{
    return !frame.isMasterFrame && (isJ2602(version) || isIso17987(version));
}

} // namespace

QStringList comparePeriods(const LdfGolden &golden, const QString &name, const LdfFrame &actual,
                           LdfProtocolVersion version)
{
    double shortest = 0.0;
    double longest = 0.0;
    for (const GoldenLdfTable &table : golden.scheduleTables) {
        for (const GoldenLdfEntry &entry : table.entries) {
            if (entry.frame != name || !isOrdinary(table))
                continue;
            longest = std::max(longest, entry.delayMs);
            shortest = shortest == 0.0 ? entry.delayMs : std::min(shortest, entry.delayMs);
        }
    }
    Comparison result(name);
    if (mayBeRaised(actual, version)) {
        result.field("minPeriod at least", true, actual.minPeriod >= shortest);
        return result.differences();
    }
    result.field("minPeriod", shortest, actual.minPeriod);
    result.field("maxPeriod", longest, actual.maxPeriod);
    result.field("period", shortest > 0.0 ? shortest : 100.0, getFramePeriod(actual));
    return result.differences();
}

} // namespace tzcorpus
