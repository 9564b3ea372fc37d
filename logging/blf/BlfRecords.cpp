// SPDX-License-Identifier: GPL-3.0-or-later
#include "logging/blf/BlfRecords.h"

#include "logging/blf/BlfRecordText.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <span>

namespace BLF {

namespace {

constexpr double secondsPerNanosecond = 1e-9;
constexpr std::uint32_t extendedId = 1U << 31;

// The flag byte of CAN messages and of the older kind of CAN FD messages.
namespace CanFlag {
constexpr std::uint8_t directionMask = 0x0F; // 0 is received
constexpr std::uint8_t nerr = 1U << 5;
constexpr std::uint8_t wakeUp = 1U << 6;
constexpr std::uint8_t remote = 1U << 7;
} // namespace CanFlag

// The byte beside it, and the flags of CAN FD error frames.
namespace FdFlag {
constexpr std::uint8_t fdFormat = 1U << 0;
constexpr std::uint8_t bitRateSwitch = 1U << 1;
constexpr std::uint8_t errorStateIndicator = 1U << 2;
} // namespace FdFlag

// The newer kind of CAN FD messages has all flags in one word of its own.
namespace Fd64Flag {
constexpr std::uint32_t nerr = 1U << 2;
constexpr std::uint32_t wakeUp = 1U << 3;
constexpr std::uint32_t remote = 1U << 7;
constexpr std::uint32_t fdFormat = 1U << 12;
constexpr std::uint32_t bitRateSwitch = 1U << 13;
constexpr std::uint32_t errorStateIndicator = 1U << 14;
} // namespace Fd64Flag

// Which fields of an extended error frame tell its direction, and how.
namespace ErrorFlag {
constexpr std::uint32_t sjaCode = 1U << 0;
constexpr std::uint32_t canCoreCode = 1U << 1;
constexpr std::uint16_t sjaReceived = 1U << 5;
constexpr std::uint16_t canCoreSent = 1U << 12;
constexpr std::uint16_t fdReceived = 1U << 5;
} // namespace ErrorFlag

constexpr std::uint8_t bitTimingChanged = 1;
constexpr std::uint8_t dlcMask = 0x0F;
constexpr std::size_t maxClassicLength = 8;
constexpr std::size_t maxFdLength = 64;
constexpr std::array<std::uint8_t, 16> fdLengths{0, 1, 2, 3, 4, 5, 6, 7, 8, 12, 16, 20, 24, 32, 48, 64};

template <typename Flags> constexpr bool has(Flags flags, Flags flag)
{
    return (flags & flag) != 0;
}

BlfFrame recordOf(const ObjectHeader &header, std::uint32_t frameType, std::uint32_t channel)
{
    BlfFrame record;
    record.time = static_cast<double>(header.timeNs) * secondsPerNanosecond;
    record.frameType = frameType;
    record.channel = channel;
    return record;
}

// Shared texts: they cost no allocation.
QString directionText(bool isSent)
{
    return isSent ? QStringLiteral("Tx") : QStringLiteral("Rx");
}

void setId(BlfFrame &record, std::uint32_t id)
{
    record.id = id & ~extendedId;
    record.isExtended = has(id, extendedId);
}

void setRemote(BlfFrame &record, bool isRemote)
{
    record.isRtr = isRemote;
    record.frameType = isRemote ? FrameType::remote : FrameType::data;
}

void setCanFlags(BlfFrame &record, std::uint8_t flags)
{
    record.dir = directionText(has(flags, CanFlag::directionMask));
    record.isWakeUp = has(flags, CanFlag::wakeUp);
    record.isNerr = has(flags, CanFlag::nerr);
    setRemote(record, has(flags, CanFlag::remote));
}

template <std::size_t size> QByteArray firstBytes(const std::array<std::uint8_t, size> &data, std::size_t length)
{
    if (length == 0)
        return {};
    return {reinterpret_cast<const char *>(data.data()), static_cast<int>(std::min(length, size))};
}

std::size_t classicLength(std::uint8_t dlc)
{
    return std::min<std::size_t>(dlc, maxClassicLength);
}

// For objects that leave their number of valid bytes open.
template <typename Object> std::size_t lengthByDlc(const Object &object, bool isFdFormat)
{
    const std::size_t length = isFdFormat ? fdLengths[object.dlc & dlcMask] : classicLength(object.dlc);
    return std::min<std::size_t>(length, object.storedBytes);
}

// Writers of the newer objects leave zeroes at the end of the payload out.
template <typename Object> std::size_t zeroFilledLength(const Object &object, bool isFdFormat)
{
    return object.validDataBytes != 0 ? std::min<std::size_t>(object.validDataBytes, maxFdLength)
                                      : lengthByDlc(object, isFdFormat);
}

std::size_t payloadLength(const CanFdMessage &object)
{
    return object.validDataBytes != 0 ? std::min(object.validDataBytes, object.storedBytes)
                                      : lengthByDlc(object, has(object.canFdFlags, FdFlag::fdFormat));
}

bool isSent(const CanErrorFrameExt &object)
{
    if (has(object.flags, ErrorFlag::canCoreCode))
        return has(object.flagsExt, ErrorFlag::canCoreSent);
    return has(object.flags, ErrorFlag::sjaCode) && !has(object.flagsExt, ErrorFlag::sjaReceived);
}

// What the newer CAN FD objects have in common.
template <typename Object> void setFdTiming(BlfFrame &record, const Object &object)
{
    record.frameLength = object.frameLength;
    record.arbBitrate = object.btrCfgArb;
    record.dataBitrate = object.btrCfgData;
    record.brsOffset = object.timeOffsetBrsNs;
    record.crcDelOffset = object.timeOffsetCrcDelNs;
    record.crc = object.crc;
}

} // namespace

BlfFrame makeRecord(const ObjectHeader &header, const CanMessage &object)
{
    BlfFrame record = recordOf(header, FrameType::data, object.channel);
    setId(record, object.id);
    setCanFlags(record, object.flags);
    record.dlc = object.dlc;
    if (!record.isRtr)
        record.data = firstBytes(object.data, classicLength(object.dlc));
    record.frameLength = object.frameLength;
    record.bitCount = object.bitCount;
    return record;
}

BlfFrame makeRecord(const ObjectHeader &header, const CanErrorFrame &object)
{
    BlfFrame record = recordOf(header, FrameType::error, object.channel);
    record.dir = directionText(false);
    record.description = QStringLiteral("ErrorFrame");
    return record;
}

BlfFrame makeRecord(const ObjectHeader &header, const CanStatistic &object)
{
    BlfFrame record = recordOf(header, FrameType::statistic, object.channel);
    record.description = describe(object);
    return record;
}

BlfFrame makeRecord(const ObjectHeader &header, const CanDriverError &object)
{
    BlfFrame record = recordOf(header, FrameType::driverError, object.channel);
    record.description = describe(object);
    return record;
}

BlfFrame makeRecord(const ObjectHeader &header, const SystemVariable &object)
{
    BlfFrame record = recordOf(header, FrameType::systemVariable, 0);
    record.description = describe(object);
    return record;
}

BlfFrame makeRecord(const ObjectHeader &header, const CanErrorFrameExt &object)
{
    BlfFrame record = recordOf(header, FrameType::error, object.channel);
    setId(record, object.id);
    record.dir = directionText(isSent(object));
    record.dlc = object.dlc & dlcMask;
    record.data = firstBytes(object.data, classicLength(record.dlc));
    record.frameLength = object.frameLength;
    record.description = describe(object, record);
    return record;
}

BlfFrame makeRecord(const ObjectHeader &header, const Overrun &object)
{
    BlfFrame record = recordOf(header, FrameType::overload, object.channel);
    record.description = QStringLiteral("Reception overrun - messages are lost");
    return record;
}

BlfFrame makeRecord(const ObjectHeader &header, const CanFdMessage &object)
{
    BlfFrame record = recordOf(header, FrameType::data, object.channel);
    setId(record, object.id);
    setCanFlags(record, object.flags);
    record.dlc = object.dlc;
    record.isFd = true;
    record.isBrs = has(object.canFdFlags, FdFlag::bitRateSwitch);
    record.isEsi = has(object.canFdFlags, FdFlag::errorStateIndicator);
    if (!record.isRtr)
        record.data = firstBytes(object.data, payloadLength(object));
    record.frameLength = object.frameLength;
    record.arbBitCount = object.arbBitCount;
    return record;
}

BlfFrame makeRecord(const ObjectHeader &header, const CanFdMessage64 &object)
{
    BlfFrame record = recordOf(header, FrameType::data, object.channel);
    setId(record, object.id);
    setRemote(record, has(object.flags, Fd64Flag::remote));
    record.dir = directionText(object.dir != 0);
    record.dlc = object.dlc;
    record.isFd = true;
    record.isBrs = has(object.flags, Fd64Flag::bitRateSwitch);
    record.isEsi = has(object.flags, Fd64Flag::errorStateIndicator);
    record.isWakeUp = has(object.flags, Fd64Flag::wakeUp);
    record.isNerr = has(object.flags, Fd64Flag::nerr);
    if (!record.isRtr)
        record.data = firstBytes(object.data, zeroFilledLength(object, has(object.flags, Fd64Flag::fdFormat)));
    record.bitCount = object.bitCount;
    setFdTiming(record, object);
    return record;
}

BlfFrame makeRecord(const ObjectHeader &header, const CanFdErrorFrame64 &object)
{
    BlfFrame record = recordOf(header, FrameType::fdError, object.channel);
    setId(record, object.id);
    record.dir = directionText(!has(object.flags, ErrorFlag::fdReceived));
    record.dlc = object.dlc;
    record.isBrs = (object.extFlags & FdFlag::bitRateSwitch) != 0;
    record.isEsi = (object.extFlags & FdFlag::errorStateIndicator) != 0;
    record.data = firstBytes(object.data, zeroFilledLength(object, (object.extFlags & FdFlag::fdFormat) != 0));
    setFdTiming(record, object);
    record.description = describe(object, record);
    return record;
}

BlfFrame makeRecord(const ObjectHeader &header, const CanSettingChanged &object)
{
    BlfFrame record = recordOf(header, FrameType::setting, object.channel);
    if (object.changedType != bitTimingChanged) {
        record.description = QStringLiteral("CAN reseted");
        return record;
    }
    record.arbBitrate = object.btrExtArb;
    record.dataBitrate = object.btrExtData;
    record.description = describeBitTiming(object);
    return record;
}

} // namespace BLF
