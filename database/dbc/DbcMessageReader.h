// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "database/dbc/DbcMessage.h"
#include "database/text/RecentTexts.h"

#include <QStringView>

#include <functional>

struct DbcFile;

/// Reads the `BO_` statements of a file and sorts them into ordinary and special messages.
class DbcMessageReader
{
public:
    /// Fills a message with the signals of the text behind its head; false gives the message up.
    using SignalReader = std::function<bool(QStringView text, DbcMessage &message)>;

    DbcMessageReader(DbcFile &file, SignalReader readSignals);

    /// Appends the messages and builds the indexes.
    /// @return false where there is no ordinary message
    bool read(QStringView text);

private:
    struct Statement;

    void readOrdinary(const Statement &statement, DbcMessage &&message);
    void readSpecial(const Statement &statement, DbcMessage &&message);
    bool isKept(DbcMessage &message) const;

    DbcFile &m_file;
    SignalReader m_readSignals;
    Common::RecentTexts<QString> m_transmitters;
};
