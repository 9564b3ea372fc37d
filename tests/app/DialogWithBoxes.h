// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tests/support/TempWorkDir.h"
#include "tools/simulator/Simulator.h"
#include "vci/TzVciDeviceManager.h"
#include "vci/TzVciDeviceStore.h"

#include <string>

namespace tztest {

/// What a settings dialog works on: a manager and a store of its own with simulated boxes, and a folder for its files.
struct DialogWithBoxes
{
    /// @param boxes  boxes with the indexes 0 to boxes - 1 and the firmware v1.20.255.<index>, known to the store
    explicit DialogWithBoxes(int boxes = 0)
    {
        for (int index = 0; index < boxes; ++index) {
            tzsim::BoxConfig config;
            config.index = index;
            config.firmwareVersion = {1, 20, 255, static_cast<std::uint8_t>(index)};
            simulator.addBox(config);
            store.addDevice(index, TzVciDeviceConfig(config.canChannels, config.linChannels));
        }
        isReady = boxes == 0 || simulator.start(&error);
    }

    TempWorkDir workDir;
    tzsim::Simulator simulator;
    TzVciDeviceStore store;
    TzVciDeviceManager manager{&store};
    bool isReady = false;
    std::string error; ///< why it is not ready
};

} // namespace tztest
