// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/TzViewTextWriter.h"

#include <QAbstractItemModel>
#include <QItemSelection>

#include <algorithm>

namespace {

constexpr QLatin1Char quote('"');
constexpr QLatin1String childIndent("    ");
constexpr int usualLineLength = 128; // characters: what is reserved for each of all rows

bool isControl(QChar character)
{
    return character < QLatin1Char(' ');
}

bool needsQuotes(const QString &text)
{
    return std::any_of(text.begin(), text.end(),
                       [](QChar c) { return c == quote || c == QLatin1Char(',') || isControl(c); });
}

} // namespace

TzViewTextWriter::TzViewTextWriter(const QAbstractItemModel &model, Style style)
    : m_model(model)
    , m_style(style)
{
}

void TzViewTextWriter::addHeader()
{
    const int columns = m_model.columnCount();
    for (int column = 0; column < columns; ++column) {
        const QString text = m_model.headerData(column, Qt::Horizontal).toString();
        if (column > 0)
            m_text += QLatin1Char(m_style == Style::Csv ? ',' : '\t');
        if (m_style == Style::Csv && !needsQuotes(text))
            m_text += text;
        else
            addCell(text);
    }
    m_text += QLatin1Char('\n');
}

void TzViewTextWriter::addRow(const TzViewRow &row)
{
    if (row.isChild())
        addLine(row.child, m_model.index(row.top, 0));
    else
        addLine(row.top, {});
}

void TzViewTextWriter::addWithChildren(const TzViewRow &row)
{
    addRow(row);
    if (row.isChild())
        return;
    const QModelIndex parent = m_model.index(row.top, 0);
    const int children = m_model.rowCount(parent);
    for (int child = 0; child < children; ++child)
        addLine(child, parent);
}

void TzViewTextWriter::addAllRows()
{
    const int rows = m_model.rowCount();
    m_text.reserve(m_text.size() + rows * usualLineLength);
    for (int row = 0; row < rows; ++row)
        addWithChildren({row});
}

TzViewRow TzViewTextWriter::rowOf(const QModelIndex &index)
{
    const QModelIndex parent = index.parent();
    return parent.isValid() ? TzViewRow{parent.row(), index.row()} : TzViewRow{index.row()};
}

std::vector<TzViewRow> TzViewTextWriter::selectedRows(const QItemSelection &selection)
{
    std::vector<TzViewRow> all;
    for (const QItemSelectionRange &range : selection) {
        if (!range.isValid())
            continue;
        const QModelIndex parent = range.parent();
        for (int row = range.top(); row <= range.bottom(); ++row)
            all.push_back(parent.isValid() ? TzViewRow{parent.row(), row} : TzViewRow{row});
    }
    std::sort(all.begin(), all.end());
    std::vector<TzViewRow> rows;
    for (const TzViewRow &row : all) {
        const bool isRepeat = !rows.empty() && row == rows.back();
        const bool isOfSelectedTop = !rows.empty() && !rows.back().isChild() && row.top == rows.back().top;
        if (!isRepeat && !isOfSelectedTop)
            rows.push_back(row);
    }
    return rows;
}

void TzViewTextWriter::addLine(int row, const QModelIndex &parent)
{
    if (parent.isValid())
        m_text += childIndent;
    const int columns = m_model.columnCount(parent);
    for (int column = 0; column < columns; ++column) {
        if (column > 0)
            m_text += QLatin1Char(m_style == Style::Csv ? ',' : '\t');
        addCell(m_model.index(row, column, parent).data().toString());
    }
    m_text += QLatin1Char('\n');
}

void TzViewTextWriter::addCell(const QString &cell)
{
    if (m_style == Style::Csv)
        addQuotedCell(cell);
    else
        m_text += cell;
}

void TzViewTextWriter::addQuotedCell(const QString &cell)
{
    m_text += quote;
    int from = 0;
    for (int at = cell.indexOf(quote); at >= 0; at = cell.indexOf(quote, from)) {
        m_text.append(cell.constData() + from, at + 1 - from);
        m_text += quote;
        from = at + 1;
    }
    m_text.append(cell.constData() + from, cell.size() - from);
    m_text += quote;
}
