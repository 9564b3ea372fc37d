// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/TzRawViewFamily.h"

#include "views/TzRawFrameFilter.h"

#include "vci/TzVciTexts.h"
#include "vci/TzVciTypes.h"

#include <QCoreApplication>

namespace {

constexpr const char *canHeaders[] = {
    QT_TRANSLATE_NOOP("TzRawViewModel", "No."),      QT_TRANSLATE_NOOP("TzRawViewModel", "Time"),
    QT_TRANSLATE_NOOP("TzRawViewModel", "Device"),   QT_TRANSLATE_NOOP("TzRawViewModel", "Channel"),
    QT_TRANSLATE_NOOP("TzRawViewModel", "ID(hex)"),  QT_TRANSLATE_NOOP("TzRawViewModel", "Name"),
    QT_TRANSLATE_NOOP("TzRawViewModel", "Dir"),      QT_TRANSLATE_NOOP("TzRawViewModel", "C-Type"),
    QT_TRANSLATE_NOOP("TzRawViewModel", "F-Type"),   QT_TRANSLATE_NOOP("TzRawViewModel", "F-Format"),
    QT_TRANSLATE_NOOP("TzRawViewModel", "Length"),   QT_TRANSLATE_NOOP("TzRawViewModel", "Data"),
    QT_TRANSLATE_NOOP("TzRawViewModel", "Cycle(ms)")};
static_assert(std::size(canHeaders) == TzRawViewFamily::CanColumnCount + 1);

constexpr const char *linHeaders[] = {
    QT_TRANSLATE_NOOP("TzRawViewModel", "No."),        QT_TRANSLATE_NOOP("TzRawViewModel", "Time"),
    QT_TRANSLATE_NOOP("TzRawViewModel", "Device"),     QT_TRANSLATE_NOOP("TzRawViewModel", "Channel"),
    QT_TRANSLATE_NOOP("TzRawViewModel", "ID(hex)"),    QT_TRANSLATE_NOOP("TzRawViewModel", "Dir"),
    QT_TRANSLATE_NOOP("TzRawViewModel", "Check Type"), QT_TRANSLATE_NOOP("TzRawViewModel", "Frame Type"),
    QT_TRANSLATE_NOOP("TzRawViewModel", "Length"),     QT_TRANSLATE_NOOP("TzRawViewModel", "Data"),
    QT_TRANSLATE_NOOP("TzRawViewModel", "Cycle(ms)")};
static_assert(std::size(linHeaders) == TzRawViewFamily::LinColumnCount + 1);

std::uint64_t foldKey(const TzVciMessage &message, std::uint8_t direction, std::uint32_t id) noexcept
{
    std::uint64_t key = message.deviceIndex;
    key = key << 8 | message.channelIndex;
    key = key << 8 | direction;
    return key << 36 | id;
}

QString payloadText(std::span<const std::uint8_t> payload)
{
    const auto bytes =
        QByteArray::fromRawData(reinterpret_cast<const char *>(payload.data()), static_cast<int>(payload.size()));
    return QString::fromLatin1(bytes.toHex(' ').toUpper());
}

QVariant canCell(const TzVciMessage &message, int column)
{
    const TzVciCanDataType &frame = message.frame.can;
    switch (column) {
    case TzRawViewFamily::DeviceColumn: return int{message.deviceIndex};
    case TzRawViewFamily::ChannelColumn: return QStringLiteral("CAN%1").arg(message.channelIndex + 1);
    case TzRawViewFamily::IdColumn: return QString::number(frame.canId, 16);
    case TzRawViewFamily::CanDirectionColumn: return canDirectionText(frame.frameType);
    case TzRawViewFamily::CanFormatColumn: return canFrameFormatText(frame.flags);
    case TzRawViewFamily::CanKindColumn: return canFrameKindText(frame.flags);
    case TzRawViewFamily::CanIdTypeColumn: return canIdTypeText(frame.flags);
    case TzRawViewFamily::CanLengthColumn: return int{frame.dataLength};
    case TzRawViewFamily::CanDataColumn:
        if (frame.frameType == TzVciCanFrameType::error)
            return canErrorText(frame.data.data(), frame.dataLength);
        return payloadText({frame.data.data(), frame.payloadLength()});
    }
    return {};
}

QVariant linCell(const TzVciMessage &message, int column)
{
    const TzVciLinDataType &frame = message.frame.lin;
    switch (column) {
    case TzRawViewFamily::DeviceColumn: return int{message.deviceIndex};
    case TzRawViewFamily::ChannelColumn: return QStringLiteral("LIN%1").arg(message.channelIndex + 1);
    case TzRawViewFamily::IdColumn: return QStringLiteral("0x%1").arg(frame.linId, 2, 16, QLatin1Char('0'));
    case TzRawViewFamily::LinDirectionColumn: return linDirectionText(frame.linDirection);
    case TzRawViewFamily::LinChecksumColumn: return linChecksumTypeText(frame.checksumType);
    case TzRawViewFamily::LinFrameTypeColumn: return linFrameTypeText(frame.linDirection);
    case TzRawViewFamily::LinLengthColumn: return int{frame.dataLength};
    case TzRawViewFamily::LinDataColumn: return payloadText({frame.data.data(), frame.payloadLength()});
    }
    return {};
}

std::optional<Qt::GlobalColor> canRowColor(const TzVciMessage &message) noexcept
{
    switch (message.frame.can.frameType) {
    case TzVciCanFrameType::transmitted: return Qt::blue;
    case TzVciCanFrameType::error:
    case TzVciCanFrameType::error2: return Qt::red;
    }
    return std::nullopt;
}

std::optional<Qt::GlobalColor> linRowColor(const TzVciMessage &message) noexcept
{
    const std::uint8_t direction = message.frame.lin.linDirection;
    if (direction == TzVciLinDirection::masterRead || direction == TzVciLinDirection::slaveRead)
        return std::nullopt;
    return Qt::blue;
}

} // namespace

const TzRawViewFamily TzRawViewFamily::can{
    .viewKind = TzVciViewKind::can,
    .columnCount = CanColumnCount,
    .dataColumn = CanDataColumn,
    .savesAsc = true,
    .headers = canHeaders,
    .overflowText = "CAN view buffer is full",
    .foldKey =
        [](const TzVciMessage &message) noexcept {
            return ::foldKey(message, message.frame.can.frameType, message.frame.can.canId);
        },
    .passes = [](const TzRawFrameFilter &filter,
                 const TzVciMessage &message) noexcept { return filter.passesCan(message); },
    .cellValue = canCell,
    .rowColor = canRowColor,
};

const TzRawViewFamily TzRawViewFamily::lin{
    .viewKind = TzVciViewKind::lin,
    .columnCount = LinColumnCount,
    .dataColumn = LinDataColumn,
    .savesAsc = false,
    .headers = linHeaders,
    .overflowText = "LIN view buffer is full",
    .foldKey =
        [](const TzVciMessage &message) noexcept {
            return ::foldKey(message, message.frame.lin.linDirection, message.frame.lin.linId);
        },
    .passes = [](const TzRawFrameFilter &filter,
                 const TzVciMessage &message) noexcept { return filter.passesLin(message); },
    .cellValue = linCell,
    .rowColor = linRowColor,
};
