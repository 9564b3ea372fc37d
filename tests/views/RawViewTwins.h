// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tests/views/ViewFrames.h"
#include "views/TzCanViewModel.h"
#include "views/TzLinViewModel.h"

#include <memory>
#include <ostream>

namespace tztest {

/// The two raw views share everything but their frames: tests of what is shared run over both.
struct RawViewTwin
{
    const char *name;
    std::unique_ptr<TzRawViewModel> (*makeModel)(TzVciDeviceManager *);
    TzVciMessage (*received)(std::uint8_t id);
    TzVciMessage (*transmitted)(std::uint8_t id);
    const char *overflowText;
};

inline std::ostream &operator<<(std::ostream &stream, const RawViewTwin &twin)
{
    return stream << twin.name;
}

inline const RawViewTwin rawViewTwins[] = {
    {"Can",
     [](TzVciDeviceManager *manager) -> std::unique_ptr<TzRawViewModel> {
         return std::make_unique<TzCanViewModel>(manager);
     },
     [](std::uint8_t id) { return canMessage(id); },
     [](std::uint8_t id) { return canMessage(id, TzVciCanFrameType::transmitted); }, "CAN view buffer is full"},
    {"Lin",
     [](TzVciDeviceManager *manager) -> std::unique_ptr<TzRawViewModel> {
         return std::make_unique<TzLinViewModel>(manager);
     },
     [](std::uint8_t id) { return linMessage(id); },
     [](std::uint8_t id) { return linMessage(id, TzVciLinDirection::masterWrite); }, "LIN view buffer is full"},
};

} // namespace tztest
