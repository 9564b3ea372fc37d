// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "logging/blf/BlfAscWriter.h"
#include "logging/blf/BlfCsvWriter.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <functional>
#include <string>

/// What the tests of both writers share.
namespace tztest {

/// How both writers are called alike.
struct BlfSaver
{
    const char *name;
    bool (*save)(const QString &, const BLF::BlfFrames &, const std::function<void()> &);
    BLF::BlfExportOptions *options;
    std::size_t linesAround; ///< lines of a file that are no records
};

inline constexpr BlfSaver blfCsvSaver{"csv", &BLF::BlfCsvWriter::saveCsv, &BLF::BlfCsvWriter::options, 1};
inline constexpr BlfSaver blfAscSaver{"asc", &BLF::BlfAscWriter::saveAsc, &BLF::BlfAscWriter::options, 7};

inline constexpr BLF::BlfExportOptions blfFramesAlone{.exportInternalEvents = false, .exportAdditionalInfo = false};
inline constexpr BLF::BlfExportOptions blfWithEvents{.exportInternalEvents = true, .exportAdditionalInfo = false};
inline constexpr BLF::BlfExportOptions blfWithInfo{.exportInternalEvents = false, .exportAdditionalInfo = true};
inline constexpr BLF::BlfExportOptions blfWithAll{};

/// The writers' options are those of the process: they are as before when this ends.
class BlfOptionsGuard
{
public:
    BlfOptionsGuard() = default;
    ~BlfOptionsGuard()
    {
        BLF::BlfCsvWriter::options = m_csv;
        BLF::BlfAscWriter::options = m_asc;
    }
    BlfOptionsGuard(const BlfOptionsGuard &) = delete;
    BlfOptionsGuard &operator=(const BlfOptionsGuard &) = delete;

private:
    BLF::BlfExportOptions m_csv = BLF::BlfCsvWriter::options;
    BLF::BlfExportOptions m_asc = BLF::BlfAscWriter::options;
};

inline std::string fileContent(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll().toStdString() : "cannot be read";
}

/// The whole file that a writer makes of the records.
inline std::string savedText(const BlfSaver &saver, const BLF::BlfExportOptions &options, const BLF::BlfFrames &frames)
{
    const BlfOptionsGuard guard;
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("saved"));
    *saver.options = options;
    EXPECT_TRUE(saver.save(path, frames, {}));
    return fileContent(path);
}

/// A classic frame on channel 1 with standard identifier 0x123 and one byte.
inline BLF::BlfFrame blfDataRecord(double time = 1)
{
    BLF::BlfFrame frame;
    frame.time = time;
    frame.channel = 1;
    frame.id = 0x123;
    frame.dlc = 1;
    frame.data = QByteArray(1, '\xAB');
    frame.dir = QStringLiteral("Rx");
    return frame;
}

inline BLF::BlfFrame blfRemoteRecord(double time = 1)
{
    BLF::BlfFrame frame = blfDataRecord(time);
    frame.frameType = BLF::FrameType::remote;
    frame.isRtr = true;
    frame.dlc = 8;
    frame.data.clear();
    return frame;
}

/// A CAN FD frame in which each field has a value of its own.
inline BLF::BlfFrame blfFdRecord(double time = 1)
{
    BLF::BlfFrame frame = blfDataRecord(time);
    frame.channel = 2;
    frame.id = 0x18DAF110;
    frame.isExtended = true;
    frame.dir = QStringLiteral("Tx");
    frame.dlc = 9;
    frame.data = QByteArray::fromHex("00112233445566778899aabb");
    frame.isFd = true;
    frame.isBrs = true;
    frame.isWakeUp = true;
    frame.frameLength = 268'000;
    frame.bitCount = 134;
    frame.arbBitCount = 29;
    frame.arbBitrate = 0x46500250;
    frame.dataBitrate = 0x4B280150;
    frame.brsOffset = 1001;
    frame.crcDelOffset = 2002;
    frame.crc = 0x80004645;
    return frame;
}

/// A CAN FD frame whose numbers have as many digits as they can.
inline BLF::BlfFrame blfGreatestRecord()
{
    constexpr std::uint32_t greatest = 4'294'967'295;
    BLF::BlfFrame frame = blfFdRecord(18446744073709551615.0 * 1e-9);
    frame.channel = frame.id = frame.frameLength = frame.arbBitrate = frame.dataBitrate = greatest;
    frame.brsOffset = frame.crcDelOffset = frame.crc = greatest;
    frame.bitCount = frame.arbBitCount = 65'535;
    frame.dlc = 255;
    frame.data = QByteArray(64, '\xFF');
    return frame;
}

inline BLF::BlfFrame blfEventRecord(std::uint32_t frameType, const QString &description, double time = 1)
{
    BLF::BlfFrame frame;
    frame.time = time;
    frame.channel = 3;
    frame.frameType = frameType;
    frame.description = description;
    return frame;
}

/// One of each type beside the frames, and one of a type that there is not; "a" to "h" unless without texts.
inline BLF::BlfFrames blfEventRecords(bool withTexts = true)
{
    BLF::BlfFrames frames;
    for (std::uint32_t type = BLF::FrameType::error; type <= BLF::FrameType::statistic + 1; ++type) {
        const QChar text(static_cast<ushort>('a' + type - BLF::FrameType::error));
        frames.push_back(blfEventRecord(type, withTexts ? QString(text) : QString()));
    }
    return frames;
}

} // namespace tztest
