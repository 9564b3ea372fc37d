// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "vci/TzVciChannelControl.h"
#include "vci/TzVciCommunication.h"
#include "vci/TzVciMessage.h"
#include "vci/TzVciNetwork.h"
#include "vci/TzVciRequestExchange.h"
#include "vci/TzVciSubscriberTable.h"
#include "vci/TzVciTrafficDecoder.h"

#include <QObject>

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

namespace Common {
class PeriodSender;
}
class TzVciDeviceBusLoad;
class TzVciDeviceStore;

/// One open VCI box: link, requests, channels and subscribers. Made by the manager and opened once; a device that was
/// closed is never opened again.
///
/// Threads: lives on the thread that made it, the user interface's, which needs an event loop: a link that dies by
/// itself posts close() there. All calls may come from any thread; open(), close(), openChannel(), closeChannel() and
/// the requests block for up to 500 ms a request. CAN and LIN subscribers run on the receive thread, status subscribers
/// on the thread that caused the event.
/// Lock order: device mutex, channel mutex, request mutex. The receive thread takes the last of them alone.
/// Errors: TzVciResult codes; nothing throws.
class TzVciDevice : public QObject, public std::enable_shared_from_this<TzVciDevice>
{
    Q_OBJECT
public:
    using MessageCallback = std::function<void(const std::vector<TzVciMessage> &)>;
    using StatusCallback = std::function<void(int deviceIndex, std::uint8_t cmd)>;

    /// @param deviceIndex  0 to 15
    TzVciDevice(TzVciDeviceStore *store, const TzVciNetwork &network, int deviceIndex, int canChannels,
                int linChannels);
    /// Stops the periodic frames and the link, then tells the status subscribers deviceDestroyed. Channels that are
    /// still open are not closed on the box: that is what close() is for.
    ~TzVciDevice() override;

    /// @return TzVciResult::ok, deviceClosed, or openFailed without a link or an answer of the device
    int open();
    /// Closes all channels and the link. @return deviceClosed if it was closed before, else both channel results or-ed
    int close();
    /// @param channelIndex  -1 for all channels of the protocol. See TzVciChannelControl for the results.
    int openChannel(std::uint8_t protocol, int channelIndex);
    int closeChannel(std::uint8_t protocol, int channelIndex);

    std::uint64_t readBaseTime();        ///< device time in 0.1 microsecond, 0 on failure
    std::uint32_t readFirmwareVersion(); ///< four parts, the first in the highest byte; 0 on failure
    /// One exchange with the device, see TzVciRequestExchange::request().
    int request(const TzVciProtocolData &request, TzVciProtocolData &response, int timeoutMs);
    /// Transmits one encoded datagram with one frame. @return the link's code
    int send(const std::vector<char> &bytes);

    /// Add a subscriber or replace the one with the same key. Subscribers return quickly and copy what they keep; they
    /// must not subscribe or unsubscribe from within a call.
    void subscribeCan(std::uint64_t key, MessageCallback callback);
    void subscribeLin(std::uint64_t key, MessageCallback callback);
    void subscribeStatus(std::uint64_t key, StatusCallback callback);
    /// Returns when the subscriber is not being called and will not be again. LIN and status subscribers go with the
    /// device.
    void unsubscribeCan(std::uint64_t key);

    int deviceIndex() const noexcept { return m_deviceIndex.load(); } ///< -1 once it is closed
    Common::PeriodSender *periodSender() const noexcept { return m_periodSender.get(); }
    TzVciDeviceBusLoad *busLoad() const noexcept { return m_busLoad; }
    TzVciCommunication *communication() noexcept { return &m_link; } ///< for its counters and the senders

Q_SIGNALS:
    /// The link died by itself; emitted on the receive thread. The device closes itself on its own thread.
    void linkLost(QPrivateSignal);

private:
    void handleRecords(const std::vector<TzVciProtocolData> &records); // receive thread
    void handleLinkLoss();                                             // receive thread
    void closeAfterLinkLoss();
    std::shared_ptr<TzVciDevice> takeAliveUntilClosed();
    void notifyStatus(std::uint8_t cmd);
    TzVciCommunication::ConnectConfig connectConfig(int deviceIndex) const;

    TzVciDeviceStore *const m_store;
    const TzVciNetwork m_network;
    const int m_ownIndex;           // as constructed, for what happens after close()
    std::atomic<int> m_deviceIndex; // -1 once it is closed
    std::atomic<bool> m_isOpen{false};
    std::mutex m_linkLossMutex;                      // protects m_aliveUntilClosed
    std::shared_ptr<TzVciDevice> m_aliveUntilClosed; // while a lost link waits to be closed
    std::mutex m_deviceMutex;                        // one opening or closing, of device or channels, at a time
    TzVciSubscriberTable<int, std::uint8_t> m_statusSubscribers;
    TzVciSubscriberTable<const std::vector<TzVciMessage> &> m_canSubscribers;
    TzVciSubscriberTable<const std::vector<TzVciMessage> &> m_linSubscribers;
    TzVciTrafficDecoder m_traffic;       // receive thread
    TzVciDeviceBusLoad *const m_busLoad; // a child, which so outlives the link
    TzVciCommunication m_link;
    TzVciRequestExchange m_exchange;
    std::unique_ptr<Common::PeriodSender> m_periodSender; // ends before the link that it sends through
    TzVciChannelControl m_channels;
};
