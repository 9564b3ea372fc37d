// SPDX-License-Identifier: GPL-3.0-or-later
#include "tools/demo/DemoBlfLog.h"

#include <QDataStream>
#include <QFile>

#include <iterator>

namespace {

constexpr int frameCount = 12000;
constexpr int framesBetweenErrors = 500;
constexpr quint64 frameDistanceNs = 1'000'000;
constexpr quint32 identifiers[] = {0x0C9, 0x0F1, 0x1A5, 0x320};

constexpr int fileHeaderSize = 144;
constexpr quint16 objectHeaderSize = 32;
constexpr quint32 nanoseconds = 2; // unit of the time stamps

void writeFileHeader(QDataStream &out)
{
    constexpr int fieldsSize = 8; // of those that a reader needs
    out.writeRawData("LOGG", 4);
    out << quint32{fileHeaderSize};
    out.writeRawData(QByteArray(fileHeaderSize - fieldsSize, '\0').constData(), fileHeaderSize - fieldsSize);
}

void writeObjectHeader(QDataStream &out, quint32 type, quint32 bodySize, quint64 timeNs)
{
    constexpr quint16 version = 1;
    out.writeRawData("LOBJ", 4);
    out << objectHeaderSize << version << quint32{objectHeaderSize + bodySize} << type;
    out << nanoseconds << quint16{0} << quint16{0} << timeNs;
}

void writeFrame(QDataStream &out, int number)
{
    const auto counter = static_cast<quint32>(number);
    const auto channel = static_cast<quint16>(1 + number % 2);
    writeObjectHeader(out, 1, 16, counter * frameDistanceNs);
    out << channel << quint8{0} << quint8{8} << identifiers[counter % std::size(identifiers)];
    out << counter << quint32{0x4EB02211};
}

void writeErrorFrame(QDataStream &out, int number)
{
    writeObjectHeader(out, 2, 8, static_cast<quint64>(number) * frameDistanceNs);
    out << quint16{1} << quint16{0} << quint32{0};
}

} // namespace

bool saveDemoBlfLog(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    QDataStream out(&file);
    out.setByteOrder(QDataStream::LittleEndian);
    writeFileHeader(out);
    for (int number = 0; number < frameCount; ++number) {
        writeFrame(out, number);
        if (number % framesBetweenErrors == framesBetweenErrors - 1)
            writeErrorFrame(out, number);
    }
    return out.status() == QDataStream::Ok && file.flush();
}
