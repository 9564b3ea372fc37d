// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QStandardItemModel>

namespace tztest {

/// A tree of the form that decoded views have: top rows of four columns, of which two have child rows of three.
class SmallTree : public QStandardItemModel
{
public:
    SmallTree()
    {
        setHorizontalHeaderLabels({"No.", "Time", "Name", "Data"});
        addTop({"1", "0.1", "Engine", "01"}, {{"", "Name", "Raw Value"}, {"", "Speed", "100"}});
        addTop({"2", "0.2", "Door, left", "02"}, {});
        addTop({"3", "0.3", "Roof", "03"}, {{"", "Name", "Raw Value"}});
    }

    QModelIndex child(int top, int row, int column = 0) const { return index(row, column, index(top, 0)); }

private:
    static QList<QStandardItem *> items(const QStringList &texts)
    {
        QList<QStandardItem *> row;
        for (const QString &text : texts)
            row << new QStandardItem(text); // the model takes them
        return row;
    }
    void addTop(const QStringList &texts, const QList<QStringList> &children)
    {
        const QList<QStandardItem *> top = items(texts);
        appendRow(top);
        for (const QStringList &child : children)
            top.first()->appendRow(items(child));
    }
};

/// The top rows of it alone.
class SmallTable : public SmallTree
{
public:
    SmallTable()
    {
        for (int row = 0; row < rowCount(); ++row)
            item(row)->removeRows(0, item(row)->rowCount());
    }
};

} // namespace tztest
