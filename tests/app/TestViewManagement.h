// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>

/// The list of views: their numbers, their tiling, and how they leave it.
class TestViewManagement : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void aFifthNewCanViewShowsTheWarningAndNothingChanges();
    void closingTheSecondOfThreeViewsGivesTheThirdTheNumberTwoAndTwoRows();
    void titlesOfAllKinds();
    void resizingTilesAgain();
    void resizingKeepsWhatTheUserMoved();
    void resetViewTilesAgain();
    void tilingLeavesTheWindowTitleAlone();
    void closeViewClosesAllViews();
    void aViewThatClosesByItselfLeavesListAndArea();
    void aViewThatRefusesToCloseStays();
    void aViewDestroyedWithoutClosingIsTakenOut();
    void aViewThatWasNeverListedShowsTheWarning();
};
