// SPDX-License-Identifier: GPL-3.0-or-later
// The part of the demo driver that takes pictures of the bus load window and of the settings dialogs.
#include "tools/demo/DemoDriver.h"

#include "app/DebugLogDialog.h"
#include "app/TZBenchWindow.h"
#include "app/TZVciTimeDialog.h"
#include "app/TzVciVersionDialog.h"
#include "vci/ui/TzVciBusLoadTable.h"
#include "vci/ui/TzVciBusLoadView.h"

namespace {

// Both channels have carried frames for a whole measuring period.
bool showsLoad(const TzVciBusLoadTable &table)
{
    const auto messages = [&table](int row) { return table.item(row, TzVciBusLoadTable::MessagesColumn)->text(); };
    return table.rowCount() == 2 && messages(0).toInt() > 0 && messages(1).toInt() > 0;
}

} // namespace

void DemoDriver::addToolSteps()
{
    m_script.add(tr("open the bus load window"), noDialogIsOpen, [this] { trigger("actionBusLoad_View"); });
    m_script.add(
        tr("close the bus load window"),
        [this] {
            const auto *view = m_window->findChild<TzVciBusLoadView *>();
            return view && showsLoad(*view->findChild<TzVciBusLoadTable *>());
        },
        [this] {
            auto *view = m_window->findChild<TzVciBusLoadView *>();
            savePicture(view, QStringLiteral("busload"));
            view->close();
        });
    addDialogPicture<DebugLogDialog>("actionDebugLog_Settings", QStringLiteral("log-settings"));
    addDialogPicture<TZVciTimeDialog>("actionDisplayTime_Settings", QStringLiteral("time-settings"));
    addDialogPicture<TzVciVersionDialog>("actionDevice_Version", QStringLiteral("version"));
}

template <typename Dialog> void DemoDriver::addDialogPicture(const char *action, const QString &name)
{
    m_script.add(tr("open %1").arg(name), noDialogIsOpen, [this, action] { trigger(action); });
    addClosingPicture<Dialog>(tr("close %1").arg(name), name);
}
