// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

namespace tzsoak {

/// What the files of one recording hold together.
struct RecordedFrames
{
    std::uint64_t frames = 0;
    int files = 0;
    std::uint64_t bytes = 0;
    std::string problem; ///< a file that is not whole or not in order; empty when all are
};

/// Counts the records of an ASC or CSV recording at @p path and of the parts that a rotation has kept under numbers
/// beside it, and removes the files. Any thread.
RecordedFrames takeRecording(const std::filesystem::path &path);

} // namespace tzsoak
