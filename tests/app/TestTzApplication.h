// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>

class TestTzApplication : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void anExceptionOutOfASlotEndsTheLoopAndComesOutOfRun();
    void anExceptionInADialogBeforeTheLoopComesOutOfRun();
    void theFirstOfSeveralExceptionsIsKept();
    void anythingThrownIsKept();
    void anExceptionOnAnotherThreadComesOutOfRun();
    void anEndRequestedOnAnotherThreadIsAnnouncedAndEndsTheLoop();
    void aMessageBoxShowsAfterAnException();
    void aThrowerThatRepeatsLeavesTheMessageBoxAlone();
    void anEndOrderedBeforeTheLoopEndsItAtOnce();
};
