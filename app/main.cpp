// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/TZBenchWindow.h"
#include "app/TzApplication.h"
#include "app/TzStartup.h"
#include "common/Utils.h"
#include "common/platform/AllocatorPolicy.h"
#include "common/ui/UiUtils.h"

int main(int argc, char *argv[])
{
    Common::platform::keepMemoryLevel();
    TzStartup::installCrashHandling();
    TzStartup::prepareToolkit();
    TzApplication application(argc, argv);
    TzStartup::dressApplication(application);
    TzStartup::startLog();
    TzStartup::startBackgroundLoad();
    Common::UiUtils::checkForUpdates(true);

    // Outside the guard, so that the crash hook runs while the window still stands.
    std::unique_ptr<TZBenchWindow> window;
    const int result = TzStartup::runGuarded([&] {
        window = TzStartup::showMainWindow(application);
        window->openFirstWindows();
        Common::Utils::setProcessHighPriority();
        return application.run();
    });
    TzStartup::finish();
    return result;
}
