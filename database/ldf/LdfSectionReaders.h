// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "database/ldf/LdfConfig.h"
#include "database/text/KeyedHash.h"

#include <QString>
#include <QStringView>

#include <map>
#include <memory>

namespace Common {

class LdfParser;

using LdfSignalMap = TextMap<LdfSignal>; ///< by name
using LdfEncodingMap = TextMap<std::shared_ptr<const LdfEncoding>>;

/// What the readers of one file share.
struct LdfReading
{
    LdfParser &rules; ///< asked for what the file's standard adds
    LdfConfig &config;
    LdfSignalMap &signals;
    LdfEncodingMap &encodings;

    bool isNode(const QString &name) const { return name == config.master.name || config.slaves.count(name) > 0; }
};

// One reader a section, in the order in which they are called. Each takes the whole prepared text. False: the file is
// refused.

bool readLdfNodes(const QString &text, const LdfReading &reading);
/// Adds a slave of that name unless there is one; an empty name is warned of and left out.
void addLdfSlave(const QString &name, std::map<QString, LdfNode> &slaves);
/// The node's block of the section Node_attributes.
bool readLdfNodeAttributes(const QString &block, LdfNode &node, LdfParser &rules);

bool readLdfEncodings(const QString &text, const LdfReading &reading);
bool readLdfSignals(const QString &text, const LdfReading &reading);
bool readLdfDiagnosticSignals(const QString &text, const LdfReading &reading);
bool readLdfRepresentations(const QString &text, const LdfReading &reading);

bool readLdfFrames(const QString &text, const LdfReading &reading);
bool readLdfDiagnosticFrames(const QString &text, const LdfReading &reading);
bool readLdfSporadicFrames(const QString &text, const LdfReading &reading);
bool readLdfEventTriggeredFrames(const QString &text, const LdfReading &reading);
/// Places the signals of a frame's block.
bool readLdfFrameSignals(QStringView block, LdfFrame &frame, const LdfReading &reading);

bool readLdfSchedules(const QString &text, const LdfReading &reading);

bool validateLdfNodes(const LdfReading &reading);
void printLdfSummary(const LdfReading &reading);

} // namespace Common
