// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QStringView>

struct DbcFile;

namespace DbcCommentReader {

/// Stores the texts of `CM_` statements with their messages, signals and nodes. A comment on the file itself, which
/// names no object, is not read. Needs the messages and their indexes.
void readComments(QStringView text, DbcFile &file);

} // namespace DbcCommentReader
