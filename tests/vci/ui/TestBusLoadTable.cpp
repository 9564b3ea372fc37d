// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/vci/ui/TestBusLoadTable.h"

#include "vci/ui/TzVciBusLoadTable.h"

#include <QScrollBar>
#include <QtTest>

#include <numeric>

namespace {

std::vector<TzVciBusLoadSummary::Row> rowsOf(const std::vector<int> &channels, const QString &messages)
{
    std::vector<TzVciBusLoadSummary::Row> rows;
    for (const int channel : channels)
        rows.push_back({channel, QStringLiteral("CAN%1").arg(channel + 1), messages, "0.00%", "0.0 ms"});
    return rows;
}

std::vector<int> firstChannels(int count)
{
    std::vector<int> channels(static_cast<std::size_t>(count));
    std::iota(channels.begin(), channels.end(), 0);
    return channels;
}

} // namespace

void TestBusLoadTable::updatesCellsInPlace()
{
    TzVciBusLoadTable table;
    table.showRows(rowsOf({0, 1}, QStringLiteral("1")));
    QCOMPARE(table.rowCount(), 2);
    const QTableWidgetItem *cell = table.item(1, TzVciBusLoadTable::MessagesColumn);
    const QSignalSpy changes(&table, &QTableWidget::itemChanged);
    table.showRows(rowsOf({0, 1}, QStringLiteral("1")));
    QCOMPARE(changes.count(), 0); // nothing new, nothing repainted
    table.showRows(rowsOf({0, 1}, QStringLiteral("2")));
    QCOMPARE(changes.count(), 2);
    QCOMPARE(table.item(1, TzVciBusLoadTable::MessagesColumn), cell);
    QCOMPARE(cell->text(), QStringLiteral("2"));
    table.showRows({});
    QCOMPARE(table.rowCount(), 0);
}

void TestBusLoadTable::keepsSelectionAndScrollPosition()
{
    TzVciBusLoadTable table;
    table.resize(300, 120);
    table.show();
    table.showRows(rowsOf(firstChannels(30), QStringLiteral("1")));
    table.selectRow(20);
    table.verticalScrollBar()->setValue(table.verticalScrollBar()->maximum());
    const int scrolled = table.verticalScrollBar()->value();
    QVERIFY(scrolled > 0);
    table.showRows(rowsOf(firstChannels(30), QStringLiteral("2")));
    QCOMPARE(table.item(29, TzVciBusLoadTable::MessagesColumn)->text(), QStringLiteral("2"));
    QCOMPARE(table.currentRow(), 20);
    QCOMPARE(table.verticalScrollBar()->value(), scrolled);
}

void TestBusLoadTable::selectionStaysWithItsChannelWhenOthersOpenAndClose()
{
    TzVciBusLoadTable table;
    std::vector<int> channels = firstChannels(30);
    table.showRows(rowsOf(channels, QStringLiteral("1")));
    table.selectRow(20);
    channels.erase(channels.begin() + 3);
    table.showRows(rowsOf(channels, QStringLiteral("2")));
    QCOMPARE(table.rowCount(), 29);
    QCOMPARE(table.selectedItems().front()->text(), QStringLiteral("CAN21"));
    QCOMPARE(table.item(3, TzVciBusLoadTable::ChannelColumn)->text(), QStringLiteral("CAN5"));
    channels.insert(channels.begin() + 3, 3);
    table.showRows(rowsOf(channels, QStringLiteral("3")));
    QCOMPARE(table.selectedItems().front()->text(), QStringLiteral("CAN21"));
    QCOMPARE(table.item(3, TzVciBusLoadTable::ChannelColumn)->text(), QStringLiteral("CAN4"));
}

void TestBusLoadTable::selectionEndsWithItsChannel()
{
    TzVciBusLoadTable table;
    table.showRows(rowsOf({0, 1, 2}, QStringLiteral("1")));
    table.selectRow(1);
    table.showRows(rowsOf({0, 2}, QStringLiteral("1")));
    QCOMPARE(table.rowCount(), 2);
    for (const QTableWidgetItem *item : table.selectedItems())
        QVERIFY(item->text() != QStringLiteral("CAN2"));
}
