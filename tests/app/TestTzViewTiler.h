// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>

class TestTzViewTiler : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void tilesFollowTheTable_data();
    void tilesFollowTheTable();
    void otherCountsGiveNothing();
};
