// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

struct DbcFile;

/// The attribute statements of a DBC file's text, each with its line end. Any thread; nothing is logged.
namespace DbcStatements {

QString attributeDefinitionsText(const DbcFile &file); ///< BA_DEF_
QString attributeDefaultsText(const DbcFile &file);    ///< BA_DEF_DEF_
QString attributeValuesText(const DbcFile &file);      ///< BA_, of the file, the nodes, the messages, in this order

} // namespace DbcStatements
