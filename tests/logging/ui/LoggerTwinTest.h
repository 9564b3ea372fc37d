// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>

#include <memory>

namespace tztest {

struct LoggerWindowFixture;

/// The window that a test of LoggerTwinTest runs on.
extern std::unique_ptr<LoggerWindowFixture> fixture;

} // namespace tztest

/// Runs each test of a derived class on the CAN and on the LIN window, and looks that no dialog was left over.
class LoggerTwinTest : public QObject
{
    Q_OBJECT
protected Q_SLOTS: // private ones would be tests
    void initTestCase_data();
    void init();
    void cleanup();
};
