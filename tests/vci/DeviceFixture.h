// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tests/support/LogCapture.h"
#include "tests/support/WaitFor.h"
#include "tests/vci/ScriptedBox.h"
#include "vci/TzVciDevice.h"
#include "vci/TzVciDeviceStore.h"
#include "vci/TzVciTypes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace tztest {

inline constexpr int logDebug = 0;
inline constexpr int logInfo = 1;
inline constexpr int logWarning = 2;
inline constexpr int logError = 3;

/// A value that another thread appends to.
template <typename T> class Recorder
{
public:
    void add(T value)
    {
        const std::lock_guard lock(m_mutex);
        m_values.push_back(std::move(value));
    }
    std::vector<T> values() const
    {
        const std::lock_guard lock(m_mutex);
        return m_values;
    }
    std::size_t size() const { return values().size(); }

private:
    mutable std::mutex m_mutex;
    std::vector<T> m_values;
};

/// A store that knows device 0 with four CAN and two LIN channels, and a scripted box in its place.
class DeviceTest : public testing::Test
{
protected:
    DeviceTest() { store.addDevice(0, TzVciDeviceConfig(4, 2)); }
    // A lost link keeps its device until the queued close has run, and the device calls into this object.
    void TearDown() override { QCoreApplication::processEvents(); }

    std::shared_ptr<TzVciDevice> makeDevice(int index = 0)
    {
        return std::make_shared<TzVciDevice>(&store, TzVciNetwork::current(), index, store.canChannelCount(index),
                                             store.linChannelCount(index));
    }
    /// Opened, with its events recorded and the box's list of requests empty.
    std::shared_ptr<TzVciDevice> openDevice()
    {
        auto device = makeDevice();
        EXPECT_EQ(device->open(), TzVciResult::ok);
        device->subscribeStatus(1, [this](int, std::uint8_t cmd) { events.add(cmd); });
        box.clearRequests();
        return device;
    }
    /// The channels are classic CAN, so that opening one takes one request.
    void useClassicCan()
    {
        for (int i = 0; i < store.canChannelCount(0); ++i)
            store.canChannelConfig(0, i)->type = QStringLiteral("CAN");
    }

    LogCapture log;
    TzVciDeviceStore store;
    ScriptedBox box;
    Recorder<int> events;
};

} // namespace tztest
