// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>

/// What the main window shows, and its quick button.
class TestTZBenchWindow : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void titleAndPages();
    void menusHoldTheirActionsInOrder_data();
    void menusHoldTheirActionsInOrder();
    void menuBarHasOneMenuWithEightMenus();
    void actionToolTips_data();
    void actionToolTips();
    void actionsWithoutAWindowAreDisabled();
    void toolRow_data();
    void toolRow();
    void everyIconExists();
    void quickButtonStates();
    void quickButtonWithNoOpenChannelOpensTheSettingsDialog();
    void quickButtonWithAnOpenChannelAndNoChangesNothing();
    void quickButtonWithAnOpenChannelAndYesClosesAllDevices();
    void settingsButtonAndActionOpenTheSettingsDialog();
    void viewButtonAndActionsOpenViews();
};
