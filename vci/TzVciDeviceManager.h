// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "common/TimestampDisplayMode.h"
#include "common/UnifiedTimeManager.h"
#include "vci/TzVciDevice.h"
#include "vci/TzVciNetwork.h"
#include "vci/TzVciTimeBase.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <shared_mutex>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

class TzVciDeviceStore;

/// The open devices, the one place where they are opened, closed and found, and the common time of their frames.
///
/// Threads: any; openDevice() belongs to the user interface's thread, where the devices then live. Calls that talk to a
/// device block, see TzVciDevice. Look-ups copy the pointer out under a shared lock.
/// Errors: TzVciResult codes; nothing throws.
class TzVciDeviceManager
{
public:
    explicit TzVciDeviceManager(TzVciDeviceStore *store, const TzVciNetwork &network = TzVciNetwork::current());
    ~TzVciDeviceManager(); ///< closes all devices
    TzVciDeviceManager(const TzVciDeviceManager &) = delete;
    TzVciDeviceManager &operator=(const TzVciDeviceManager &) = delete;

    /// The process's manager on the process's store. Fetched by app/ alone, which hands it on.
    static TzVciDeviceManager &instance();

    /// Opens a device; -1 means the current one of the store. A device that is in the table already counts as a
    /// success.
    int openDevice(int deviceIndex);
    int closeDevice(int deviceIndex); ///< -1 means the current one of the store
    /// Closes every device, all at the same time; one that is being opened on another thread is closed by that
    /// openDevice(), which then returns deviceClosed. @return 0, or the code of one that failed
    int closeAllDevices();
    int openChannel(int deviceIndex, std::uint8_t protocol, int channelIndex);
    int closeChannel(int deviceIndex, std::uint8_t protocol, int channelIndex);

    std::shared_ptr<TzVciDevice> getDevice(int deviceIndex) const; ///< empty if not open
    /// The device's sender, or null. Holding it keeps the device.
    std::shared_ptr<Common::PeriodSender> getPeriodSender(int deviceIndex) const;

    /// What devices that are opened later call; an empty function removes the default. Keyed by the manager's address.
    void setStatusCallback(TzVciDevice::StatusCallback callback);
    void setCanCallback(TzVciDevice::MessageCallback callback);
    void setLinCallback(TzVciDevice::MessageCallback callback);

    /// Number of windows that transmit through a device.
    void acquireClient(int deviceIndex);
    void releaseClient(int deviceIndex);
    int clientCount(int deviceIndex) const;

    /// Makes the present moment the reference of all times.
    void resetTimeBase();
    /// Text of a device time (0.1 microsecond) in the mode set. @see Common::UnifiedTimeManager
    std::string formatTimestamp(int deviceIndex, std::uint64_t timestamp);
    double globalRelativeSeconds(int deviceIndex, std::uint64_t timestamp);
    void setDisplayMode(int mode); ///< a Common::TimestampDisplayMode; other values change nothing
    void setDisplayMode(Common::TimestampDisplayMode mode) { setDisplayMode(static_cast<int>(mode)); }
    Common::TimestampDisplayMode displayMode() const noexcept { return m_displayMode.load(); }
    Common::UnifiedTimeManager &timeManager() noexcept { return m_timeManager; } ///< for scale factor and deltas

private:
    using DeviceMap = std::unordered_map<int, std::shared_ptr<TzVciDevice>>;

    int resolve(int deviceIndex) const;
    bool insertUnlessClosedSince(std::uint64_t closeAllCount, int deviceIndex,
                                 const std::shared_ptr<TzVciDevice> &device);
    void subscribeDefaults(TzVciDevice &device);
    int closeInParallel(const DeviceMap &devices);
    std::vector<std::pair<int, std::shared_ptr<TzVciDevice>>> openDevices() const;

    TzVciDeviceStore *const m_store;
    const TzVciNetwork m_network;
    Common::UnifiedTimeManager m_timeManager;
    TzVciTimeBase m_timeBase;
    std::atomic<Common::TimestampDisplayMode> m_displayMode;
    std::mutex m_openMutex;                   // one openDevice() at a time, so that a device is never opened twice
    mutable std::shared_mutex m_devicesMutex; // protects m_devices
    DeviceMap m_devices;
    std::atomic<std::uint64_t> m_closeAllCount{0}; // changed under m_devicesMutex
    mutable std::shared_mutex m_clientsMutex;      // protects m_clients
    std::unordered_map<int, int> m_clients;
    std::mutex m_callbacksMutex; // protects the default callbacks
    TzVciDevice::StatusCallback m_statusCallback;
    TzVciDevice::MessageCallback m_canCallback;
    TzVciDevice::MessageCallback m_linCallback;
};
