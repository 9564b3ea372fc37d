// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>

class TestViewFilterWidget : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void controlsHaveTheirTexts_data();
    void controlsHaveTheirTexts();
    void barHasMarginsAndStyle();
    void directionsOfCan();
    void directionsOfLin();
    void conditionsReachTheFilter();
    void typingAnIdUpdatesTheFilter();
    void linDirectionFilters();
    void enablingIsToldOnce();
    void shownBarWithoutConditionsIsInactive();
};
