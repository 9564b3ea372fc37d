// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>

/// What windows take from the compiled-in resources, and the look that the program gives itself.
class TestResources : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void iconExistsInBothDensities_data();
    void iconExistsInBothDensities();
    void logoHasSeveralSizes();
    void highDensityIconsAreUsed();
    void styleSheetNamesOnlyImagesThatExist();
    void buttonsOfMessageBoxesHaveTextsAlone();
    void paletteIsLightOnEveryDesktop();
};
