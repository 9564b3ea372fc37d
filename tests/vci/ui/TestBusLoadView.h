// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tests/support/TempWorkDir.h"
#include "tools/simulator/Simulator.h"
#include "vci/TzVciDeviceManager.h"
#include "vci/TzVciDeviceStore.h"
#include "vci/ui/TzVciBusLoadView.h"

#include <QObject>

#include <memory>

class QLabel;
class QListWidget;
class QPushButton;
class QTableWidget;

/// The bus load window with simulated boxes behind it.
class TestBusLoadView : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void textsSizeAndIcon();
    void withoutADeviceTheDisplayIsClear();
    void listHoldsTheDevicesWithAnOpenCanChannel();
    void refreshTakesUpDevicesThatOpenedAndClosed();
    void showsLoadAndCountersOnceASecond();
    void selectionOfAnotherDeviceShowsItAtOnce();
    void rowsFollowTheOpenChannelsOfTheDevice();
    void aReportBetweenMinimumAndFullLengthLeavesTheDeviceCounters();
    void aPeriodOfZeroChangesNothing();
    void moreChannelsThanARecordHoldsShowWhatArrived();
    void countersReachTheirLimitAndWrap();
    void aVanishedDeviceClearsTheDisplay();
    void aClosedDeviceClearsTheDisplayAndComesBack();
    void devicesMayCloseUnderTheUpdates();
    void aHiddenWindowDoesNoWorkAndListsAnewWhenShown();
    void clockShowsDateAndTime();
    void clockHasPlainDigitsWhateverTheLocale();
    void tabReachesListButtonAndTable();

private:
    void startBoxes(int canChannels = 4);
    void openCan(int deviceIndex, int channel);
    void makeView();
    void sendReport(const std::vector<std::uint32_t> &numbers);
    QStringList rowTexts(int row) const;

    std::unique_ptr<tztest::TempWorkDir> m_workDir;
    std::unique_ptr<tzsim::Simulator> m_simulator;
    std::unique_ptr<TzVciDeviceStore> m_store;
    std::unique_ptr<TzVciDeviceManager> m_manager;
    std::unique_ptr<TzVciBusLoadView> m_view;
    QListWidget *m_list = nullptr;
    QPushButton *m_refresh = nullptr;
    QLabel *m_pc = nullptr;
    QLabel *m_device = nullptr;
    QTableWidget *m_table = nullptr;
};
