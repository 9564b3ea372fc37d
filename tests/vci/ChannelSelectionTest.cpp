// SPDX-License-Identifier: GPL-3.0-or-later
#include "vci/TzVciChannelSelection.h"
#include "vci/TzVciDeviceStore.h"
#include "vci/TzVciTypes.h"

#include <gtest/gtest.h>

namespace {

using Form = TzVciChannelSelection::Form;

class ChannelSelection : public testing::Test
{
protected:
    ChannelSelection()
    {
        m_store.addDevice(0, {2, 1});
        m_store.addDevice(3, {1, 0});
    }

    void open(int deviceIndex, std::uint8_t protocol, int channelIndex)
    {
        m_store.setDeviceOpen(deviceIndex, true);
        m_store.setChannelOpen(deviceIndex, protocol, channelIndex, true);
    }

    TzVciDeviceStore m_store;
};

TEST_F(ChannelSelection, FilterFormOffersAllDevicesAndChannelsOfTheFamily)
{
    const TzVciChannelSelection selection(m_store, TzVciViewKind::can, Form::Filter, nullptr);
    ASSERT_EQ(selection.devices().size(), 2u);
    const auto &first = selection.devices().at(0);
    EXPECT_EQ(first.text, QStringLiteral("Device 0"));
    ASSERT_EQ(first.channels.size(), 2u);
    EXPECT_EQ(first.channels[1].text, QStringLiteral("CAN2"));
    EXPECT_FALSE(first.checked);
    EXPECT_FALSE(first.anyOpen);
}

TEST_F(ChannelSelection, DatabaseKindsCountAsTheirFamily)
{
    EXPECT_EQ(TzVciChannelSelection(m_store, TzVciViewKind::dbc, Form::Filter, nullptr).familyName(),
              QStringLiteral("CAN"));
    const TzVciChannelSelection ldf(m_store, TzVciViewKind::ldf, Form::Filter, nullptr);
    EXPECT_EQ(ldf.familyName(), QStringLiteral("LIN"));
    EXPECT_EQ(ldf.devices().at(0).channels.size(), 1u);
}

TEST_F(ChannelSelection, FilterChecksWhatItHolds)
{
    const TzVciChannelFilter filter{{0, {1, 7}}, {9, {0}}};
    const TzVciChannelSelection selection(m_store, TzVciViewKind::can, Form::Filter, &filter);
    EXPECT_TRUE(selection.devices().at(0).checked);
    EXPECT_FALSE(selection.isChannelChecked(0, 0));
    EXPECT_TRUE(selection.isChannelChecked(0, 1));
    EXPECT_FALSE(selection.devices().at(3).checked);
    EXPECT_EQ(selection.checkedChannels(), (TzVciChannelFilter{{0, {1}}}));
}

TEST_F(ChannelSelection, ADeviceWithoutChannelsIsCheckedWhenTheFilterHoldsIt)
{
    const TzVciChannelFilter filter{{3, {0}}};
    TzVciChannelSelection selection(m_store, TzVciViewKind::lin, Form::Filter, &filter);
    EXPECT_TRUE(selection.devices().at(3).checked);
    EXPECT_TRUE(selection.checkedChannels().empty());
    selection.setDeviceChecked(3, false);
    EXPECT_FALSE(selection.devices().at(3).checked);
}

TEST_F(ChannelSelection, ADeviceSetsAllItsChannels)
{
    TzVciChannelSelection selection(m_store, TzVciViewKind::can, Form::Filter, nullptr);
    selection.setDeviceChecked(0, true);
    EXPECT_EQ(selection.checkedChannels(), (TzVciChannelFilter{{0, {0, 1}}}));
    selection.setDeviceChecked(0, false);
    EXPECT_TRUE(selection.checkedChannels().empty());
    selection.setDeviceChecked(8, true); // unknown: nothing
    EXPECT_TRUE(selection.checkedChannels().empty());
}

TEST_F(ChannelSelection, ADeviceCountsAsCheckedIfAnyChannelIs)
{
    TzVciChannelSelection selection(m_store, TzVciViewKind::can, Form::Filter, nullptr);
    selection.setChannelChecked(0, 1, true);
    EXPECT_TRUE(selection.devices().at(0).checked);
    selection.setChannelChecked(0, 0, true);
    selection.setChannelChecked(0, 1, false);
    EXPECT_TRUE(selection.devices().at(0).checked);
    selection.setChannelChecked(0, 0, false);
    EXPECT_FALSE(selection.devices().at(0).checked);
}

TEST_F(ChannelSelection, AllAndNone)
{
    TzVciChannelSelection selection(m_store, TzVciViewKind::can, Form::Filter, nullptr);
    selection.setAllChecked(true);
    EXPECT_EQ(selection.checkedChannels(), (TzVciChannelFilter{{0, {0, 1}}, {3, {0}}}));
    selection.setAllChecked(false);
    EXPECT_TRUE(selection.checkedChannels().empty());
}

TEST_F(ChannelSelection, SingleFormLeavesOutADeviceWithNoOpenChannel)
{
    open(0, TzVciProtocolId::can, 1);
    m_store.setDeviceOpen(3, true); // open, but none of its channels is
    const TzVciChannelSelection selection(m_store, TzVciViewKind::can, Form::Single, nullptr);
    ASSERT_EQ(selection.devices().size(), 1u);
    ASSERT_EQ(selection.devices().at(0).channels.size(), 1u);
    EXPECT_EQ(selection.devices().at(0).channels[0].index, 1);
}

TEST_F(ChannelSelection, SingleFormLeavesOutAClosedDeviceWhateverItsChannelsSay)
{
    m_store.setChannelOpen(0, TzVciProtocolId::can, 0, true);
    EXPECT_TRUE(TzVciChannelSelection(m_store, TzVciViewKind::can, Form::Single, nullptr).isEmpty());
}

TEST_F(ChannelSelection, SingleFormHoldsOneChoiceAcrossDevices)
{
    open(0, TzVciProtocolId::can, 0);
    open(0, TzVciProtocolId::can, 1);
    open(3, TzVciProtocolId::can, 0);
    const TzVciChannelFilter filter{{0, {1}}, {3, {0}}};
    TzVciChannelSelection selection(m_store, TzVciViewKind::can, Form::Single, &filter);
    EXPECT_EQ(selection.firstChecked(), std::pair(0, 1));
    EXPECT_FALSE(selection.isChannelChecked(3, 0)) << "only the first of the filter is taken";

    selection.setChannelChecked(3, 0, true);
    EXPECT_EQ(selection.firstChecked(), std::pair(3, 0));
    EXPECT_EQ(selection.checkedChannels(), (TzVciChannelFilter{{3, {0}}}));
}

TEST_F(ChannelSelection, NothingIsCheckedInAnEmptyStore)
{
    const TzVciDeviceStore empty;
    TzVciChannelSelection selection(empty, TzVciViewKind::lin, Form::Filter, nullptr);
    EXPECT_TRUE(selection.isEmpty());
    selection.setAllChecked(true);
    EXPECT_TRUE(selection.checkedChannels().empty());
    EXPECT_FALSE(selection.firstChecked().has_value());
}

} // namespace
