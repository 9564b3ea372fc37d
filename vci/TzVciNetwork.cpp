// SPDX-License-Identifier: GPL-3.0-or-later
#include "vci/TzVciNetwork.h"

#include "common/Utils.h"
#include "vci/TzVciTypes.h"

#include <fmt/format.h>

#include <charconv>
#include <cstdio>
#include <cstdlib>

namespace {

// Takes one octet and, where one is wanted, the dot behind it from the front of the text.
bool takeOctet(std::string_view &text, unsigned &octet, bool dotBehind)
{
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), octet);
    if (error != std::errc() || octet > 255)
        return false;
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    if (!dotBehind)
        return text.empty();
    if (!text.starts_with('.'))
        return false;
    text.remove_prefix(1);
    return true;
}

} // namespace

const TzVciNetwork &TzVciNetwork::current()
{
    static const TzVciNetwork network = [] {
        TzVciNetwork fixed = fromEnvironment();
        if (fixed.isLoopback())
            Common::Utils::setLoopbackNetwork(fixed.prefix);
        return fixed;
    }();
    return network;
}

TzVciNetwork TzVciNetwork::fromEnvironment()
{
    TzVciNetwork network;
    const char *value = std::getenv("TZVCI_NETWORK"); // NOLINT(concurrency-mt-unsafe): nothing here sets variables
    if (value && *value && !parseLoopback(value, network)) {
        fmt::print(stderr, "TZVCI_NETWORK={} is not of the form 127.x.y\n", value);
        std::_Exit(2);
    }
    return network;
}

bool TzVciNetwork::parseLoopback(std::string_view value, TzVciNetwork &network)
{
    std::string_view rest = value;
    unsigned first = 0;
    unsigned second = 0;
    unsigned third = 0;
    if (!takeOctet(rest, first, true) || !takeOctet(rest, second, true) || !takeOctet(rest, third, false) ||
        first != 127)
        return false;
    network.prefix = fmt::format("127.{}.{}", second, third);
    network.broadcast = "127.255.255.255";
    return true;
}

std::string TzVciNetwork::deviceAddress(int deviceIndex) const
{
    if (deviceIndex < 0 || deviceIndex >= tzVciMaxDevices)
        return {};
    return fmt::format("{}.{}", prefix, firstHost + deviceIndex);
}
