// SPDX-License-Identifier: GPL-3.0-or-later
#include "vci/TzVciCommunication.h"

#include "common/EmergencyStop.h"
#include "common/Log.h"
#include "common/Thread.h"
#include "common/Utils.h"
#include "common/platform/DatagramReceiver.h"
#include "vci/TzVciDatagramParser.h"
#include "vci/TzVciDropReporter.h"
#include "vci/TzVciTypes.h"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <exception>
#include <utility>

using Common::platform::DatagramReceiver;
using Common::platform::SharedSocket;

namespace {

constexpr unsigned heartbeatIntervalMs = 1000;
constexpr unsigned heartbeatIdleMs = 2000; // the device lets its channels go some time after it last heard the host
constexpr char heartbeatByte = static_cast<char>(0xFF);
constexpr int receiveTimeoutMs = 30; // how late a cleared running flag is seen at worst
constexpr int sendBufferKiB = 1024;
// A full load of eight CAN FD channels is some 50 MB/s as the system counts it: this holds more than a hundred
// milliseconds, against one for the system's default.
constexpr int receiveBufferBytes = 8 * 1024 * 1024;

} // namespace

TzVciCommunication::TzVciCommunication(int deviceIndex, QObject *parent)
    : QObject(parent)
    , m_indexText(std::to_string(deviceIndex))
    , m_receiveThreadName("vci-rx-" + m_indexText)
    , m_heartbeatThreadName("vci-hb-" + m_indexText)
    , m_heartbeat(heartbeatIntervalMs, m_heartbeatThreadName.c_str())
{
    m_heartbeat.setCallback([this] { sendBytes({&heartbeatByte, 1}, 0); });
}

TzVciCommunication::~TzVciCommunication()
{
    disconnect();
}

void TzVciCommunication::setDisconnectCallback(DisconnectCallback callback)
{
    if (canChangeCallbacks())
        m_disconnectCallback = std::move(callback);
}

void TzVciCommunication::setDataCallback(DataCallback callback)
{
    if (canChangeCallbacks())
        m_dataCallback = std::move(callback);
}

// The receive thread reads the callbacks without a lock. It may outlive the socket: between two sockets of a
// reconnection, and after a disconnect() out of a callback.
bool TzVciCommunication::canChangeCallbacks() const noexcept
{
    return !isConnected() && m_receiveThreadId.load() == std::thread::id();
}

bool TzVciCommunication::connect(const ConnectConfig &config)
{
    disconnect();
    if (m_receiveThreadId.load() == std::this_thread::get_id()) {
        Common::logError("A link cannot be connected from its own receive thread: {}", config.serverIp);
        return false;
    }
    m_config = config;
    SharedSocket socket = openSocket();
    if (!socket.isOpen())
        return false;
    m_framesSent = 0;
    m_bytesSent = 0;
    m_recordsReceived = 0;
    m_bytesReceived = 0;
    m_autoReconnect = config.autoReconnect;
    installSocket(std::move(socket));
    if (!startReceiving())
        return false;
    if (!m_heartbeat.start(heartbeatIdleMs))
        Common::logWarning("Failed to start the heartbeat of server: {}", m_config.serverIp);
    Common::logInfo("Connected to server: {}", m_config.serverIp);
    return true;
}

bool TzVciCommunication::startReceiving()
{
    m_running = true;
    try {
        m_receiveThread = std::thread([this] { runReceiveThread(); });
    } catch (const std::exception &error) {
        m_running = false;
        closeSocket(); // nobody was told of the connection, so nobody is told of its end
        Common::logError("Failed to start read thread: {}", error.what());
        return false;
    }
    return true;
}

void TzVciCommunication::disconnect()
{
    m_autoReconnect = false;
    if (m_running.exchange(false)) {
        m_heartbeat.stop();
        closeSocketAndTell();
    }
    if (m_receiveThreadId.load() == std::this_thread::get_id())
        return;
    if (m_receiveThread.joinable())
        m_receiveThread.join();
    closeSocketAndTell(); // one that a reconnection put in just before the thread saw the end
}

bool TzVciCommunication::isConnected() const noexcept
{
    return m_gate.isOpen();
}

