// SPDX-License-Identifier: GPL-3.0-or-later
// Headers, cells and colours, in which the two raw models differ.
#include "views/TzCanViewModel.h"
#include "views/TzLinViewModel.h"

#include "tests/views/ViewFrames.h"
#include "vci/TzVciDeviceManager.h"
#include "vci/TzVciDeviceStore.h"

#include <QBrush>

#include <gtest/gtest.h>

using namespace tztest;

namespace {

class ViewCells : public testing::Test
{
protected:
    template <typename Model> QVariantList rowOf(const TzVciMessage &message)
    {
        Model model(&m_manager);
        model.addMessage(message);
        model.updateData();
        QVariantList cells;
        for (int column = 0; column < model.columnCount(); ++column)
            cells << model.index(0, column).data();
        return cells;
    }
    template <typename Model> QVariant colorOf(const TzVciMessage &message)
    {
        Model model(&m_manager);
        model.addMessage(message);
        model.updateData();
        return model.index(0, 0).data(Qt::ForegroundRole);
    }
    static QStringList headersOf(const TzRawViewModel &model)
    {
        QStringList headers;
        for (int section = 0; model.headerData(section, Qt::Horizontal).isValid(); ++section)
            headers << model.headerData(section, Qt::Horizontal).toString();
        return headers;
    }

