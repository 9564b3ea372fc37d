// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "vci/TzVciBitRates.h"
#include "vci/ui/TzVciCellComboBox.h"

#include <cstdint>
#include <span>

/// Offers a table of bit rates. UI thread.
class TzVciRateComboBox : public TzVciCellComboBox
{
    Q_OBJECT
public:
    explicit TzVciRateComboBox(std::span<const TzVciBitRate> rates, QWidget *parent = nullptr);

    /// Shows @p rate without reporting it; a rate outside the table gets an item of its own.
    void setRate(std::uint32_t rate);

Q_SIGNALS:
    void rateChosen(quint32 rate); ///< in bit/s
};
