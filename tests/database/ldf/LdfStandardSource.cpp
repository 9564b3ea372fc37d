// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/database/ldf/LdfStandardSource.h"

#include <QTemporaryFile>

#include <gtest/gtest.h>

LdfSource j2602Source(const char *nad, const char *more, const char *responseError, const char *protocol)
{
    LdfSource source;
    source.setProtocol("J2602_3_1.0");
    source.nodes = QStringLiteral("Master: Master1, 5 ms, 0.1 ms;\nSlaves: Slave1;");
    source.signalList = QStringLiteral("Command: 8, 0, Master1, Slave1;\nError1: 1, 0, Slave1, Master1;\n"
                                       "Other: 1, 0, Master1, Nobody;");
    source.frames = QStringLiteral("CommandFrame: 0x10, Master1, 8 {\nCommand, 0;\n}\nOtherFrame: 0x38, Master1, 1 {\n"
                                   "Other, 0;\n}\nStatus1: 0x21, Slave1, 8 {\nError1, 0;\n}");
    source.attributes = LdfSource::slaveAttributes("Slave1", nad, responseError, protocol, more);
    source.schedules = QStringLiteral("Normal {\nCommandFrame delay 10 ms;\nStatus1 delay 20 ms;\n}");
    return source;
}

LdfSource isoSource(const char *attributes, const char *nad, const char *responseError)
{
    LdfSource source = j2602Source(nad, attributes, responseError, "\"ISO17987:2016\"");
    source.header.replace(QStringLiteral("J2602_3_1.0"), QStringLiteral("ISO17987:2016"));
    return source;
}

void parseInto(Common::LdfParser &parser, const LdfSource &source)
{
    QTemporaryFile file;
    ASSERT_TRUE(file.open());
    file.write(source.text().toUtf8());
    ASSERT_TRUE(file.flush());
    EXPECT_TRUE(parser.parseFile(file.fileName(), QStringLiteral("UTF-8")));
}

LdfScheduleTable diagnosticTable(std::initializer_list<std::pair<const char *, double>> slots_)
{
    LdfScheduleTable table;
    table.name = QStringLiteral("Diag");
    table.type = LdfScheduleTableType::diagnostic;
    for (const auto &[name, delay] : slots_) {
        LdfScheduleEntry entry;
        entry.frameName = QString::fromLatin1(name);
        entry.delay = delay;
        table.entries.push_back(entry);
    }
    return table;
}
