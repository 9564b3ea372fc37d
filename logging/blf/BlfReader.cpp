// SPDX-License-Identifier: GPL-3.0-or-later
#include "logging/blf/BlfReader.h"

#include "logging/blf/BlfStream.h"

#include <utility>

namespace BLF {

BlfReader::BlfReader() = default;
BlfReader::~BlfReader() = default;

void BlfReader::setPulse(std::function<void()> pulse)
{
    m_pulse = std::move(pulse);
}

bool BlfReader::open(const QString &path)
{
    close();
    auto stream = std::make_unique<BlfStream>(path, [this] {
        if (m_pulse)
            m_pulse();
    });
    if (!stream->open())
        return false;
    m_stream = std::move(stream);
    return true;
}

bool BlfReader::peek(ObjectHeader &header)
{
    return m_stream && m_stream->peek(header);
}

void BlfReader::release() noexcept
{
    if (m_stream)
        m_stream->release();
}

void BlfReader::skip()
{
    if (m_stream)
        m_stream->pass();
}

bool BlfReader::isDamaged() const noexcept
{
    return m_stream && m_stream->isDamaged();
}

void BlfReader::close()
{
    m_stream.reset();
}

ObjectBytes BlfReader::take()
{
    return m_stream ? m_stream->take() : ObjectBytes{};
}

bool BlfReader::refused()
{
    if (m_stream)
        m_stream->tellRefused();
    return false;
}

} // namespace BLF
