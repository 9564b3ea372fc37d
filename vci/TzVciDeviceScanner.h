// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "common/WorkerThread.h"
#include "vci/TzVciNetwork.h"

#include <QObject>

#include <atomic>
#include <condition_variable>
#include <mutex>

class TzVciDeviceStore;

/// Finds devices by a broadcast on every local network interface and adds them to the store. A device that is known
/// already is left as it is.
///
/// Threads: any thread may call; one scan runs at a time. scanAsync() runs on "vci-scan", which the scanner joins.
/// Errors: nothing throws; failures are logged and the interface concerned takes no part.
class TzVciDeviceScanner : public QObject
{
    Q_OBJECT
public:
    explicit TzVciDeviceScanner(TzVciDeviceStore *store, const TzVciNetwork &network = TzVciNetwork::current());
    ~TzVciDeviceScanner() override; ///< cancels a scan that runs

    /// The process's scanner on the process's store. Fetched by app/ alone, which hands it on.
    static TzVciDeviceScanner &instance();

    /// Scans and blocks for the whole time, or until cancel().
    /// @return true if at least one new device was added; false as well if a scan is running already
    bool scan(int timeoutMs);
    /// The same without waiting; scanFinished() tells the end. Does nothing if a scan is running already.
    void scanAsync(int timeoutMs);
    /// Ends a running scan early and joins the thread of scanAsync(). A scan() on another thread returns soon after.
    void cancel();
    bool isScanning() const noexcept { return m_scanning.load(); }

Q_SIGNALS:
    /// Emitted on the thread that scanned, after each scan that ran.
    void scanFinished(bool foundAny);

private:
    bool begin();
    bool runScan(int timeoutMs);
    void scanInterfaces(int timeoutMs);
    void waitUntilCancelled(int timeoutMs);
    void requestCancel();

    TzVciDeviceStore *const m_store;
    const TzVciNetwork m_network;
    std::atomic<bool> m_foundAny{false};
    std::atomic<bool> m_scanning{false};
    std::mutex m_cancelMutex; // protects m_cancelled
    std::condition_variable m_cancelCondition;
    bool m_cancelled = false;
    Common::WorkerThread m_thread; // last: ends before the members that it uses
};
