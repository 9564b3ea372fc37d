// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "database/dbc/DbcFile.h"
#include "database/dbc/DbcSharedTexts.h"

#include <QObject>
#include <QString>
#include <QStringView>

namespace Common {

/// Reads a DBC file into the one model of the process.
///
/// The parser only orders the sections; each has a reader of its own (Dbc...Reader.h). A section operation takes the
/// whole prepared text and returns false where the file is to be given up, which only parseNewSymbols() and
/// parseMessages() do; everything else that is wrong with a file is a log line and a skipped statement.
///
/// Threads: any one thread at a time. All parsers share the model, which has no lock: two parses must never overlap,
/// and nobody may keep a pointer into the model across parses.
class DbcParser : public QObject
{
    Q_OBJECT
public:
    explicit DbcParser(QObject *parent = nullptr);

    /// Clears the model and fills it from the file.
    /// @param encoding  name of a codec; empty or unknown leaves the text stream's default. A byte order mark
    /// overrides.
    /// @return false where the file cannot be read, has no `NS_` block or no ordinary message; the model is then half
    ///         filled and of no use
    bool parseFile(const QString &path, const QString &encoding);

    /// The process-wide model; for parsers and the file manager, under its lock.
    static DbcFile &model();

    virtual bool parseVersion(const QString &text);
    virtual bool parseNewSymbols(const QString &text);
    virtual bool parseValueTables(const QString &text);
    virtual bool parseNodes(const QString &text);
    virtual bool parseMessages(const QString &text);
    /// Appends the signals that @p text, the lines behind a message's head, holds.
    virtual bool parseSignals(QStringView text, DbcMessage &message);
    virtual bool parseComments(const QString &text);
    virtual bool parseAttributes(const QString &text);
    virtual bool parseAttributeDefinitions(const QString &text);
    virtual bool parseAttributeDefaults(const QString &text);
    virtual bool parseAttributeValues(const QString &text);
    virtual bool parseValueDescriptions(const QString &text);
    virtual bool parseSignalValueTypes(const QString &text);
    virtual bool parseSignalMultiplexValues(const QString &text);
    /// Writes the figures of the model to the log, at debug level.
    virtual void printStatistics();

private:
    bool parseSections(const QString &text);

    DbcFile &m_file;
    QString m_path;
    DbcSharedTexts m_texts; // while messages are read
};

} // namespace Common
