// SPDX-License-Identifier: GPL-3.0-or-later
#include "logging/blf/BlfObjectSearch.h"

#include "logging/blf/BlfObjects.h"

#include <algorithm>
#include <utility>

namespace BLF {

namespace {

constexpr std::size_t longestPadding = 7; // bytes; writers align to 4 or 8, or leave objectSize modulo 4
constexpr std::uint16_t largestHeader = 256;

bool isZero(std::span<const std::byte> bytes) noexcept
{
    // each byte is that in front of it, and the first is 0
    return bytes.empty() ||
           (bytes.front() == std::byte{} && std::memcmp(bytes.data(), bytes.data() + 1, bytes.size() - 1) == 0);
}

// Payloads may hold the signature by chance, so that behind damage an object must look like one of those that exist.
bool isPlausible(const BaseHeader &header) noexcept
{
    return header.headerVersion >= 1 && header.headerVersion <= 3 && header.objectType < 1000;
}

// Their greatest is not half as long as the limit, and a wrong size must not take those behind with it.
bool hasFixedForm(std::uint32_t type) noexcept
{
    switch (type) {
    case ObjectType::canMessage:
    case ObjectType::canErrorFrame:
    case ObjectType::canStatistic:
    case ObjectType::canDriverError:
    case ObjectType::canErrorFrameExt:
    case ObjectType::canMessage2:
    case ObjectType::overrun:
    case ObjectType::canFdMessage:
    case ObjectType::canFdMessage64:
    case ObjectType::canFdErrorFrame64:
    case ObjectType::canSettingChanged: return true;
    default: return false;
    }
}

} // namespace

bool BlfObjectSearch::isObject(const BaseHeader &header, std::uint64_t position, std::uint64_t end) const noexcept
{
    if (!header.hasSignature() || header.headerSize < BaseHeader::size || header.headerSize > largestHeader ||
        header.headerSize > header.objectSize)
        return false;
    if (m_level == Level::file && header.objectType == ObjectType::container)
        return header.objectSize >= containerHeaderSize;
    if (header.objectSize > largestFixedForm && (header.objectSize > largestObject || hasFixedForm(header.objectType)))
        return false;
    return header.objectSize <= end - position;
}

bool BlfObjectSearch::find(BlfWindow &window, std::uint64_t end)
{
    if (!findHere(window, end))
        return false;
    m_large.objectSize = 0;
    if (const BaseHeader header = BaseHeader::at(window.bytes());
        header.objectSize > largestFixedForm && header.objectType != ObjectType::container) {
        m_large = header;
        m_largeEnd = window.position() + header.objectSize;
    }
    return true;
}

bool BlfObjectSearch::findHere(BlfWindow &window, std::uint64_t end)
{
    if (!m_isInGap) {
        if (findNear(window, end))
            return true;
        const std::size_t size = window.bytes().size();
        if (size < longestPadding + BaseHeader::size && window.position() + size != end)
            return false; // padding and header may have been torn apart
        beginGap(window);
    }
    return findBehindGap(window, end);
}

bool BlfObjectSearch::findNear(BlfWindow &window, std::uint64_t end) const noexcept
{
    const std::span<const std::byte> bytes = window.bytes();
    for (std::size_t padding = 0; padding <= longestPadding && padding + BaseHeader::size <= bytes.size(); ++padding) {
        if (isObject(BaseHeader::at(bytes.subspan(padding)), window.position() + padding, end)) {
            window.consume(padding);
            return true;
        }
    }
    return false;
}

// An object that nothing but the end stops is told as such, and also one that may have hidden others: where its size
// is wrong, what follows is mostly no object.
void BlfObjectSearch::beginGap(BlfWindow &window) noexcept
{
    const std::span<const std::byte> bytes = window.bytes();
    const bool isSuspect = m_large.objectSize > 0 && m_largeEnd == window.position();
    std::uint32_t cutObjectSize = 0;
    for (std::size_t padding = 0; padding <= longestPadding && padding + BaseHeader::size <= bytes.size(); ++padding) {
        const BaseHeader header = BaseHeader::at(bytes.subspan(padding));
        if (isObject(header, 0, unknownEnd)) {
            window.consume(padding);
            cutObjectSize = header.objectSize;
            break;
        }
    }
    m_gap = {window.position(), 0, cutObjectSize, isSuspect ? m_large.objectSize : 0, m_large.objectType};
    m_gapHasData = false;
    m_isInGap = true;
}

bool BlfObjectSearch::findBehindGap(BlfWindow &window, std::uint64_t end)
{
    const std::span<const std::byte> bytes = window.bytes();
    const std::string_view text(reinterpret_cast<const char *>(bytes.data()), bytes.size());
    std::size_t hit = text.find(BaseHeader::signature);
    bool isBehindZeros = !m_gapHasData && hit != std::string_view::npos && isZero(bytes.first(hit));
    while (hit != std::string_view::npos && hit + BaseHeader::size <= bytes.size()) {
        const BaseHeader header = BaseHeader::at(bytes.subspan(hit));
        if (isObject(header, window.position() + hit, end) && (isBehindZeros || isPlausible(header))) {
            passOver(window, hit);
            return true;
        }
        isBehindZeros = false;
        hit = text.find(BaseHeader::signature, hit + 1);
    }
    std::size_t kept = 0; // what may be the begin of an object
    if (window.position() + bytes.size() != end)
        kept = hit != std::string_view::npos ? bytes.size() - hit
                                             : std::min(bytes.size(), BaseHeader::signature.size() - 1);
    passOver(window, bytes.size() - kept);
    return false;
}

void BlfObjectSearch::passOver(BlfWindow &window, std::size_t count) noexcept
{
    m_gapHasData = m_gapHasData || !isZero(window.bytes().first(count));
    m_gap.length += count;
    window.consume(count);
}

std::optional<BlfGap> BlfObjectSearch::takeGap() noexcept
{
    if (!std::exchange(m_isInGap, false) || !m_gapHasData)
        return std::nullopt;
    return m_gap;
}

} // namespace BLF
