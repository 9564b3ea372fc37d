// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/dbc/DbcExport.h"

#include "database/dbc/DbcIdentifier.h"
#include "database/dbc/DbcMessage.h"
#include "database/dbc/DbcSignal.h"

#include <QCoreApplication>

#include <cstdint>
#include <set>

namespace {

struct Text
{
    Q_DECLARE_TR_FUNCTIONS(DbcExport)
};

QString repeatedSignalNames(const DbcMessage &message)
{
    QString text;
    std::set<QStringView> names; // ordered, so that no choice of names makes it slow
    for (const DbcSignal &signal : message.signals) {
        if (!names.insert(signal.name).second)
            text += Text::tr("Duplicate signal name found: %1\n").arg(signal.name);
    }
    return text;
}

} // namespace

bool validateMessagesForExport(const std::vector<DbcMessage> &messages, QString &outText)
{
    outText.clear();
    if (messages.empty()) {
        outText = Text::tr("The current file dbc message is empty");
        return false;
    }
    std::set<std::uint32_t> ids; // ordered, so that no choice of identifiers makes it slow
    for (const DbcMessage &message : messages) {
        if (!ids.insert(message.id).second) {
            outText = Text::tr("Duplicate message ID found: 0x%1")
                          .arg(QString::number(message.id & DbcIdentifier::mask, 16).toUpper());
            return false;
        }
        outText += repeatedSignalNames(message);
    }
    return true;
}
