// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tests/views/RawViewTwinTest.h"

/// Copying and saving from a raw view's buttons, context menu and keys.
class TestRawViewSnapshot : public RawViewTwinTest
{
    Q_OBJECT
private Q_SLOTS:
    void init();

    void saveOffersAscInACanViewAlone();
    void pausedViewHoldsStillWhileItIsSaved();
    void savePausesFromTheClickOn();
    void saveKeepsAnEarlierPause();
    void failedSaveGoesOnAsBefore();
    void secondClickAsksNothing();
    void viewMayGoUnderTheSaveDialog();
    void copyEntriesTakeTheClickedRow();
    void copyEntriesNeedSomethingToCopy();
    void clickedRowMayGoUnderTheMenu();
    void copyEntriesTakeTheClickedFrameOfAMovingView();
    void everyCopyKeyTakesTheSelectedRows();
};
