// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// The bodies of BLF objects as they stand on the disk. Shares no code with the reader under test, so that a mistake of
/// the one shows on the other. Every field, also a senseless one, can be set.
namespace tztest {

using BlfBytes = std::vector<std::uint8_t>;

/// Puts values behind the bytes that are there, little-endian.
class BlfByteWriter
{
public:
    explicit BlfByteWriter(BlfBytes &out)
        : m_out(out)
    {
    }

    BlfByteWriter &u8(std::uint64_t value) { return integer<1>(value); }
    BlfByteWriter &u16(std::uint64_t value) { return integer<2>(value); }
    BlfByteWriter &u32(std::uint64_t value) { return integer<4>(value); }
    BlfByteWriter &u64(std::uint64_t value) { return integer<8>(value); }
    BlfByteWriter &f64(double value);
    BlfByteWriter &text(std::string_view characters);
    BlfByteWriter &raw(std::span<const std::uint8_t> bytes);
    BlfByteWriter &zeros(std::size_t count);

private:
    template <int width> BlfByteWriter &integer(std::uint64_t value)
    {
        std::array<std::uint8_t, width> bytes;
        for (auto &byte : bytes) {
            byte = static_cast<std::uint8_t>(value);
            value >>= 8;
        }
        m_out.insert(m_out.end(), bytes.begin(), bytes.end());
        return *this;
    }

