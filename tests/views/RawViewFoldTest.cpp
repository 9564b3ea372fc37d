// SPDX-License-Identifier: GPL-3.0-or-later
// Folded rows of the two raw models; each test runs on both.
#include "views/TzRawViewModel.h"

#include "tests/views/RawViewModelFixture.h"

#include <QSignalSpy>

#include <thread>

using namespace tztest;

namespace {

using RawViewFold = RawViewModelFixture;

INSTANTIATE_TEST_SUITE_P(Twins, RawViewFold, testing::ValuesIn(rawViewTwins),
                         [](const auto &test) { return std::string(test.param.name); });

TEST_P(RawViewFold, AFoldedKeySeenOnceHasNoBrackets)
{
    fold();
    show({rx(5, 1'000)});
    EXPECT_EQ(m_model->index(0, 0).data(), QVariant(1));
    EXPECT_EQ(timeText(0), m_manager.formatTimestamp(0, 1'000));
}

TEST_P(RawViewFold, AFoldedKeySeenTwiceInTheThirdRowReads3Of2)
{
    fold();
    show({rx(1), rx(2), rx(3, 100'000), rx(3, 200'000)});
    ASSERT_EQ(m_model->rowCount(), 3);
    EXPECT_EQ(numberText(2), "3[2]");
    EXPECT_EQ(timeText(2), m_manager.formatTimestamp(0, 200'000) + "[10.00]");
}

TEST_P(RawViewFold, AFoldedKeySeenTwiceAtOneTimeShowsNoCycle)
{
    fold();
    show({rx(1, 500), rx(1, 500)});
    EXPECT_EQ(numberText(0), "1[2]");
    EXPECT_EQ(timeText(0), m_manager.formatTimestamp(0, 500));
}

TEST_P(RawViewFold, AFrameEvery100000TicksReads10Milliseconds)
{
    fold();
    for (std::uint64_t n = 0; n < 20; ++n)
        show({rx(1, n * 100'000)});
    EXPECT_EQ(timeText(0), m_manager.formatTimestamp(0, 1'900'000) + "[10.00]");
}

TEST_P(RawViewFold, EqualIdsOfOtherDirectionChannelOrDeviceTakeRowsOfTheirOwn)
{
    fold();
    show({rx(1), tx(1), from(0, 1, rx(1)), from(1, 0, rx(1)), rx(1)});
    EXPECT_EQ(m_model->rowCount(), 4);
    EXPECT_EQ(numberText(0), "1[2]");
    EXPECT_EQ(numberText(1), "2");
}

TEST_P(RawViewFold, PayloadPlaysNoPartInFolding)
{
    fold();
    TzVciMessage other = rx(1);
    other.frame.can.data.fill(0x55);
    show({rx(1), other});
    EXPECT_EQ(m_model->rowCount(), 1);
}

TEST_P(RawViewFold, AFoldedRowShowsTheNewestFrameWithoutInsertion)
{
    fold();
    show({rx(1, 100), rx(2, 100)});
    QSignalSpy inserted(m_model.get(), &QAbstractItemModel::rowsInserted);
    show({rx(1, 900)});
    EXPECT_EQ(inserted.count(), 0);
    EXPECT_EQ(m_model->rowCount(), 2);
    EXPECT_TRUE(timeText(0).starts_with(m_manager.formatTimestamp(0, 900)));
}

TEST_P(RawViewFold, ARowOverwrittenWithinItsOwnBatchNeedsNoRefresh)
{
    fold();
    show({rx(1), rx(2), rx(2)});
    QSignalSpy changed(m_model.get(), &QAbstractItemModel::dataChanged);
    m_model->refreshVisibleRows();
    EXPECT_EQ(changed.count(), 0) << "the rows were announced as new ones";
    show({rx(2), rx(3)}); // one that was shown before, and a new one
    m_model->refreshVisibleRows();
    EXPECT_EQ(changed.count(), 1);
}

TEST_P(RawViewFold, FramesOfSuccessiveDeliverersGiveATrueCycle)
{
    fold();
    std::thread([this] { m_model->addMessage(rx(1, 100'000)); }).join();
    m_model->addMessage(rx(1, 200'000));
    m_model->updateData();
    EXPECT_EQ(timeText(0), m_manager.formatTimestamp(0, 200'000) + "[10.00]");
}

TEST_P(RawViewFold, FoldingRebuildsOnTheNextTurnOfTheEventLoop)
{
    show({rx(2), rx(1), rx(2)});
    QSignalSpy reset(m_model.get(), &QAbstractItemModel::modelReset);
    m_model->setFold(true);
    EXPECT_EQ(reset.count(), 0);
    QCoreApplication::processEvents();
    EXPECT_EQ(reset.count(), 1);
    ASSERT_EQ(m_model->rowCount(), 2);
    EXPECT_EQ(id(0), 2u) << "rows come in order of first appearance";
    EXPECT_EQ(numberText(0), "1[2]");
    m_model->setFold(true);
    QCoreApplication::processEvents();
    EXPECT_EQ(reset.count(), 1) << "an unchanged value does nothing";
    fold(false);
    EXPECT_EQ(m_model->rowCount(), 3);
    EXPECT_EQ(numberText(0), "1");
}

TEST_P(RawViewFold, ATickBetweenTheSwitchAndTheRebuildDoesNoHarm)
{
    fold();
    show({rx(1), rx(2), rx(3)});
    m_model->setFold(false);
    show(std::vector<TzVciMessage>(10, rx(4)));
    m_model->setFold(true);
    show({rx(1), rx(2), rx(3)});
    QCoreApplication::processEvents();
    ASSERT_EQ(m_model->rowCount(), 4);
    EXPECT_EQ(numberText(3), "4[10]");
    EXPECT_EQ(numberText(0), "1[2]");
}

TEST_P(RawViewFold, FoldedCountsComeFromTheFramesStillHeld)
{
    fold();
    for (int batch = 0; batch < 4; ++batch)
        show(std::vector<TzVciMessage>(5'000, rx(1)));
    EXPECT_EQ(numberText(0), "1[20000]");
    m_model->onFilter();
    EXPECT_EQ(numberText(0), "1[10000]");
}

TEST_P(RawViewFold, AFoldedKeyThatFailsTheFilterStillCounts)
{
    filterIds("1");
    fold();
    show({rx(1), rx(2), rx(2), rx(2)});
    ASSERT_EQ(m_model->rowCount(), 1);
    m_filter->ids.setText(QStringLiteral("2")); // read by the next frame, without a rebuild
    show({rx(2)});
    ASSERT_EQ(m_model->rowCount(), 2);
    EXPECT_EQ(id(1), 2u);
    EXPECT_EQ(numberText(1), "2[4]");
}

TEST_P(RawViewFold, AChangedFilterShowsAFoldedKeyWithItsFullCount)
{
    filterIds("1");
    fold();
    show({rx(1), rx(2), rx(2)});
    filterIds("2");
    ASSERT_EQ(m_model->rowCount(), 1);
    EXPECT_EQ(id(0), 2u);
    EXPECT_EQ(numberText(0), "1[2]");
}

} // namespace
