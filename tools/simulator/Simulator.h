// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tools/simulator/Box.h"
#include "tools/simulator/BoxConfig.h"
#include "tools/simulator/Options.h"

#include <memory>
#include <string>
#include <vector>

namespace tzsim {

/// Up to 16 simulated boxes in one network, with the virtual buses that join their channels.
///
///     tzsim::Simulator simulator;                       // the network of TZVCI_NETWORK
///     tzsim::Box &box = simulator.addBox({.index = 0, .canChannels = 4});
///     std::string error;
///     if (!simulator.start(&error)) ...
///     box.injectCan(0, tzsim::CanFrame::make(0x123, data));
///
/// Threads: addBox(), start() and stop() are for one thread; all else may come from any. A running simulator has one
/// thread for each box and one for discovery, all joined by stop().
class Simulator
{
public:
    explicit Simulator(const Options &options = Options::fromEnvironment());
    ~Simulator(); ///< stops
    Simulator(const Simulator &) = delete;
    Simulator &operator=(const Simulator &) = delete;

    /// Adds a box; to be called before start(), which reports an index or channel count out of range or taken.
    /// The reference stays valid as long as the simulator.
    Box &addBox(const BoxConfig &config = {});
    /// Binds the addresses and starts the threads. False, with nothing left open and a text for the user in @p error,
    /// when an address or port cannot be had. A stopped simulator starts anew: boxes as after power-up, counters at 0.
    bool start(std::string *error = nullptr);
    void stop(); ///< safe to repeat
    bool isRunning() const;

    /// Puts the channels, which must be of one family, and all that they are joined with already, on one bus.
    /// False, changing nothing, when they are not of one family or one does not exist.
    bool join(const std::vector<ChannelRef> &channels);

    Box &box(int index);        ///< which must exist
    Box *findBox(int index);    ///< null when there is none
    std::vector<Box *> boxes(); ///< in the order they were added
    const Options &options() const;
    /// All counters of all boxes as one JSON object.
    std::string statsJson() const;

private:
    struct Private;
    std::unique_ptr<Private> d;
};

} // namespace tzsim
