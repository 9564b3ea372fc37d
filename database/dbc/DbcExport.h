// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <vector>

struct DbcMessage;

/// Whether messages can be written into one file. Identifiers must differ; signal names that repeat within a message
/// are told in @p outText, a line each, but do not make it false: the caller decides. Any thread.
/// @param outText  replaced: what was found, for the user; empty without a finding
bool validateMessagesForExport(const std::vector<DbcMessage> &messages, QString &outText);
