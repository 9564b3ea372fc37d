// SPDX-License-Identifier: GPL-3.0-or-later
#include "logging/blf/BlfInflater.h"

#define ZLIB_CONST // input is const
#include <zlib.h>

namespace BLF {

BlfInflater::BlfInflater()
    : m_zlib(std::make_unique<z_stream_s>())
    , m_isReady(inflateInit(m_zlib.get()) == Z_OK)
{
}

BlfInflater::~BlfInflater()
{
    if (m_isReady)
        inflateEnd(m_zlib.get());
}

void BlfInflater::restart() noexcept
{
    if (m_isReady)
        inflateReset(m_zlib.get());
}

BlfInflater::Progress BlfInflater::unpack(std::span<const std::byte> input, std::span<std::byte> output) noexcept
{
    if (!m_isReady)
        return {.state = State::damaged};
    m_zlib->next_in = reinterpret_cast<const Bytef *>(input.data());
    m_zlib->avail_in = static_cast<uInt>(input.size());
    m_zlib->next_out = reinterpret_cast<Bytef *>(output.data());
    m_zlib->avail_out = static_cast<uInt>(output.size());
    const int result = inflate(m_zlib.get(), Z_NO_FLUSH);
    Progress progress{input.size() - m_zlib->avail_in, output.size() - m_zlib->avail_out};
    if (result == Z_STREAM_END)
        progress.state = State::ended;
    else if (result != Z_OK && result != Z_BUF_ERROR) // the latter: neither input nor output was left
        progress.state = State::damaged;
    return progress;
}

} // namespace BLF
