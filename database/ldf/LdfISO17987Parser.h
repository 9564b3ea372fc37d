// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "database/ldf/LdfParser.h"

#include <QStringList>

namespace Common {

/// Adds the rules of ISO 17987 for nodes, frames and schedule tables, and response times from the node's timing.
class LdfISO17987Parser : public LdfParser
{
    Q_OBJECT

public:
    using LdfParser::LdfParser;

    bool parseProtocolConfig(const QString &attributesText, LdfNode &node) override;
    bool validateNodeConfig(const LdfNode &node) override;
    bool validateFrame(const LdfFrame &frame) override;
    bool validateScheduleTable(const LdfScheduleTable &table) override;
    bool updateFrameTiming(LdfFrame &frame) override;
    void updateEventTriggeredFrame(LdfFrame &frame, const LdfEventTriggeredFrame &eventFrame) override;
    void printProtocolSummary() override;
    void printNodeSummary() override;

    /// Longest time from the header to the end of the response, in ms; 0 for a frame of the master.
    double responseTimeMs(const LdfFrame &frame);
    /// True once a schedule table of the file has been accepted, and the names of those that were.
    bool hasAcceptedTable() const noexcept { return m_tableAccepted; }
    const QStringList &acceptedTables() const noexcept { return m_acceptedTables; }

protected:
    void forgetFile() override;

private:
    void checkNad(const LdfNode &node) const;
    void checkSignals(const LdfNode &node);
    bool checkFrameId(const LdfFrame &frame);
    bool checkFrameSizes(const LdfFrame &frame) const;
    bool checkDiagnosticTable(const LdfScheduleTable &table) const;

    double m_p2MaxTime = 50.0;       // ms
    double m_p2StarMaxTime = 5000.0; // ms
    double m_p3MaxTime = 5000.0;     // ms
    QStringList m_acceptedTables;
    bool m_tableAccepted = false;
};

} // namespace Common
