// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "common/ConfigManager.h"
#include "tests/support/TempWorkDir.h"

#include <QObject>

#include <memory>

class TestDebugLogDialog : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void showsTitleTextsAndItems();
    void showsTheSettings();
    void uncheckingLogToFileDisablesTheFileGroup();
    void okSavesTheSettingsAndStartsTheLogAnew();
    void cancelChangesNothing();
    void browseTakesTheFolderWithTheProgramsName();
    void browseCancelledKeepsThePath();
    void consoleOnlyWritesNoFile();
    void noLogWritesNothing();
    void numbersHaveTheWholeRangeOfAByte();
    void aLogThatCannotStartIsShownAndTheDialogAcceptedAllTheSame();
    void settingsThatCannotBeSavedStillStartTheLog();
    void restartWhileOtherThreadsLogAtFullRate();
    void sizeAndNumberOfFilesReachTheLog();
    void anUnknownLevelIsSavedAsNoLog();
    void tabOrder();

private:
    std::unique_ptr<tztest::TempWorkDir> m_workDir;
    std::unique_ptr<Common::ConfigManager> m_config;
};
