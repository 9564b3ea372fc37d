// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>

#include <memory>

namespace tztest {

struct RawViewWindowFixture;

/// The view that a test of RawViewTwinTest runs on.
extern std::unique_ptr<RawViewWindowFixture> fixture;

} // namespace tztest

/// Runs each test of a derived class on a CAN and on a LIN view.
class RawViewTwinTest : public QObject
{
    Q_OBJECT
protected Q_SLOTS: // private ones would be tests
    void initTestCase_data();
    void init(); ///< makes the view, anew where a test calls it
    void cleanup();
};
