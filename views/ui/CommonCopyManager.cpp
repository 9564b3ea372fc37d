// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/ui/CommonCopyManager.h"

#include "views/TzViewTextWriter.h"

#include <QClipboard>
#include <QCursor>
#include <QGuiApplication>
#include <QTableView>
#include <QToolTip>
#include <QTreeView>

#include <chrono>

namespace {

constexpr std::chrono::milliseconds confirmationTime{1500};

using Content = CommonCopyManager::Content;

QString confirmationOf(Content content)
{
    return content == Content::Data ? CommonCopyManager::tr("Data copied!") : CommonCopyManager::tr("Row copied!");
}

bool isOf(const QAbstractItemView *view, const QModelIndex &index)
{
    return view && index.isValid() && index.model() == view->model();
}

void copyAndConfirm(QAbstractItemView *view, const QString &text, const QString &confirmation)
{
    QGuiApplication::clipboard()->setText(text);
    QToolTip::showText(QCursor::pos(), confirmation, view, {}, static_cast<int>(confirmationTime.count()));
}

// A row may get its children, or their texts, only when it is expanded.
void expand(QTableView *, const TzViewRow &) {}

void expand(QTreeView *view, const TzViewRow &row)
{
    if (!row.isChild())
        view->expand(view->model()->index(row.top, 0));
}

bool copyCell(QAbstractItemView *view, const QModelIndex &index, int column)
{
    const QModelIndex cell = isOf(view, index) ? index.sibling(index.row(), column) : QModelIndex();
    if (!cell.isValid())
        return false;
    copyAndConfirm(view, cell.data().toString(), confirmationOf(Content::Data));
    return true;
}

template <typename View> void copyRows(View *view, const std::vector<TzViewRow> &rows, const QString &confirmation)
{
    for (const TzViewRow &row : rows)
        expand(view, row);
    TzViewTextWriter writer(*view->model(), TzViewTextWriter::Style::Tabbed);
    for (const TzViewRow &row : rows)
        writer.addWithChildren(row);
    copyAndConfirm(view, writer.text(), confirmation);
}

template <typename View> bool copyOneRow(View *view, const QModelIndex &index)
{
    if (!isOf(view, index))
        return false;
    copyRows(view, {TzViewTextWriter::rowOf(index)}, confirmationOf(Content::Row));
    return true;
}

template <typename View> bool copySelectedRows(View *view)
{
    if (!view || !view->model())
        return false;
    const std::vector<TzViewRow> rows = TzViewTextWriter::selectedRows(view->selectionModel()->selection());
    if (!rows.empty())
        copyRows(view, rows, CommonCopyManager::tr("Selected rows copied!"));
    return true;
}

} // namespace

bool CommonCopyManager::copyData(QTableView *view, const QModelIndex &index, int column)
{
    return copyCell(view, index, column);
}

bool CommonCopyManager::copyData(QTreeView *view, const QModelIndex &index, int column)
{
    return !index.parent().isValid() && copyCell(view, index, column);
}

bool CommonCopyManager::copyRow(QTableView *view, const QModelIndex &index)
{
    return copyOneRow(view, index);
}

bool CommonCopyManager::copyRow(QTreeView *view, const QModelIndex &index)
{
    return copyOneRow(view, index);
}

bool CommonCopyManager::copySelected(QTableView *view)
{
    return copySelectedRows(view);
}

bool CommonCopyManager::copySelected(QTreeView *view)
{
    return copySelectedRows(view);
}

bool CommonCopyManager::copyText(QAbstractItemView *view, const QString &text, Content content)
{
    if (!view)
        return false;
    copyAndConfirm(view, text, confirmationOf(content));
    return true;
}
