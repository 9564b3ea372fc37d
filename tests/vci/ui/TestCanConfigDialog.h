// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "vci/TzVciDeviceStore.h"

#include <QObject>

#include <memory>

class TestCanConfigDialog : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void showsTitleTextsAndRanges();
    void showsTheRecord();
    void samplePointHasItsColour_data();
    void samplePointHasItsColour();
    void segments31And8At33333BitPerSecondAreValid();
    void segments31And8At83300BitPerSecondAreValid();
    void aFractionIsAnInvalidDivider();
    void applyStoresSegmentsAndResistor();
    void enterInASpinBoxApplies();
    void invalidTimingIsStoredOnlyOnYes();
    void invalidTimingNamesBothPhases();
    void applyWithoutAChannelShowsAnError();
    void resetChangesTheRecordOnlyOnApply();
    void enterOnResetResets();
    void firstValueIsSelected();
    void escapeChangesNothing();

private:
    std::unique_ptr<TzVciDeviceStore> m_store;
};