int TzVciCommunication::send(const std::vector<char> &bytes, int frameCount)
{
    return sendBytes(bytes, frameCount);
}

int TzVciCommunication::send(const QByteArray &bytes)
{
    return sendBytes({bytes.constData(), static_cast<std::size_t>(bytes.size())}, 1);
}

int TzVciCommunication::sendBytes(std::span<const char> bytes, int frameCount)
{
    const TzVciSocketGate::Use use = m_gate.use();
    if (!use || bytes.empty()) {
        Common::logError("Failed to send data: invalid socket or data");
        return TzVciResult::invalidSend;
    }
    if (const int error = use.socket().send(bytes); error != 0) {
        Common::logError("Failed to send data. Error: {}", error);
        return TzVciResult::sendFailed;
    }
    m_framesSent += static_cast<std::uint64_t>(std::max(frameCount, 0));
    m_bytesSent += bytes.size();
    m_heartbeat.updateTimestamp();
    Common::logDebugHex(m_indexText + " SD:", bytes.data(), bytes.size());
    return TzVciResult::ok;
}

SharedSocket TzVciCommunication::openSocket() const
{
    int error = 0;
    SharedSocket socket = SharedSocket::openUdp(&error);
    if (!socket.isOpen()) {
        Common::logError("Failed to create socket. Error: {}", error);
        return {};
    }
    if (!m_config.localIp.empty() && !bindLocalAddress(socket))
        return {};
    const int descriptor = socket.descriptor();
    if (Common::Utils::setSocketSendBufferSize(descriptor, sendBufferKiB) == 0)
        Common::logWarning("Failed to set UDP send buffer sizes, using system default");
    if (error = socket.setReceiveBufferSize(receiveBufferBytes); error != 0)
        Common::logWarning("Failed to set UDP receive buffer size, using system default. Error: {}", error);
    if (error = socket.countDrops(); error != 0)
        Common::logDebug("Datagrams lost on the host will not be counted. Error: {}", error);
    Common::logInfo("Current network card send and receive buffer: {}/{}",
                    Common::Utils::getSocketSendBufferSize(descriptor),
                    Common::Utils::getSocketReceiveBufferSize(descriptor));
    if (error = socket.connect(m_config.serverIp, m_config.serverPort); error != 0) {
        Common::logError("Failed to connect to server IP: {}. Error: {}", m_config.serverIp, error);
        return {};
    }
    // From its binding to its connection the socket took what anybody sent to it.
    socket.discardReceived();
    return socket;
}

bool TzVciCommunication::bindLocalAddress(const SharedSocket &socket) const
{
    if (const int error = socket.bind(m_config.localIp, 0); error != 0) {
        Common::logError("Failed to bind to local IP: {}. Error: {}", m_config.localIp, error);
        return false;
    }
    Common::logInfo("Bind to local IP: {}", m_config.localIp);
    // The source address alone does not choose the card.
    if (const int error = socket.bindToDevice(m_config.localIp); error != 0)
        Common::logDebug("Failed to bind to the interface of local IP: {}. Error: {}", m_config.localIp, error);
    return true;
}

void TzVciCommunication::installSocket(SharedSocket socket)
{
    m_emergencySlot = Common::EmergencyStop::acquireSlot(socket.descriptor());
    m_gate.install(std::move(socket));
}

// Of several threads one alone closes a given socket and gets true. Whoever still uses it keeps it open until he is
// done.
bool TzVciCommunication::closeSocket()
{
    Common::EmergencyStop::releaseSlot(m_emergencySlot.exchange(-1));
    return m_gate.retire();
}

void TzVciCommunication::closeSocketAndTell()
{
    if (closeSocket())
        Common::logInfo("Disconnected from server: {}", m_config.serverIp);
}

void TzVciCommunication::runReceiveThread()
{
    m_receiveThreadId = std::this_thread::get_id();
    Common::setThreadName(m_receiveThreadName.c_str());
    Common::logInfo("Start vci receive message thread(id: {})", Common::Utils::getThreadIdString());
    receiveUntilEnd();
    if (m_running && m_disconnectCallback) // the link died by itself
        m_disconnectCallback();
    Common::logInfo("Stopped vci receive message thread(id: {})", Common::Utils::getThreadIdString());
    m_receiveThreadId = std::thread::id();
}

