// SPDX-License-Identifier: GPL-3.0-or-later
#include "logging/blf/BlfObjects.h"

#include "logging/blf/BlfBytes.h"

#include <algorithm>

namespace BLF {

namespace {

using Bytes = std::span<const std::byte>;

constexpr std::size_t typeOffset = 12; // in the header

Bytes bodyOf(const ObjectBytes &bytes) noexcept
{
    return bytes.headerSize <= bytes.object.size() ? bytes.object.subspan(bytes.headerSize) : Bytes{};
}

std::uint8_t u8(Bytes body, std::size_t offset) noexcept
{
    return numberAt<std::uint8_t>(body, offset);
}

std::uint16_t u16(Bytes body, std::size_t offset) noexcept
{
    return numberAt<std::uint16_t>(body, offset);
}

std::uint32_t u32(Bytes body, std::size_t offset) noexcept
{
    return numberAt<std::uint32_t>(body, offset);
}

// Copies what is there into @p out and fills up with zeros. Returns the number of bytes copied.
template <std::size_t capacity> std::uint8_t copyData(Bytes stored, std::array<std::uint8_t, capacity> &out) noexcept
{
    static_assert(capacity <= 64);
    const std::size_t count = std::min(stored.size(), capacity);
    const auto source = reinterpret_cast<const std::uint8_t *>(stored.data());
    std::fill(std::copy_n(source, count, out.begin()), out.end(), std::uint8_t{0});
    return static_cast<std::uint8_t>(count);
}

// What the two kinds of CAN FD objects with an extension have in common.
struct FdForm
{
    std::size_t fixedSize;
    std::size_t extensionOffset; // in the body: where the object says in which of its bytes the extension begins
    std::size_t filler;          // bytes that may follow the extension
};
constexpr FdForm fdMessageForm{40, 35, 0};
constexpr FdForm fdErrorFrameForm{44, 10, 4};

// The data behind the fixed fields, up to the extension. Where the object has the room for all valid data, an offset
// inside them is left over from something else, unless just an extension has room behind it: then zeros at the end of
// the data have been left out.
Bytes fdData(const ObjectBytes &bytes, const FdForm &form, std::uint8_t valid) noexcept
{
    constexpr std::size_t extensionSize = 8; // two words of bit timing
    constexpr std::size_t maxData = 64;
    const std::size_t begin = bytes.headerSize + form.fixedSize;
    const std::size_t validEnd = begin + std::min<std::size_t>(valid, maxData);
    const std::size_t size = bytes.object.size();
    const std::size_t extension = u8(bodyOf(bytes), form.extensionOffset);
    const std::size_t extensionEnd = extension + extensionSize;
    const bool isBehindData = validEnd <= extension || validEnd > size;
    const bool isLast = extensionEnd == size || extensionEnd + form.filler == size;
    const bool hasExtension = begin <= extension && extensionEnd <= size && (isBehindData || isLast);
    return bytes.object.subspan(begin, (hasExtension ? extension : size) - begin);
}

} // namespace

bool decode(const ObjectBytes &bytes, CanMessage &out) noexcept
{
    constexpr std::size_t fixedSize = 16;
    constexpr std::size_t sizeWithLength = 24;
    const Bytes body = bodyOf(bytes);
    if (body.size() < fixedSize)
        return false;
    out.channel = u16(body, 0);
    out.flags = u8(body, 2);
    out.dlc = u8(body, 3);
    out.id = u32(body, 4);
    copyData(body.subspan(8, 8), out.data);
    const bool hasLength = body.size() >= sizeWithLength && u32(bytes.object, typeOffset) == ObjectType::canMessage2;
    out.frameLength = hasLength ? u32(body, 16) : 0;
    out.bitCount = hasLength ? u8(body, 20) : std::uint8_t{0};
    return true;
}

bool decode(const ObjectBytes &bytes, CanErrorFrame &out) noexcept
{
    const Bytes body = bodyOf(bytes);
    if (body.size() < 4)
        return false;
    out.channel = u16(body, 0);
    return true;
}

bool decode(const ObjectBytes &bytes, CanStatistic &out) noexcept
{
    const Bytes body = bodyOf(bytes);
    if (body.size() < 28)
        return false;
    out.channel = u16(body, 0);
    out.busLoad = u16(body, 2);
    out.standardDataFrames = u32(body, 4);
    out.extendedDataFrames = u32(body, 8);
    out.standardRemoteFrames = u32(body, 12);
    out.extendedRemoteFrames = u32(body, 16);
    out.errorFrames = u32(body, 20);
    out.overloadFrames = u32(body, 24);
    return true;
}

bool decode(const ObjectBytes &bytes, CanDriverError &out) noexcept
{
    const Bytes body = bodyOf(bytes);
    if (body.size() < 8)
        return false;
    out.channel = u16(body, 0);
    out.txErrors = u8(body, 2);
    out.rxErrors = u8(body, 3);
    out.errorCode = u32(body, 4);
    return true;
}

bool decode(const ObjectBytes &bytes, SystemVariable &out) noexcept
{
    constexpr std::size_t fixedSize = 32;
    const Bytes body = bodyOf(bytes);
    if (body.size() < fixedSize)
        return false;
    const std::uint64_t nameLength = u32(body, 16);
    const std::uint64_t valueLength = u32(body, 20);
    if (nameLength + valueLength > body.size() - fixedSize)
        return false;
    out.type = u32(body, 0);
    out.name = {reinterpret_cast<const char *>(body.data()) + fixedSize, nameLength};
    out.value = body.subspan(fixedSize + nameLength, valueLength);
    return true;
}

bool decode(const ObjectBytes &bytes, CanErrorFrameExt &out) noexcept
{
    constexpr std::size_t fixedSize = 24;
    const Bytes body = bodyOf(bytes);
    if (body.size() < fixedSize)
        return false;
    out.channel = u16(body, 0);
    out.flags = u32(body, 4);
    out.ecc = u8(body, 8);
    out.position = u8(body, 9);
    out.dlc = u8(body, 10);
    out.frameLength = u32(body, 12);
    out.id = u32(body, 16);
    out.flagsExt = u16(body, 20);
    copyData(body.subspan(fixedSize), out.data);
    return true;
}

bool decode(const ObjectBytes &bytes, Overrun &out) noexcept
{
    const Bytes body = bodyOf(bytes);
    if (body.size() < 6)
        return false;
    out.busType = u32(body, 0);
    out.channel = u16(body, 4);
    return true;
}

bool decode(const ObjectBytes &bytes, CanFdMessage &out) noexcept
{
    constexpr std::size_t fixedSize = 20;
    const Bytes body = bodyOf(bytes);
    if (body.size() < fixedSize)
        return false;
    out.channel = u16(body, 0);
    out.flags = u8(body, 2);
    out.dlc = u8(body, 3);
    out.id = u32(body, 4);
    out.frameLength = u32(body, 8);
    out.arbBitCount = u8(body, 12);
    out.canFdFlags = u8(body, 13);
    out.validDataBytes = u8(body, 14);
    out.storedBytes = copyData(body.subspan(fixedSize), out.data);
    return true;
}

bool decode(const ObjectBytes &bytes, CanFdMessage64 &out) noexcept
{
    const Bytes body = bodyOf(bytes);
    if (body.size() < fdMessageForm.fixedSize)
        return false;
    out.channel = u8(body, 0);
    out.dlc = u8(body, 1);
    out.validDataBytes = u8(body, 2);
    out.id = u32(body, 4);
    out.frameLength = u32(body, 8);
    out.flags = u32(body, 12);
    out.btrCfgArb = u32(body, 16);
    out.btrCfgData = u32(body, 20);
    out.timeOffsetBrsNs = u32(body, 24);
    out.timeOffsetCrcDelNs = u32(body, 28);
    out.bitCount = u16(body, 32);
    out.dir = u8(body, 34);
    out.crc = u32(body, 36);
    out.storedBytes = copyData(fdData(bytes, fdMessageForm, out.validDataBytes), out.data);
    return true;
}

bool decode(const ObjectBytes &bytes, CanFdErrorFrame64 &out) noexcept
{
    const Bytes body = bodyOf(bytes);
    if (body.size() < fdErrorFrameForm.fixedSize)
        return false;
    out.channel = u8(body, 0);
    out.dlc = u8(body, 1);
    out.validDataBytes = u8(body, 2);
    out.ecc = u8(body, 3);
    out.flags = u16(body, 4);
    out.errorCodeExt = u16(body, 6);
    out.extFlags = u16(body, 8);
    out.id = u32(body, 12);
    out.frameLength = u32(body, 16);
    out.btrCfgArb = u32(body, 20);
    out.btrCfgData = u32(body, 24);
    out.timeOffsetBrsNs = u32(body, 28);
    out.timeOffsetCrcDelNs = u32(body, 32);
    out.crc = u32(body, 36);
    out.errorPosition = u16(body, 40);
    out.storedBytes = copyData(fdData(bytes, fdErrorFrameForm, out.validDataBytes), out.data);
    return true;
}

// The words follow where they are aligned, or at once in objects that have not the room for that.
bool decode(const ObjectBytes &bytes, CanSettingChanged &out) noexcept
{
    constexpr std::size_t fixedSize = 3;
    constexpr std::size_t packedSize = 11;
    constexpr std::size_t alignedSize = 12;
    const Bytes body = bodyOf(bytes);
    if (body.size() < fixedSize)
        return false;
    out = {.channel = u16(body, 0), .changedType = u8(body, 2)};
    if (body.size() >= packedSize) {
        const std::size_t words = body.size() >= alignedSize ? 4 : 3;
        out.btrExtArb = u32(body, words);
        out.btrExtData = u32(body, words + 4);
    }
    return true;
}

} // namespace BLF
