// SPDX-License-Identifier: GPL-3.0-or-later
#include "vci/TzVciDevice.h"

#include "common/Log.h"
#include "common/PeriodSender.h"
#include "vci/TzVciByteOrder.h"
#include "vci/TzVciDeviceBusLoad.h"
#include "vci/TzVciDeviceStore.h"
#include "vci/TzVciProtocol.h"
#include "vci/TzVciTypes.h"

#include <utility>

namespace {

constexpr std::uint16_t minimumBusLoadBytes = 12;
constexpr std::uint16_t baseTimeBytes = 8;
constexpr std::uint16_t firmwareVersionBytes = 4;

bool isBusLoadReport(const TzVciProtocolData &record)
{
    return record.command == TzVciCommand::busLoad && record.protocol == TzVciProtocolId::can &&
           record.length >= minimumBusLoadBytes;
}

} // namespace

TzVciDevice::TzVciDevice(TzVciDeviceStore *store, const TzVciNetwork &network, int deviceIndex, int canChannels,
                         int /*linChannels: the box reports the load of CAN alone*/)
    : m_store(store)
    , m_network(network)
    , m_ownIndex(deviceIndex)
    , m_deviceIndex(deviceIndex)
    , m_statusSubscribers(deviceIndex, {"status changed", "status subscribers"})
    , m_canSubscribers(deviceIndex, {"CAN data", "CAN subscribers"})
    , m_linSubscribers(deviceIndex, {"LIN data", "LIN subscribers"})
    , m_traffic(deviceIndex)
    , m_busLoad(new TzVciDeviceBusLoad(canChannels, this))
    , m_link(deviceIndex, this)
    , m_exchange(deviceIndex, [this](const QByteArray &datagram) { m_link.send(datagram); })
    , m_periodSender(std::make_unique<Common::PeriodSender>())
    , m_channels({*store, m_link, m_exchange, *m_periodSender, [this](std::uint8_t cmd) { notifyStatus(cmd); }})
{
    connect(this, &TzVciDevice::linkLost, this, &TzVciDevice::closeAfterLinkLoss, Qt::QueuedConnection);
    m_link.setDisconnectCallback([this] { handleLinkLoss(); });
    m_link.setDataCallback([this](const std::vector<TzVciProtocolData> &records) { handleRecords(records); });
    m_periodSender->setSendCallback(
        [this](const std::vector<char> &datagram, int frameCount) { return m_link.send(datagram, frameCount); });
    m_periodSender->enableCpuAffinity(true);
}

TzVciDevice::~TzVciDevice()
{
    m_periodSender.reset();
    m_link.disconnect();
    notifyStatus(VciStatus::deviceDestroyed);
}

TzVciCommunication::ConnectConfig TzVciDevice::connectConfig(int deviceIndex) const
{
    TzVciCommunication::ConnectConfig config;
    config.autoReconnect = false;
    config.serverIp = m_network.deviceAddress(deviceIndex);
    config.serverPort = m_network.devicePort;
    config.localIp = m_store->localIP(deviceIndex).toStdString();
    return config;
}

int TzVciDevice::open()
{
    std::shared_ptr<TzVciDevice> alive; // let go after the mutex
    const std::lock_guard lock(m_deviceMutex);
    const int index = m_deviceIndex;
    if (index == -1)
        return TzVciResult::deviceClosed;
    if (!m_link.connect(connectConfig(index)))
        return TzVciResult::openFailed;
    TzVciProtocolData version;
    if (request(makeReadFirmwareVersion(), version, tzVciRequestTimeoutMs) != TzVciResult::ok) {
        m_link.disconnect();
        alive = takeAliveUntilClosed();
        Common::logError("Open Device{} failed, Unable to read version information", index);
        return TzVciResult::openFailed;
    }
    m_isOpen = true;
    m_store->setDeviceOpen(index, true);
    notifyStatus(VciStatus::deviceOpened);
    Common::logInfo("Opened Device {}", index);
    return TzVciResult::ok;
}

int TzVciDevice::close()
{
    std::shared_ptr<TzVciDevice> alive; // let go after the mutex
    const std::lock_guard lock(m_deviceMutex);
    const int index = m_deviceIndex;
    if (index == -1)
        return TzVciResult::deviceClosed;
    m_periodSender->clear();
    const int canResult = m_channels.close(index, TzVciProtocolId::can, -1);
    const int linResult = m_channels.close(index, TzVciProtocolId::lin, -1);
    m_link.disconnect();
    alive = takeAliveUntilClosed(); // the queued call may never run, where the event loop has ended
    m_isOpen = false;
    m_store->setDeviceOpen(index, false);
    notifyStatus(VciStatus::deviceClosed);
    Common::logInfo("Closed Device {}", index);
    m_deviceIndex = -1;
    return canResult | linResult;
}

