// SPDX-License-Identifier: GPL-3.0-or-later
#include "vci/ui/TzVciBusLoadTable.h"

#include <QHeaderView>

namespace {

constexpr int channelRowHeight = 24; // pixels

Qt::Alignment alignmentOf(int column)
{
    return (column == TzVciBusLoadTable::ChannelColumn ? Qt::AlignLeft : Qt::AlignRight) | Qt::AlignVCenter;
}

} // namespace

TzVciBusLoadTable::TzVciBusLoadTable(QWidget *parent)
    : QTableWidget(0, ColumnCount, parent)
{
    setHorizontalHeaderLabels({tr("Channel"), tr("Messages"), tr("Bus Load"), tr("Period Time")});
    for (int column = 0; column < ColumnCount; ++column)
        horizontalHeaderItem(column)->setTextAlignment(alignmentOf(column));
    horizontalHeader()->setSectionResizeMode(QHeaderView::Stretch);
    horizontalHeader()->setSectionsClickable(false);
    horizontalHeader()->setHighlightSections(false);
    verticalHeader()->hide();
    verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    verticalHeader()->setDefaultSectionSize(channelRowHeight);
    setSelectionBehavior(QAbstractItemView::SelectRows);
    setSelectionMode(QAbstractItemView::SingleSelection);
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setTabKeyNavigation(false);
    setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
}

void TzVciBusLoadTable::showRows(const std::vector<TzVciBusLoadSummary::Row> &rows)
{
    int row = 0;
    for (const TzVciBusLoadSummary::Row &texts : rows) {
        while (row < rowCount() && channelOf(row) < texts.channelIndex)
            removeRow(row);
        if (row == rowCount() || channelOf(row) != texts.channelIndex)
            insertChannel(row, texts.channelIndex);
        showRow(row++, texts);
    }
    while (rowCount() > row)
        removeRow(rowCount() - 1);
}

int TzVciBusLoadTable::channelOf(int row) const
{
    return item(row, ChannelColumn)->data(Qt::UserRole).toInt();
}

void TzVciBusLoadTable::insertChannel(int row, int channelIndex)
{
    insertRow(row);
    for (int column = 0; column < ColumnCount; ++column) {
        auto *cell = new QTableWidgetItem;
        cell->setTextAlignment(alignmentOf(column));
        setItem(row, column, cell);
    }
    item(row, ChannelColumn)->setData(Qt::UserRole, channelIndex);
}

void TzVciBusLoadTable::showRow(int row, const TzVciBusLoadSummary::Row &texts)
{
    const QString *const cells[ColumnCount] = {&texts.channel, &texts.messages, &texts.busLoad, &texts.periodTime};
    for (int column = 0; column < ColumnCount; ++column) {
        if (item(row, column)->text() != *cells[column]) // an equal text would repaint all the same
            item(row, column)->setText(*cells[column]);
    }
}
