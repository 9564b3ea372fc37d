// SPDX-License-Identifier: GPL-3.0-or-later
#include "logging/blf/BlfContainers.h"

#include "logging/blf/BlfObjects.h"

#include <algorithm>
#include <array>
#include <utility>

namespace BLF {

namespace {

constexpr std::size_t smallestFile = 72; // the fields of its header that somebody needs
constexpr std::uint32_t usualFileHeader = 144;
constexpr std::uint32_t fileSignature = 0x47474F4C; // "LOGG"
constexpr std::uint64_t pieceSize = 256 * 1024;     // twice of what recorders put into a container

// A zlib stream begins with the number of its method, the size of its window and a check of the first two bytes.
// Recorders set no dictionary.
bool beginsZlib(std::span<const std::byte> bytes) noexcept
{
    if (bytes.size() < 2)
        return false;
    constexpr unsigned dictionary = 0x20;
    const auto first = std::to_integer<unsigned>(bytes[0]);
    const auto second = std::to_integer<unsigned>(bytes[1]);
    return (first & 0x0F) == 8 && first >> 4 <= 7 && (second & dictionary) == 0 && (first * 256 + second) % 31 == 0;
}

} // namespace

BlfContainers::BlfContainers(BlfDamageLog &damage, std::function<void()> pulse)
    : m_damage(damage)
    , m_pulse(std::move(pulse))
{
}

bool BlfContainers::open(const QString &path)
{
    if (!m_file.open(path) || !m_file.ensure(smallestFile) ||
        numberAt<std::uint32_t>(m_file.bytes(), 0) != fileSignature)
        return false;
    auto headerSize = numberAt<std::uint32_t>(m_file.bytes(), 4);
    if (headerSize < smallestFile || headerSize > m_file.size())
        headerSize = usualFileHeader;
    if (headerSize > m_file.size())
        return false;
    m_file.skip(headerSize);
    return true;
}

BlfContainers::Next BlfContainers::next(BlfWindow &stream)
{
    m_file.skip(std::exchange(m_objectSize, 0));
    while (true) {
        m_pulse(); // many containers may hold nothing, and a long one may not unpack to anything
        if (m_state == State::stored && copyStored(stream))
            return Next::bytes;
        if (m_state == State::packed && unpack(stream))
            return Next::bytes;
        if (m_state != State::between)
            continue;
        if (std::exchange(m_hasLost, false))
            return Next::loss;
        if (!findObject())
            return Next::end;
        if (std::exchange(m_hasLost, false)) // by a gap in front of what was found
            return Next::loss;
        const BaseHeader header = BaseHeader::at(m_file.bytes());
        if (header.objectType == ObjectType::container) {
            beginContainer(header);
        } else if (m_file.ensure(header.objectSize)) {
            m_objectSize = header.objectSize;
            return Next::object;
        }
    }
}

bool BlfContainers::findObject()
{
    while (!m_search.find(m_file.window(), m_file.size())) {
        if (m_file.left() == 0) {
            tellGap();
            if (m_file.hasFailed())
                m_damage.tell("cannot be read beyond byte {}: {}", m_file.size(), m_file.errorText().toStdString());
            return false;
        }
        m_file.readOn(); // where that fails, the end is here
        m_pulse();
    }
    tellGap();
    return true;
}

// What was passed over may have been a container, so that the stream does not go on where it stopped.
void BlfContainers::tellGap()
{
    const std::optional<BlfGap> gap = m_search.takeGap();
    if (!gap)
        return;
    m_hasLost = true;
    m_damage.tellGap(*gap, {});
}

void BlfContainers::beginContainer(const BaseHeader &header)
{
    m_containerPosition = m_file.position();
    const std::uint64_t there = std::min<std::uint64_t>(header.objectSize, m_file.left());
    m_isCut = there < header.objectSize;
    if (m_isCut)
        m_damage.tell("the container at byte {} is cut: {} of {} bytes are there", m_containerPosition, there,
                      header.objectSize);
    if (!m_file.ensure(BlfObjectSearch::containerHeaderSize)) {
        m_file.skip(m_file.left());
        m_hasLost = true;
        return;
    }
    const auto method = numberAt<std::uint16_t>(m_file.bytes(), 16);
    const auto stated = numberAt<std::uint32_t>(m_file.bytes(), 24);
    m_file.skip(BlfObjectSearch::containerHeaderSize);
    m_payloadLeft = there - BlfObjectSearch::containerHeaderSize;
    m_mayBeStored = false;
    switch (packing(header, method)) {
    case Packing::stored:
        m_state = State::stored;
        m_contentLimit = stated;
        break;
    case Packing::storedToTheEnd:
        m_state = State::stored;
        m_contentLimit = m_payloadLeft;
        break;
    case Packing::packed:
        m_state = State::packed;
        m_contentLimit = std::min<std::uint64_t>(stated, largestContent);
        break;
    case Packing::packedUnstated:
        m_state = State::packed;
        m_contentLimit = largestContent;
        m_mayBeStored = true;
        break;
    case Packing::unknown:
        m_damage.tell("the container at byte {} is packed by the unknown method {}", m_containerPosition, method);
        m_hasLost = true;
        endContainer();
        return;
    }
    m_contentLeft = m_contentLimit;
    m_inflater.restart();
}

// Some writers fill the fields behind the base header with others, and state neither method nor size.
BlfContainers::Packing BlfContainers::packing(const BaseHeader &header, std::uint16_t method)
{
    constexpr std::uint16_t storedMethod = 0;
    constexpr std::uint16_t zlibMethod = 2;
    constexpr std::uint64_t enoughToTell = 4096; // where the first bytes look packed, whether they are
    m_file.ensure(static_cast<std::size_t>(std::min(m_payloadLeft, enoughToTell)));
    const auto payload = m_file.bytes().first(std::min<std::uint64_t>(m_payloadLeft, m_file.bytes().size()));
    if (header.headerSize > BaseHeader::size)
        return beginsZlib(payload) ? Packing::packedUnstated : Packing::storedToTheEnd;
    if (method == storedMethod)
        return Packing::stored;
    if (numberAt<std::uint32_t>(payload, 0) == BaseHeader::signatureNumber)
        return Packing::storedToTheEnd; // whatever the header says
    return method == zlibMethod ? Packing::packed : Packing::unknown;
}

// Where a cut container came to its end all the same, its size was wrong, and what follows may be whole.
void BlfContainers::endContainer()
{
    if (!m_isCut)
        m_file.skip(std::min(m_payloadLeft, m_file.left()));
    m_payloadLeft = 0;
    m_state = State::between;
}

// Reads on where nothing of the payload is in memory.
bool BlfContainers::hasPayload()
{
    return m_payloadLeft > 0 && (!m_file.bytes().empty() || m_file.readOn());
}

bool BlfContainers::copyStored(BlfWindow &stream)
{
    if (m_contentLeft > 0 && hasPayload()) {
        const std::size_t count =
            std::min<std::uint64_t>({m_file.bytes().size(), m_payloadLeft, m_contentLeft, pieceSize});
        std::ranges::copy(m_file.bytes().first(count), stream.room(count).begin());
        stream.append(count);
        m_file.skip(count);
        m_payloadLeft -= count;
        m_contentLeft -= count;
        return true;
    }
    if (m_contentLeft > 0) {
        // that some payload is left means that the file cannot be read, which is told at its end
        m_hasLost = m_hasLost || m_payloadLeft > 0 || m_isCut;
    } else if (m_payloadLeft > 0 && !m_isCut) {
        m_damage.tell("the container at byte {} holds {} bytes more than it states", m_containerPosition,
                      m_payloadLeft);
        m_hasLost = true;
    }
    endContainer();
    return false;
}

// Appends a piece as it comes; what stands behind the stated size is not unpacked.
bool BlfContainers::unpack(BlfWindow &stream)
{
    if (m_contentLeft == 0) {
        checkPackedEnd();
        return false;
    }
    const bool hasInput = hasPayload();
    const std::size_t inputSize = hasInput ? std::min<std::uint64_t>(m_file.bytes().size(), m_payloadLeft) : 0;
    const BlfInflater::Progress progress =
        m_inflater.unpack(m_file.bytes().first(inputSize), stream.room(std::min(m_contentLeft, pieceSize)));
    if (std::exchange(m_mayBeStored, false) && progress.state == BlfInflater::State::damaged && progress.made == 0) {
        m_state = State::stored; // it began like a packed one by chance
        m_contentLeft = m_contentLimit = m_payloadLeft;
        return false;
    }
    stream.append(progress.made);
    m_file.skip(progress.taken);
    m_payloadLeft -= progress.taken;
    m_contentLeft -= progress.made;
    if (progress.state != BlfInflater::State::going || (!hasInput && progress.made == 0))
        endPacked(progress);
    return progress.made > 0;
}

// All that was stated has come. What is left is the stream's own end with its checksum.
void BlfContainers::checkPackedEnd()
{
    std::array<std::byte, 1> excess;
    while (true) {
        m_pulse();
        const bool hasInput = hasPayload();
        const std::size_t inputSize = hasInput ? std::min<std::uint64_t>(m_file.bytes().size(), m_payloadLeft) : 0;
        const BlfInflater::Progress progress = m_inflater.unpack(m_file.bytes().first(inputSize), excess);
        m_file.skip(progress.taken);
        m_payloadLeft -= progress.taken;
        if (progress.made > 0) {
            m_damage.tell("the container at byte {} unpacks to more than {} bytes", m_containerPosition,
                          m_contentLimit);
            m_hasLost = true;
            endContainer();
            return;
        }
        if (progress.state != BlfInflater::State::going || !hasInput) {
            endPacked(progress);
            return;
        }
    }
}

// Where some payload is left of a stream that would go on, the file cannot be read, which is told at its end.
void BlfContainers::endPacked(const BlfInflater::Progress &progress)
{
    const std::uint64_t content = m_contentLimit - m_contentLeft;
    if (progress.state == BlfInflater::State::damaged)
        m_damage.tell("the container at byte {} is damaged: {} bytes could be unpacked", m_containerPosition, content);
    else if (progress.state == BlfInflater::State::going && !m_isCut && m_payloadLeft == 0)
        m_damage.tell("the container at byte {} ends too early: {} bytes could be unpacked", m_containerPosition,
                      content);
    m_hasLost = m_hasLost || (progress.state != BlfInflater::State::ended && m_contentLeft > 0);
    endContainer();
}

} // namespace BLF
