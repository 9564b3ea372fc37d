// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/logging/blf/BlfTestWriter.h"

#include <zlib.h>

#include <QFile>

#include <stdexcept>

namespace tztest {

namespace {

constexpr std::uint16_t storedMethod = 0;
constexpr std::uint16_t zlibMethod = 2;
constexpr std::uint32_t containerType = 10;
constexpr std::size_t containerFields = 32; // of the container, before its payload

void patch(BlfBytes &bytes, std::size_t at, std::uint32_t value)
{
    for (int shift = 0; shift < 32; shift += 8)
        bytes[at++] = static_cast<std::uint8_t>(value >> shift);
}

void appendSystemTime(BlfByteWriter &writer, const BlfSystemTime &time)
{
    writer.u16(time.year).u16(time.month).u16(time.dayOfWeek).u16(time.day);
    writer.u16(time.hour).u16(time.minute).u16(time.second).u16(time.millisecond);
}

void appendDeflated(BlfBytes &out, std::span<const std::uint8_t> bytes, int level)
{
    const std::size_t begin = out.size();
    uLongf length = compressBound(bytes.size());
    out.resize(begin + length);
    if (compress2(out.data() + begin, &length, bytes.data(), bytes.size(), level) != Z_OK)
        throw std::runtime_error("zlib refuses to deflate");
    out.resize(begin + length);
}

void appendContainerTo(BlfBytes &out, std::span<const std::uint8_t> stream, const BlfContainer &container)
{
    const std::size_t begin = out.size();
    BlfByteWriter writer(out);
    writer.u32(BlfHeader{}.signature).u16(16).u16(1).u32(0).u32(containerType);
    writer.u16(container.method.value_or(container.level == 0 ? storedMethod : zlibMethod)).u16(0).u32(0);
    writer.u32(container.uncompressedSize.value_or(static_cast<std::uint32_t>(stream.size())));
    writer.u32(container.leftOver);
    if (container.level == 0)
        writer.raw(stream);
    else
        appendDeflated(out, stream, container.level);
    const auto size = container.objectSize.value_or(static_cast<std::uint32_t>(out.size() - begin));
    patch(out, begin + 8, size);
    writer.zeros(container.padding.value_or(size % 4));
}

} // namespace

void appendObject(BlfBytes &out, std::uint32_t type, std::span<const std::uint8_t> body, const BlfHeader &header)
{
    const std::size_t begin = out.size();
    const std::size_t length = header.length.value_or(header.version == 2 ? 40 : 32);
    const auto size = header.objectSize.value_or(static_cast<std::uint32_t>(length + body.size()));
    BlfByteWriter writer(out);
    writer.u32(header.signature).u16(header.headerSize.value_or(static_cast<std::uint16_t>(length)));
    writer.u16(header.version).u32(size).u32(type);
    writer.u32(header.flags).u16(header.bits16).u16(header.objectVersion).u64(header.timeStamp);
    writer.u64(header.originalTimeStamp);
    out.resize(begin + length); // cut or filled up
    writer.raw(body).zeros(header.padding.value_or(size % 4));
}

BlfBytes blfObject(std::uint32_t type, std::span<const std::uint8_t> body, const BlfHeader &header)
{
    BlfBytes bytes;
    appendObject(bytes, type, body, header);
    return bytes;
}

BlfBytes blfDeflated(std::span<const std::uint8_t> bytes, int level)
{
    BlfBytes deflated;
    appendDeflated(deflated, bytes, level);
    return deflated;
}

BlfBytes blfContainer(std::span<const std::uint8_t> stream, const BlfContainer &container)
{
    BlfBytes bytes;
    appendContainerTo(bytes, stream, container);
    return bytes;
}

BlfTestWriter::BlfTestWriter()
    : BlfTestWriter(Options{})
{
}

BlfTestWriter::BlfTestWriter(const Options &options)
    : m_options(options)
{
}

BlfTestWriter &BlfTestWriter::add(std::uint32_t type, std::span<const std::uint8_t> body, const BlfHeader &header)
{
    appendObject(m_stream, type, body, header);
    ++m_objectCount;
    cutContainers();
    return *this;
}

BlfTestWriter &BlfTestWriter::addRaw(std::span<const std::uint8_t> bytes)
{
    BlfByteWriter(m_stream).raw(bytes);
    cutContainers();
    return *this;
}

BlfTestWriter &BlfTestWriter::endContainer()
{
    if (!m_stream.empty())
        appendContainer(m_stream);
    m_stream.clear();
    return *this;
}

BlfTestWriter &BlfTestWriter::addTopLevel(std::span<const std::uint8_t> bytes)
{
    endContainer();
    BlfByteWriter(m_file).raw(bytes);
    return *this;
}

// Wherever a container is full, be it within an object.
void BlfTestWriter::cutContainers()
{
    const std::size_t size = m_options.containerSize;
    if (size == 0 || m_stream.size() < size)
        return;
    std::size_t begin = 0;
    for (; m_stream.size() - begin >= size; begin += size)
        appendContainer(std::span(m_stream).subspan(begin, size));
    m_stream.erase(m_stream.begin(), m_stream.begin() + static_cast<std::ptrdiff_t>(begin));
}

void BlfTestWriter::appendContainer(std::span<const std::uint8_t> stream)
{
    appendContainerTo(m_file, stream, {.level = m_options.level});
    m_unpacked += containerFields + stream.size();
}

BlfBytes BlfTestWriter::fileHeader() const
{
    const BlfFileHeader &header = m_options.header;
    BlfBytes bytes;
    BlfByteWriter writer(bytes);
    writer.u32(header.signature).u32(header.headerSize).u32(header.apiNumber).u8(header.applicationId);
    writer.u8(header.compressionLevel).u8(header.applicationMajor).u8(header.applicationMinor);
    writer.u64(header.fileSize.value_or(header.length + m_file.size()));
    writer.u64(header.uncompressedSize.value_or(header.length + m_unpacked));
    writer.u32(header.objectCount.value_or(m_objectCount)).u32(header.applicationBuild);
    appendSystemTime(writer, header.startTime);
    appendSystemTime(writer, header.lastObjectTime);
    writer.u64(header.restorePointsOffset);
    bytes.resize(header.length); // cut or filled up
    return bytes;
}

BlfBytes BlfTestWriter::file()
{
    endContainer();
    BlfBytes bytes = fileHeader();
    BlfByteWriter(bytes).raw(m_file);
    return bytes;
}

bool BlfTestWriter::save(const QString &path)
{
    return saveBytes(path, file());
}

bool saveBytes(const QString &path, std::span<const std::uint8_t> bytes)
{
    const auto length = static_cast<qint64>(bytes.size());
    QFile file(path);
    return file.open(QIODevice::WriteOnly) &&
           file.write(reinterpret_cast<const char *>(bytes.data()), length) == length && file.flush();
}

} // namespace tztest
