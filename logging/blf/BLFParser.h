// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "logging/blf/BlfFrame.h"
#include "logging/blf/BlfMemoryBudget.h"

#include <QObject>
#include <QString>

#include <cstdint>
#include <functional>

namespace BLF {

class BlfReader;

/// Reads a BLF log into records. Works in the thread that calls; it takes as long as the file is long.
class BLFParser : public QObject
{
    Q_OBJECT

public:
    explicit BLFParser(QObject *parent = nullptr);

    /// Sends a text of each record to the log, at debug level.
    bool logFrames = false;

    /// Called about every 50 ms during parseFile(), for a window that has to go on painting. A call may connect and
    /// disconnect receivers and change logFrames, but must not destroy the parser. What it throws comes out of
    /// parseFile(); the records so far stay.
    void setPulse(std::function<void()> pulse);

    /// Bytes that the records of one parseFile() may hold. Preset: half of the machine's memory.
    void setMemoryBudget(std::uint64_t bytes) { m_memoryBudget = bytes; }

    /// Appends a record for each object that is known; order as in the file. What cannot be read costs itself alone.
    /// Ends early, with an error in the log, where the records would hold more than the memory budget; those so far
    /// stay.
    /// @return whether there was at least one; a missing or unreadable file is logged as an error
    bool parseFile(const QString &path, BlfFrames &outFrames);
    /// Whether the last parseFile() came through the whole file without finding damage.
    bool hasReadAll() const { return m_hasReadAll; }

Q_SIGNALS:
    /// For each record, with its text, before it is appended. Texts are made only while somebody is connected to one of
    /// the three, or for the log.
    void sigProcessReport(const QString &text, int value, bool isError);
    void sigProcessReport(const QString &text, int value);
    void sigProcessReport(const QString &text);

private:
    std::uint64_t readObjects(BlfReader &reader, BlfMemoryBudget &budget, BlfFrames &outFrames);
    bool isReportWanted() const;
    void report(const BlfFrame &record);

    std::function<void()> m_pulse;
    std::uint64_t m_memoryBudget = BlfMemoryBudget::ofThisMachine();
    bool m_hasReadAll = false;
};

} // namespace BLF
