// SPDX-License-Identifier: GPL-3.0-or-later
// What the two raw models share; each test runs on both.
#include "views/TzRawViewModel.h"

#include "tests/support/LogCapture.h"
#include "tests/support/WaitFor.h"
#include "tests/views/RawViewModelFixture.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>

#include <thread>

using namespace tztest;

namespace {

using RawViewModel = RawViewModelFixture;

INSTANTIATE_TEST_SUITE_P(Twins, RawViewModel, testing::ValuesIn(rawViewTwins),
                         [](const auto &test) { return std::string(test.param.name); });

TEST_P(RawViewModel, StartsEmpty)
{
    EXPECT_EQ(m_model->rowCount(), 0);
    m_model->updateData();
    EXPECT_EQ(m_model->rowCount(), 0);
    EXPECT_TRUE(m_model->allMessages().empty());
}

TEST_P(RawViewModel, FramesBecomeRowsAtTheTick)
{
    m_model->addMessage(rx(1));
    m_model->addMessage(rx(2));
    EXPECT_EQ(m_model->rowCount(), 0);
    m_model->updateData();
    ASSERT_EQ(m_model->rowCount(), 2);
    EXPECT_EQ(id(0), 1u);
    EXPECT_EQ(id(1), 2u);
    EXPECT_EQ(numberText(1), "2");
}

TEST_P(RawViewModel, ATickMovesAtMost5000Frames)
{
    m_model->addMessages(std::vector<TzVciMessage>(7'000, rx(1)));
    m_model->updateData();
    EXPECT_EQ(m_model->rowCount(), 5'000);
    m_model->updateData();
    EXPECT_EQ(m_model->rowCount(), 7'000);
}

TEST_P(RawViewModel, RowsAreAnnouncedOnceABatch)
{
    QSignalSpy inserted(m_model.get(), &QAbstractItemModel::rowsInserted);
    show(std::vector<TzVciMessage>(100, rx(1)));
    show({rx(2)});
    ASSERT_EQ(inserted.count(), 2);
    EXPECT_EQ(inserted[0][1].toInt(), 0);
    EXPECT_EQ(inserted[0][2].toInt(), 99);
    EXPECT_EQ(inserted[1][1].toInt(), 100);
    EXPECT_EQ(inserted[1][2].toInt(), 100);
}

TEST_P(RawViewModel, RowCountStaysAt10000)
{
    for (int batch = 0; batch < 2; ++batch)
        show(std::vector<TzVciMessage>(5'000, rx(1)));
    ASSERT_EQ(m_model->rowCount(), 10'000);
    QSignalSpy inserted(m_model.get(), &QAbstractItemModel::rowsInserted);
    QSignalSpy changed(m_model.get(), &QAbstractItemModel::dataChanged);
    show(std::vector<TzVciMessage>(100, rx(2)));
    EXPECT_EQ(m_model->rowCount(), 10'000);
    EXPECT_EQ(m_model->allMessages().size(), 10'000u);
    EXPECT_EQ(inserted.count(), 0);
    EXPECT_EQ(changed.count(), 0) << "the tick of the data announces nothing";
    EXPECT_EQ(numberText(0), "1") << "numbers are positions";
    EXPECT_EQ(id(9'899), 1u);
    EXPECT_EQ(id(9'900), 2u);
    m_model->refreshVisibleRows();
    EXPECT_EQ(changed.count(), 1);
}

TEST_P(RawViewModel, RowsThatShiftWhileTheTableFillsAreRefreshed)
{
    show(std::vector<TzVciMessage>(5'000, rx(1)));
    show(std::vector<TzVciMessage>(4'990, rx(1)));
    m_model->refreshVisibleRows();
    QSignalSpy changed(m_model.get(), &QAbstractItemModel::dataChanged);
    show(std::vector<TzVciMessage>(100, rx(2))); // ten rows more, ninety pushed out
    EXPECT_EQ(m_model->rowCount(), 10'000);
    m_model->refreshVisibleRows();
    EXPECT_EQ(changed.count(), 1);
}

TEST_P(RawViewModel, RefreshAnnouncesTheVisibleRowsAlone)
{
    for (int batch = 0; batch < 2; ++batch)
        show(std::vector<TzVciMessage>(5'000, rx(1)));
    QSignalSpy changed(m_model.get(), &QAbstractItemModel::dataChanged);
    m_model->onUpdateVisibleRow(40, 60);
    m_model->refreshVisibleRows();
    EXPECT_EQ(changed.count(), 0) << "nothing changed since the rows were inserted";
    show({rx(2)});
    m_model->refreshVisibleRows();
    m_model->refreshVisibleRows();
    ASSERT_EQ(changed.count(), 1);
    const auto first = changed[0][0].toModelIndex();
    const auto last = changed[0][1].toModelIndex();
    EXPECT_EQ(first.row(), 40);
    EXPECT_EQ(first.column(), 0);
    EXPECT_EQ(last.row(), 60);
    EXPECT_EQ(last.column(), m_model->columnCount() - 1);
}

TEST_P(RawViewModel, RefreshKeepsToTheRowsThatExist)
{
    fold();
    show({rx(1), rx(2), rx(3)});
    show({rx(1)});
    QSignalSpy changed(m_model.get(), &QAbstractItemModel::dataChanged);
    m_model->onUpdateVisibleRow(-5, 500);
    m_model->refreshVisibleRows();
    ASSERT_EQ(changed.count(), 1);
    EXPECT_EQ(changed[0][0].toModelIndex().row(), 0);
    EXPECT_EQ(changed[0][1].toModelIndex().row(), 2);
}

TEST_P(RawViewModel, RefreshWithNothingVisibleAnnouncesNothing)
{
    fold();
    show({rx(1), rx(2), rx(3)});
    show({rx(1)});
    QSignalSpy changed(m_model.get(), &QAbstractItemModel::dataChanged);
    m_model->onUpdateVisibleRow(2, 1);
    m_model->refreshVisibleRows();
    m_model->onUpdateVisibleRow(0, 1);
    m_model->refreshVisibleRows();
    EXPECT_EQ(changed.count(), 0) << "the request was spent";
}

TEST_P(RawViewModel, AFilterHidesRowsButKeepsTheHistory)
{
    show({rx(1), rx(2), rx(3)});
    filterIds("2-3");
    EXPECT_EQ(m_model->rowCount(), 2);
    EXPECT_EQ(m_model->allMessages().size(), 3u);
    show({rx(1), rx(2)});
    EXPECT_EQ(m_model->rowCount(), 3);
    EXPECT_EQ(m_model->allMessages().size(), 5u);
    m_filter->enabled = false;
    m_model->onFilter();
    EXPECT_EQ(m_model->rowCount(), 5);
}

TEST_P(RawViewModel, AFilterOnAnEmptyModelSendsNoReset)
{
    QSignalSpy reset(m_model.get(), &QAbstractItemModel::modelReset);
    filterIds("2");
    EXPECT_EQ(reset.count(), 0);
}

TEST_P(RawViewModel, RowsOfAFilterOutliveTheHistory)
{
    filterIds("1");
    show({rx(1)});
    for (int batch = 0; batch < 3; ++batch)
        show(std::vector<TzVciMessage>(5'000, rx(2)));
    EXPECT_EQ(m_model->rowCount(), 1);
    m_model->onFilter();
    EXPECT_EQ(m_model->rowCount(), 0) << "a rebuild knows the held frames alone";
}

TEST_P(RawViewModel, ClearForgetsEverything)
{
    fold();
    show({rx(1), rx(1)});
    QSignalSpy reset(m_model.get(), &QAbstractItemModel::modelReset);
    m_model->onClear();
    EXPECT_EQ(reset.count(), 1);
    EXPECT_EQ(m_model->rowCount(), 0);
    EXPECT_TRUE(m_model->allMessages().empty());
    show({rx(1)});
    EXPECT_EQ(numberText(0), "1") << "counts begin afresh";
}

TEST_P(RawViewModel, ClearForgetsThatRowsWereToBeRefreshed)
{
    fold();
    show({rx(1)});
    show({rx(1)}); // in place: to be refreshed
    m_model->onClear();
    show({rx(1)});
    QSignalSpy changed(m_model.get(), &QAbstractItemModel::dataChanged);
    m_model->refreshVisibleRows();
    EXPECT_EQ(changed.count(), 0);
}

TEST_P(RawViewModel, ClearOfAnEmptyHistorySendsNoReset)
{
    QSignalSpy reset(m_model.get(), &QAbstractItemModel::modelReset);
    m_model->onClear();
    EXPECT_EQ(reset.count(), 0);
}

TEST_P(RawViewModel, WaitingFramesArriveAfterAClear)
{
    m_model->addMessage(rx(1));
    m_model->onClear(); // of an empty history
    m_model->updateData();
    EXPECT_EQ(m_model->rowCount(), 1);
    m_model->addMessage(rx(2));
    m_model->onClear(); // with a reset
    EXPECT_EQ(m_model->rowCount(), 0);
    m_model->updateData();
    ASSERT_EQ(m_model->rowCount(), 1);
    EXPECT_EQ(id(0), 2u);
}

TEST_P(RawViewModel, DropsFramesWithAnErrorWhenTheQueueIsFull)
{
    const LogCapture log;
    const std::vector<TzVciMessage> batch(50'000, rx(1));
    std::size_t queued = 0;
    while (queued <= TzRawViewModel::maxWaiting && !log.has(Common::LogLevel::error, GetParam().overflowText)) {
        m_model->addMessages(batch);
        queued += batch.size();
    }
    EXPECT_EQ(log.count(Common::LogLevel::error, GetParam().overflowText), 1u);
    EXPECT_GT(queued, 500'000u) << "bursts are kept";
    m_model->addMessages(batch);
    EXPECT_EQ(log.count(Common::LogLevel::error, GetParam().overflowText), 1u) << "at most one line a second";
    m_model->updateData();
    EXPECT_EQ(m_model->rowCount(), 5'000);
}

TEST_P(RawViewModel, KeepsWhatFitsOfABatchThatDoesNotFitAsAWhole)
{
    const LogCapture log;
    fold();
    const std::vector<TzVciMessage> batch(50'000, rx(1));
    static_assert(TzRawViewModel::maxWaiting % 50'000 != 0);
    for (std::size_t queued = 0; queued <= TzRawViewModel::maxWaiting; queued += batch.size())
        m_model->addMessages(batch);
    EXPECT_EQ(log.count(Common::LogLevel::error, GetParam().overflowText), 1u);
    for (std::size_t moved = 0; moved <= TzRawViewModel::maxWaiting; moved += TzRawViewModel::batchCapacity)
        m_model->updateData();
    EXPECT_EQ(numberText(0), "1[" + std::to_string(TzRawViewModel::maxWaiting) + "]");
}

TEST_P(RawViewModel, FramesOfSuccessiveDeliverersKeepTheirOrder)
{
    std::thread([this] { m_model->addMessages(std::vector{rx(1, 10), rx(2, 20)}); }).join();
    m_model->addMessages(std::vector{rx(1, 30), rx(3, 40)});
    std::thread([this] { m_model->addMessage(rx(4, 50)); }).join();
    m_model->updateData();
    ASSERT_EQ(m_model->rowCount(), 5);
    std::vector<std::uint64_t> times;
    for (const TzVciMessage &message : m_model->allMessages())
        times.push_back(std::uint64_t{message.timestamp}); // the record is packed
    EXPECT_EQ(times, (std::vector<std::uint64_t>{10, 20, 30, 40, 50}));
    const std::uint32_t wanted[] = {1, 2, 1, 3, 4};
    for (int row = 0; row < 5; ++row)
        EXPECT_EQ(id(row), wanted[row]) << row;
}

TEST_P(RawViewModel, TimeDeltasAreToldToTheRowAboveWhateverIsRead)
{
    m_manager.setDisplayMode(Common::TimestampDisplayMode::DeltaTime);
    show({rx(1, 10'000'000), from(1, 0, rx(1, 77)), rx(2, 20'000'000), rx(3, 50'000'000)});
    for (const int row : {3, 0, 2, 3, 1, 2, 0}) {
        const std::string wanted[] = {"0.000000", "0.000000", "1.000000", "3.000000"};
        EXPECT_EQ(timeText(row), wanted[row]) << row;
    }
}

TEST_P(RawViewModel, PassesTheModelTester)
{
    const QAbstractItemModelTester tester(m_model.get(), QAbstractItemModelTester::FailureReportingMode::Fatal);
    show({rx(1), rx(2), rx(3)});
    m_model->refreshVisibleRows();
    filterIds("2");
    show({rx(2), rx(1)});
    fold();
    show({rx(2), rx(5), rx(2)});
    m_model->refreshVisibleRows();
    filterIds("");
    show({rx(1), rx(7)});
    m_model->onClear();
    show({rx(1)});
    fold(false);
    show({rx(1), rx(2)});
}

TEST_P(RawViewModel, PassesTheModelTesterAtItsBound)
{
    for (int batch = 0; batch < 2; ++batch)
        show(std::vector<TzVciMessage>(batch == 0 ? 5'000 : 4'995, rx(1)));
    const QAbstractItemModelTester tester(m_model.get(), QAbstractItemModelTester::FailureReportingMode::Fatal);
    show(std::vector<TzVciMessage>(10, rx(2)));
    m_model->refreshVisibleRows();
    EXPECT_EQ(m_model->rowCount(), 10'000);
}

TEST_P(RawViewModel, AnswersNothingOutsideItsRowsAndRoles)
{
    show({rx(1)});
    EXPECT_FALSE(m_model->data({}).isValid());
    EXPECT_FALSE(m_model->index(1, 0).isValid());
    EXPECT_FALSE(m_model->index(0, 0).data(Qt::DecorationRole).isValid());
    EXPECT_FALSE(m_model->index(0, 0).data(Qt::EditRole).isValid());
    EXPECT_EQ(m_model->rowCount(m_model->index(0, 0)), 0);
    EXPECT_EQ(m_model->columnCount(m_model->index(0, 0)), 0);
    const QModelIndex stale = m_model->index(0, 0);
    m_model->onClear();
    EXPECT_FALSE(m_model->data(stale).isValid());
}

TEST_P(RawViewModel, FramesMayArriveWhileTheTableMoves)
{
    constexpr int batchCount = 400;
    constexpr std::size_t batchSize = 50;
    std::jthread delivering([this] {
        const std::vector<TzVciMessage> batch(batchSize, rx(1));
        for (int n = 0; n < batchCount; ++n)
            m_model->addMessages(batch);
    });
    fold();
    const std::string wanted = "1[" + std::to_string(batchCount * batchSize) + "]";
    EXPECT_TRUE(waitFor([&] {
        m_model->updateData();
        m_model->refreshVisibleRows();
        return m_model->rowCount() > 0 && numberText(0) == wanted;
    }));
}

} // namespace
