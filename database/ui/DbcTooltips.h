// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

struct DbcMessage;
struct DbcSignal;

// Tool tips in rich text that tell a message and a signal of a DBC file. UI thread only. What the file says is shown as
// plain text, whatever marks it holds.

QString buildMessageTooltip(const DbcMessage &message);
QString buildSignalTooltip(const DbcSignal &signal);
