// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "vci/TzVciBusLoadSummary.h"

#include <QTableWidget>

/// One line for each open CAN channel of a device. An update changes cells in place, so that selection and scroll
/// position stay with their channel. UI thread.
class TzVciBusLoadTable : public QTableWidget
{
    Q_OBJECT
public:
    enum Column
    {
        ChannelColumn,
        MessagesColumn,
        BusLoadColumn,
        PeriodColumn,
        ColumnCount
    };

    explicit TzVciBusLoadTable(QWidget *parent = nullptr);

    /// @param rows  in ascending order of their channels
    void showRows(const std::vector<TzVciBusLoadSummary::Row> &rows);

private:
    int channelOf(int row) const;
    void insertChannel(int row, int channelIndex);
    void showRow(int row, const TzVciBusLoadSummary::Row &texts);
};
