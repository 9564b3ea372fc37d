// SPDX-License-Identifier: GPL-3.0-or-later
#include "common/platform/NetworkInterfaces.h"

#include <array>
#include <cstring>
#include <memory>
#include <string_view>

#include <arpa/inet.h>
#include <ifaddrs.h>
#include <net/if.h>
#include <netinet/in.h>

namespace Common::platform {

namespace {

// An address may have a label of its own, "eth0:1" on eth0, and the system tells that in the place of the name.
std::string interfaceOfLabel(std::string_view label)
{
    return std::string(label.substr(0, label.find(':')));
}

} // namespace

std::vector<InterfaceAddress> activeIPv4Addresses()
{
    ifaddrs *list = nullptr;
    if (::getifaddrs(&list) != 0)
        return {};
    const std::unique_ptr<ifaddrs, decltype(&::freeifaddrs)> guard(list, &::freeifaddrs);
    constexpr unsigned active = IFF_UP | IFF_RUNNING;
    std::vector<InterfaceAddress> addresses;
    for (const ifaddrs *entry = list; entry; entry = entry->ifa_next) {
        if (!entry->ifa_addr || entry->ifa_addr->sa_family != AF_INET || (entry->ifa_flags & active) != active)
            continue;
        sockaddr_in address{};
        std::memcpy(&address, entry->ifa_addr, sizeof address);
        std::array<char, INET_ADDRSTRLEN> text{};
        if (::inet_ntop(AF_INET, &address.sin_addr, text.data(), text.size()))
            addresses.push_back(
                {interfaceOfLabel(entry->ifa_name), text.data(), (entry->ifa_flags & IFF_LOOPBACK) != 0});
    }
    return addresses;
}

} // namespace Common::platform