void TzVciCommunication::receiveUntilEnd()
{
    DatagramReceiver receiver;
    TzVciDatagramParser parser;
    TzVciDropReporter drops(m_config.serverIp);
    TzVciSocketGate::Use use = m_gate.use();
    if (use && Common::Utils::setReceiveTimeout(use.socket().descriptor(), receiveTimeoutMs) != 0)
        Common::logWarning("Failed to set receive timeout.");

    while (m_running && use) {
        const int count = receiver.receive(use.socket().descriptor());
        if (count >= 0) {
            drops.update(receiver.droppedDatagrams());
            if (!takeDatagrams(receiver, count, parser))
                break;
        } else if (count == -EINTR || SharedSocket::isTimeout(-count)) {
            receiver.updateDroppedDatagrams(use.socket().descriptor());
            drops.update(receiver.droppedDatagrams());
        } else {
            if (!m_running)
                break;
            Common::logError("Failed to read data. Error: {}", -count);
            if (!m_autoReconnect)
                break;
            reportLastDrops(receiver, drops, use);
            if (!reconnect(use.socket()))
                return;
            use = m_gate.use();
        }
    }
    reportLastDrops(receiver, drops, use);
}

// The datagrams that were read tell only of what was dropped before them. A socket that is shut down still knows it
// all.
void TzVciCommunication::reportLastDrops(DatagramReceiver &receiver, TzVciDropReporter &drops,
                                         const TzVciSocketGate::Use &use)
{
    if (use)
        receiver.updateDroppedDatagrams(use.socket().descriptor());
    drops.finish(receiver.droppedDatagrams());
    receiver.forgetDroppedDatagrams();
}

// False when the link is at its end. What came behind an empty datagram is not looked at.
bool TzVciCommunication::takeDatagrams(const DatagramReceiver &receiver, int count, TzVciDatagramParser &parser)
{
    for (int i = 0; i < count && m_running; ++i) {
        const std::span<const std::uint8_t> datagram = receiver.datagram(i);
        if (datagram.empty()) {
            if (m_running) // otherwise it is disconnect() that shut the socket down
                Common::logInfo("Connection closed by server: {}", m_config.serverIp);
            return false;
        }
        takeDatagram(datagram, parser);
    }
    return true;
}

void TzVciCommunication::takeDatagram(std::span<const std::uint8_t> datagram, TzVciDatagramParser &parser)
{
    m_bytesReceived += datagram.size();
    Common::logDebugHex(m_indexText + " RD:", datagram.data(), datagram.size());
    const auto outcome = parser.parse(datagram, [this](const auto &batch) { deliver(batch); });
    if (outcome.expectedBytes != 0)
        Common::logWarning("Incomplete protocol frame detected. Expected {} bytes, but only {} remain.",
                           outcome.expectedBytes, outcome.leftoverBytes);
    if (outcome.leftoverBytes != 0)
        Common::logWarning("Leftover data at the end of UDP datagram after parsing. {} bytes remaining.",
                           outcome.leftoverBytes);
}

void TzVciCommunication::deliver(const std::vector<TzVciProtocolData> &batch)
{
    m_recordsReceived += batch.size();
    if (m_dataCallback)
        m_dataCallback(batch);
}

// The caller holds the old socket open until this is done, so that its emergency slot can pass to the new one with all
// the channels that are armed in it.
bool TzVciCommunication::reconnect(const SharedSocket &oldSocket)
{
    if (m_gate.retire())
        Common::logInfo("Disconnected from server: {}", m_config.serverIp);
    SharedSocket socket = openSocket();
    if (!socket.isOpen()) {
        Common::EmergencyStop::releaseSlot(m_emergencySlot.exchange(-1));
        Common::logError("Failed to reconnect to server: {}", m_config.serverIp);
        return false;
    }
    // No receive time-out on this one: the shutdown in disconnect() is what wakes the thread.
    if (Common::EmergencyStop::replaceSocket(m_emergencySlot, oldSocket.descriptor(), socket.descriptor()))
        m_gate.install(std::move(socket));
    else
        installSocket(std::move(socket));
    Common::logInfo("Reconnected to server: {}", m_config.serverIp);
    return true;
}
