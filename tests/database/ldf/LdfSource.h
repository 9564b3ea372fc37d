// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "database/ldf/LdfConfig.h"

#include <QByteArray>
#include <QString>

#include <optional>

/// A small description that loads; a test replaces the sections that it is about. An empty section is left out.
struct LdfSource
{
    QString header = QStringLiteral("LIN_description_file;\n"
                                    "LIN_protocol_version = \"2.1\";\n"
                                    "LIN_language_version = \"2.1\";\n"
                                    "LIN_speed = 19.2 kbps;\n"
                                    "Channel_name = \"DB1\";\n");
    QString nodes = QStringLiteral("Master: Master1, 5 ms, 0.1 ms;\nSlaves: Slave1, Slave2;");
    QString signalList = QStringLiteral("Command: 8, 0, Master1, Slave1;\n"
                                        "Error1: 1, 0, Slave1, Master1;\n"
                                        "Level1: 10, 5, Slave1, Master1;\n"
                                        "Error2: 1, 0, Slave2, Master1;");
    QString diagnosticSignals;
    QString frames = QStringLiteral("CommandFrame: 0x10, Master1, 2 {\nCommand, 0;\n}\n"
                                    "Status1: 0x21, Slave1, 2 {\nError1, 0;\nLevel1, 1;\n}\n"
                                    "Status2: 0x22, Slave2, 1 {\nError2, 0;\n}");
    QString sporadicFrames;
    QString eventFrames;
    QString diagnosticFrames;
    QString attributes = slaveAttributes("Slave1", "0x01", "Error1") + slaveAttributes("Slave2", "0x02", "Error2");
    QString schedules = QStringLiteral("Normal {\nCommandFrame delay 10 ms;\nStatus1 delay 10 ms;\n"
                                       "Status2 delay 20 ms;\n}");
    QString encodings;
    QString representations;

    static QString slaveAttributes(const char *name, const char *nad, const char *responseError,
                                   const char *protocol = "\"2.1\"", const char *more = "");
    void setProtocol(const char *version);
    QString text() const;
};

/// Writes the bytes to a file of its own and loads that; nothing when it is refused.
std::optional<LdfConfig> loadLdfBytes(const QByteArray &bytes, const QString &encoding = QStringLiteral("UTF-8"));
inline std::optional<LdfConfig> loadLdf(const LdfSource &source)
{
    return loadLdfBytes(source.text().toUtf8());
}
