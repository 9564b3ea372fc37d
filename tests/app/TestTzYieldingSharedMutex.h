// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>

class TestTzYieldingSharedMutex : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void aWriterGetsThroughReadersThatNeverLetGoTogether();
};
