// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>

/// The BLF converter as a form: texts, controls, paths and dialogs.
class TestBlfConverterDialog : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup();

    void textsAndFirstState();
    void nothingIsClipped();
    void tabKeyFollowsTheLayout();
    void everyControlHasAToolTip();
    void browseChoosesTheLogAndRemembersItsFolder();
    void browseCancelledChangesNothing();
    void browseChoosesTheOutputInTheFormat_data();
    void browseChoosesTheOutputInTheFormat();
    void anExistingOutputIsChosenWithoutAQuestion();
    void outputIsProposedOnlyWhereItIsEmpty();
    void aTypedInputIsFollowedByItsProposal();
    void aTypedInputLeavesAnOutputOfTheUsersAlone();
    void theFormatReplacesTheOutputWhereThereIsAnInput();
    void startIsEnabledOnlyWithBothPaths();
    void aFileThatComesWhileTheUserIsElsewhereEnablesStart();
    void pathsShowWholeInToolTips();
    void resetPutsEverythingBack();
    void aDroppedLogBecomesTheInput();
    void aDroppedFileOverAPathIsTheInputToo();
    void whatIsNoLogIsNotTaken();
    void reportsOfEachForm();
    void reportsStayAtTheEndWhereverTheCursorIs();
    void aReportIsNotTakenForMarkup();
    void reportsAreBounded();
    void escapeClosesAnIdleDialog();
};
