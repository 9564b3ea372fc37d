// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>

/// What can be done, and what cannot, while the BLF converter is at work.
class TestBlfConverterBusy : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup();

    void duringARunControlsAreDisabled();
    void duringARunResetWarns();
    void duringARunClosingIsRefused_data();
    void duringARunClosingIsRefused();
    void theWarningGoesWithTheRun();
    void duringARunAStartDoesNothing();
    void duringARunNothingCanBeDropped();
    void windowsGoOnPaintingDuringARun();
    void toldToEndARunIsGivenUp();
};
