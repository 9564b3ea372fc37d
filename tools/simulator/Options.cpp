// SPDX-License-Identifier: GPL-3.0-or-later
#include "tools/simulator/Options.h"

#include "tools/simulator/BoxConfig.h"

#include <fmt/format.h>

#include <charconv>
#include <cstdlib>

namespace tzsim {

namespace {

// Takes a number of 0 to 255 from the front of the text.
bool takeOctet(std::string_view &text, int &octet)
{
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), octet);
    if (error != std::errc() || octet < 0 || octet > 255)
        return false;
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    return true;
}

bool takeDot(std::string_view &text)
{
    if (!text.starts_with('.'))
        return false;
    text.remove_prefix(1);
    return true;
}

} // namespace

Options Options::fromEnvironment()
{
    Options options;
    const char *value = std::getenv("TZVCI_NETWORK"); // NOLINT(concurrency-mt-unsafe): nothing here sets variables
    if (value && *value && !options.useLoopback(value))
        options.problem = fmt::format("TZVCI_NETWORK={} is not of the form 127.x.y", value);
    return options;
}

bool Options::useLoopback(std::string_view network)
{
    int first = 0;
    int second = 0;
    int third = 0;
    if (!takeOctet(network, first) || first != 127 || !takeDot(network) || !takeOctet(network, second) ||
        !takeDot(network) || !takeOctet(network, third) || !network.empty())
        return false;
    prefix = fmt::format("127.{}.{}", second, third);
    broadcast = "127.255.255.255";
    problem.clear();
    return true;
}

std::string Options::boxAddress(int index) const
{
    if (index < 0 || index >= maxBoxes)
        return {};
    return fmt::format("{}.{}", prefix, firstHost + index);
}

} // namespace tzsim
