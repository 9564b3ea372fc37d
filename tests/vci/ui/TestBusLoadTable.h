// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>

class TestBusLoadTable : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void updatesCellsInPlace();
    void keepsSelectionAndScrollPosition();
    void selectionStaysWithItsChannelWhenOthersOpenAndClose();
    void selectionEndsWithItsChannel();
};
