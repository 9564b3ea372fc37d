// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "logging/blf/BlfObjects.h"
#include "tests/logging/blf/BlfTestWriter.h"

#include <array>
#include <numeric>

namespace tztest {

/// An object's bytes with what the reader knows about them, kept as long as the result may point into them.
class BlfOnDisk
{
public:
    template <typename Body>
    explicit BlfOnDisk(const Body &body, const BlfHeader &header = {})
        : BlfOnDisk(Body::type, bodyBytes(body), header)
    {
    }
    BlfOnDisk(std::uint32_t type, BlfBytes body, const BlfHeader &header = {})
        : m_headerSize(header.version == 2 ? 40 : 32)
    {
        BlfHeader unpadded = header;
        unpadded.padding = 0;
        m_bytes = blfObject(type, body, unpadded);
    }

    template <typename Object> bool decode(Object &object) const
    {
        return BLF::decode({std::as_bytes(std::span(m_bytes)), m_headerSize}, object);
    }

private:
    BlfBytes m_bytes;
    std::size_t m_headerSize;
};

/// 1, 2, 3 and so on.
inline BlfBytes countingBytes(std::size_t count)
{
    BlfBytes bytes(count);
    std::iota(bytes.begin(), bytes.end(), std::uint8_t{1});
    return bytes;
}

template <std::size_t count> std::array<std::uint8_t, count> countingArray()
{
    std::array<std::uint8_t, count> bytes{};
    std::iota(bytes.begin(), bytes.end(), std::uint8_t{1});
    return bytes;
}

} // namespace tztest
