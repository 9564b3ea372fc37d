// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/app/TestTzViewTiler.h"

#include "app/TzViewTiler.h"

#include <QtTest>

using Rects = QVector<QRect>;

void TestTzViewTiler::tilesFollowTheTable_data()
{
    QTest::addColumn<int>("count");
    QTest::addColumn<QSize>("area");
    QTest::addColumn<Rects>("expected");
    QTest::newRow("one") << 1 << QSize(800, 600) << Rects{QRect(0, 0, 800, 600)};
    QTest::newRow("two rows") << 2 << QSize(800, 600) << Rects{QRect(0, 0, 800, 300), QRect(0, 300, 800, 300)};
    QTest::newRow("three") << 3 << QSize(800, 600)
                           << Rects{QRect(0, 0, 400, 600), QRect(400, 0, 400, 300), QRect(400, 300, 400, 300)};
    QTest::newRow("four") << 4 << QSize(800, 600)
                          << Rects{QRect(0, 0, 400, 300), QRect(400, 0, 400, 300), QRect(0, 300, 400, 300),
                                   QRect(400, 300, 400, 300)};
    QTest::newRow("odd size rounds down")
        << 4 << QSize(801, 601)
        << Rects{QRect(0, 0, 400, 300), QRect(400, 0, 400, 300), QRect(0, 300, 400, 300), QRect(400, 300, 400, 300)};
    QTest::newRow("empty area") << 2 << QSize(0, 0) << Rects{QRect(0, 0, 0, 0), QRect(0, 0, 0, 0)};
}

void TestTzViewTiler::tilesFollowTheTable()
{
    QFETCH(int, count);
    QFETCH(QSize, area);
    QFETCH(Rects, expected);
    const std::vector<QRect> tiles = TzViewTiler::tiles(count, area);
    QCOMPARE(Rects(tiles.begin(), tiles.end()), expected);
}

void TestTzViewTiler::otherCountsGiveNothing()
{
    for (const int count : {-1, 0, 5})
        QVERIFY(TzViewTiler::tiles(count, QSize(800, 600)).empty());
}
