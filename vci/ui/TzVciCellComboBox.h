// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QComboBox>

/// A combo box for a table cell: the wheel scrolls the table instead of changing the value under the cursor. UI thread.
class TzVciCellComboBox : public QComboBox
{
    Q_OBJECT
public:
    using QComboBox::QComboBox;

protected:
    void wheelEvent(QWheelEvent *event) override;
};
