// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/views/CopyManagerTest.h"

#include "tests/views/SmallTree.h"
#include "views/ui/CommonCopyManager.h"

#include <QtTest>
#include <QtWidgets>

using namespace tztest;

namespace {

const QString untouched = QStringLiteral("untouched");

QString clipboardText()
{
    return QGuiApplication::clipboard()->text();
}

struct Table
{
    Table()
    {
        view.setModel(&model);
        view.setSelectionBehavior(QAbstractItemView::SelectRows);
        view.setSelectionMode(QAbstractItemView::MultiSelection);
        view.setColumnHidden(1, true);
    }
    SmallTable model;
    QTableView view;
};

struct Tree
{
    Tree()
    {
        view.setModel(&model);
        view.setSelectionMode(QAbstractItemView::MultiSelection);
    }
    SmallTree model;
    QTreeView view;
};

void select(QAbstractItemView &view, const std::vector<QModelIndex> &indexes)
{
    for (const QModelIndex &index : indexes)
        view.selectionModel()->select(index, QItemSelectionModel::Select | QItemSelectionModel::Rows);
}

} // namespace

void TestCopyManager::init()
{
    QGuiApplication::clipboard()->setText(untouched);
    QToolTip::hideText();
}

void TestCopyManager::nullViewsAndInvalidIndexesCopyNothing()
{
    Table table;
    Tree tree;
    QTableView tableWithoutModel;
    QTreeView treeWithoutModel;
    QTableView *noTable = nullptr;
    QTreeView *noTree = nullptr;
    const QModelIndex inTable = table.model.index(0, 0);
    const QModelIndex inTree = tree.model.index(0, 0);

    QVERIFY(!CommonCopyManager::copyData(noTable, inTable, 0));
    QVERIFY(!CommonCopyManager::copyData(noTree, inTree, 0));
    QVERIFY(!CommonCopyManager::copyRow(noTable, inTable));
    QVERIFY(!CommonCopyManager::copyRow(noTree, inTree));
    QVERIFY(!CommonCopyManager::copySelected(noTable));
    QVERIFY(!CommonCopyManager::copySelected(noTree));
    QVERIFY(!CommonCopyManager::copyData(&table.view, {}, 0));
    QVERIFY(!CommonCopyManager::copyData(&tree.view, {}, 0));
    QVERIFY(!CommonCopyManager::copyRow(&table.view, {}));
    QVERIFY(!CommonCopyManager::copyRow(&tree.view, {}));
    for (const int column : {-1, 4}) {
        QVERIFY(!CommonCopyManager::copyData(&table.view, inTable, column));
        QVERIFY(!CommonCopyManager::copyData(&tree.view, inTree, column));
    }
    QVERIFY2(!CommonCopyManager::copyRow(&table.view, inTree), "an index of another model");
    QVERIFY2(!CommonCopyManager::copyRow(&tree.view, inTable), "an index of another model");
    QVERIFY(!CommonCopyManager::copySelected(&tableWithoutModel));
    QVERIFY(!CommonCopyManager::copySelected(&treeWithoutModel));
    QVERIFY(!CommonCopyManager::copyText(nullptr, QStringLiteral("text"), CommonCopyManager::Content::Data));
    QCOMPARE(clipboardText(), untouched);
    QCOMPARE(QToolTip::text(), QString());
}

void TestCopyManager::dataOfATableRowIsItsCell()
{
    Table table;
    QVERIFY(CommonCopyManager::copyData(&table.view, table.model.index(1, 0), 2));
    QCOMPARE(clipboardText(), QStringLiteral("Door, left"));
}

void TestCopyManager::dataOfATreeRowIsItsCell()
{
    Tree tree;
    QVERIFY(CommonCopyManager::copyData(&tree.view, tree.model.index(2, 1), 3));
    QCOMPARE(clipboardText(), QStringLiteral("03"));
}

void TestCopyManager::dataOfAChildRowIsRefused()
{
    Tree tree;
    QVERIFY(!CommonCopyManager::copyData(&tree.view, tree.model.child(0, 1), 1));
    QCOMPARE(clipboardText(), untouched);
}

void TestCopyManager::rowOfATableHoldsItsHiddenColumns()
{
    Table table;
    QVERIFY(CommonCopyManager::copyRow(&table.view, table.model.index(1, 3)));
    QCOMPARE(clipboardText(), QStringLiteral("2\t0.2\tDoor, left\t02\n"));
}

