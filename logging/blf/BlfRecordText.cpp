// SPDX-License-Identifier: GPL-3.0-or-later
#include "logging/blf/BlfRecordText.h"

#include <QTextCodec>

#include <array>
#include <cstring>

namespace BLF {

namespace {

constexpr std::array<std::string_view, 9> frameTypeTexts{"Data",     "RTR",     "Error",  "FD_Error", "Driver_Error",
                                                         "Overload", "Setting", "SysVar", "Statistic"};

constexpr std::uint32_t noBusLoad = 0x8000; // counts as no load
constexpr std::uint16_t dataPhase = 1U << 3;

namespace VariableType {
constexpr std::uint32_t floatingPoint = 1;
constexpr std::uint32_t integer = 2;
constexpr std::uint32_t text = 3;
constexpr std::uint32_t longInteger = 6;
} // namespace VariableType

constexpr int mibOfUtf8 = 106;

// All placeholders are replaced at once, so that a text which holds one itself stays as it is.

QString decimal(std::uint32_t value)
{
    return QString::number(value);
}

QString hex(std::uint32_t value)
{
    return QString::number(value, 16);
}

QString prefixedHex(std::uint32_t value)
{
    return QStringLiteral("0x") + hex(value);
}

QString flag(bool isSet)
{
    return isSet ? QStringLiteral("1") : QStringLiteral("0");
}

QString bytesText(const QByteArray &bytes)
{
    return QString::fromLatin1(bytes.toHex(' '));
}

QString decoded(std::string_view bytes)
{
    const int size = static_cast<int>(bytes.size());
    QTextCodec::ConverterState state(QTextCodec::IgnoreHeader);
    const QString text = QTextCodec::codecForMib(mibOfUtf8)->toUnicode(bytes.data(), size, &state);
    const bool isUtf8 = state.invalidChars == 0 && state.remainingChars == 0;
    return isUtf8 ? text : QString::fromLatin1(bytes.data(), size);
}

// Control characters, and what else counts as the end of a line somewhere.
bool mayBreakLine(QChar character)
{
    constexpr ushort nextLine = 0x85;
    return character < QLatin1Char(' ') || character == QChar(nextLine) || character == QChar::LineSeparator ||
           character == QChar::ParagraphSeparator;
}

// The number that a value begins with; 0 where the value is too short for it.
template <typename Number> Number numberAt(std::span<const std::byte> value)
{
    Number number{};
    if (value.size() >= sizeof(number))
        std::memcpy(&number, value.data(), sizeof(number));
    return number;
}

QString valueText(const SystemVariable &object)
{
    constexpr int digits = 4;
    const auto value = object.value;
    switch (object.type) {
    case VariableType::floatingPoint: return QString::number(numberAt<double>(value), 'g', digits);
    case VariableType::integer: return QString::number(numberAt<std::int32_t>(value));
    case VariableType::longInteger: return QString::number(numberAt<qint64>(value));
    case VariableType::text:
        return QLatin1Char('"') + fileText({reinterpret_cast<const char *>(value.data()), value.size()}) +
               QLatin1Char('"');
    default: return QStringLiteral("0");
    }
}

QString errorCounts(const CanDriverError &object)
{
    if (object.txErrors == 0 && object.rxErrors == 0)
        return {};
    return QStringLiteral("TxErr: %1 RxErr: %2").arg(decimal(object.txErrors), decimal(object.rxErrors));
}

} // namespace

std::string_view frameTypeText(std::uint32_t frameType) noexcept
{
    return frameType < frameTypeTexts.size() ? frameTypeTexts[frameType] : "Unknown";
}

QString fileText(std::string_view bytes)
{
    QString text = decoded(bytes.substr(0, bytes.find('\0')));
    for (QChar &character : text) {
        if (mayBreakLine(character))
            character = QLatin1Char(' ');
    }
    return text;
}

QString describe(const CanStatistic &object)
{
    constexpr std::uint32_t unitsPerPercent = 100;
    const std::uint32_t load = object.busLoad == noBusLoad ? 0 : object.busLoad;
    return QStringLiteral("Statistic: D %1 R %2 XD %3 XR %4 E %5 O %6 B %7.%8%")
        .arg(decimal(object.standardDataFrames), decimal(object.standardRemoteFrames),
             decimal(object.extendedDataFrames), decimal(object.extendedRemoteFrames), decimal(object.errorFrames),
             decimal(object.overloadFrames), decimal(load / unitsPerPercent),
             decimal(load % unitsPerPercent).rightJustified(2, QLatin1Char('0')));
}

QString describe(const CanDriverError &object)
{
    return QStringLiteral("DriverError: ErrorCode:0x%1 ErrorCount: %2").arg(hex(object.errorCode), errorCounts(object));
}

QString describe(const SystemVariable &object)
{
    return QStringLiteral("SV: %1 %2 = %3").arg(decimal(object.type), fileText(object.name), valueText(object));
}

QString describe(const CanErrorFrameExt &object, const BlfFrame &record)
{
    const QString data = record.dlc == 0 ? QString() : QStringLiteral("Data = %1").arg(bytesText(record.data));
    return QStringLiteral(
               "ErrorFrame Flags = 0x%1 CodeExt = 0x%2 Code = 0x%3 ID = 0x%4 DLC = %5 Position = %6 Length = %7 %8")
        .arg(hex(object.flags), hex(object.flagsExt), hex(object.ecc), hex(record.id), decimal(record.dlc),
             decimal(object.position), decimal(object.frameLength), data);
}

QString describe(const CanFdErrorFrame64 &object, const BlfFrame &record)
{
    const QString phase = (object.extFlags & dataPhase) == 0 ? QStringLiteral("Arb.") : QStringLiteral("Data");
    return QStringLiteral("%1 ErrorCode: 0x%2 %3 %4 %5 %6 %7 %8 %9 %10 %11 %12 %13 %14 %15 %16 %17 %18")
        .arg(record.dir, hex(object.ecc), prefixedHex(object.flags), prefixedHex(object.errorCodeExt), phase,
             flag(record.isBrs), flag(record.isEsi), prefixedHex(record.id), decimal(object.frameLength),
             prefixedHex(object.btrCfgArb), prefixedHex(object.btrCfgData), decimal(object.timeOffsetBrsNs),
             decimal(object.timeOffsetCrcDelNs), prefixedHex(object.crc), decimal(object.errorPosition),
             decimal(object.dlc), decimal(object.validDataBytes), bytesText(record.data));
}

QString describeBitTiming(const CanSettingChanged &object)
{
    return QStringLiteral("BitTimingChanged ArbSettings : %1 DataSettings %2")
        .arg(hex(object.btrExtArb), hex(object.btrExtData));
}

QString reportText(const BlfFrame &record)
{
    constexpr int decimals = 6;
    const std::string_view type = frameTypeText(record.frameType);
    return QStringLiteral("Frame Parsed: Time=%1 Ch=%2 Dir=%3 Type=%4 ID=0x%5 DLC=%6 Data=%7")
        .arg(QString::number(record.time, 'f', decimals), decimal(record.channel), record.dir,
             QString::fromLatin1(type.data(), static_cast<int>(type.size())), hex(record.id).toUpper(),
             decimal(record.dlc), bytesText(record.data));
}

bool isErrorReport(const BlfFrame &record) noexcept
{
    return record.frameType >= FrameType::error && record.frameType <= FrameType::overload;
}

} // namespace BLF
