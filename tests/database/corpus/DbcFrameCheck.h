// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "database/dbc/DbcMessage.h"
#include "tests/database/corpus/DbcExpectation.h"
#include "tests/database/corpus/DbcGolden.h"
#include "tests/database/corpus/DbcTotals.h"

#include <QByteArray>
#include <QStringList>

namespace tzcorpus {

/// Decodes frames of one message, compares every value with the results, and encodes the frames again.
class DbcFrameCheck
{
public:
    /// @param expected  must outlive the check, and have results
    DbcFrameCheck(const ExpectedMessage &expected, DbcMessage message);

    /// Makes the rules known, so that they are listed even if none applies.
    static void addRules();

    /// A line for every difference.
    QStringList check(const GoldenFrame &frame, DbcTotals &totals);

private:
    const GoldenSignal *goldenSignal(const DbcSignal &signal) const;
    bool checkSignal(const GoldenFrame &frame, const DbcSignal &signal);
    void checkWayBack(const GoldenFrame &frame, const DbcSignal &signal);
    void checkEncoded(const GoldenFrame &frame, DbcTotals &totals);
    void differ(const GoldenFrame &frame, const QString &what);

    const ExpectedMessage &m_expected;
    DbcMessage m_message;
    QByteArray m_mask; ///< bits that signals cover; empty where one reaches past the end
    QStringList m_differences;
};

} // namespace tzcorpus
