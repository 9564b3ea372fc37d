// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "database/ldf/LdfParser.h"

namespace Common {

/// Adds the rules of SAE J2602 for nodes, frames and schedule tables, and response times with their tolerance.
class LdfJ2602Parser : public LdfParser
{
    Q_OBJECT

public:
    using LdfParser::LdfParser;

    bool parseProtocolConfig(const QString &attributesText, LdfNode &node) override;
    bool parseFrameConfig(const QString &frameText, LdfFrame &frame) override;
    bool validateNodeConfig(const LdfNode &node) override;
    bool validateFrame(const LdfFrame &frame) override;
    bool validateScheduleTable(const LdfScheduleTable &table) override;
    bool updateFrameTiming(LdfFrame &frame) override;
    void updateEventTriggeredFrame(LdfFrame &frame, const LdfEventTriggeredFrame &eventFrame) override;
    void printProtocolSummary() override;
    void printNodeSummary() override;

    /// Longest time from the header to the end of the response, in ms; 0 for a frame of the master.
    double responseTimeMs(const LdfFrame &frame);

private:
    const LdfNode *publisherOrError(const LdfFrame &frame);
    void checkNad(const LdfNode &node) const;
    bool checkConfigurableFrames(const LdfNode &node);
    bool checkResponseError(const LdfNode &node);
    void checkFrameId(const LdfFrame &frame);
};

} // namespace Common
