// SPDX-License-Identifier: GPL-3.0-or-later
#include "vci/ui/TzVciRateComboBox.h"

#include <QSignalBlocker>

TzVciRateComboBox::TzVciRateComboBox(std::span<const TzVciBitRate> rates, QWidget *parent)
    : TzVciCellComboBox(parent)
{
    for (const TzVciBitRate &rate : rates)
        addItem(QString::fromLatin1(rate.text), rate.value);
    connect(this, qOverload<int>(&QComboBox::currentIndexChanged), this, [this](int index) {
        if (index >= 0)
            Q_EMIT rateChosen(itemData(index).toUInt());
    });
}

void TzVciRateComboBox::setRate(std::uint32_t rate)
{
    const QSignalBlocker blocker(this);
    if (findData(rate) < 0)
        addItem(tr("%1 bit/s").arg(rate), rate);
    setCurrentIndex(findData(rate));
}
