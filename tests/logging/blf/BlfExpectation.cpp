// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/logging/blf/BlfExpectation.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace tztest {

namespace {

QString hex(std::uint64_t value)
{
    return QString::number(value, 16);
}

QString pairs(const QByteArray &bytes)
{
    return QString::fromLatin1(bytes.toHex(' '));
}

// The identifier without the flag of the extended format.
std::uint32_t plainId(const GoldenBlfObject &object)
{
    return static_cast<std::uint32_t>(object.number("id")) & 0x7FFFFFFFU;
}

int lengthOfDlc(std::uint64_t dlc, bool isFdFormat)
{
    constexpr std::array lengths{0, 1, 2, 3, 4, 5, 6, 7, 8, 12, 16, 20, 24, 32, 48, 64};
    return isFdFormat ? lengths[dlc & 0x0FU] : static_cast<int>(std::min<std::uint64_t>(dlc, 8));
}

bool isFdFormat(const GoldenBlfObject &object)
{
    switch (object.type) {
    case 100: return (object.number("fd") & 0x01U) != 0;
    case 101: return (object.number("flags") & 0x1000U) != 0;
    default: return (object.number("extf") & 0x01U) != 0;
    }
}

// Bytes that the object calls valid but does not store are zero; with none called valid, the DLC counts.
QByteArray fdData(const GoldenBlfObject &object)
{
    const QByteArray stored = object.bytes("data");
    const int valid = static_cast<int>(std::min<std::uint64_t>(object.number("valid"), 64));
    if (valid == 0)
        return stored.left(lengthOfDlc(object.number("dlc"), isFdFormat(object)));
    return stored.left(valid).leftJustified(valid, '\0');
}

void takeIdAndDlc(BLF::BlfFrame &record, const GoldenBlfObject &object)
{
    record.id = plainId(object);
    record.isExtended = (object.number("id") & 0x80000000U) != 0;
    record.dlc = static_cast<std::uint8_t>(object.number("dlc"));
    record.frameLength = static_cast<std::uint32_t>(object.number("flen"));
}

void setRemote(BLF::BlfFrame &record, bool isRemote)
{
    record.isRtr = isRemote;
    record.frameType = isRemote ? 1 : 0;
    if (isRemote)
        record.data.clear();
}

QString directionText(bool isTx)
{
    return isTx ? QStringLiteral("Tx") : QStringLiteral("Rx");
}

// What types 1, 86 and 100 have in common.
void takeCanFlags(BLF::BlfFrame &record, const GoldenBlfObject &object)
{
    const std::uint64_t flags = object.number("flags");
    record.dir = directionText((flags & 0x0FU) != 0);
    record.isNerr = (flags & 0x20U) != 0;
    record.isWakeUp = (flags & 0x40U) != 0;
    setRemote(record, (flags & 0x80U) != 0);
}

void takeCanMessage(BLF::BlfFrame &record, const GoldenBlfObject &object)
{
    takeIdAndDlc(record, object);
    record.data = object.bytes("data").left(std::min(int(record.dlc), 8));
    record.bitCount = static_cast<std::uint16_t>(object.number("bits"));
    takeCanFlags(record, object);
}

void takeCanFdMessage(BLF::BlfFrame &record, const GoldenBlfObject &object)
{
    takeIdAndDlc(record, object);
    record.isFd = true;
    record.data = fdData(object);
    record.isBrs = (object.number("fd") & 0x02U) != 0;
    record.isEsi = (object.number("fd") & 0x04U) != 0;
    record.arbBitCount = static_cast<std::uint16_t>(object.number("arbbits"));
    takeCanFlags(record, object);
}

void takeCanFdMessage64(BLF::BlfFrame &record, const GoldenBlfObject &object)
{
    const std::uint64_t flags = object.number("flags");
    takeIdAndDlc(record, object);
    record.isFd = true;
    record.data = fdData(object);
    record.dir = directionText(object.number("dir") != 0);
    record.isNerr = (flags & 0x0004U) != 0;
    record.isWakeUp = (flags & 0x0008U) != 0;
    record.isBrs = (flags & 0x2000U) != 0;
    record.isEsi = (flags & 0x4000U) != 0;
    record.bitCount = static_cast<std::uint16_t>(object.number("bits"));
    record.arbBitrate = static_cast<std::uint32_t>(object.number("btra"));
    record.dataBitrate = static_cast<std::uint32_t>(object.number("btrd"));
    record.brsOffset = static_cast<std::uint32_t>(object.number("brsns"));
    record.crcDelOffset = static_cast<std::uint32_t>(object.number("crcns"));
    record.crc = static_cast<std::uint32_t>(object.number("crc"));
    setRemote(record, (flags & 0x0080U) != 0);
}

QString statisticText(const GoldenBlfObject &object)
{
    const std::uint64_t load = object.number("load") == 32768 ? 0 : object.number("load");
    QString text = QStringLiteral("Statistic:");
    for (const auto &[title, field] : {std::pair("D", "std"), std::pair("R", "stdr"), std::pair("XD", "ext"),
                                       std::pair("XR", "extr"), std::pair("E", "err"), std::pair("O", "ovl")})
        text += QStringLiteral(" %1 %2").arg(QLatin1String(title)).arg(object.number(field));
    return text + QStringLiteral(" B %1.%2%").arg(load / 100).arg(load % 100, 2, 10, QLatin1Char('0'));
}

QString driverErrorText(const GoldenBlfObject &object)
{
    QString counters;
    if (object.number("tx") != 0 || object.number("rx") != 0)
        counters = QStringLiteral("TxErr: %1 RxErr: %2").arg(object.number("tx")).arg(object.number("rx"));
    return QStringLiteral("DriverError: ErrorCode:0x") + hex(object.number("code")) + QStringLiteral(" ErrorCount: ") +
           counters;
}

template <typename Value> Value valueOf(const QByteArray &bytes)
{
    Value value{};
    std::memcpy(&value, bytes.constData(), std::min(sizeof value, static_cast<std::size_t>(bytes.size())));
    return value;
}

QString systemVariableText(const GoldenBlfObject &object)
{
    const QByteArray data = object.bytes("data");
    QString value = QStringLiteral("0");
    switch (object.number("type")) {
    case 1: value = QString::number(valueOf<double>(data), 'g', 4); break;
    case 2: value = QString::number(valueOf<qint32>(data)); break;
    case 3: value = u'"' + QString::fromUtf8(data.constData()) + u'"'; break;
    case 6: value = QString::number(valueOf<qint64>(data)); break;
    default: break;
    }
    return QStringLiteral("SV: ") + QString::number(object.number("type")) + u' ' + object.text("name") +
           QStringLiteral(" = ") + value;
}

QString errorFrameExtText(const GoldenBlfObject &object)
{
    const std::uint64_t dlc = object.number("dlc") & 0x0FU;
    const QByteArray data = object.bytes("data").left(static_cast<int>(std::min<std::uint64_t>(dlc, 8)));
    return QStringLiteral("ErrorFrame Flags = 0x") + hex(object.number("flags")) + QStringLiteral(" CodeExt = 0x") +
           hex(object.number("fext")) + QStringLiteral(" Code = 0x") + hex(object.number("ecc")) +
           QStringLiteral(" ID = 0x") + hex(plainId(object)) + QStringLiteral(" DLC = ") + QString::number(dlc) +
           QStringLiteral(" Position = ") + QString::number(object.number("pos")) + QStringLiteral(" Length = ") +
           QString::number(object.number("flen")) + u' ' +
           (dlc == 0 ? QString() : QStringLiteral("Data = ") + pairs(data));
}

bool isErrorFrameExtSent(const GoldenBlfObject &object)
{
    const std::uint64_t flags = object.number("flags");
    const std::uint64_t extended = object.number("fext");
    if ((flags & 0x02U) != 0)
        return (extended & 0x1000U) != 0;
    return (flags & 0x01U) != 0 && (extended & 0x20U) == 0;
}

QString fdErrorDirection(const GoldenBlfObject &object)
{
    return directionText((object.number("flags") & 0x20U) == 0);
}

QString fdErrorText(const GoldenBlfObject &object)
{
    const std::uint64_t flags = object.number("extf");
    const QStringList words{fdErrorDirection(object),
                            QStringLiteral("ErrorCode:"),
                            QStringLiteral("0x") + hex(object.number("ecc")),
                            QStringLiteral("0x") + hex(object.number("flags")),
                            QStringLiteral("0x") + hex(object.number("ecext")),
                            (flags & 0x08U) != 0 ? QStringLiteral("Data") : QStringLiteral("Arb."),
                            (flags & 0x02U) != 0 ? QStringLiteral("1") : QStringLiteral("0"),
                            (flags & 0x04U) != 0 ? QStringLiteral("1") : QStringLiteral("0"),
                            QStringLiteral("0x") + hex(plainId(object)),
                            QString::number(object.number("flen")),
                            QStringLiteral("0x") + hex(object.number("btra")),
                            QStringLiteral("0x") + hex(object.number("btrd")),
                            QString::number(object.number("brsns")),
                            QString::number(object.number("crcns")),
                            QStringLiteral("0x") + hex(object.number("crc")),
                            QString::number(object.number("epos")),
                            QString::number(object.number("dlc")),
                            QString::number(object.number("valid")),
                            pairs(fdData(object))};
    return words.join(u' ');
}

void setEvent(BLF::BlfFrame &record, std::uint32_t frameType, const QString &description, const QString &dir = {})
{
    record.frameType = frameType;
    record.description = description;
    record.dir = dir;
}

} // namespace

