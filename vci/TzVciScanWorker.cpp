// SPDX-License-Identifier: GPL-3.0-or-later
#include "vci/TzVciScanWorker.h"

#include "common/Log.h"
#include "vci/TzVciDeviceStore.h"
#include "vci/TzVciDiscovery.h"
#include "vci/TzVciProtocol.h"

#include <QString>

#include <algorithm>
#include <chrono>
#include <thread>
#include <utility>

namespace {

// How long a reply may wait before it is looked at.
constexpr std::chrono::milliseconds pollInterval(10);

// A channel is numbered by one byte.
constexpr std::uint16_t maxChannels = 255;

std::size_t channelCount(std::uint16_t told)
{
    return std::min(told, maxChannels);
}

Common::UDPClient::ConnectConfig clientConfig(const std::string &interfaceIp)
{
    Common::UDPClient::ConnectConfig config;
    config.localIp = interfaceIp;
    config.localPort = 0;
    config.receiveTimeoutMs = 30;
    config.broadcastEnabled = true;
    config.reuseAddress = true;
    config.connectTimeoutMs = 2000;
    config.bufferSizeBytes = 0x800000;
    config.bufferCount = 64;
    return config;
}

} // namespace

ScanWorker::ScanWorker(std::string interfaceIp, const TzVciNetwork &network, TzVciDeviceStore *store,
                       std::atomic<bool> *foundAny)
    : m_interfaceIp(std::move(interfaceIp))
    , m_network(network)
    , m_store(store)
    , m_foundAny(foundAny)
{
}

ScanWorker::~ScanWorker()
{
    stop();
}

void ScanWorker::start()
{
    if (!m_stopped) {
        Common::logWarning("Scanning device on interface {}", m_interfaceIp);
        return;
    }
    if (!m_client.start(clientConfig(m_interfaceIp))) {
        Common::logWarning("Failed to start UDP client for VCI search on interface {}", m_interfaceIp);
        return;
    }
    if (!broadcastRequest())
        return;
    m_stopped = false;
    if (!m_thread.start("vci-scan-rx", [this] { run(); })) {
        m_stopped = true;
        Common::logError("Failed to start scan thread on interface {}", m_interfaceIp);
    }
}

bool ScanWorker::broadcastRequest()
{
    Common::logInfo("Broadcasting on interface {} to {}", m_interfaceIp, m_network.broadcast);
    if (m_client.broadcast(encodeDiscoveryRequest(), m_network.discoveryPort, m_network.broadcast))
        return true;
    Common::logError("Failed to send broadcast packet on interface {}", m_interfaceIp);
    return false;
}

void ScanWorker::stop()
{
    m_stopped = true;
    m_client.stop();
    m_thread.join();
}

void ScanWorker::run()
{
    while (!m_stopped) {
        Common::UDPClient::DataBufferPtr buffer;
        if (m_client.receive(buffer))
            handleReply({buffer->data.data(), buffer->size}, buffer->address);
        else
            std::this_thread::sleep_for(pollInterval);
    }
}

void ScanWorker::handleReply(std::span<const std::uint8_t> datagram, const std::string &senderIp)
{
    const std::optional<TzVciDiscoveryReply> reply = parseDiscoveryReply(datagram);
    if (!reply)
        return;
    Common::logInfo("Parsed from {}: CAN channels={}, LIN channels={}", senderIp, reply->canChannels,
                    reply->linChannels);
    const int deviceIndex = m_store->indexFromIp(QString::fromStdString(senderIp));
    if (deviceIndex < 0)
        return;
    if (m_store->addDevice(deviceIndex,
                           TzVciDeviceConfig(channelCount(reply->canChannels), channelCount(reply->linChannels))) != 0)
        return;
    m_foundAny->store(true);
    Common::logInfo("Scan to device {}", deviceIndex);
}
