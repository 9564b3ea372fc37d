// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <cstddef>

namespace tzbench_blf {

/// Makes a BLF log as a recorder leaves it: classic frames on four channels, a seventh of all frames CAN FD with 64
/// bytes, and a few events, in deflated containers of 128 KiB. The same for each call.
/// @param fileSize  bytes on the disk, which are passed by less than a container
/// @throws std::runtime_error where the file cannot be written
void writeTraffic(const QString &path, std::size_t fileSize);

} // namespace tzbench_blf
