// SPDX-License-Identifier: GPL-3.0-or-later
// What no statement of a file can hold, because its pattern asks for more, may still come from elsewhere.
#include "database/dbc/DbcNodeCheck.h"
#include "database/dbc/DbcSignalCheck.h"
#include "database/dbc/DbcSignalMultiplexReader.h"
#include "database/dbc/DbcSignalValueTypeReader.h"
#include "database/dbc/DbcValueTableReader.h"
#include "tests/database/dbc/DbcFixture.h"

namespace {

using DbcChecks = DbcFixture;

} // namespace

TEST_F(DbcChecks, ANodeWithoutANameIsRejected)
{
    DbcFile file;
    EXPECT_FALSE(DbcNodeCheck::addIfValid(QString(), file));
    EXPECT_TRUE(log.has(error, "Node name cannot be empty"));
    EXPECT_TRUE(file.nodes.empty());
}

TEST_F(DbcChecks, ASignalWithoutANameIsRejected)
{
    DbcFile file;
    DbcSignal nameless;
    nameless.size = 8;
    nameless.receivers = QStringList{QStringLiteral("Ecu")};
    EXPECT_FALSE(DbcSignalCheck::accept(nameless, file));
    EXPECT_TRUE(log.has(error, "Signal name cannot be empty"));
    EXPECT_TRUE(file.nodes.empty());
}

TEST_F(DbcChecks, AValueTableWithoutANameIsRefused)
{
    EXPECT_FALSE(DbcValueTableReader::isAcceptable({QString(), {{1, QStringLiteral("x")}}}, false));
    EXPECT_TRUE(log.has(error, "Value table name cannot be empty"));
}

TEST_F(DbcChecks, AValueTableWithoutEntriesIsAcceptedWithAWarning)
{
    EXPECT_TRUE(DbcValueTableReader::isAcceptable({QStringLiteral("T"), {}}, false));
    EXPECT_TRUE(log.has(warning, "Value table T has no entries"));
}

TEST_F(DbcChecks, AValueTypeWithoutASignalIsRefused)
{
    EXPECT_FALSE(DbcSignalValueTypeReader::isValid({100, QString(), 1}));
    EXPECT_TRUE(log.has(error, "Empty signal name in signal value type definition"));
}

TEST_F(DbcChecks, AMultiplexValueWithoutEitherNameIsRefused)
{
    EXPECT_FALSE(DbcSignalMultiplexReader::isValid({100, QString(), QStringLiteral("M"), QStringLiteral("1-2")}));
    EXPECT_FALSE(DbcSignalMultiplexReader::isValid({100, QStringLiteral("S"), QString(), QStringLiteral("1-2")}));
    EXPECT_EQ(log.count(error, "Empty signal name or multiplexor signal name"), 2U);
}
