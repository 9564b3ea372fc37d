// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tests/support/LoopbackGuard.h"

#include <QApplication>
#include <QtTest>

namespace tztest {

/// Runs the test classes one after the other and returns the number of failures.
template <typename... TestClasses>
int runQtTests(int argc, char **argv)
{
    requireLoopbackNetwork();
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    int failures = 0;
    const auto run = [&](QObject &&test) { failures += QTest::qExec(&test, argc, argv); };
    (run(TestClasses{}), ...);
    return failures;
}

} // namespace tztest

/// main() of a QtTest program that runs the given classes.
#define TZ_QTEST_MAIN(...)                                                                                             \
    int main(int argc, char **argv)                                                                                    \
    {                                                                                                                  \
        return tztest::runQtTests<__VA_ARGS__>(argc, argv);                                                            \
    }
