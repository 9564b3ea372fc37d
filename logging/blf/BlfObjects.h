// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

/// The objects of a BLF log, little-endian and packed on the disk, as plain values.
namespace BLF {

/// Numbers of the types that are read or passed over in silence; others exist.
namespace ObjectType {
inline constexpr std::uint32_t canMessage = 1;
inline constexpr std::uint32_t canErrorFrame = 2;
inline constexpr std::uint32_t canStatistic = 4;
inline constexpr std::uint32_t environmentInteger = 6;
inline constexpr std::uint32_t environmentDouble = 7;
inline constexpr std::uint32_t environmentString = 8;
inline constexpr std::uint32_t environmentData = 9;
inline constexpr std::uint32_t container = 10;
inline constexpr std::uint32_t canDriverError = 31;
inline constexpr std::uint32_t applicationText = 65;
inline constexpr std::uint32_t systemVariable = 72;
inline constexpr std::uint32_t canErrorFrameExt = 73;
inline constexpr std::uint32_t canMessage2 = 86;
inline constexpr std::uint32_t overrun = 91;
inline constexpr std::uint32_t canFdMessage = 100;
inline constexpr std::uint32_t canFdMessage64 = 101;
inline constexpr std::uint32_t canFdErrorFrame64 = 104;
inline constexpr std::uint32_t restorePoints = 115;
inline constexpr std::uint32_t testStructure = 118;
inline constexpr std::uint32_t diagnosticRequest = 119;
inline constexpr std::uint32_t canSettingChanged = 129;
} // namespace ObjectType

/// What every object begins with.
struct ObjectHeader
{
    std::uint32_t type = 0;
    std::uint32_t objectSize = 0; ///< bytes with the header, without the padding behind
    std::uint16_t headerSize = 0; ///< bytes
    std::uint64_t timeNs = 0;     ///< since the measurement's start; 0 where the header has no time stamp
};

/// Types 1 and 86; type 1 has neither frameLength nor bitCount.
struct CanMessage
{
    std::uint16_t channel = 0;
    std::uint8_t flags = 0;
    std::uint8_t dlc = 0;
    std::uint32_t id = 0; ///< bit 31: extended
    std::array<std::uint8_t, 8> data{};
    std::uint32_t frameLength = 0; ///< ns
    std::uint8_t bitCount = 0;
};

struct CanErrorFrame
{
    std::uint16_t channel = 0;
};

struct CanStatistic
{
    std::uint16_t channel = 0;
    std::uint16_t busLoad = 0; ///< 1/100 percent
    std::uint32_t standardDataFrames = 0;
    std::uint32_t extendedDataFrames = 0;
    std::uint32_t standardRemoteFrames = 0;
    std::uint32_t extendedRemoteFrames = 0;
    std::uint32_t errorFrames = 0;
    std::uint32_t overloadFrames = 0;
};

struct CanDriverError
{
    std::uint16_t channel = 0;
    std::uint8_t txErrors = 0;
    std::uint8_t rxErrors = 0;
    std::uint32_t errorCode = 0;
};

struct SystemVariable
{
    std::uint32_t type = 0;
    std::string_view name;            ///< in the code page of the writing machine; valid until the object is let go
    std::span<const std::byte> value; ///< likewise
};

struct CanErrorFrameExt
{
    std::uint16_t channel = 0;
    std::uint32_t flags = 0;
    std::uint8_t ecc = 0;
    std::uint8_t position = 0;
    std::uint8_t dlc = 0;
    std::uint32_t frameLength = 0; ///< ns
    std::uint32_t id = 0;
    std::uint16_t flagsExt = 0;
    std::array<std::uint8_t, 8> data{};
};

struct Overrun
{
    std::uint32_t busType = 0;
    std::uint16_t channel = 0;
};

struct CanFdMessage
{
    std::uint16_t channel = 0;
    std::uint8_t flags = 0;
    std::uint8_t dlc = 0;
    std::uint32_t id = 0;
    std::uint32_t frameLength = 0; ///< ns
    std::uint8_t arbBitCount = 0;
    std::uint8_t canFdFlags = 0;
    std::uint8_t validDataBytes = 0;
    std::uint8_t storedBytes = 0; ///< how many of data the object holds, 0 to 64; the rest is 0
    std::array<std::uint8_t, 64> data{};
};

struct CanFdMessage64
{
    std::uint8_t channel = 0;
    std::uint8_t dlc = 0;
    std::uint8_t validDataBytes = 0;
    std::uint32_t id = 0;
    std::uint32_t frameLength = 0; ///< ns
    std::uint32_t flags = 0;
    std::uint32_t btrCfgArb = 0;
    std::uint32_t btrCfgData = 0;
    std::uint32_t timeOffsetBrsNs = 0;
    std::uint32_t timeOffsetCrcDelNs = 0;
    std::uint16_t bitCount = 0;
    std::uint8_t dir = 0;
    std::uint32_t crc = 0;
    std::uint8_t storedBytes = 0; ///< how many of data the object holds, 0 to 64; the rest is 0
    std::array<std::uint8_t, 64> data{};
};

struct CanFdErrorFrame64
{
    std::uint8_t channel = 0;
    std::uint8_t dlc = 0;
    std::uint8_t validDataBytes = 0;
    std::uint8_t ecc = 0;
    std::uint16_t flags = 0;
    std::uint16_t errorCodeExt = 0;
    std::uint16_t extFlags = 0;
    std::uint32_t id = 0;
    std::uint32_t frameLength = 0; ///< ns
    std::uint32_t btrCfgArb = 0;
    std::uint32_t btrCfgData = 0;
    std::uint32_t timeOffsetBrsNs = 0;
    std::uint32_t timeOffsetCrcDelNs = 0;
    std::uint32_t crc = 0;
    std::uint16_t errorPosition = 0;
    std::uint8_t storedBytes = 0; ///< how many of data the object holds, 0 to 64; the rest is 0
    std::array<std::uint8_t, 64> data{};
};

struct CanSettingChanged
{
    std::uint16_t channel = 0;
    std::uint8_t changedType = 0; ///< 0 reset, 1 bit timing changed, 255 invalid
    std::uint32_t btrExtArb = 0;
    std::uint32_t btrExtData = 0;
};

/// Where an object's bytes are: header included, without padding.
struct ObjectBytes
{
    std::span<const std::byte> object;
    std::size_t headerSize = 0;
};

/// Each takes the fields that are there; what the object is too short for reads 0.
/// @return false where the fixed fields do not fit, or lengths inside the body reach beyond it; then @p out is
/// undefined
bool decode(const ObjectBytes &bytes, CanMessage &out) noexcept;
bool decode(const ObjectBytes &bytes, CanErrorFrame &out) noexcept;
bool decode(const ObjectBytes &bytes, CanStatistic &out) noexcept;
bool decode(const ObjectBytes &bytes, CanDriverError &out) noexcept;
bool decode(const ObjectBytes &bytes, SystemVariable &out) noexcept;
bool decode(const ObjectBytes &bytes, CanErrorFrameExt &out) noexcept;
bool decode(const ObjectBytes &bytes, Overrun &out) noexcept;
bool decode(const ObjectBytes &bytes, CanFdMessage &out) noexcept;
bool decode(const ObjectBytes &bytes, CanFdMessage64 &out) noexcept;
bool decode(const ObjectBytes &bytes, CanFdErrorFrame64 &out) noexcept;
bool decode(const ObjectBytes &bytes, CanSettingChanged &out) noexcept;

} // namespace BLF
