// SPDX-License-Identifier: GPL-3.0-or-later
#include "vci/ui/TzVciCellComboBox.h"

#include <QWheelEvent>

void TzVciCellComboBox::wheelEvent(QWheelEvent *event)
{
    event->ignore();
}
