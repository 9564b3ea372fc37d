// SPDX-License-Identifier: GPL-3.0-or-later
// Lines of text made of the rows of any model: a small tree stands for the decoded views.
#include "views/TzViewTextWriter.h"

#include "tests/views/SmallTree.h"

#include <QItemSelectionModel>

#include <gtest/gtest.h>

using namespace tztest;
using Style = TzViewTextWriter::Style;

namespace {

std::string allText(const QAbstractItemModel &model, Style style)
{
    TzViewTextWriter writer(model, style);
    writer.addHeader();
    writer.addAllRows();
    return writer.text().toStdString();
}

std::string cellText(const QString &cell, Style style)
{
    QStandardItemModel model;
    model.appendRow(new QStandardItem(cell));
    TzViewTextWriter writer(model, style);
    writer.addRow({0});
    return writer.text().toStdString();
}

std::vector<TzViewRow> selected(QAbstractItemModel &model, const std::vector<QModelIndex> &indexes)
{
    QItemSelectionModel selection(&model);
    for (const QModelIndex &index : indexes)
        selection.select(index, QItemSelectionModel::Select | QItemSelectionModel::Rows);
    return TzViewTextWriter::selectedRows(selection.selection());
}

} // namespace

TEST(ViewTextWriter, CommaAndQuoteAreSafeInCsv)
{
    EXPECT_EQ(cellText("plain", Style::Csv), "\"plain\"\n");
    EXPECT_EQ(cellText("", Style::Csv), "\"\"\n");
    EXPECT_EQ(cellText("a,b", Style::Csv), "\"a,b\"\n");
    EXPECT_EQ(cellText("say \"no\"", Style::Csv), "\"say \"\"no\"\"\"\n");
    EXPECT_EQ(cellText("\"", Style::Csv), "\"\"\"\"\n");
    EXPECT_EQ(cellText("two\nlines\tand tab", Style::Csv), "\"two\nlines\tand tab\"\n");
}

TEST(ViewTextWriter, TabbedTextKeepsTheCellAsShown)
{
    EXPECT_EQ(cellText("a\tb\nc\rd", Style::Tabbed), "a\tb\nc\rd\n");
    EXPECT_EQ(cellText("a,\"b\"", Style::Tabbed), "a,\"b\"\n");
    EXPECT_EQ(cellText("20 °C", Style::Tabbed), "20 °C\n");
}

TEST(ViewTextWriter, HeaderOfCsvIsQuotedWhereNeededAlone)
{
    QStandardItemModel model;
    model.setHorizontalHeaderLabels({"ID(hex)", "Size, bytes", "Inch \""});
    EXPECT_EQ(allText(model, Style::Csv), "ID(hex),\"Size, bytes\",\"Inch \"\"\"\n");
    EXPECT_EQ(allText(model, Style::Tabbed), "ID(hex)\tSize, bytes\tInch \"\n");
}

TEST(ViewTextWriter, ModelWithoutRowsHasItsHeader)
{
    const QStandardItemModel model;
    EXPECT_EQ(allText(model, Style::Csv), "\n");
}

TEST(ViewTextWriter, ChildrenFollowTheirParentIndented)
{
    const SmallTree tree;
    EXPECT_EQ(allText(tree, Style::Tabbed), "No.\tTime\tName\tData\n"
                                            "1\t0.1\tEngine\t01\n"
                                            "    \tName\tRaw Value\n"
                                            "    \tSpeed\t100\n"
                                            "2\t0.2\tDoor, left\t02\n"
                                            "3\t0.3\tRoof\t03\n"
                                            "    \tName\tRaw Value\n");
    const std::string csv = R"(No.,Time,Name,Data
"1","0.1","Engine","01"
    "","Name","Raw Value"
    "","Speed","100"
"2","0.2","Door, left","02"
"3","0.3","Roof","03"
    "","Name","Raw Value"
)";
    EXPECT_EQ(allText(tree, Style::Csv), csv);
}

TEST(ViewTextWriter, RowOfAnIndexIsThatOfItsPlaceInTheTree)
{
    const SmallTree tree;
    EXPECT_EQ(TzViewTextWriter::rowOf(tree.index(2, 3)), (TzViewRow{2}));
    EXPECT_EQ(TzViewTextWriter::rowOf(tree.child(0, 1)), (TzViewRow{0, 1}));
}

TEST(ViewTextWriter, SelectedRowsComeInTheirOrderEachOnce)
{
    SmallTree tree;
    EXPECT_TRUE(selected(tree, {}).empty());
    EXPECT_EQ(selected(tree, {tree.index(2, 0), tree.index(0, 0), tree.index(0, 2)}),
              (std::vector<TzViewRow>{{0}, {2}}));
    EXPECT_EQ(selected(tree, {tree.child(2, 0), tree.child(0, 1), tree.child(0, 0), tree.index(1, 0)}),
              (std::vector<TzViewRow>{{0, 0}, {0, 1}, {1}, {2, 0}}));
    EXPECT_EQ(selected(tree, {tree.child(0, 0), tree.child(0, 1), tree.index(0, 0), tree.child(2, 0)}),
              (std::vector<TzViewRow>{{0}, {2, 0}}))
        << "a child comes with its parent";
}
