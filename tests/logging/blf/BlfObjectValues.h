// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "logging/blf/BlfObjects.h"

#include <QByteArray>

#include <cstdint>
#include <numeric>

/// Values for the objects that records are made of.
namespace tztest {

inline BLF::ObjectHeader header(std::uint32_t type, std::uint64_t timeNs = 0)
{
    return {.type = type, .objectSize = 0, .headerSize = 32, .timeNs = timeNs};
}

// Bytes 1, 2, 3 ... as far as they are stored, zeroes behind.
template <typename Object> void fill(Object &object, std::uint8_t stored)
{
    std::iota(object.data.begin(), object.data.begin() + stored, std::uint8_t{1});
    object.storedBytes = stored;
}

inline QByteArray counting(int length)
{
    QByteArray bytes(length, '\0');
    std::iota(bytes.begin(), bytes.end(), char{1});
    return bytes;
}

inline QByteArray zeroFilled(int counted, int length)
{
    return counting(counted) + QByteArray(length - counted, '\0');
}

} // namespace tztest