BLF::BlfFrame expectedBlfRecord(const GoldenBlfObject &object)
{
    BLF::BlfFrame record;
    record.time = static_cast<double>(object.timeNs) * 1e-9;
    record.channel = static_cast<std::uint32_t>(object.number("ch"));
    switch (object.type) {
    case 1:
    case 86: takeCanMessage(record, object); break;
    case 2: setEvent(record, 2, QStringLiteral("ErrorFrame"), QStringLiteral("Rx")); break;
    case 4: setEvent(record, 8, statisticText(object)); break;
    case 31: setEvent(record, 4, driverErrorText(object)); break;
    case 72: setEvent(record, 7, systemVariableText(object)); break;
    case 73: setEvent(record, 2, errorFrameExtText(object), directionText(isErrorFrameExtSent(object))); break;
    case 91: setEvent(record, 5, QStringLiteral("Reception overrun - messages are lost")); break;
    case 100: takeCanFdMessage(record, object); break;
    case 101: takeCanFdMessage64(record, object); break;
    case 104: setEvent(record, 3, fdErrorText(object), fdErrorDirection(object)); break;
    default: ADD_FAILURE() << "no rule for type " << object.type;
    }
    return record;
}

bool isBlfDataOrRemote(const BLF::BlfFrame &record)
{
    return record.frameType <= 1;
}

} // namespace tztest
