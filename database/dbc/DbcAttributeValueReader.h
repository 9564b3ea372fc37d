// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "database/dbc/DbcAttribute.h"
#include "database/dbc/DbcScan.h"
#include "database/text/RecentTexts.h"

#include <QString>
#include <QStringView>

#include <unordered_map>

struct DbcFile;
struct DbcMessage;

/// Reads the `BA_` statements of a file and lets the two attributes that mean something to this system take effect:
/// VFrameFormat tells a message's frame format, GenSigStartValue a signal's raw value.
class DbcAttributeValueReader
{
public:
    /// Needs the definitions with their defaults, the messages and their indexes; no list of @p file may change
    /// meanwhile.
    explicit DbcAttributeValueReader(DbcFile &file);

    void read(QStringView text);

private:
    DbcAttributeValue recordOf(const DbcScan::AttributeValue &statement);
    void readStatement(const DbcScan::AttributeValue &statement);
    void readOfNode(const DbcScan::AttributeValue &statement);
    void readOfMessage(const DbcScan::AttributeValue &statement);
    void readOfSignal(const DbcScan::AttributeValue &statement);
    void applyFrameFormat(DbcMessage &message, const QString &value);
    bool usesBitRateSwitch(const DbcMessage &message) const;
    const DbcAttributeDefinition *findMessageDefinition(QStringView name) const;

    DbcFile &m_file;
    const DbcAttributeDefinition *m_frameFormat = nullptr; // null where it is not defined
    bool m_switchesByDefault = false;
    std::unordered_map<const DbcMessage *, bool> m_switches; // the first CANFD_BRS of a message, as read so far
    Common::RecentTexts<QString> m_texts; // thousands of statements have the same few names and values
};
