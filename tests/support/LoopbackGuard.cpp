// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/support/LoopbackGuard.h"

#include "vci/TzVciNetwork.h"

#include <fmt/format.h>

#include <cstdlib>
#include <unistd.h>

namespace tztest {

void requireLoopbackNetwork()
{
    const auto pid = static_cast<unsigned>(::getpid());
    // 127.0.y is left out: services of the machine itself may sit there.
    const std::string network = fmt::format("127.{}.{}", 1 + (pid / 250) % 250, 1 + pid % 250);
    ::setenv("TZVCI_NETWORK", network.c_str(), 1); // NOLINT(concurrency-mt-unsafe): before any thread exists
    if (!TzVciNetwork::current().isLoopback()) {
        fmt::print(stderr, "The VCI network {} is not loopback; tests never send to a real interface.\n",
                   TzVciNetwork::current().prefix);
        std::_Exit(3);
    }
}

} // namespace tztest
