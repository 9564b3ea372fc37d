// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>

/// What the program draws by itself under the style sheet. Run at 100 % and at 200 %.
class TestWorkbenchProxyStyle : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void messageBoxesShowOurIconsInTheDisplaysDensity_data();
    void messageBoxesShowOurIconsInTheDisplaysDensity();
    void otherStandardIconsStayTheToolkits();
    void branchesAreDrawnInTheDisplaysDensity();
    void branchTellsOpenFromClosedAndPointsWithTheText();
    void branchOfALeafIsEmpty();
    void branchOfADisabledTreeIsMuted();
};
