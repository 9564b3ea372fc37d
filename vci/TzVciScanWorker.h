// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "common/UDPClient.h"
#include "common/WorkerThread.h"
#include "vci/TzVciNetwork.h"

#include <atomic>
#include <cstdint>
#include <span>
#include <string>

class TzVciDeviceStore;

/// Discovery on one local interface: broadcasts once and adds every device that answers to the store. Lives for one
/// scan; the owner starts and stops it. The receive thread is "vci-scan-rx".
class ScanWorker
{
public:
    /// @param interfaceIp  address of the local interface
    /// @param foundAny  set when a device was added that the store did not know
    ScanWorker(std::string interfaceIp, const TzVciNetwork &network, TzVciDeviceStore *store,
               std::atomic<bool> *foundAny);
    ~ScanWorker();
    ScanWorker(const ScanWorker &) = delete;
    ScanWorker &operator=(const ScanWorker &) = delete;

    /// Failures are logged; the interface then takes no part in the scan.
    void start();
    /// Ends the thread and the socket; safe to repeat.
    void stop();

    /// Takes one datagram that came from @p senderIp.
    void handleReply(std::span<const std::uint8_t> datagram, const std::string &senderIp);

private:
    bool broadcastRequest();
    void run();

    const std::string m_interfaceIp;
    const TzVciNetwork m_network;
    TzVciDeviceStore *const m_store;
    std::atomic<bool> *const m_foundAny;
    Common::UDPClient m_client;
    std::atomic<bool> m_stopped{true};
    Common::WorkerThread m_thread;
};
