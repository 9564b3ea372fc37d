// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "logging/LineBuffer.h"
#include "logging/LineDigits.h"
#include "logging/blf/BlfFrame.h"

#include <QString>

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace BLF {

/// How one kind of text file is made of records. Lines end in a line feed.
class BlfLineForm
{
public:
    BlfLineForm() = default;
    BlfLineForm(const BlfLineForm &) = delete;
    BlfLineForm &operator=(const BlfLineForm &) = delete;
    virtual ~BlfLineForm() = default;

    /// What the file begins with: whole lines.
    virtual std::string header() const = 0;
    /// What stands behind the last record; may be empty. Outlives the form.
    virtual std::string_view footer() const = 0;
    /// Appends the record's line. Allocates nothing but to grow the buffer, unless a text is not ASCII.
    void append(const BlfFrame &frame, Common::LineBuffer &out) const;

protected:
    /// Writes the line without its line feed at @p out, where there is room for the record's texts, its payload in
    /// hexadecimal and maxFixedText characters. @return the end
    virtual char *line(char *out, const BlfFrame &frame) const = 0;

    static constexpr std::size_t maxFixedText = 320; ///< all of a line but payload and texts
};

/// A data or remote frame: what is written also where internal events are not.
inline bool isBusFrame(const BlfFrame &frame) noexcept
{
    return frame.frameType == FrameType::data || frame.frameType == FrameType::remote;
}

/// To the nearest microsecond, halves upwards, of the double's exact value. Beyond what a time stamp in nanoseconds can
/// hold, the nearest such time.
std::int64_t microseconds(double seconds) noexcept;

// Like those of LineDigits: each writes at @p out, which must have the room, and returns the end.

/// Seconds with six digits behind the dot.
char *timeText(char *out, double seconds) noexcept;
/// "1" or "0".
char *flagText(char *out, bool isSet) noexcept;
/// UTF-8: up to three bytes for each unit of the text.
char *utf8Text(char *out, const QString &text);
/// Three digits, or eight for an extended identifier; more where it needs them.
char *idText(char *out, const BlfFrame &frame, const Common::LineDigits::HexTable &table) noexcept;
/// Pairs with blanks between them.
char *payloadText(char *out, const QByteArray &data, const Common::LineDigits::HexTable &table) noexcept;

} // namespace BLF
