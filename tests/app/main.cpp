// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/TzApplication.h"
#include "app/TzStartup.h"
#include "tests/app/AppChild.h"
#include "tests/app/TestClosing.h"
#include "tests/app/TestProgram.h"
#include "tests/app/TestTZBenchWindow.h"
#include "tests/app/TestToolWindows.h"
#include "tests/app/TestTzApplication.h"
#include "tests/app/TestTzFrameDrain.h"
#include "tests/app/TestTzStartup.h"
#include "tests/app/TestTzViewTiler.h"
#include "tests/app/TestTzYieldingSharedMutex.h"
#include "tests/app/TestViewChannels.h"
#include "tests/app/TestViewManagement.h"
#include "tests/support/LoopbackGuard.h"

#include <QtTest>

#include <cstdint>
#include <optional>

namespace {

template <typename... TestClasses> int runAll(int argc, char **argv)
{
    int failures = 0;
    const auto run = [&](QObject &&test) { failures += QTest::qExec(&test, argc, argv); };
    (run(TestClasses{}), ...);
    return failures;
}

} // namespace

int main(int argc, char **argv)
{
    // A role keeps the network that its test gave it.
    if (const std::optional<int> result = tztest::runAsChild(argc, argv))
        return *result;
    tztest::requireLoopbackNetwork();
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    TzStartup::prepareToolkit();
    TzApplication application(argc, argv);
    TzApplication::setQuitOnLastWindowClosed(false); // windows come and go; a run() of a test ends by what it tests
    TzStartup::dressApplication(application);
    qRegisterMetaType<std::uint8_t>("std::uint8_t"); // for signal spies
    return runAll<TestTzViewTiler, TestTzYieldingSharedMutex, TestTzFrameDrain, TestTzApplication, TestTZBenchWindow,
                  TestToolWindows, TestViewManagement, TestViewChannels, TestClosing, TestTzStartup, TestProgram>(argc,
                                                                                                                  argv);
}
