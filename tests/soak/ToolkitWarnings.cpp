// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/soak/ToolkitWarnings.h"

#include <QString>
#include <QtGlobal>

#include <array>
#include <cstdio>
#include <mutex>

namespace tzsoak::ToolkitWarnings {

namespace {

constexpr std::size_t mostKept = 20;
constexpr std::array ofThePlatform = {"This plugin does not support", "QStandardPaths: XDG_RUNTIME_DIR not set"};

std::mutex mutex; // protects the next
std::vector<std::string> warnings;

void handle(QtMsgType type, const QMessageLogContext & /*context*/, const QString &text)
{
    if (type == QtDebugMsg || type == QtInfoMsg)
        return;
    for (const char *known : ofThePlatform) {
        if (text.startsWith(QLatin1String(known)))
            return;
    }
    std::fprintf(stderr, "%s\n", qPrintable(text));
    const std::lock_guard lock(mutex);
    if (warnings.size() < mostKept)
        warnings.push_back(text.toStdString());
}

} // namespace

void install()
{
    qInstallMessageHandler(handle);
}

std::vector<std::string> seen()
{
    const std::lock_guard lock(mutex);
    return warnings;
}

} // namespace tzsoak::ToolkitWarnings
