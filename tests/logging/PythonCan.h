// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <cstdint>
#include <ostream>
#include <vector>

/// python3-can as a reader and writer that others wrote, called in a process of its own.
namespace tztest {

/// A frame as that library sees it.
struct PythonFrame
{
    double seconds = 0;
    int channel = 0; ///< counted from 0
    std::uint32_t id = 0;
    bool isExtended = false;
    bool isRemote = false;
    bool isError = false;
    bool isFd = false;
    bool isBitRateSwitched = false;
    bool isErrorStateIndicator = false;
    bool isReceived = true;
    int length = 0; ///< bytes, also of a remote frame, which has none
    std::vector<std::uint8_t> data{};

    bool operator==(const PythonFrame &) const = default;
};
std::ostream &operator<<(std::ostream &stream, const PythonFrame &frame);

/// Whether the system's Python has the library; a test is skipped without it.
bool hasPythonCan();
/// The frames of an ASC log. A reader that fails makes the running test fail.
std::vector<PythonFrame> readAscByPython(const QString &path);
/// Makes a BLF log of the frames. A writer that fails makes the running test fail.
void writeBlfByPython(const QString &path, const std::vector<PythonFrame> &frames);

} // namespace tztest
