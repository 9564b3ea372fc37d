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
    return scan(begin(), timeoutMs);
}

TzVciDeviceScanner::RunningScan TzVciDeviceScanner::begin()
{
    RunningScan running = tryBegin();
    if (!running)
        Common::logWarning("Scan is already in progress. Ignoring synchronous request.");
    return running;
}

bool TzVciDeviceScanner::scan(RunningScan running, int timeoutMs)
{
    if (!running)
        return false;
    scanInterfaces(timeoutMs);
    return m_foundAny; // of this scan, which ends behind this
}

void TzVciDeviceScanner::scanAsync(int timeoutMs)
{
    RunningScan running = tryBegin();
    if (!running) {
        Common::logWarning("Scan is already in progress. Ignoring async request.");
        return;
    }
    if (m_thread.start("vci-scan", [this, timeoutMs] { scan(RunningScan(this), timeoutMs); }))
        static_cast<void>(running.release()); // the thread has it
    else
        Common::logError("Failed to start scan thread");
}

// Cancellation counts from here on, so that a cancel() right after scanAsync() is not lost.
TzVciDeviceScanner::RunningScan TzVciDeviceScanner::tryBegin()
{
    bool idle = false;
    if (!m_scanning.compare_exchange_strong(idle, true))
        return nullptr;
    m_foundAny = false;
    const std::lock_guard lock(m_cancelMutex);
    m_cancelled = false;
    return RunningScan(this);
}

void TzVciDeviceScanner::end()
{
    const bool foundAny = m_foundAny;
    m_scanning = false;
    Q_EMIT scanFinished(foundAny);
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
