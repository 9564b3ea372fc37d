// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>
#include <QVariant>

/// One `BA_DEF_` statement with its default from `BA_DEF_DEF_`. The three variants hold text or are null.
struct DbcAttributeDefinition
{
    QString name;
    QString objectType; ///< "BU_", "BO_", "SG_"; empty for the file itself
    QString valueType;  ///< "INT", "HEX", "FLOAT", "ENUM" or "STRING"
    QVariant minimum;   ///< INT, HEX and FLOAT only
    QVariant maximum;
    QVariant defaultValue;
    QStringList enumValues; ///< ENUM only, in file order: an attribute's value is an index into it
};

/// One `BA_` statement; a quoted value is held without its quotes.
struct DbcAttributeValue
{
    QString name;
    QString value;
};
