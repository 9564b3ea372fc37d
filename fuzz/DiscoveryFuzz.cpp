// SPDX-License-Identifier: GPL-3.0-or-later
// Any datagram that may come back on a discovery broadcast, and any sender's address.
#include "fuzz/FuzzSupport.h"
#include "vci/TzVciDeviceStore.h"
#include "vci/TzVciDiscovery.h"

#include <QString>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace {

// The counts must stand in the datagram: a number above 0 comes from a record with the family's key.
void checkReply(const std::vector<std::uint8_t> &datagram)
{
    const auto reply = parseDiscoveryReply(datagram);
    if (!reply)
        return;
    require(datagram.size() >= 10);
    const auto hasRecord = [&](std::uint8_t key, std::uint16_t count) {
        for (std::size_t i = 10; i + 4 <= datagram.size(); i += 4) {
            const int value = datagram[i + 2] | datagram[i + 3] << 8;
            if (datagram[i] == key && datagram[i + 1] == 0 && value == count)
                return true;
        }
        return false;
    };
    require(reply->canChannels == 0 || hasRecord(1, reply->canChannels));
    require(reply->linChannels == 0 || hasRecord(5, reply->linChannels));
}

// Whatever the address says, the index is a device's or none.
void checkAddress(const std::vector<std::uint8_t> &text)
{
    static const TzVciDeviceStore store{TzVciNetwork()};
    const auto check = [](const QString &ip) {
        const int index = store.indexFromIp(ip);
        require(index >= -1 && index < 16);
        require(index == -1 || ip.startsWith(QLatin1String("192.168.201.")));
    };
    const QString tail = QString::fromUtf8(reinterpret_cast<const char *>(text.data()), static_cast<int>(text.size()));
    check(tail);
    check(QLatin1String("192.168.201.") + tail);
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    silenceLog();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    // An exact copy, so that the sanitizer sees one byte too many.
    const std::vector<std::uint8_t> input(data, data + size);
    checkReply(input);
    checkAddress(input);
    return 0;
}
