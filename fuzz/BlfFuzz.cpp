// SPDX-License-Identifier: GPL-3.0-or-later
// Any file in the place of a BLF log, turned into text; and any bytes in the place of the objects in its containers.
#include "fuzz/FuzzFile.h"
#include "fuzz/FuzzSupport.h"
#include "logging/blf/BLFParser.h"
#include "logging/blf/BlfAscWriter.h"
#include "logging/blf/BlfCsvWriter.h"
#include "logging/blf/BlfReader.h"

#include <QFile>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace {

using Bytes = std::vector<std::uint8_t>;

void checkRecord(const BLF::BlfFrame &record)
{
    require(record.frameType <= BLF::FrameType::statistic);
    require(record.data.size() <= 64);
    require(record.data.isEmpty() || record.frameType != BLF::FrameType::remote);
    require(record.isRtr == (record.frameType == BLF::FrameType::remote));
    require((record.id & 0x80000000) == 0);
    for (const QChar character : record.description)
        require(character >= u' ');
}

// Each record makes one line of each text.
void checkText(const QString &path, std::size_t lines)
{
    QFile file(path);
    require(file.open(QIODevice::ReadOnly));
    const QByteArray text = file.readAll();
    require(text.endsWith('\n') && static_cast<std::size_t>(text.count('\n')) == lines);
}

void checkWriters(const BLF::BlfFrames &records, bool withAdditionalInfo)
{
    constexpr std::size_t linesAroundCsv = 1;
    constexpr std::size_t linesAroundAsc = 7;
    static const FuzzFile csv;
    static const FuzzFile asc;
    BLF::BlfCsvWriter::options.exportAdditionalInfo = withAdditionalInfo;
    BLF::BlfAscWriter::options.exportAdditionalInfo = withAdditionalInfo;
    require(BLF::BlfCsvWriter::saveCsv(csv.path(), records));
    checkText(csv.path(), records.size() + linesAroundCsv);
    require(BLF::BlfAscWriter::saveAsc(asc.path(), records));
    checkText(asc.path(), records.size() + linesAroundAsc);
}

void checkFile(const QString &path, std::size_t size)
{
    BLF::BlfFrames records;
    const bool hasRecords = BLF::BLFParser().parseFile(path, records);
    require(hasRecords == !records.empty());
    for (const BLF::BlfFrame &record : records)
        checkRecord(record);
    if (hasRecords)
        checkWriters(records, size % 2 == 0);
}

void append(Bytes &out, std::uint64_t value, int width)
{
    for (int shift = 0; shift < 8 * width; shift += 8)
        out.push_back(static_cast<std::uint8_t>(value >> shift));
}

// A log that holds the stream in stored containers of the size.
Bytes logOf(std::span<const std::uint8_t> stream, std::size_t containerSize)
{
    constexpr std::size_t fileHeaderSize = 144;
    constexpr std::size_t containerHeaderSize = 32;
    Bytes log;
    append(log, 0x47474F4C, 4);
    append(log, fileHeaderSize, 4);
    log.resize(fileHeaderSize);
    while (!stream.empty()) {
        const auto piece = stream.first(std::min(stream.size(), containerSize));
        append(log, 0x4A424F4C, 4);
        append(log, 0x0001'0010, 4); // of 16 bytes, version 1
        append(log, containerHeaderSize + piece.size(), 4);
        append(log, BLF::ObjectType::container, 4);
        append(log, 0, 8); // stored
        append(log, piece.size(), 8);
        log.insert(log.end(), piece.begin(), piece.end());
        log.resize(log.size() + piece.size() % 4);
        stream = stream.subspan(piece.size());
    }
    return log;
}

std::vector<std::uint64_t> objectsOf(const Bytes &log)
{
    static FuzzFile file;
    file.write(log.data(), log.size());
    BLF::BlfReader reader;
    require(reader.open(file.path()));
    std::vector<std::uint64_t> objects;
    for (BLF::ObjectHeader header; reader.peek(header); reader.skip())
        objects.insert(objects.end(), {header.type, header.objectSize, header.headerSize, header.timeNs});
    return objects;
}

// The same objects are found, wherever containers cut them.
void checkStream(std::span<const std::uint8_t> stream)
{
    const std::size_t containerSize = 1 + stream.size() % 61;
    require(objectsOf(logOf(stream, stream.size() + 1)) == objectsOf(logOf(stream, containerSize)));
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    makeLogLinesForNobody();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static FuzzFile input;
    input.write(data, size);
    checkFile(input.path(), size);
    checkStream({data, size});
    return 0;
}
