// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>

/// The recorder windows as forms: texts, controls and dialogs. Each test runs on the CAN and on the LIN window.
class TestLoggerWindow : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup();

    void windowIsFixedWithoutMaximize_data() { twins(); }
    void windowIsFixedWithoutMaximize();
    void groupsAndTextsInOrder_data() { twins(); }
    void groupsAndTextsInOrder();
    void nothingIsClipped_data() { twins(); }
    void nothingIsClipped();
    void controlsStartWithTheirValues_data() { twins(); }
    void controlsStartWithTheirValues();
    void tabKeyFollowsTheLayout_data() { twins(); }
    void tabKeyFollowsTheLayout();
    void formatChangesDescriptionAndPreviewButNoPath_data() { twins(); }
    void formatChangesDescriptionAndPreviewButNoPath();
    void previewFollowsTheOptionsWhenAskedFor_data() { twins(); }
    void previewFollowsTheOptionsWhenAskedFor();
    void resetAsksAndKeepsOnNo_data() { twins(); }
    void resetAsksAndKeepsOnNo();
    void resetAsksAndResetsOnYes_data() { twins(); }
    void resetAsksAndResetsOnYes();
    void browseOffersTheFormatsFilesFromHome_data() { twins(); }
    void browseOffersTheFormatsFilesFromHome();
    void openWarnsWithoutPathOrFile_data() { twins(); }
    void openWarnsWithoutPathOrFile();
    void openShowsTheFileInTheDefaultProgram_data() { twins(); }
    void openShowsTheFileInTheDefaultProgram();
    void idleWindowClosesWithoutAsking_data() { twins(); }
    void idleWindowClosesWithoutAsking();
    void windowMayGoUnderItsDialogs_data() { twins(); }
    void windowMayGoUnderItsDialogs();

private:
    static void twins();
};
