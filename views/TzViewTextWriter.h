// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "views/TzViewRow.h"

#include <QString>

#include <vector>

class QAbstractItemModel;
class QItemSelection;
class QModelIndex;

/// Turns rows of a model into lines of text: the display texts of all columns, whether the view hides them or not, each
/// line closed by a line feed. Tables and trees of two levels; the line of a child row begins with four blanks.
class TzViewTextWriter
{
public:
    enum class Style
    {
        Tabbed, ///< a tab between cells, each as it is shown
        Csv     ///< a comma between cells, each in double quotes, a double quote in it doubled; all else as it is
    };

    /// @param model  must outlive the writer
    TzViewTextWriter(const QAbstractItemModel &model, Style style);

    void addHeader(); ///< the texts of the horizontal header; CSV quotes those that could not be read otherwise
    void addRow(const TzViewRow &row);
    /// The row and, if it is a top row, its child rows.
    void addWithChildren(const TzViewRow &row);
    void addAllRows();
    const QString &text() const { return m_text; }

    /// Where an index of a model of two levels stands; it must be valid.
    static TzViewRow rowOf(const QModelIndex &index);
    /// The rows that have a selected cell, each once and in the order of the view. A child row is left out if its top
    /// row is selected too, as addWithChildren() brings it.
    static std::vector<TzViewRow> selectedRows(const QItemSelection &selection);

private:
    void addLine(int row, const QModelIndex &parent);
    void addCell(const QString &cell);
    void addQuotedCell(const QString &cell);

    const QAbstractItemModel &m_model;
    const Style m_style;
    QString m_text;
};
