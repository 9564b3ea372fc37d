// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tests/logging/ui/LoggerTwinTest.h"

/// The recorder windows as forms: texts, controls and dialogs.
class TestLoggerWindow : public LoggerTwinTest
{
    Q_OBJECT
private Q_SLOTS:
    void windowIsFixedWithoutMaximize();
    void groupsAndTextsInOrder();
    void nothingIsClipped();
    void controlsStartWithTheirValues();
    void tabKeyFollowsTheLayout();
    void formatChangesDescriptionAndPreviewButNoPath();
    void previewFollowsTheOptionsWhenAskedFor();
    void resetAsksAndKeepsOnNo();
    void resetAsksAndResetsOnYes();
    void browseOffersTheFormatsFilesFromHome();
    void openWarnsWithoutPathOrFile();
    void openShowsTheFileInTheDefaultProgram();
    void idleWindowClosesWithoutAsking();
    void windowMayGoUnderItsDialogs();
};
