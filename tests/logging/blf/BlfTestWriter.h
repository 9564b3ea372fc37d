// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tests/logging/blf/BlfTestBodies.h"

#include <QString>

#include <cstdint>
#include <optional>
#include <span>

namespace tztest {

/// Time stamps' units, as the objects' flags say them.
inline constexpr std::uint32_t blfTenMicroseconds = 1;
inline constexpr std::uint32_t blfNanoseconds = 2;

/// What stands before a body. The defaults are those of a recorder.
struct BlfHeader
{
    std::uint64_t timeStamp = 0; ///< in the unit that the flags say
    std::uint32_t flags = blfNanoseconds;
    std::uint16_t version = 1; ///< 1, 2 or 3
    std::uint16_t objectVersion = 0;
    std::uint16_t bits16 = 0;                  ///< at 20: client index, status of the time stamp or static size
    std::uint64_t originalTimeStamp = 0;       ///< for headers of 40 bytes
    std::optional<std::size_t> length{};       ///< true length; otherwise 40 for version 2 and 32 else
    std::optional<std::uint16_t> headerSize{}; ///< what the header says in place of its length
    std::optional<std::uint32_t> objectSize{}; ///< what the header says in place of the object's length
    std::optional<std::size_t> padding{};      ///< zero bytes behind; otherwise what the object says as size, modulo 4
    std::uint32_t signature = 0x4A424F4C;      ///< "LOBJ"
};

/// An object with its padding, put behind the bytes that are there.
void appendObject(BlfBytes &out, std::uint32_t type, std::span<const std::uint8_t> body, const BlfHeader &header = {});

/// An object with its padding.
BlfBytes blfObject(std::uint32_t type, std::span<const std::uint8_t> body, const BlfHeader &header = {});
template <typename Body> BlfBytes blfObject(const Body &body, const BlfHeader &header = {})
{
    return blfObject(Body::type, bodyBytes(body), header);
}

/// How a container holds its piece of the stream.
struct BlfContainer
{
    int level = 0;                                   ///< 0 stored, 1 to 9 deflated by zlib
    std::optional<std::uint16_t> method{};           ///< said instead of 0 (stored) or 2 (zlib)
    std::optional<std::uint32_t> uncompressedSize{}; ///< said instead of the true size
    std::optional<std::uint32_t> objectSize{};       ///< said instead of the true size
    std::optional<std::size_t> padding{};            ///< zero bytes behind; otherwise what it says as size, modulo 4
    std::uint32_t leftOver = 0;                      ///< in the reserved word behind the size
};

/// A container with its padding.
BlfBytes blfContainer(std::span<const std::uint8_t> stream, const BlfContainer &container = {});
/// zlib's form of some bytes.
BlfBytes blfDeflated(std::span<const std::uint8_t> bytes, int level = 6);

struct BlfSystemTime
{
    std::uint16_t year = 0, month = 0, dayOfWeek = 0, day = 0, hour = 0, minute = 0, second = 0, millisecond = 0;
};

/// The file's header. Sizes and the count are those of the file unless set.
struct BlfFileHeader
{
    std::uint32_t signature = 0x47474F4C; ///< "LOGG"
    std::uint32_t headerSize = 144;
    std::size_t length = 144; ///< true length
    std::uint32_t apiNumber = 4070100;
    std::uint8_t applicationId = 2;
    std::uint8_t compressionLevel = 6;
    std::uint8_t applicationMajor = 8;
    std::uint8_t applicationMinor = 1;
    std::optional<std::uint64_t> fileSize{};
    std::optional<std::uint64_t> uncompressedSize{};
    std::optional<std::uint32_t> objectCount{};
    std::uint32_t applicationBuild = 36;
    BlfSystemTime startTime{2024, 3, 2, 5, 14, 30, 15, 250};
    BlfSystemTime lastObjectTime{2024, 3, 2, 5, 14, 30, 17, 250};
    std::uint64_t restorePointsOffset = 0;
};

/// Makes a BLF log: objects go into a stream, which containers of equal size cut wherever they are full.
///
///     BlfTestWriter log({.level = 6, .containerSize = 50});
///     log.add(CanMessageBody{.dlc = 2, .id = 0x123}, {.timeStamp = 1'000'000});
///     ASSERT_TRUE(log.save(path));
class BlfTestWriter
{
public:
    struct Options
    {
        int level = 0;                       ///< of the containers: 0 stored, 1 to 9 deflated
        std::size_t containerSize = 131'072; ///< bytes of stream in each; 0: one container for all
        BlfFileHeader header{};
    };

    BlfTestWriter();
    explicit BlfTestWriter(const Options &options);

    template <typename Body> BlfTestWriter &add(const Body &body, const BlfHeader &header = {})
    {
        m_body.clear();
        appendBody(m_body, body);
        return add(Body::type, m_body, header);
    }
    BlfTestWriter &add(std::uint32_t type, std::span<const std::uint8_t> body, const BlfHeader &header = {});
    /// Any bytes into the stream, objects or not.
    BlfTestWriter &addRaw(std::span<const std::uint8_t> bytes);
    /// Ends the container here; nothing where none is begun.
    BlfTestWriter &endContainer();
    /// Any bytes between the containers, the one begun being ended before: blfContainer(), blfObject() or damage.
    BlfTestWriter &addTopLevel(std::span<const std::uint8_t> bytes);

    /// Objects added, raw bytes not counted.
    std::uint32_t objectCount() const { return m_objectCount; }
    /// Bytes of the file so far, without the container begun.
    std::size_t fileSize() const { return m_options.header.length + m_file.size(); }
    /// The whole file; further objects may follow.
    BlfBytes file();
    /// Writes file() to @p path.
    bool save(const QString &path);

private:
    void cutContainers();
    void appendContainer(std::span<const std::uint8_t> stream);
    BlfBytes fileHeader() const;

    Options m_options;
    BlfBytes m_body;
    BlfBytes m_stream; // of the container begun
    BlfBytes m_file;   // without the header
    std::uint64_t m_unpacked = 0;
    std::uint32_t m_objectCount = 0;
};

/// Writes bytes to a file; false where that fails.
bool saveBytes(const QString &path, std::span<const std::uint8_t> bytes);

} // namespace tztest
