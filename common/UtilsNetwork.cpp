// SPDX-License-Identifier: GPL-3.0-or-later
#include "common/Utils.h"

#include "common/platform/NetworkInterfaces.h"
#include "common/platform/SocketOptions.h"

#include <algorithm>
#include <limits>
#include <mutex>

namespace Common {

namespace {

constexpr int bytesPerKibibyte = 1024;

struct LoopbackNetwork
{
    std::mutex mutex; // protects prefix
    std::string prefix;
};

LoopbackNetwork &loopbackNetwork()
{
    static LoopbackNetwork network;
    return network;
}

} // namespace

int Utils::setReceiveTimeout(int socket, int ms)
{
    return platform::setReceiveTimeout(socket, ms);
}

int Utils::setSocketSendBufferSize(int socket, int size)
{
    if (size <= 0 || size > std::numeric_limits<int>::max() / bytesPerKibibyte)
        return 0;
    return platform::setSendBufferSize(socket, size * bytesPerKibibyte) == 0 ? 1 : 0;
}

int Utils::getSocketReceiveBufferSize(int socket)
{
    return platform::receiveBufferSize(socket);
}

int Utils::getSocketSendBufferSize(int socket)
{
    return platform::sendBufferSize(socket);
}

std::vector<std::string> Utils::getAllLocalIPv4s()
{
    std::string prefix;
    {
        LoopbackNetwork &network = loopbackNetwork();
        const std::lock_guard lock(network.mutex);
        prefix = network.prefix;
    }
    const auto addresses = platform::activeIPv4Addresses();
    if (!prefix.empty()) {
        // The loopback interface answers for every address of its network, listed or not.
        const bool loopbackIsUp =
            std::any_of(addresses.begin(), addresses.end(), [](const auto &address) { return address.isLoopback; });
        return loopbackIsUp ? std::vector<std::string>{prefix + ".1"} : std::vector<std::string>{};
    }
    std::vector<std::string> result;
    for (const auto &address : addresses) {
        if (!address.isLoopback)
            result.push_back(address.ip);
    }
    return result;
}

void Utils::setLoopbackNetwork(const std::string &prefix)
{
    LoopbackNetwork &network = loopbackNetwork();
    const std::lock_guard lock(network.mutex);
    network.prefix = prefix;
}

} // namespace Common
