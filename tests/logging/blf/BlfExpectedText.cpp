// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/logging/blf/BlfExpectation.h"

#include <algorithm>

namespace tztest {

namespace {

QString time(const BLF::BlfFrame &record)
{
    return QString::number(record.time, 'f', 6);
}

QString digit(bool isSet)
{
    return isSet ? QStringLiteral("1") : QStringLiteral("0");
}

QString frameTypeText(std::uint32_t frameType)
{
    static const QStringList texts{
        QStringLiteral("Data"),     QStringLiteral("RTR"),          QStringLiteral("Error"),
        QStringLiteral("FD_Error"), QStringLiteral("Driver_Error"), QStringLiteral("Overload"),
        QStringLiteral("Setting"),  QStringLiteral("SysVar"),       QStringLiteral("Statistic")};
    return texts.value(static_cast<int>(frameType), QStringLiteral("Unknown"));
}

QStringList numbers(std::initializer_list<std::uint32_t> values)
{
    QStringList texts;
    for (const std::uint32_t value : values)
        texts += QString::number(value);
    return texts;
}

QStringList csvFrame(const BLF::BlfFrame &record, bool hasAdditionalInfo)
{
    const QString id = QStringLiteral("0x%1").arg(record.id, record.isExtended ? 8 : 3, 16, QLatin1Char('0'));
    QStringList fields{time(record),
                       QString::number(record.channel),
                       id.toUpper(),
                       record.dir,
                       frameTypeText(record.frameType),
                       QString::number(record.dlc),
                       QString::fromLatin1(record.data.toHex(' ')).toUpper(),
                       digit(record.isExtended),
                       digit(record.isRtr)};
    if (record.isFd)
        fields += QStringLiteral("1");
    if (record.isFd && hasAdditionalInfo) {
        fields += {digit(record.isBrs), digit(record.isEsi), digit(record.isWakeUp), digit(record.isNerr)};
        fields += numbers({record.frameLength, record.bitCount, record.arbBitCount, record.arbBitrate,
                           record.dataBitrate, record.brsOffset, record.crcDelOffset, record.crc});
    }
    return fields << record.description;
}

QStringList csvEvent(const BLF::BlfFrame &record, bool hasAdditionalInfo)
{
    QStringList fields{time(record), {}, {}, {}, frameTypeText(record.frameType), {}, {}, {}, {}};
    for (int column = 0; hasAdditionalInfo && column < 13; ++column)
        fields += QString();
    return fields << record.description;
}

QString csvHeader(bool hasFdColumns)
{
    const QString fd = QStringLiteral(",FD,BRS,ESI,WU,NERR,FrameLength,BitCount,ArbBitCount,ArbBitrate,DataBitrate,"
                                      "BRS_Offset,CRC_Del_Offset,CRC");
    return QStringLiteral("Time,Channel,ID,Dir,FrameType,DLC,Data,Ext,RTR") + (hasFdColumns ? fd : QString()) +
           QStringLiteral(",Description");
}

QString ascId(const BLF::BlfFrame &record)
{
    return record.isExtended ? QStringLiteral("%1x").arg(record.id, 8, 16, QLatin1Char('0'))
                             : QStringLiteral("%1").arg(record.id, 3, 16, QLatin1Char('0'));
}

QString ascBytes(const BLF::BlfFrame &record, const QString &gap)
{
    if (record.isRtr || record.dlc == 0)
        return {};
    return gap + QString::fromLatin1(record.data.toHex(' '));
}

QString ascFrame(const BLF::BlfFrame &record, bool hasAdditionalInfo)
{
    const QString channel = QString::number(record.channel);
    if (!record.isFd) {
        const QStringList words{channel, ascId(record), record.dir, QStringLiteral("d"), QString::number(record.dlc)};
        const QString tail =
            hasAdditionalInfo
                ? QStringLiteral("   ") + numbers({record.frameLength, record.bitCount}).join(QStringLiteral("  "))
                : QString();
        return words.join(u' ') + ascBytes(record, QStringLiteral(" ")) + tail;
    }
    const QStringList words{
        QStringLiteral("CANFD"),    channel, record.dir, ascId(record), digit(record.isBrs), digit(record.isEsi),
        QString::number(record.dlc)};
    QString line = words.join(u' ') + u' ' + ascBytes(record, QString());
    if (hasAdditionalInfo) {
        line += QStringLiteral("   ") + numbers({record.frameLength, record.bitCount}).join(QStringLiteral("  ")) +
                QStringLiteral("   ") +
                numbers({record.arbBitrate, record.dataBitrate, record.brsOffset, record.crcDelOffset, record.crc})
                    .join(u' ');
    }
    return line;
}

QString ascEvent(const BLF::BlfFrame &record)
{
    QString title;
    switch (record.frameType) {
    case 2:
    case 4: title = QStringLiteral("ErrorFrame"); break;
    case 3: title = QStringLiteral("ErrorFrameFD"); break;
    case 5: title = QStringLiteral("OverloadFrame"); break;
    default: return record.description.isEmpty() ? QStringLiteral("InternalEvent") : record.description;
    }
    const QString text = record.description.isEmpty() ? QString() : u'"' + record.description + u'"';
    return title + u' ' + QString::number(record.channel) + u' ' + text;
}

} // namespace

QStringList expectedCsv(const std::vector<BLF::BlfFrame> &records, const BLF::BlfExportOptions &options)
{
    const bool hasAdditionalInfo = options.exportAdditionalInfo;
    const bool hasFd = std::any_of(records.begin(), records.end(), [](const auto &record) { return record.isFd; });
    QStringList lines{csvHeader(hasFd && hasAdditionalInfo)};
    for (const BLF::BlfFrame &record : records) {
        if (isBlfDataOrRemote(record))
            lines += csvFrame(record, hasAdditionalInfo).join(u',');
        else if (options.exportInternalEvents)
            lines += csvEvent(record, hasAdditionalInfo).join(u',');
    }
    return lines;
}

QStringList expectedAsc(const std::vector<BLF::BlfFrame> &records, const BLF::BlfExportOptions &options)
{
    QStringList lines{QString(),
                      QStringLiteral("base hex  timestamps absolute"),
                      options.exportInternalEvents ? QStringLiteral("internal events logged")
                                                   : QStringLiteral("no internal events logged"),
                      QStringLiteral("// version 7.0.0"),
                      QStringLiteral("// generated by zarnek"),
                      QStringLiteral("Begin TriggerBlock")};
    for (const BLF::BlfFrame &record : records) {
        if (isBlfDataOrRemote(record))
            lines += time(record) + u' ' + ascFrame(record, options.exportAdditionalInfo);
        else if (options.exportInternalEvents)
            lines += time(record) + u' ' + ascEvent(record);
    }
    return lines << QStringLiteral("End TriggerBlock");
}

} // namespace tztest
