// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>

/// The steps of main(), on the process's own manager, store and scanner.
class TestTzStartup : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup();

    void metaTypeAndAttributes();
    void theLogBeginsWithTheBanner();
    void anUnwritableLogDirectoryShowsOneErrorBoxAndTheMainWindowOpens();
    void aCorruptConfigurationStillOpensTheFirstWindows();
    void anUnwritableConfigurationStillOpensTheFirstWindows();
    void theFirstWindowsAreACanViewAndTheSettingsDialog();
    void finishCancelsTheScan();
    void aStandardExceptionReturnsMinusOne();
    void anyOtherExceptionReturnsMinusTwo();
    void anExceptionOutOfASlotClosesTheDevicesAndStopsTheLogBeforeTheBox();
    void theCrashHookMayRunTwice();
    void quitTakesTheCloseStepsWithoutAQuestion();

private:
    struct Environment;
    Environment *m_environment = nullptr;
};
