// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <cstdint>

struct DbcMessage;

/// How a message is to be sent, as its attributes tell. The first attribute of a name counts. Any thread.

/// In ms: 1000 where nothing useful is told, at least 10 else; 0 for a message that is not cyclic. Doubtful values are
/// logged.
std::uint16_t getMessageCycleTime(const DbcMessage &message);
std::int32_t getMessageSendType(const DbcMessage &message); ///< 0 if absent
/// In ms, 10 if absent. More than 1000 is logged.
std::uint16_t getMessageStartDelay(const DbcMessage &message);
QString getMessageSendTypeText(const DbcMessage &message);
