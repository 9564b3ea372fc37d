// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

class QJsonObject;
class QString;

namespace Common {

/// Replaces a file by an object's indented text, as replaceFile() does. Does not make the folder. Any thread.
/// @return false where that failed, which is logged as an error; replaceFile() tells what is left then
bool saveJsonFile(const QString &path, const QJsonObject &root);

} // namespace Common
