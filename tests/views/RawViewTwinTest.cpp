// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/views/RawViewTwinTest.h"

#include "tests/views/RawViewWindowFixture.h"

std::unique_ptr<tztest::RawViewWindowFixture> tztest::fixture;

void RawViewTwinTest::initTestCase_data()
{
    QTest::addColumn<int>("kind");
    QTest::newRow("CAN") << int{TzVciViewKind::can};
    QTest::newRow("LIN") << int{TzVciViewKind::lin};
}

void RawViewTwinTest::init()
{
    QFETCH_GLOBAL(int, kind);
    tztest::fixture = std::make_unique<tztest::RawViewWindowFixture>(static_cast<std::uint8_t>(kind));
}

void RawViewTwinTest::cleanup()
{
    tztest::fixture.reset();
}
