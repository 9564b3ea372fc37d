// SPDX-License-Identifier: GPL-3.0-or-later
#include "vci/TzVciTexts.h"

#include "vci/TzVciByteOrder.h"
#include "vci/TzVciCanDataType.h"
#include "vci/TzVciLinDataType.h"

#include <QCoreApplication>

#include <algorithm>
#include <iterator>

namespace {

constexpr char translationContext[] = "TzVciTexts";

QString translated(const char *text)
{
    return QCoreApplication::translate(translationContext, text);
}

struct CanError
{
    std::uint32_t code;
    const char *text;
};

// Event bits of the CAN controller, in ascending order. 0x4000 and 0x80000 to 0x200000 mean nothing to the user.
constexpr CanError canErrors[] = {
    {0, QT_TRANSLATE_NOOP("TzVciTexts", "No error")},
    {0x1, QT_TRANSLATE_NOOP("TzVciTexts", "Timeout error")},
    {0x2, QT_TRANSLATE_NOOP("TzVciTexts", "Peripheral not initialized")},
    {0x4, QT_TRANSLATE_NOOP("TzVciTexts", "Peripheral not ready")},
    {0x8, QT_TRANSLATE_NOOP("TzVciTexts", "Peripheral not started")},
    {0x10, QT_TRANSLATE_NOOP("TzVciTexts", "Mode not supported")},
    {0x20, QT_TRANSLATE_NOOP("TzVciTexts", "Parameter error")},
    {0x40, QT_TRANSLATE_NOOP("TzVciTexts", "Pending operation")},
    {0x80, QT_TRANSLATE_NOOP("TzVciTexts", "Message RAM Access Failure")},
    {0x100, QT_TRANSLATE_NOOP("TzVciTexts", "Put element in full FIFO")},
    {0x200, QT_TRANSLATE_NOOP("TzVciTexts", "Global Time Error : Synchronization deviation exceeded limit")},
    {0x400, QT_TRANSLATE_NOOP("TzVciTexts", "Tx Count Underflow : Less Tx trigger than expected in one matrix cycle")},
    {0x800, QT_TRANSLATE_NOOP("TzVciTexts", "Tx Count Overflow : More Tx trigger than expected in one matrix cycle")},
    {0x1000, QT_TRANSLATE_NOOP("TzVciTexts", "Scheduling error 1")},
    {0x2000, QT_TRANSLATE_NOOP("TzVciTexts", "Scheduling error 2")},
    {0x8000, QT_TRANSLATE_NOOP("TzVciTexts", "No system startup due to missing reference message")},
    {0x10000, QT_TRANSLATE_NOOP("TzVciTexts", "Missing reference message")},
    {0x20000, QT_TRANSLATE_NOOP("TzVciTexts", "Application watchdog not served in time")},
    {0x40000, QT_TRANSLATE_NOOP("TzVciTexts", "Error found in trigger list")},
    {0x400000, QT_TRANSLATE_NOOP("TzVciTexts", "Overflow of CAN Error Logging Counter")},
    {0x4000000, QT_TRANSLATE_NOOP("TzVciTexts", "Message RAM Watchdog event occurred")},
    {0x8000000, QT_TRANSLATE_NOOP("TzVciTexts", "Protocol Error in Arbitration Phase (Nominal Bit Time is used)")},
    {0x10000000, QT_TRANSLATE_NOOP("TzVciTexts", "Protocol Error in Data Phase (Data Bit Time is used)")},
    {0x20000000, QT_TRANSLATE_NOOP("TzVciTexts", "Access to Reserved Address")},
};

} // namespace

QString canFrameFormatText(std::uint8_t flags)
{
    switch (flags & TzVciCanFlag::formatMask) {
    case TzVciCanFlag::fd: return translated(QT_TRANSLATE_NOOP("TzVciTexts", "CANFD"));
    case TzVciCanFlag::formatMask: return translated(QT_TRANSLATE_NOOP("TzVciTexts", "CANFDBRS"));
    default: return translated(QT_TRANSLATE_NOOP("TzVciTexts", "CAN"));
    }
}

