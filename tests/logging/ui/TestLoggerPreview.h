// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>

/// The sample texts of the recorder windows, word for word.
class TestLoggerPreview : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void canSamples_data();
    void canSamples();
    void linSamples_data();
    void linSamples();
};
