// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resource/Resources.h"
#include "tests/support/TempWorkDir.h"
#include "tests/views/RawViewTwins.h"
#include "vci/TzVciDeviceManager.h"
#include "vci/TzVciDeviceStore.h"
#include "vci/TzVciTypes.h"
#include "views/ui/TzCanViewWindow.h"
#include "views/ui/TzLinViewWindow.h"
#include "views/ui/TzVciViewFilterWidget.h"

#include <QtTest>
#include <QtWidgets>

#include <algorithm>
#include <memory>
#include <vector>

namespace tztest {

/// A raw view on the screen, with a store that knows one device with two channels of each family. Its timers run.
struct RawViewWindowFixture
{
    explicit RawViewWindowFixture(std::uint8_t kind)
        : twin(rawViewTwins[kind == TzVciViewKind::can ? 0 : 1])
    {
        tzInitResources();
        store.addDevice(0, TzVciDeviceConfig(2, 2));
        if (isCan())
            view = std::make_unique<TzCanViewWindow>(&manager, &store);
        else
            view = std::make_unique<TzLinViewWindow>(&manager, &store);
        view->show();
        if (!QTest::qWaitForWindowExposed(view.get()))
            qFatal("the view does not appear");
    }

    bool isCan() const { return &twin == &rawViewTwins[0]; }
    TzVciMessage rx(std::uint8_t id) const { return twin.received(id); }
    TzVciMessage tx(std::uint8_t id) const { return twin.transmitted(id); }
    void deliver(const std::vector<TzVciMessage> &batch) { view->onReceivedMessages(batch); }
    void tickData() { static_cast<TzVciBaseViewWindow &>(*view).onUpdateData(); }
    void tickUi() { static_cast<TzVciBaseViewWindow &>(*view).onUpdateUi(); }

    QToolButton *button(const char *name) const { return view->findChild<QToolButton *>(QLatin1String(name)); }
    QTableView *table() const { return view->findChild<QTableView *>(QStringLiteral("tableView")); }
    QLabel *label() const { return view->findChild<QLabel *>(QStringLiteral("lableStatus")); }
    QMenu *openContextMenu() const
    {
        Q_EMIT table()->customContextMenuRequested(QPoint(10, 10));
        return qobject_cast<QMenu *>(QApplication::activePopupWidget());
    }
    static QAction *entry(const QMenu *menu, const QString &text)
    {
        const auto actions = menu->actions();
        const auto found = std::find_if(actions.begin(), actions.end(), [&](QAction *a) { return a->text() == text; });
        return found == actions.end() ? nullptr : *found;
    }
    void triggerEntry(const QString &text) const
    {
        QMenu *menu = openContextMenu();
        QAction *action = menu ? entry(menu, text) : nullptr;
        QVERIFY2(action, qPrintable(text));
        menu->close();
        action->trigger();
    }
    QWidget *filterBar() const { return view->findChild<QWidget *>(QStringLiteral("widgetFilter")); }

    const RawViewTwin &twin;
    TempWorkDir workDir;
    TzVciDeviceStore store;
    TzVciDeviceManager manager{&store};
    std::unique_ptr<TzRawViewWindow> view;
};

} // namespace tztest
