// SPDX-License-Identifier: GPL-3.0-or-later
#include "logging/blf/BlfCsvForm.h"

#include "logging/blf/BlfRecordText.h"

namespace BLF {

using namespace Common::LineDigits;

namespace {

char *flagColumn(char *out, bool isSet)
{
    return flagText(character(out, ','), isSet);
}

char *numberColumn(char *out, std::uint32_t value)
{
    return decimal(character(out, ','), value);
}

char *additionalColumns(char *out, const BlfFrame &frame)
{
    out = flagColumn(out, frame.isBrs);
    out = flagColumn(out, frame.isEsi);
    out = flagColumn(out, frame.isWakeUp);
    out = flagColumn(out, frame.isNerr);
    out = numberColumn(out, frame.frameLength);
    out = numberColumn(out, frame.bitCount);
    out = numberColumn(out, frame.arbBitCount);
    out = numberColumn(out, frame.arbBitrate);
    out = numberColumn(out, frame.dataBitrate);
    out = numberColumn(out, frame.brsOffset);
    out = numberColumn(out, frame.crcDelOffset);
    return numberColumn(out, frame.crc);
}

} // namespace

std::string BlfCsvForm::header() const
{
    std::string columns = "Time,Channel,ID,Dir,FrameType,DLC,Data,Ext,RTR";
    if (m_hasFd && m_hasAdditionalInfo) {
        columns += ",FD,BRS,ESI,WU,NERR,FrameLength,BitCount,ArbBitCount,ArbBitrate,DataBitrate,BRS_Offset,"
                   "CRC_Del_Offset,CRC";
    }
    return columns + ",Description\n";
}

char *BlfCsvForm::line(char *out, const BlfFrame &frame) const
{
    out = timeText(out, frame.time);
    out = isBusFrame(frame) ? busFrame(out, frame) : event(out, frame);
    return utf8Text(character(out, ','), frame.description);
}

char *BlfCsvForm::busFrame(char *out, const BlfFrame &frame) const
{
    out = numberColumn(out, frame.channel);
    out = idText(text(out, ",0X"), frame, upperHex);
    out = utf8Text(character(out, ','), frame.dir);
    out = text(character(out, ','), frameTypeText(frame.frameType));
    out = numberColumn(out, frame.dlc);
    out = payloadText(character(out, ','), frame.data, upperHex);
    out = flagColumn(out, frame.isExtended);
    out = flagColumn(out, frame.isRtr);
    if (!frame.isFd)
        return out;
    out = flagColumn(out, true);
    return m_hasAdditionalInfo ? additionalColumns(out, frame) : out;
}

char *BlfCsvForm::event(char *out, const BlfFrame &frame) const
{
    out = text(out, ",,,,");
    out = text(out, frameTypeText(frame.frameType));
    out = text(out, ",,,,");
    return m_hasAdditionalInfo ? text(out, ",,,,,,,,,,,,,") : out;
}

} // namespace BLF
