// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>

/// The BLF converter at work, on logs made for it.
class TestBlfConverterRun : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup();

    void slotsAreInTheirOrder();
    void convertsToCsv();
    void convertsToAsc();
    void optionsReachTheFile();
    void optionsReachTheAscFileToo();
    void optionsReachBothWriters();
    void pathsWithBlanksAndChineseCharacters();
    void openFileAndOpenFolderGoToTheDesktop();
    void escapeClosesTheBoxAndOpensNothing();
    void withoutAProgramToOpenWithItTellsSo();
    void checksInTheirOrder_data();
    void checksInTheirOrder();
    void anExistingOutputIsKeptOnNo();
    void anExistingOutputIsReplacedOnYes();
    void theLogIsNeverReplaced();
    void aLogWithoutRecordsFails();
    void aFileThatIsNoLogFails();
    void anUnwritableFolderFails_data();
    void anUnwritableFolderFails();
    void aFullDiskFails();
    void tooLittleMemoryFails();
    void aSecondRunBeginsWithAnEmptyLog();
};