int TzVciDevice::openChannel(std::uint8_t protocol, int channelIndex)
{
    const std::lock_guard lock(m_deviceMutex); // no channel opens between the steps of close()
    return m_channels.open(m_deviceIndex, protocol, channelIndex);
}

int TzVciDevice::closeChannel(std::uint8_t protocol, int channelIndex)
{
    const std::lock_guard lock(m_deviceMutex);
    return m_channels.close(m_deviceIndex, protocol, channelIndex);
}

std::uint64_t TzVciDevice::readBaseTime()
{
    TzVciProtocolData response;
    if (request(makeReadBaseTime(), response, tzVciRequestTimeoutMs) != TzVciResult::ok ||
        response.length != baseTimeBytes)
        return 0;
    const auto baseTime = TzVciByteOrder::load<std::uint64_t>(response.payload.data());
    Common::logInfo("Device base time {}(0.1 microsecond)", baseTime);
    return baseTime;
}

std::uint32_t TzVciDevice::readFirmwareVersion()
{
    TzVciProtocolData response;
    if (request(makeReadFirmwareVersion(), response, tzVciRequestTimeoutMs) != TzVciResult::ok ||
        response.length != firmwareVersionBytes)
        return 0;
    const auto &part = response.payload;
    Common::logInfo("Device Firmware version: v{}.{}.{}.{}", part[0], part[1], part[2], part[3]);
    return std::uint32_t{part[0]} << 24 | std::uint32_t{part[1]} << 16 | std::uint32_t{part[2]} << 8 | part[3];
}

int TzVciDevice::request(const TzVciProtocolData &request, TzVciProtocolData &response, int timeoutMs)
{
    return m_exchange.request(request, response, timeoutMs);
}

int TzVciDevice::send(const std::vector<char> &bytes)
{
    return m_link.send(bytes, 1);
}

void TzVciDevice::subscribeCan(std::uint64_t key, MessageCallback callback)
{
    m_canSubscribers.add(key, std::move(callback));
}

void TzVciDevice::subscribeLin(std::uint64_t key, MessageCallback callback)
{
    m_linSubscribers.add(key, std::move(callback));
}

void TzVciDevice::subscribeStatus(std::uint64_t key, StatusCallback callback)
{
    m_statusSubscribers.add(key, std::move(callback));
}

void TzVciDevice::unsubscribeCan(std::uint64_t key)
{
    m_canSubscribers.remove(key);
}

void TzVciDevice::handleRecords(const std::vector<TzVciProtocolData> &records)
{
    for (const TzVciProtocolData &record : records) {
        if (TzVciTrafficDecoder::isTraffic(record))
            m_traffic.decode(record);
        else if (isBusLoadReport(record))
            m_busLoad->storeReport(record);
        else
            m_exchange.handleRecord(record);
    }
    if (!m_traffic.canMessages().empty())
        m_canSubscribers.notify(m_traffic.canMessages());
    if (!m_traffic.linMessages().empty())
        m_linSubscribers.notify(m_traffic.linMessages());
    m_traffic.clear();
}

// close() joins the receive thread, so it cannot run here. The queued call keeps the device alive until it has run;
// this thread keeps nothing, since the last one to let go destroys the device and would have to join itself.
void TzVciDevice::handleLinkLoss()
{
    {
        const std::lock_guard lock(m_linkLossMutex);
        m_aliveUntilClosed = weak_from_this().lock();
        if (!m_aliveUntilClosed)
            return; // it is being destroyed
    }
    Q_EMIT linkLost(QPrivateSignal());
}

// A device that never opened has nothing to close, and its index may belong to a new object by now.
void TzVciDevice::closeAfterLinkLoss()
{
    const auto alive = takeAliveUntilClosed(); // may be the last one to hold the device: it ends with this call
    if (m_isOpen)
        close();
}

std::shared_ptr<TzVciDevice> TzVciDevice::takeAliveUntilClosed()
{
    const std::lock_guard lock(m_linkLossMutex);
    return std::exchange(m_aliveUntilClosed, nullptr);
}

void TzVciDevice::notifyStatus(std::uint8_t cmd)
{
    m_statusSubscribers.notify(m_ownIndex, cmd);
}
