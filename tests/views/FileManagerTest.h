// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>

/// The dialogs in which tables and trees are saved, and the files that come of them.
class TestFileManager : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup();

    void nullViewsAskNothing();
    void tableOffersAscWhenAskedTo();
    void treeOffersNoAsc();
    void cancelledDialogWritesNothing();
    void formatFollowsTheChosenFilter();
    void extensionIsAddedToMatch();
    void treeIsSavedWithItsChildren();
    void unwritablePathShowsTheWarning();
    void folderOfTheNameShowsTheWarning();
    void existingFileIsReplacedOnlyOnYes();
    void namesAreNoMarkup();
    void recordedFileShowsTheWarning();
    void refusedReplacementAsksForAnotherName();
    void viewMayGoUnderTheDialogs();
};
