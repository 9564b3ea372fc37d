// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/support/LoopbackGuard.h"

#include <QApplication>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

int main(int argc, char **argv)
{
    tztest::requireLoopbackNetwork();
    ::testing::InitGoogleMock(&argc, argv);
    // Queued calls and timers need an application object; offscreen unless the caller says otherwise.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
