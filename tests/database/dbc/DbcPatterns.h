// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

/// The patterns that the hand-written readers of DbcScan.h stand in for.
namespace DbcPatterns {

inline const QString version = QStringLiteral(R"p(VERSION\s+"([^"]*)")p");
inline const QString blanks = QStringLiteral(R"p(\s+)p");
inline const QString nodeName = QStringLiteral(R"p(^[a-zA-Z_][a-zA-Z0-9_]*$)p");
inline const QString receivers = QStringLiteral(R"p(\s*,\s*|\s+)p");
inline const QString enumSeparator = QStringLiteral(R"p("\s*,\s*")p");
inline const QString messageHead = QStringLiteral(R"p(BO_\s+(\d+)\s+(\w+):\s+(\d+)\s+(\w+))p");
inline const QString signalBody =
    QStringLiteral(R"p(^\s*(\d+\|\d+@[01][+-])\s*\(([^\)]*)\)\s*\[([^\]]*)\]\s*("[^"]*"|[^\s]*)\s*(.*)$)p");
inline const QString signalLayout = QStringLiteral(R"p((\d+)\|(\d+)@([01])([+-]))p");
inline const QString commentBlock = QStringLiteral(R"p(CM_\s+(BO_|SG_|BU_)\s+[\s\S]*?"[\s\S]*?"\s*;)p");
inline const QString messageComment = QStringLiteral(R"p(CM_\s+BO_\s+(\d+)\s+"([\s\S]*?)"\s*;)p");
inline const QString signalComment = QStringLiteral(R"p(CM_\s+SG_\s+(\d+)\s+([^\s]+)\s+"([\s\S]*?)"\s*;)p");
inline const QString nodeComment = QStringLiteral(R"p(CM_\s+BU_\s+([^\s]+)\s+"([\s\S]*?)"\s*;)p");
inline const QString attributeDefinition = QStringLiteral(R"p(BA_DEF_\s+(?:(\w+)\s+)?"([^"]+)"\s+(\w+)\s*([^;]*);)p");
inline const QString attributeDefault = QStringLiteral(R"p(BA_DEF_DEF_\s+"([^"]+)"\s+([^;]+);)p");
inline const QString attributeValue =
    QStringLiteral(R"p(BA_\s+"([^"]+)"\s+(?:(SG_|BO_|BU_)\s+(?:(\d+)\s+)?(?:([^\s;]+)\s+)?)?([^;]+);)p");
inline const QString valuePair = QStringLiteral(R"p((\d+)\s+"([^"]*)")p");
inline const QString valueDescription = QStringLiteral(R"p(^VAL_\s*(\d+)?\s+([\w\d_]+)\s+(.*);$)p");
inline const QString numberRange = QStringLiteral(R"p((\d+)-(\d+))p");

} // namespace DbcPatterns
