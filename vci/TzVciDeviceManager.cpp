// SPDX-License-Identifier: GPL-3.0-or-later
#include "vci/TzVciDeviceManager.h"

#include "common/Log.h"
#include "common/LogSink.h"
#include "common/PeriodSender.h"
#include "common/Thread.h"
#include "vci/TzVciDeviceStore.h"
#include "vci/TzVciTypes.h"

#include <chrono>
#include <system_error>
#include <thread>
#include <utility>

TzVciDeviceManager::TzVciDeviceManager(TzVciDeviceStore *store, const TzVciNetwork &network)
    : m_store(store)
    , m_network(network)
    , m_timeBase(m_timeManager)
    , m_displayMode(Common::TimestampDisplayMode::GlobalRelativeTime)
{
    Common::ensureLog(); // the destructor of the process's manager still logs
    m_timeManager.initialize(std::chrono::system_clock::now(), Common::UnifiedTimeManager::defaultScaleFactor);
}

TzVciDeviceManager::~TzVciDeviceManager()
{
    closeAllDevices();
}

TzVciDeviceManager &TzVciDeviceManager::instance()
{
    static TzVciDeviceManager manager(&TzVciDeviceStore::instance()); // which outlives it
    return manager;
}

int TzVciDeviceManager::resolve(int deviceIndex) const
{
    return deviceIndex == -1 ? m_store->currentDeviceIndex() : deviceIndex;
}

int TzVciDeviceManager::openDevice(int deviceIndex)
{
    const std::uint64_t closeAllCount = m_closeAllCount; // before any wait
    const std::lock_guard openLock(m_openMutex);
    const int index = resolve(deviceIndex);
    if (!m_store->hasDevice(index)) {
        Common::logError("Device {} does not exist", index);
        return TzVciResult::noSuchDevice;
    }
    if (getDevice(index)) {
        Common::logWarning("Device {} is already opened", index);
        return TzVciResult::ok;
    }
    const auto device = std::make_shared<TzVciDevice>(m_store, m_network, index, m_store->canChannelCount(index),
                                                      m_store->linChannelCount(index));
    if (const int result = device->open(); result != TzVciResult::ok)
        return result;
    subscribeDefaults(*device);
    m_timeBase.registerDevice(index, device->readBaseTime());
    if (insertUnlessClosedSince(closeAllCount, index, device))
        return TzVciResult::ok;
    device->close();
    return TzVciResult::deviceClosed;
}

// A closeAllDevices() that ran meanwhile could not see the device, but means it as well.
bool TzVciDeviceManager::insertUnlessClosedSince(std::uint64_t closeAllCount, int deviceIndex,
                                                 const std::shared_ptr<TzVciDevice> &device)
{
    const std::unique_lock lock(m_devicesMutex);
    if (m_closeAllCount != closeAllCount)
        return false;
    m_devices.insert_or_assign(deviceIndex, device);
    return true;
}

void TzVciDeviceManager::subscribeDefaults(TzVciDevice &device)
{
    const auto key = static_cast<std::uint64_t>(reinterpret_cast<std::uintptr_t>(this));
    const std::lock_guard lock(m_callbacksMutex);
    if (m_statusCallback)
        device.subscribeStatus(key, m_statusCallback);
    if (m_canCallback)
        device.subscribeCan(key, m_canCallback);
    if (m_linCallback)
        device.subscribeLin(key, m_linCallback);
}

int TzVciDeviceManager::closeDevice(int deviceIndex)
{
    const int index = resolve(deviceIndex);
    if (const int clients = clientCount(index); clients > 0)
        Common::logWarning("Device {} is still in use by {} other clients, but closing it anyway.", index, clients);
    DeviceMap::node_type removed;
    {
        const std::unique_lock lock(m_devicesMutex);
        removed = m_devices.extract(index);
    }
    {
        const std::unique_lock lock(m_clientsMutex);
        m_clients.erase(index);
    }
    return removed ? removed.mapped()->close() : TzVciResult::noSuchDevice;
}

// Takes no m_openMutex: the thread that holds it may be the one that crashed.
int TzVciDeviceManager::closeAllDevices()
{
    DeviceMap devices;
    {
        const std::unique_lock lock(m_devicesMutex);
        ++m_closeAllCount;
        devices.swap(m_devices);
    }
    if (devices.empty())
        return TzVciResult::ok;
    const int result = closeInParallel(devices);
    {
        const std::unique_lock lock(m_clientsMutex);
        m_clients.clear();
    }
    Common::logInfo("Closed all devices");
    return result;
}

