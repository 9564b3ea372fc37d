// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QStringView>

struct DbcFile;
struct DbcMessage;
struct DbcSharedTexts;

namespace DbcSignalReader {

/// Appends the signals of the `SG_` lines in @p text to @p message. A line that cannot be read, or whose signal is not
/// valid, is logged and left out. Receivers that are no nodes yet become nodes of @p file.
/// @param texts  those that other signals of the file share; kept between calls
void readSignals(QStringView text, DbcMessage &message, DbcFile &file, DbcSharedTexts &texts);

} // namespace DbcSignalReader