void TestCopyManager::topRowIsExpandedAndBringsItsChildren()
{
    Tree tree;
    tree.view.setColumnHidden(2, true);
    QVERIFY(CommonCopyManager::copyRow(&tree.view, tree.model.index(0, 3)));
    QVERIFY(tree.view.isExpanded(tree.model.index(0, 0)));
    QVERIFY(!tree.view.isExpanded(tree.model.index(2, 0)));
    QCOMPARE(clipboardText(), QStringLiteral("1\t0.1\tEngine\t01\n    \tName\tRaw Value\n    \tSpeed\t100\n"));
    QVERIFY(CommonCopyManager::copyRow(&tree.view, tree.model.index(1, 0)));
    QCOMPARE(clipboardText(), QStringLiteral("2\t0.2\tDoor, left\t02\n"));
}

void TestCopyManager::childRowStandsAlone()
{
    Tree tree;
    QVERIFY(CommonCopyManager::copyRow(&tree.view, tree.model.child(0, 1, 2)));
    QCOMPARE(clipboardText(), QStringLiteral("    \tSpeed\t100\n"));
    QVERIFY(!tree.view.isExpanded(tree.model.index(0, 0)));
}

void TestCopyManager::selectedRowsOfATableComeInRowOrder()
{
    Table table;
    select(table.view, {table.model.index(2, 0), table.model.index(0, 0)});
    QVERIFY(CommonCopyManager::copySelected(&table.view));
    QCOMPARE(clipboardText(), QStringLiteral("1\t0.1\tEngine\t01\n3\t0.3\tRoof\t03\n"));
}

void TestCopyManager::selectedRowsOfATreeBringTheirChildren()
{
    Tree tree;
    select(tree.view, {tree.model.index(2, 0), tree.model.child(0, 1), tree.model.child(2, 0)});
    QVERIFY(CommonCopyManager::copySelected(&tree.view));
    QCOMPARE(clipboardText(), QStringLiteral("    \tSpeed\t100\n3\t0.3\tRoof\t03\n    \tName\tRaw Value\n"));
    QVERIFY(tree.view.isExpanded(tree.model.index(2, 0)));
    QVERIFY(!tree.view.isExpanded(tree.model.index(0, 0)));
}

void TestCopyManager::nothingSelectedLeavesTheClipboardAlone()
{
    Table table;
    Tree tree;
    QVERIFY(CommonCopyManager::copySelected(&table.view));
    QVERIFY(CommonCopyManager::copySelected(&tree.view));
    QCOMPARE(clipboardText(), untouched);
    QCOMPARE(QToolTip::text(), QString());
}

// A decoded view makes the texts of a row's signals when the row is expanded.
void TestCopyManager::childrenThatComeWithTheExpansionAreCopied()
{
    Tree tree;
    connect(&tree.view, &QTreeView::expanded, this, [&tree](const QModelIndex &index) {
        tree.model.setData(tree.model.child(index.row(), 0, 2), QStringLiteral("decoded"));
    });
    select(tree.view, {tree.model.index(2, 0)});
    QVERIFY(CommonCopyManager::copySelected(&tree.view));
    QCOMPARE(clipboardText(), QStringLiteral("3\t0.3\tRoof\t03\n    \tName\tdecoded\n"));
    QVERIFY(CommonCopyManager::copyRow(&tree.view, tree.model.index(0, 0)));
    QVERIFY(clipboardText().contains(QStringLiteral("decoded")));
}

void TestCopyManager::confirmationIsAToolTip()
{
    Table table;
    table.view.show();
    const QModelIndex index = table.model.index(0, 0);
    QVERIFY(CommonCopyManager::copyData(&table.view, index, 0));
    QCOMPARE(QToolTip::text(), QStringLiteral("Data copied!"));
    QVERIFY(QToolTip::isVisible());
    QVERIFY(CommonCopyManager::copyRow(&table.view, index));
    QCOMPARE(QToolTip::text(), QStringLiteral("Row copied!"));
    select(table.view, {index});
    QVERIFY(CommonCopyManager::copySelected(&table.view));
    QCOMPARE(QToolTip::text(), QStringLiteral("Selected rows copied!"));
    QTRY_VERIFY2(!QToolTip::isVisible(), "it goes by itself");
}