QString canDirectionText(std::uint8_t frameType)
{
    switch (frameType) {
    case TzVciCanFrameType::transmitted: return translated(QT_TRANSLATE_NOOP("TzVciTexts", "Tx"));
    case TzVciCanFrameType::received: return translated(QT_TRANSLATE_NOOP("TzVciTexts", "Rx"));
    default: return translated(QT_TRANSLATE_NOOP("TzVciTexts", "Err"));
    }
}

QString canIdTypeText(std::uint8_t flags)
{
    return translated(flags & TzVciCanFlag::extendedId ? QT_TRANSLATE_NOOP("TzVciTexts", "Extend")
                                                       : QT_TRANSLATE_NOOP("TzVciTexts", "Standard"));
}

QString canFrameKindText(std::uint8_t flags)
{
    return translated(flags & TzVciCanFlag::remote ? QT_TRANSLATE_NOOP("TzVciTexts", "Remote")
                                                   : QT_TRANSLATE_NOOP("TzVciTexts", "Data"));
}

QString linChecksumTypeText(std::uint8_t checksumType)
{
    return translated(checksumType == 1 ? QT_TRANSLATE_NOOP("TzVciTexts", "Enhanced")
                                        : QT_TRANSLATE_NOOP("TzVciTexts", "Standard"));
}

QString linDirectionText(std::uint8_t linDirection)
{
    return translated(linDirection < 2 ? QT_TRANSLATE_NOOP("TzVciTexts", "Rx") : QT_TRANSLATE_NOOP("TzVciTexts", "Tx"));
}

QString linFrameTypeText(std::uint8_t linDirection)
{
    switch (linDirection) {
    case TzVciLinDirection::slaveRead: return translated(QT_TRANSLATE_NOOP("TzVciTexts", "Slave Read"));
    case TzVciLinDirection::masterWrite: return translated(QT_TRANSLATE_NOOP("TzVciTexts", "Master Write"));
    case TzVciLinDirection::slaveWrite: return translated(QT_TRANSLATE_NOOP("TzVciTexts", "Slave Write"));
    default: return translated(QT_TRANSLATE_NOOP("TzVciTexts", "Master Read"));
    }
}

QString linActionText(std::uint8_t linAction)
{
    switch (linAction) {
    case TzVciLinAction::headerAndResponse:
    case TzVciLinAction::headerAndResponse4: return translated(QT_TRANSLATE_NOOP("TzVciTexts", "Head&Resp"));
    case TzVciLinAction::headerOnly: return translated(QT_TRANSLATE_NOOP("TzVciTexts", "Header"));
    case TzVciLinAction::responseOnly: return translated(QT_TRANSLATE_NOOP("TzVciTexts", "Response"));
    case TzVciLinAction::clearResponse: return translated(QT_TRANSLATE_NOOP("TzVciTexts", "Clear"));
    default: return translated(QT_TRANSLATE_NOOP("TzVciTexts", "Unknown"));
    }
}

QString canErrorText(const std::uint8_t *data, std::uint8_t dataLength)
{
    if (!data || dataLength != 4)
        return translated(QT_TRANSLATE_NOOP("TzVciTexts", "Unknown error"));
    const auto code = TzVciByteOrder::load<std::uint32_t>(data);
    const auto *const found =
        std::lower_bound(std::begin(canErrors), std::end(canErrors), code,
                         [](const CanError &error, std::uint32_t wanted) { return error.code < wanted; });
    if (found != std::end(canErrors) && found->code == code)
        return translated(found->text);
    return translated(QT_TRANSLATE_NOOP("TzVciTexts", "Unknown error code: 0x%1")).arg(code, 0, 16);
}
