// SPDX-License-Identifier: GPL-3.0-or-later
#include "logging/blf/BlfStream.h"

#include <utility>

namespace BLF {

namespace {

constexpr std::size_t flagsOffset = 16;
constexpr std::size_t timeOffset = 24;

// Times of either unit, the same place in headers of every version.
std::uint64_t timeOf(std::span<const std::byte> object) noexcept
{
    constexpr std::uint32_t unitMask = 3;
    constexpr std::uint32_t tenMicroseconds = 1;
    constexpr std::uint64_t nsOfTenMicroseconds = 10'000;
    const auto time = numberAt<std::uint64_t>(object, timeOffset);
    const auto flags = numberAt<std::uint32_t>(object, flagsOffset);
    return (flags & unitMask) == tenMicroseconds ? time * nsOfTenMicroseconds : time;
}

} // namespace

BlfStream::BlfStream(const QString &path, std::function<void()> pulse)
    : m_path(path)
    , m_containers(m_damage, std::move(pulse))
{
}

bool BlfStream::peek(ObjectHeader &header)
{
    release();
    while (!m_object.empty() || findObject()) {
        const BaseHeader base = BaseHeader::at(m_object);
        if (base.headerSize >= BaseHeader::sizeWithTime && base.objectType != ObjectType::container) {
            header = {base.objectType, base.objectSize, base.headerSize, timeOf(m_object)};
            return true;
        }
        pass();
    }
    return false;
}

ObjectBytes BlfStream::take() noexcept
{
    if (m_object.empty())
        return {};
    m_isTaken = true;
    return {m_object, BaseHeader::at(m_object).headerSize};
}

void BlfStream::pass() noexcept
{
    if (m_isInWindow)
        m_window.consume(m_object.size());
    m_object = {};
    m_isInWindow = false;
    m_isTaken = false;
}

void BlfStream::release() noexcept
{
    if (m_isTaken)
        pass();
}

void BlfStream::tellRefused()
{
    if (m_object.empty())
        return;
    const BaseHeader header = BaseHeader::at(m_object);
    m_damage.tell("refused the object of type {} with {} bytes at byte {} of the {}", header.objectType,
                  header.objectSize, m_isInWindow ? m_window.position() : m_containers.objectPosition(),
                  m_isInWindow ? "unpacked data" : "file");
}

bool BlfStream::findObject()
{
    while (true) {
        const std::size_t size = m_window.bytes().size();
        const std::uint64_t end = m_isLastPart ? m_window.position() + size : BlfObjectSearch::unknownEnd;
        if (m_search.find(m_window, end)) {
            tellGap();
            const std::uint32_t wanted = BaseHeader::at(m_window.bytes()).objectSize;
            if (wanted <= m_window.bytes().size()) {
                m_object = m_window.bytes().first(wanted);
                m_isInWindow = true;
                return true;
            }
        } else if (m_isLastPart) {
            tellGap();
            if (m_hasEnded)
                return false;
            m_isLastPart = false;
            m_isLossTold = true;
        }
        if (fetch())
            return true;
    }
}

// Brings more into the window. True for an object that is not part of it.
bool BlfStream::fetch()
{
    switch (m_containers.next(m_window)) {
    case BlfContainers::Next::bytes: break;
    case BlfContainers::Next::object: m_object = m_containers.object(); return true;
    case BlfContainers::Next::loss:
        m_isLastPart = true;
        m_isLossTold = true;
        break;
    case BlfContainers::Next::end:
        m_isLastPart = true;
        m_hasEnded = true;
        break;
    }
    return false;
}

void BlfStream::tellGap()
{
    const std::optional<BlfGap> gap = m_search.takeGap();
    if (!std::exchange(m_isLossTold, false) && gap)
        m_damage.tellGap(*gap, " of the unpacked data");
}

} // namespace BLF
