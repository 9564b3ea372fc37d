// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QStringView>

struct DbcFile;

/// What attributes there are: `BA_DEF_`, and their defaults: `BA_DEF_DEF_`.
namespace DbcAttributeDefinitionReader {

void readDefinitions(QStringView text, DbcFile &file);
/// The first definition of a name takes its default, whatever it is an attribute of.
void readDefaults(QStringView text, DbcFile &file);

} // namespace DbcAttributeDefinitionReader