    TzVciDeviceStore m_store;
    TzVciDeviceManager m_manager{&m_store};
};

TEST_F(ViewCells, CanHeaders)
{
    const TzCanViewModel model(&m_manager);
    EXPECT_EQ(model.columnCount(), 12);
    EXPECT_EQ(headersOf(model), (QStringList{"No.", "Time", "Device", "Channel", "ID(hex)", "Name", "Dir", "C-Type",
                                             "F-Type", "F-Format", "Length", "Data", "Cycle(ms)"}));
    EXPECT_FALSE(model.headerData(13, Qt::Horizontal).isValid());
    EXPECT_FALSE(model.headerData(-1, Qt::Horizontal).isValid());
    EXPECT_FALSE(model.headerData(0, Qt::Vertical).isValid());
    EXPECT_FALSE(model.headerData(0, Qt::Horizontal, Qt::ToolTipRole).isValid());
}

TEST_F(ViewCells, LinHeaders)
{
    const TzLinViewModel model(&m_manager);
    EXPECT_EQ(model.columnCount(), 10);
    EXPECT_EQ(headersOf(model), (QStringList{"No.", "Time", "Device", "Channel", "ID(hex)", "Dir", "Check Type",
                                             "Frame Type", "Length", "Data", "Cycle(ms)"}));
    EXPECT_FALSE(model.headerData(11, Qt::Horizontal).isValid());
}

TEST_F(ViewCells, CanFrame)
{
    TzVciMessage message = from(3, 1, at(12'345'678, canData({0x0A, 0xFF, 0x00}, canMessage(0xABC))));
    message.frame.can.flags = TzVciCanFlag::fd | TzVciCanFlag::bitRateSwitch | TzVciCanFlag::extendedId;
    const auto time = QString::fromStdString(m_manager.formatTimestamp(3, 12'345'678));
    EXPECT_EQ(rowOf<TzCanViewModel>(message),
              (QVariantList{1, time, 3, "CAN2", "abc", QVariant(), "Rx", "CANFDBRS", "Data", "Extend", 3, "0A FF 00"}));
}

TEST_F(ViewCells, CanRemoteFrame)
{
    TzVciMessage message = canMessage(1, TzVciCanFrameType::transmitted);
    message.frame.can.flags = TzVciCanFlag::remote;
    const QVariantList row = rowOf<TzCanViewModel>(message);
    EXPECT_EQ(row.mid(4), (QVariantList{"1", QVariant(), "Tx", "CAN", "Remote", "Standard", 0, ""}));
}

TEST_F(ViewCells, CanErrorFrame)
{
    const QVariantList row = rowOf<TzCanViewModel>(canData({0x80, 0, 0, 0}, canMessage(0, TzVciCanFrameType::error)));
    EXPECT_EQ(row[6], "Err");
    EXPECT_EQ(row[11], "Message RAM Access Failure");
}

TEST_F(ViewCells, CanSecondErrorClassShowsItsBytes)
{
    const QVariantList row = rowOf<TzCanViewModel>(canData({0x80, 0, 0, 0}, canMessage(0, TzVciCanFrameType::error2)));
    EXPECT_EQ(row[6], "Err");
    EXPECT_EQ(row[11], "80 00 00 00");
}

TEST_F(ViewCells, LengthIsShownAsSentAndPayloadStopsAtWhatIsHeld)
{
    TzVciMessage can = canMessage(1);
    can.frame.can.dataLength = 255;
    QVariantList row = rowOf<TzCanViewModel>(can);
    EXPECT_EQ(row[10], 255);
    EXPECT_EQ(row[11].toString().size(), 64 * 3 - 1);
    TzVciMessage lin = linMessage(1);
    lin.frame.lin.dataLength = 9;
    row = rowOf<TzLinViewModel>(lin);
    EXPECT_EQ(row[8], 9);
    EXPECT_EQ(row[9].toString().size(), 8 * 3 - 1);
}

TEST_F(ViewCells, LinFrame)
{
    TzVciMessage message = from(15, 7, linData({0xDE, 0xAD}, linMessage(5, TzVciLinDirection::slaveWrite)));
    message.frame.lin.checksumType = 1;
    const auto time = QString::fromStdString(m_manager.formatTimestamp(15, 0));
    EXPECT_EQ(rowOf<TzLinViewModel>(message),
              (QVariantList{1, time, 15, "LIN8", "0x05", "Tx", "Enhanced", "Slave Write", 2, "DE AD"}));
}

TEST_F(ViewCells, LinNeverShowsAnErrorText)
{
    const QVariantList row = rowOf<TzLinViewModel>(linData({0x80, 0, 0, 0}, linMessage(0x3C, 4)));
    EXPECT_EQ(row[4], "0x3c");
    EXPECT_EQ(row[9], "80 00 00 00");
}

TEST_F(ViewCells, CanColors)
{
    EXPECT_EQ(colorOf<TzCanViewModel>(canMessage(1, 1)), QVariant(QBrush(Qt::blue)));
    EXPECT_FALSE(colorOf<TzCanViewModel>(canMessage(1, 2)).isValid());
    EXPECT_EQ(colorOf<TzCanViewModel>(canMessage(1, 4)), QVariant(QBrush(Qt::red)));
    EXPECT_EQ(colorOf<TzCanViewModel>(canMessage(1, 8)), QVariant(QBrush(Qt::red)));
    EXPECT_FALSE(colorOf<TzCanViewModel>(canMessage(1, 16)).isValid());
}

TEST_F(ViewCells, LinColors)
{
    EXPECT_FALSE(colorOf<TzLinViewModel>(linMessage(1, 0)).isValid());
    EXPECT_FALSE(colorOf<TzLinViewModel>(linMessage(1, 1)).isValid());
    EXPECT_EQ(colorOf<TzLinViewModel>(linMessage(1, 16)), QVariant(QBrush(Qt::blue)));
    EXPECT_EQ(colorOf<TzLinViewModel>(linMessage(1, 17)), QVariant(QBrush(Qt::blue)));
    EXPECT_EQ(colorOf<TzLinViewModel>(linMessage(1, 2)), QVariant(QBrush(Qt::blue)));
}

TEST(RawViewFoldKey, LiesInItsBits)
{
    const std::uint64_t origin = std::uint64_t{15} << 52 | std::uint64_t{7} << 44;
    EXPECT_EQ(TzRawViewFamily::can.foldKey(from(15, 7, canMessage(0x1FFFFFFF, 4))),
              origin | std::uint64_t{4} << 36 | 0x1FFFFFFF);
    EXPECT_EQ(TzRawViewFamily::lin.foldKey(from(15, 7, linMessage(0x3F, 17))), origin | std::uint64_t{17} << 36 | 0x3F);
}

} // namespace