    BlfBytes &m_out;
};

/// Bits of the objects' flag fields.
namespace BlfFlags {
inline constexpr std::uint32_t extendedId = 0x80000000; ///< of each identifier
// the eight flags of types 1, 86 and 100
inline constexpr std::uint8_t canTx = 0x01;
inline constexpr std::uint8_t canNerr = 0x20;
inline constexpr std::uint8_t canWakeUp = 0x40;
inline constexpr std::uint8_t canRemote = 0x80;
// canFdFlags of type 100, extFlags of type 104
inline constexpr std::uint8_t fdEdl = 0x01;
inline constexpr std::uint8_t fdBrs = 0x02;
inline constexpr std::uint8_t fdEsi = 0x04;
inline constexpr std::uint8_t fdDataPhase = 0x08; ///< of type 104 alone
// the 32 flags of type 101
inline constexpr std::uint32_t fd64Nerr = 0x0004;
inline constexpr std::uint32_t fd64WakeUp = 0x0008;
inline constexpr std::uint32_t fd64Remote = 0x0010;
inline constexpr std::uint32_t fd64TxRequest = 0x0080;
inline constexpr std::uint32_t fd64Edl = 0x1000;
inline constexpr std::uint32_t fd64Brs = 0x2000;
inline constexpr std::uint32_t fd64Esi = 0x4000;
} // namespace BlfFlags

/// Type 1.
struct CanMessageBody
{
    static constexpr std::uint32_t type = 1;
    std::uint16_t channel = 1;
    std::uint8_t flags = 0;
    std::uint8_t dlc = 8;
    std::uint32_t id = 0;
    std::array<std::uint8_t, 8> data{};
};

/// Type 86.
struct CanMessage2Body
{
    static constexpr std::uint32_t type = 86;
    std::uint16_t channel = 1;
    std::uint8_t flags = 0;
    std::uint8_t dlc = 8;
    std::uint32_t id = 0;
    std::array<std::uint8_t, 8> data{};
    std::uint32_t frameLength = 0;
    std::uint8_t bitCount = 0;
    std::uint8_t reserved8 = 0;
    std::uint16_t reserved16 = 0;
};

/// Type 2.
struct CanErrorFrameBody
{
    static constexpr std::uint32_t type = 2;
    std::uint16_t channel = 1;
    std::uint16_t length = 0;
    std::uint32_t reserved = 0;
};

/// Type 4.
struct CanStatisticBody
{
    static constexpr std::uint32_t type = 4;
    std::uint16_t channel = 1;
    std::uint16_t busLoad = 0; ///< 1/100 percent
    std::uint32_t standardDataFrames = 0;
    std::uint32_t extendedDataFrames = 0;
    std::uint32_t standardRemoteFrames = 0;
    std::uint32_t extendedRemoteFrames = 0;
    std::uint32_t errorFrames = 0;
    std::uint32_t overloadFrames = 0;
    std::uint32_t reserved = 0;
};

/// Type 31.
struct CanDriverErrorBody
{
    static constexpr std::uint32_t type = 31;
    std::uint16_t channel = 1;
    std::uint8_t txErrors = 0;
    std::uint8_t rxErrors = 0;
    std::uint32_t errorCode = 0;
};

/// Type 72. Values come from blfValue().
struct SystemVariableBody
{
    static constexpr std::uint32_t type = 72;
    std::uint32_t valueType = 2;
    std::uint32_t representation = 0;
    std::uint64_t reserved1 = 0;
    std::string name{};
    BlfBytes value{};
    std::uint64_t reserved2 = 0;
    std::optional<std::uint32_t> nameLength{};  ///< what the object says instead of the true length
    std::optional<std::uint32_t> valueLength{}; ///< likewise
};

/// Type 73.
struct CanErrorFrameExtBody
{
    static constexpr std::uint32_t type = 73;
    std::uint16_t channel = 1;
    std::uint16_t length = 0;
    std::uint32_t flags = 0;
    std::uint8_t ecc = 0;
    std::uint8_t position = 0;
    std::uint8_t dlc = 0;
    std::uint8_t reserved8 = 0;
    std::uint32_t frameLength = 0;
    std::uint32_t id = 0;
    std::uint16_t flagsExt = 0;
    std::uint16_t reserved16 = 0;
    std::array<std::uint8_t, 8> data{};
};

/// Type 91.
struct OverrunBody
{
    static constexpr std::uint32_t type = 91;
    std::uint32_t busType = 1;
    std::uint16_t channel = 1;
    std::uint16_t reserved = 0;
};

/// Type 100. Always 64 bytes of data.
struct CanFdMessageBody
{
    static constexpr std::uint32_t type = 100;
    std::uint16_t channel = 1;
    std::uint8_t flags = 0;
    std::uint8_t dlc = 15;
    std::uint32_t id = 0;
    std::uint32_t frameLength = 0;
    std::uint8_t arbBitCount = 0;
    std::uint8_t canFdFlags = BlfFlags::fdEdl;
    std::uint8_t validDataBytes = 64;
    std::uint8_t reserved8 = 0;
    std::uint32_t reserved32 = 0;
    std::array<std::uint8_t, 64> data{};
    std::uint32_t reservedTail = 0;
};

/// The bit timing words behind the data of types 101 and 104.
struct FdExtension
{
    std::uint32_t btrExtArb = 0;
    std::uint32_t btrExtData = 0;
};

/// Type 101. Stores the bytes of data, however many they are.
struct CanFdMessage64Body
{
    static constexpr std::uint32_t type = 101;
    std::uint8_t channel = 1;
    std::uint8_t dlc = 15;
    std::uint8_t validDataBytes = 64;
    std::uint8_t txCount = 0;
    std::uint32_t id = 0;
    std::uint32_t frameLength = 0;
    std::uint32_t flags = BlfFlags::fd64Edl;
    std::uint32_t btrCfgArb = 0;
    std::uint32_t btrCfgData = 0;
    std::uint32_t timeOffsetBrsNs = 0;
    std::uint32_t timeOffsetCrcDelNs = 0;
    std::uint16_t bitCount = 0;
    std::uint8_t dir = 0;
    std::uint32_t crc = 0;
    BlfBytes data{};
    std::optional<FdExtension> extension{};
    std::optional<std::uint8_t>
        extDataOffset{}; ///< said instead of the true offset, which is that for headers of 32 bytes
};

/// Type 104. Stores the bytes of data, however many they are.
struct CanFdErrorFrame64Body
{
    static constexpr std::uint32_t type = 104;
    std::uint8_t channel = 1;
    std::uint8_t dlc = 15;
    std::uint8_t validDataBytes = 64;
    std::uint8_t ecc = 0;
    std::uint16_t flags = 0;
    std::uint16_t errorCodeExt = 0;
    std::uint16_t extFlags = BlfFlags::fdEdl;
    std::uint32_t id = 0;
    std::uint32_t frameLength = 0;
    std::uint32_t btrCfgArb = 0;
    std::uint32_t btrCfgData = 0;
    std::uint32_t timeOffsetBrsNs = 0;
    std::uint32_t timeOffsetCrcDelNs = 0;
    std::uint32_t crc = 0;
    std::uint16_t errorPosition = 0;
    BlfBytes data{};
    std::optional<FdExtension> extension{}; ///< four reserved bytes follow it
    std::optional<std::uint8_t>
        extDataOffset{}; ///< said instead of the true offset, which is that for headers of 32 bytes
};

/// Type 129.
struct CanSettingChangedBody
{
    static constexpr std::uint32_t type = 129;
    std::uint16_t channel = 1;
    std::uint8_t changedType = 1; ///< 0 reset, 1 bit timing changed, 255 invalid
    std::uint32_t btrExtArb = 0;
    std::uint32_t btrExtData = 0;
    bool packed = false; ///< 11 bytes without fillers in place of 16
};

/// Puts a body behind the bytes that are there.
void appendBody(BlfBytes &out, const CanMessageBody &body);
void appendBody(BlfBytes &out, const CanMessage2Body &body);
void appendBody(BlfBytes &out, const CanErrorFrameBody &body);
void appendBody(BlfBytes &out, const CanStatisticBody &body);
void appendBody(BlfBytes &out, const CanDriverErrorBody &body);
void appendBody(BlfBytes &out, const SystemVariableBody &body);
void appendBody(BlfBytes &out, const CanErrorFrameExtBody &body);
void appendBody(BlfBytes &out, const OverrunBody &body);
void appendBody(BlfBytes &out, const CanFdMessageBody &body);
void appendBody(BlfBytes &out, const CanFdMessage64Body &body);
void appendBody(BlfBytes &out, const CanFdErrorFrame64Body &body);
void appendBody(BlfBytes &out, const CanSettingChangedBody &body);

/// A body's bytes, to be cut or lengthened before they become an object.
template <typename Body> BlfBytes bodyBytes(const Body &body)
{
    BlfBytes bytes;
    appendBody(bytes, body);
    return bytes;
}

/// The bytes of a system variable's value.
BlfBytes blfValue(double value);          ///< type 1
BlfBytes blfValue(std::int32_t value);    ///< type 2
BlfBytes blfValue(std::string_view text); ///< type 3
BlfBytes blfValue(std::int64_t value);    ///< type 6

} // namespace tztest
