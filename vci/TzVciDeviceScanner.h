// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "common/WorkerThread.h"
#include "vci/TzVciNetwork.h"

#include <QObject>

#include <atomic>
#include <condition_variable>
#include <memory>
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

    /// Ends a scan that has begun, and tells scanFinished().
    struct EndScan
    {
        void operator()(TzVciDeviceScanner *scanner) const { scanner->end(); }
    };
    /// A scan that has begun: while it lives isScanning() is true, no other scan begins and cancel() counts for it.
    using RunningScan = std::unique_ptr<TzVciDeviceScanner, EndScan>;

    /// Scans and blocks for the whole time, or until cancel().
    /// @return true if at least one new device was added; false as well if a scan is running already
    bool scan(int timeoutMs);
    /// The two halves of scan(), for a caller that blocks a thread of its own with the second: a cancel() that comes
    /// before that thread runs is not lost. begin() is empty if a scan is running already.
    RunningScan begin();
    bool scan(RunningScan running, int timeoutMs);
    /// The same without waiting; scanFinished() tells the end. Does nothing if a scan is running already.
    void scanAsync(int timeoutMs);
    /// Ends a running scan early and joins the thread of scanAsync(). A scan() on another thread returns soon after.
    void cancel();
    bool isScanning() const noexcept { return m_scanning.load(); }

Q_SIGNALS:
    /// Emitted on the thread that scanned, after each scan that ran.
    void scanFinished(bool foundAny);

private:
    RunningScan tryBegin();
    void end();
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
