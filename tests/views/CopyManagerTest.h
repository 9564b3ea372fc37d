// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>

/// What the copies of tables and trees put on the clipboard.
class TestCopyManager : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init();

    void nullViewsAndInvalidIndexesCopyNothing();
    void dataOfATableRowIsItsCell();
    void dataOfATreeRowIsItsCell();
    void dataOfAChildRowIsRefused();
    void rowOfATableHoldsItsHiddenColumns();
    void topRowIsExpandedAndBringsItsChildren();
    void childRowStandsAlone();
    void selectedRowsOfATableComeInRowOrder();
    void selectedRowsOfATreeBringTheirChildren();
    void nothingSelectedLeavesTheClipboardAlone();
    void childrenThatComeWithTheExpansionAreCopied();
    void confirmationIsAToolTip();
};
