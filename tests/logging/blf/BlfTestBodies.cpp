// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/logging/blf/BlfTestBodies.h"

#include <bit>

namespace tztest {

namespace {

// Where the stored bytes of types 101 and 104 begin in an object whose header has 32 bytes.
constexpr std::size_t fd64DataOffset = 72;
constexpr std::size_t fdError64DataOffset = 76;

template <typename Body> std::uint8_t extensionOffset(const Body &body, std::size_t dataOffset)
{
    if (body.extDataOffset)
        return *body.extDataOffset;
    return body.extension ? static_cast<std::uint8_t>(dataOffset + body.data.size()) : std::uint8_t{0};
}

// What types 1 and 86 have in common.
template <typename Body> void appendCanMessage(BlfByteWriter &writer, const Body &body)
{
    writer.u16(body.channel).u8(body.flags).u8(body.dlc).u32(body.id).raw(body.data);
}

} // namespace

BlfByteWriter &BlfByteWriter::f64(double value)
{
    return u64(std::bit_cast<std::uint64_t>(value));
}

BlfByteWriter &BlfByteWriter::text(std::string_view characters)
{
    m_out.insert(m_out.end(), characters.begin(), characters.end());
    return *this;
}

BlfByteWriter &BlfByteWriter::raw(std::span<const std::uint8_t> bytes)
{
    m_out.insert(m_out.end(), bytes.begin(), bytes.end());
    return *this;
}

BlfByteWriter &BlfByteWriter::zeros(std::size_t count)
{
    m_out.resize(m_out.size() + count);
    return *this;
}

void appendBody(BlfBytes &out, const CanMessageBody &body)
{
    BlfByteWriter writer(out);
    appendCanMessage(writer, body);
}

void appendBody(BlfBytes &out, const CanMessage2Body &body)
{
    BlfByteWriter writer(out);
    appendCanMessage(writer, body);
    writer.u32(body.frameLength).u8(body.bitCount).u8(body.reserved8).u16(body.reserved16);
}

void appendBody(BlfBytes &out, const CanErrorFrameBody &body)
{
    BlfByteWriter(out).u16(body.channel).u16(body.length).u32(body.reserved);
}

void appendBody(BlfBytes &out, const CanStatisticBody &body)
{
    BlfByteWriter(out)
        .u16(body.channel)
        .u16(body.busLoad)
        .u32(body.standardDataFrames)
        .u32(body.extendedDataFrames)
        .u32(body.standardRemoteFrames)
        .u32(body.extendedRemoteFrames)
        .u32(body.errorFrames)
        .u32(body.overloadFrames)
        .u32(body.reserved);
}

void appendBody(BlfBytes &out, const CanDriverErrorBody &body)
{
    BlfByteWriter(out).u16(body.channel).u8(body.txErrors).u8(body.rxErrors).u32(body.errorCode);
}

void appendBody(BlfBytes &out, const SystemVariableBody &body)
{
    BlfByteWriter(out)
        .u32(body.valueType)
        .u32(body.representation)
        .u64(body.reserved1)
        .u32(body.nameLength.value_or(static_cast<std::uint32_t>(body.name.size())))
        .u32(body.valueLength.value_or(static_cast<std::uint32_t>(body.value.size())))
        .u64(body.reserved2)
        .text(body.name)
        .raw(body.value);
}

void appendBody(BlfBytes &out, const CanErrorFrameExtBody &body)
{
    BlfByteWriter(out)
        .u16(body.channel)
        .u16(body.length)
        .u32(body.flags)
        .u8(body.ecc)
        .u8(body.position)
        .u8(body.dlc)
        .u8(body.reserved8)
        .u32(body.frameLength)
        .u32(body.id)
        .u16(body.flagsExt)
        .u16(body.reserved16)
        .raw(body.data);
}

void appendBody(BlfBytes &out, const OverrunBody &body)
{
    BlfByteWriter(out).u32(body.busType).u16(body.channel).u16(body.reserved);
}

void appendBody(BlfBytes &out, const CanFdMessageBody &body)
{
    BlfByteWriter(out)
        .u16(body.channel)
        .u8(body.flags)
        .u8(body.dlc)
        .u32(body.id)
        .u32(body.frameLength)
        .u8(body.arbBitCount)
        .u8(body.canFdFlags)
        .u8(body.validDataBytes)
        .u8(body.reserved8)
        .u32(body.reserved32)
        .raw(body.data)
        .u32(body.reservedTail);
}

void appendBody(BlfBytes &out, const CanFdMessage64Body &body)
{
    BlfByteWriter writer(out);
    writer.u8(body.channel)
        .u8(body.dlc)
        .u8(body.validDataBytes)
        .u8(body.txCount)
        .u32(body.id)
        .u32(body.frameLength)
        .u32(body.flags)
        .u32(body.btrCfgArb)
        .u32(body.btrCfgData)
        .u32(body.timeOffsetBrsNs)
        .u32(body.timeOffsetCrcDelNs)
        .u16(body.bitCount)
        .u8(body.dir)
        .u8(extensionOffset(body, fd64DataOffset))
        .u32(body.crc)
        .raw(body.data);
    if (body.extension)
        writer.u32(body.extension->btrExtArb).u32(body.extension->btrExtData);
}

void appendBody(BlfBytes &out, const CanFdErrorFrame64Body &body)
{
    BlfByteWriter writer(out);
    writer.u8(body.channel)
        .u8(body.dlc)
        .u8(body.validDataBytes)
        .u8(body.ecc)
        .u16(body.flags)
        .u16(body.errorCodeExt)
        .u16(body.extFlags)
        .u8(extensionOffset(body, fdError64DataOffset))
        .u8(0)
        .u32(body.id)
        .u32(body.frameLength)
        .u32(body.btrCfgArb)
        .u32(body.btrCfgData)
        .u32(body.timeOffsetBrsNs)
        .u32(body.timeOffsetCrcDelNs)
        .u32(body.crc)
        .u16(body.errorPosition)
        .u16(0)
        .raw(body.data);
    if (body.extension)
        writer.u32(body.extension->btrExtArb).u32(body.extension->btrExtData).u32(0);
}

void appendBody(BlfBytes &out, const CanSettingChangedBody &body)
{
    BlfByteWriter writer(out);
    writer.u16(body.channel).u8(body.changedType);
    if (!body.packed)
        writer.u8(0);
    writer.u32(body.btrExtArb).u32(body.btrExtData);
    if (!body.packed)
        writer.u32(0);
}

BlfBytes blfValue(double value)
{
    BlfBytes bytes;
    BlfByteWriter(bytes).f64(value);
    return bytes;
}

BlfBytes blfValue(std::int32_t value)
{
    BlfBytes bytes;
    BlfByteWriter(bytes).u32(static_cast<std::uint32_t>(value));
    return bytes;
}

BlfBytes blfValue(std::string_view text)
{
    return {text.begin(), text.end()};
}

BlfBytes blfValue(std::int64_t value)
{
    BlfBytes bytes;
    BlfByteWriter(bytes).u64(static_cast<std::uint64_t>(value));
    return bytes;
}

} // namespace tztest
