// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "vci/TzVciDeviceStore.h"

#include <QObject>

#include <memory>

class TestChannelSelectDialog : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void titlesNameTheForm();
    void filterFormShowsWhatTheFilterHolds();
    void filterFormExpandsDevicesWithAnOpenChannel();
    void deviceCheckBoxSetsItsChannels();
    void channelCheckBoxSetsItsDevice();
    void selectAllAndSelectNone();
    void filterFormReportsTheChoice();
    void emptyChoiceInTheFilterFormGivesAnEmptyMap();
    void filterFormWithoutDevicesSaysSoAndGivesAnEmptyMap();
    void enterOnSelectNoneOnlySelectsNone();
    void tabGoesFromTheTreeOverTheChannelsToTheButtons();
    void singleFormLeavesOutADeviceWithNoOpenChannel();
    void singleFormAppliesOnlyAfterAChoice();
    void singleFormHoldsOneChoiceAcrossDevices();
    void singleFormPreselectsTheFilter();
    void singleFormWithoutChannelsSaysSo();
    void escapeReportsNothing();

private:
    std::unique_ptr<TzVciDeviceStore> m_store;
};
