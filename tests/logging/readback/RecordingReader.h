// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

namespace tztest {

enum class RecordFamily
{
    Can,
    Lin
};
enum class RecordFormat
{
    Asc,
    Csv
};

/// What one record of a file tells; what its form does not tell keeps the value given here.
struct RecordedFrame
{
    int device = -1; ///< told only with extra information
    int channel = 0; ///< counted from 0
    bool isError = false;
    std::uint32_t id = 0;
    bool isExtended = false;
    bool isRemote = false;
    bool isFd = false;
    bool isBitRateSwitched = false;
    std::string direction; ///< "Rx" or "Tx", for LIN in CSV with the type: "Tx,Master Read"
    int length = 0;
    std::vector<std::uint8_t> data;
    int protectedId = -1;
    int checksum = -1;
    std::string checksumType;

    bool operator==(const RecordedFrame &) const = default;
};
std::ostream &operator<<(std::ostream &stream, const RecordedFrame &frame);

/// One file of a recording, read by rules of its own: a line that is not exactly of the form is a problem.
struct RecordedFile
{
    std::vector<std::string> times; ///< of the frames, as they stand
    std::vector<RecordedFrame> frames;
    std::vector<std::string> problems;
};
RecordedFile readRecording(const QString &path, RecordFamily family, RecordFormat format);

/// All files of a recording in the order in which they were written: NAME.1.EXT, NAME.2.EXT, ..., NAME.EXT.
std::vector<RecordedFile> readRecordings(const QString &path, RecordFamily family, RecordFormat format);

} // namespace tztest