// Each box may take 500 ms for each open channel.
int TzVciDeviceManager::closeInParallel(const DeviceMap &devices)
{
    std::atomic<int> result{TzVciResult::ok};
    const auto close = [&](int index, TzVciDevice &device) {
        if (const int clients = clientCount(index); clients > 0)
            Common::logWarning("Closing Device{} while it's still in use by {} other clients.", index, clients);
        if (const int closeResult = device.close(); closeResult != TzVciResult::ok)
            result = closeResult;
    };
    std::vector<std::jthread> threads;
    threads.reserve(devices.size());
    for (const auto &[index, device] : devices) {
        try {
            threads.emplace_back([&close, index = index, device = device.get()] {
                Common::setThreadName("vci-close");
                close(index, *device);
            });
        } catch (const std::system_error &) { // no thread left in the system: one after the other, then
            close(index, *device);
        }
    }
    threads.clear(); // joins
    return result;
}

int TzVciDeviceManager::openChannel(int deviceIndex, std::uint8_t protocol, int channelIndex)
{
    if (const auto device = getDevice(deviceIndex))
        return device->openChannel(protocol, channelIndex);
    Common::logError("Open channel failed for protocol {}: device {} not found", protocol, deviceIndex);
    return TzVciResult::noSuchDevice;
}

int TzVciDeviceManager::closeChannel(int deviceIndex, std::uint8_t protocol, int channelIndex)
{
    if (const auto device = getDevice(deviceIndex))
        return device->closeChannel(protocol, channelIndex);
    Common::logError("Close channel failed for protocol {}: device {} not found", protocol, deviceIndex);
    return TzVciResult::noSuchDevice;
}

std::shared_ptr<TzVciDevice> TzVciDeviceManager::getDevice(int deviceIndex) const
{
    const std::shared_lock lock(m_devicesMutex);
    const auto position = m_devices.find(deviceIndex);
    return position == m_devices.end() ? nullptr : position->second;
}

std::shared_ptr<Common::PeriodSender> TzVciDeviceManager::getPeriodSender(int deviceIndex) const
{
    const auto device = getDevice(deviceIndex);
    return device ? std::shared_ptr<Common::PeriodSender>(device, device->periodSender()) : nullptr;
}

void TzVciDeviceManager::setStatusCallback(TzVciDevice::StatusCallback callback)
{
    const std::lock_guard lock(m_callbacksMutex);
    m_statusCallback = std::move(callback);
}

void TzVciDeviceManager::setCanCallback(TzVciDevice::MessageCallback callback)
{
    const std::lock_guard lock(m_callbacksMutex);
    m_canCallback = std::move(callback);
}

void TzVciDeviceManager::setLinCallback(TzVciDevice::MessageCallback callback)
{
    const std::lock_guard lock(m_callbacksMutex);
    m_linCallback = std::move(callback);
}

void TzVciDeviceManager::acquireClient(int deviceIndex)
{
    const std::unique_lock lock(m_clientsMutex);
    ++m_clients[deviceIndex];
}

void TzVciDeviceManager::releaseClient(int deviceIndex)
{
    const std::unique_lock lock(m_clientsMutex);
    const auto position = m_clients.find(deviceIndex);
    if (position != m_clients.end() && --position->second <= 0)
        m_clients.erase(position);
}

int TzVciDeviceManager::clientCount(int deviceIndex) const
{
    const std::shared_lock lock(m_clientsMutex);
    const auto position = m_clients.find(deviceIndex);
    return position == m_clients.end() ? 0 : position->second;
}

void TzVciDeviceManager::resetTimeBase()
{
    m_timeBase.reset();
    for (const auto &[index, device] : openDevices()) {
        if (const std::uint64_t baseTime = device->readBaseTime(); baseTime != 0)
            m_timeBase.registerDevice(index, baseTime);
    }
    m_timeManager.resetDeltaTimeCalculator();
}

std::vector<std::pair<int, std::shared_ptr<TzVciDevice>>> TzVciDeviceManager::openDevices() const
{
    const std::shared_lock lock(m_devicesMutex);
    std::vector<std::pair<int, std::shared_ptr<TzVciDevice>>> devices;
    for (const auto &[index, device] : m_devices) {
        if (device->deviceIndex() != -1) // lost by its link, waiting to be taken out
            devices.emplace_back(index, device);
    }
    return devices;
}

std::string TzVciDeviceManager::formatTimestamp(int deviceIndex, std::uint64_t timestamp)
{
    return m_timeManager.formatTimestamp(deviceIndex, timestamp, m_displayMode);
}

double TzVciDeviceManager::globalRelativeSeconds(int deviceIndex, std::uint64_t timestamp)
{
    return m_timeManager.getGlobalRelativeSeconds(deviceIndex, timestamp);
}

void TzVciDeviceManager::setDisplayMode(int mode)
{
    if (mode >= 0 && mode <= static_cast<int>(Common::TimestampDisplayMode::TimeOfDay))
        m_displayMode = static_cast<Common::TimestampDisplayMode>(mode);
}
