// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "common/HeartbeatManager.h"
#include "vci/TzVciProtocolData.h"
#include "vci/TzVciSocketGate.h"

#include <QByteArray>
#include <QObject>

#include <atomic>
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <thread>
#include <vector>

class TzVciDatagramParser;
class TzVciDropReporter;

namespace Common::platform {
class DatagramReceiver;
}

/// The UDP link to one device: owns the connected socket, splits what arrives into protocol records and keeps the
/// device awake by a one-byte heartbeat after two seconds without a send.
///
/// Threads: the receive thread "vci-rx-N" runs both callbacks, so a callback delays further reception. Any thread may
/// call send(), isConnected() and the counters, without a lock. connect() and disconnect() are called under the
/// device's own mutex. From within a callback disconnect() ends the link but leaves the join to the next call,
/// connect() is refused, and the link must not be destroyed.
///
/// Errors: nothing throws; failures are logged here and told by the results.
class TzVciCommunication : public QObject
{
    Q_OBJECT
public:
    using DisconnectCallback = std::function<void()>;
    using DataCallback = std::function<void(const std::vector<TzVciProtocolData> &)>;

    struct ConnectConfig
    {
        bool autoReconnect = false; ///< make a new socket after a read error
        std::string serverIp;       ///< the device's address
        std::uint16_t serverPort = 8000;
        std::string localIp;            ///< address to bind and whose interface to use; empty: the system chooses
        std::uint16_t localPort = 8001; ///< kept, not used: the bind leaves the port to the system
        std::uint32_t timeoutMs = 2000; ///< kept, not used
    };

    /// @param deviceIndex  0 to 15, the prefix of the link's trace lines
    explicit TzVciCommunication(int deviceIndex, QObject *parent = nullptr);
    ~TzVciCommunication() override;

    /// Called on the receive thread when the link died by itself. The link stays as it is until disconnect() is called.
    /// Ignored while a socket exists.
    void setDisconnectCallback(DisconnectCallback callback);
    /// Called on the receive thread with 1 to 32 records of one datagram, in order. Ignored while a socket exists.
    void setDataCallback(DataCallback callback);

    /// Ends a link that exists, zeroes the counters and makes a new one. @return false, unconnected, if that failed
    bool connect(const ConnectConfig &config);
    /// Safe to repeat. Afterwards no callback runs, unless it is called from one.
    void disconnect();
    bool isConnected() const noexcept;

    /// Sends one datagram.
    /// @param frameCount  frames in it, for framesSent()
    /// @return TzVciResult::ok, invalidSend without a socket or bytes, sendFailed if the socket refuses
    int send(const std::vector<char> &bytes, int frameCount);
    int send(const QByteArray &bytes);

    std::uint64_t framesSent() const noexcept { return m_framesSent.load(); }
    std::uint64_t bytesSent() const noexcept { return m_bytesSent.load(); }
    std::uint64_t recordsReceived() const noexcept { return m_recordsReceived.load(); }
    std::uint64_t bytesReceived() const noexcept { return m_bytesReceived.load(); }

    /// Slot of Common::EmergencyStop that belongs to the link's socket, or -1. Changes in connect() and disconnect(); a
    /// reconnection keeps it with what is armed in it.
    int emergencySlot() const noexcept { return m_emergencySlot.load(); }

private:
    Common::platform::SharedSocket openSocket() const;
    bool bindLocalAddress(const Common::platform::SharedSocket &socket) const;
    void installSocket(Common::platform::SharedSocket socket);
    bool closeSocket();
    void closeSocketAndTell();
    bool startReceiving();
    bool canChangeCallbacks() const noexcept;

    void runReceiveThread();
    void receiveUntilEnd();
    bool takeDatagrams(const Common::platform::DatagramReceiver &receiver, int count, TzVciDatagramParser &parser);
    void takeDatagram(std::span<const std::uint8_t> datagram, TzVciDatagramParser &parser);
    void deliver(const std::vector<TzVciProtocolData> &batch);
    static void reportLastDrops(Common::platform::DatagramReceiver &receiver, TzVciDropReporter &drops,
                                const TzVciSocketGate::Use &use);
    bool reconnect(const Common::platform::SharedSocket &oldSocket);

    int sendBytes(std::span<const char> bytes, int frameCount);

    const std::string m_indexText;
    const std::string m_receiveThreadName;
    const std::string m_heartbeatThreadName;
    TzVciSocketGate m_gate;
    std::atomic<int> m_emergencySlot{-1};
    std::atomic<bool> m_running{false};
    std::atomic<bool> m_autoReconnect{false};         // of m_config, taken back by disconnect()
    std::atomic<std::thread::id> m_receiveThreadId{}; // while that thread runs
    ConnectConfig m_config;                           // changed only while no receive thread runs
    DisconnectCallback m_disconnectCallback;          // likewise
    DataCallback m_dataCallback;                      // likewise
    std::atomic<std::uint64_t> m_framesSent{0};
    std::atomic<std::uint64_t> m_bytesSent{0};
    std::atomic<std::uint64_t> m_recordsReceived{0};
    std::atomic<std::uint64_t> m_bytesReceived{0};
    std::thread m_receiveThread;
    Common::HeartbeatManager m_heartbeat; // last: its thread sends through all the above
};
