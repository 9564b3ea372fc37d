// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/logging/ui/LoggerTwinTest.h"

#include "tests/logging/ui/LoggerWindowFixture.h"

std::unique_ptr<tztest::LoggerWindowFixture> tztest::fixture;

void LoggerTwinTest::initTestCase_data()
{
    QTest::addColumn<bool>("lin");
    QTest::newRow("CAN") << false;
    QTest::newRow("LIN") << true;
}

void LoggerTwinTest::init()
{
    QFETCH_GLOBAL(bool, lin);
    tztest::fixture = std::make_unique<tztest::LoggerWindowFixture>(lin);
}

void LoggerTwinTest::cleanup()
{
    QVERIFY(tztest::fixture->driver.allMet());
    QCOMPARE(tztest::fixture->driver.unexpected(), 0);
    tztest::fixture.reset();
}
