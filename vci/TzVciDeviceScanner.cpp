// SPDX-License-Identifier: GPL-3.0-or-later
#include "vci/TzVciDeviceScanner.h"

#include "common/Log.h"
#include "common/Utils.h"
#include "vci/TzVciDeviceStore.h"
#include "vci/TzVciScanWorker.h"

#include <chrono>
#include <memory>
#include <vector>

TzVciDeviceScanner::TzVciDeviceScanner(TzVciDeviceStore *store, const TzVciNetwork &network)
    : m_store(store)
    , m_network(network)
{
}

TzVciDeviceScanner::~TzVciDeviceScanner()
{
    cancel();
}

TzVciDeviceScanner &TzVciDeviceScanner::instance()
{
    static TzVciDeviceScanner scanner(&TzVciDeviceStore::instance());
    return scanner;
}

bool TzVciDeviceScanner::scan(int timeoutMs)
{
    if (!begin()) {
        Common::logWarning("Scan is already in progress. Ignoring synchronous request.");
        return false;
    }
    return runScan(timeoutMs);
}

void TzVciDeviceScanner::scanAsync(int timeoutMs)
{
    if (!begin()) {
        Common::logWarning("Scan is already in progress. Ignoring async request.");
        return;
    }
    if (!m_thread.start("vci-scan", [this, timeoutMs] { runScan(timeoutMs); })) {
        Common::logError("Failed to start scan thread");
        m_scanning = false;
        Q_EMIT scanFinished(false);
    }
}

// Cancellation counts from here on, so that a cancel() right after scanAsync() is not lost.
bool TzVciDeviceScanner::begin()
{
    bool idle = false;
    if (!m_scanning.compare_exchange_strong(idle, true))
        return false;
    m_foundAny = false;
    const std::lock_guard lock(m_cancelMutex);
    m_cancelled = false;
    return true;
}

bool TzVciDeviceScanner::runScan(int timeoutMs)
{
    scanInterfaces(timeoutMs);
    const bool foundAny = m_foundAny;
    m_scanning = false;
    Q_EMIT scanFinished(foundAny);
    return foundAny;
}

void TzVciDeviceScanner::scanInterfaces(int timeoutMs)
{
    const std::vector<std::string> addresses = Common::Utils::getAllLocalIPv4s();
    if (addresses.empty()) {
        Common::logWarning("No active IPv4 network interfaces found.");
        return;
    }
    std::vector<std::unique_ptr<ScanWorker>> workers;
    for (const std::string &address : addresses)
        workers.push_back(std::make_unique<ScanWorker>(address, m_network, m_store, &m_foundAny));
    for (const auto &worker : workers)
        worker->start();
    waitUntilCancelled(timeoutMs);
    for (const auto &worker : workers)
        worker->stop();
}

void TzVciDeviceScanner::waitUntilCancelled(int timeoutMs)
{
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
    std::unique_lock lock(m_cancelMutex);
    m_cancelCondition.wait_until(lock, end, [this] { return m_cancelled; });
}

void TzVciDeviceScanner::cancel()
{
    requestCancel();
    m_thread.join();
}

void TzVciDeviceScanner::requestCancel()
{
    const std::lock_guard lock(m_cancelMutex);
    m_cancelled = true;
    m_cancelCondition.notify_all();
}
