// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/TZBenchWindow.h"
#include "tests/soak/LinkLedger.h"
#include "vci/TzVciDeviceManager.h"
#include "vci/TzVciDeviceScanner.h"
#include "vci/TzVciDeviceStore.h"
#include "views/ui/TzVciBaseViewWindow.h"

#include <QPointer>

#include <vector>

namespace tzsoak {

/// The program under test: the main window with its four views on 16 known boxes. UI thread.
class Workbench
{
public:
    Workbench();
    ~Workbench();

    TZBenchWindow &window() { return m_window; }
    TzVciDeviceStore &store() { return m_store; }
    TzVciDeviceManager &manager() { return m_manager; }
    const LinkLedger &ledger() const { return m_ledger; }

    /// Opens a box with all its channels. False when one does not open.
    bool open(int box);
    /// The open device has noticed the loss of its box and closed itself.
    bool hasLost(int box) const;
    bool isOpen(int box) const;

    /// The views whose counters are compared at the end: nobody pauses, clears or closes them.
    TzVciBaseViewWindow *canReference() const { return m_canReference; }
    TzVciBaseViewWindow *linReference() const { return m_linReference; }
    std::vector<TzVciBaseViewWindow *> views() const;
    /// The views that are not references.
    std::vector<TzVciBaseViewWindow *> freeViews() const;
    /// Opens a view by the menu.
    void newView(std::uint8_t kind);
    /// Nothing waits on the road to the views.
    bool isDrained();

private:
    TzVciDeviceStore m_store;
    TzVciDeviceManager m_manager{&m_store};
    TzVciDeviceScanner m_scanner{&m_store};
    LinkLedger m_ledger;
    TZBenchWindow m_window{&m_manager, &m_store, &m_scanner};
    QPointer<TzVciBaseViewWindow> m_canReference;
    QPointer<TzVciBaseViewWindow> m_linReference;
};

} // namespace tzsoak
