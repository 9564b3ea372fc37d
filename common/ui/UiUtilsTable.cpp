// SPDX-License-Identifier: GPL-3.0-or-later
#include "common/ui/UiUtils.h"

#include <QEvent>
#include <QTableWidget>

#include <algorithm>
#include <vector>

namespace Common {

namespace {

// What a cell holds; owned by nobody while its row moves.
struct Cell
{
    QTableWidgetItem *item = nullptr;
    QWidget *widget = nullptr;
};

// The table deletes a widget that leaves its cell once control is back in the event loop; taking that request back is
// the one way to move it to another cell.
QWidget *takeCellWidget(QTableWidget *table, int row, int column)
{
    QWidget *widget = table->cellWidget(row, column);
    if (!widget)
        return nullptr;
    table->removeCellWidget(row, column);
    QCoreApplication::removePostedEvents(widget, QEvent::DeferredDelete);
    return widget;
}

int selectedRow(const QTableWidget *table)
{
    if (!table || !table->selectionModel())
        return -1;
    const QModelIndexList selected = table->selectionModel()->selectedIndexes();
    int row = -1;
    for (const QModelIndex &index : selected) {
        if (index.row() == table->currentRow())
            return index.row();
        if (row < 0 || index.row() < row)
            row = index.row();
    }
    return row;
}

void moveRow(QTableWidget *table, int from, int to)
{
    const bool sorted = table->isSortingEnabled();
    table->setSortingEnabled(false); // or the row would not stay where it is put
    const int column = std::max(table->currentColumn(), 0);
    const int height = table->rowHeight(from);
    QTableWidgetItem *header = table->takeVerticalHeaderItem(from);
    std::vector<Cell> cells(static_cast<std::size_t>(table->columnCount()));
    for (int i = 0; i < table->columnCount(); ++i)
        cells[static_cast<std::size_t>(i)] = {table->takeItem(from, i), takeCellWidget(table, from, i)};
    table->removeRow(from);
    table->insertRow(to);
    for (int i = 0; i < table->columnCount(); ++i) {
        const Cell &cell = cells[static_cast<std::size_t>(i)];
        if (cell.item)
            table->setItem(to, i, cell.item);
        if (cell.widget)
            table->setCellWidget(to, i, cell.widget);
    }
    if (header)
        table->setVerticalHeaderItem(to, header);
    table->setRowHeight(to, height);
    table->setSortingEnabled(sorted);
    table->setCurrentCell(to, column);
}

// Moves the selected row to the place that target computes from it, within the table.
template <typename Target> void moveSelectedRow(QTableWidget *table, Target target)
{
    const int from = selectedRow(table);
    if (from < 0)
        return;
    const int to = std::clamp(target(from), 0, table->rowCount() - 1);
    if (to != from)
        moveRow(table, from, to);
}

} // namespace

void UiUtils::removeTableRow(QTableWidget *table)
{
    const int row = selectedRow(table);
    if (row >= 0)
        table->removeRow(row);
}

void UiUtils::moveTableRowToTop(QTableWidget *table)
{
    moveSelectedRow(table, [](int) { return 0; });
}

void UiUtils::moveTableRowUp(QTableWidget *table)
{
    moveSelectedRow(table, [](int row) { return row - 1; });
}

void UiUtils::moveTableRowDown(QTableWidget *table)
{
    moveSelectedRow(table, [](int row) { return row + 1; });
}

void UiUtils::moveTableRowToBottom(QTableWidget *table)
{
    moveSelectedRow(table, [table](int) { return table->rowCount() - 1; });
}

bool UiUtils::clearTable(QTableWidget *table)
{
    if (!table || table->rowCount() == 0)
        return false;
    table->setRowCount(0);
    return true;
}

void UiUtils::setTableItemCheckState(QTableWidget *table, int column, bool checked)
{
    if (!table || column < 0 || column >= table->columnCount())
        return;
    const bool sorted = table->isSortingEnabled();
    table->setSortingEnabled(false); // rows must not move while they are walked through
    for (int row = 0; row < table->rowCount(); ++row) {
        if (!table->item(row, column))
            table->setItem(row, column, new QTableWidgetItem);
        table->item(row, column)->setCheckState(checked ? Qt::Checked : Qt::Unchecked);
    }
    table->setSortingEnabled(sorted);
}

} // namespace Common
