// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <memory>
#include <span>

struct z_stream_s;

namespace BLF {

/// Unpacks zlib streams piece by piece, one after the other.
class BlfInflater
{
public:
    enum class State
    {
        going,
        ended,
        damaged
    };
    struct Progress
    {
        std::size_t taken = 0; ///< bytes of the input
        std::size_t made = 0;  ///< bytes of the output, which are good in every state
        State state = State::going;
    };

    BlfInflater();
    ~BlfInflater();
    BlfInflater(const BlfInflater &) = delete;
    BlfInflater &operator=(const BlfInflater &) = delete;

    /// The next input begins a stream.
    void restart() noexcept;
    /// Goes on until the input is used up or the output full, or the stream ends. Neither may exceed 1 GiB.
    Progress unpack(std::span<const std::byte> input, std::span<std::byte> output) noexcept;

private:
    std::unique_ptr<z_stream_s> m_zlib;
    bool m_isReady = false; // false where there was no memory for it
};

} // namespace BLF
