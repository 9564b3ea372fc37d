// SPDX-License-Identifier: GPL-3.0-or-later
#include "logging/blf/BlfLineForm.h"

#include <cmath>

namespace BLF {

namespace {

constexpr std::size_t maxBytesOfUnit = 3; // a unit of UTF-16 in UTF-8
constexpr int standardIdDigits = 3;
constexpr int extendedIdDigits = 8;
constexpr std::int64_t microsecondsPerSecond = 1'000'000;
constexpr double longestTime = 18'446'744'073.709551; // seconds: 2^64 ns

std::size_t maxLineLength(const BlfFrame &frame, std::size_t fixedText)
{
    const auto units = static_cast<std::size_t>(frame.dir.size()) + static_cast<std::size_t>(frame.description.size());
    return fixedText + maxBytesOfUnit * units +
           Common::LineDigits::payloadLength(static_cast<std::size_t>(frame.data.size()));
}

} // namespace

void BlfLineForm::append(const BlfFrame &frame, Common::LineBuffer &out) const
{
    char *const end = line(out.reserve(maxLineLength(frame, maxFixedText)), frame);
    out.commit(Common::LineDigits::character(end, '\n'));
}

std::int64_t microseconds(double seconds) noexcept
{
    if (!(seconds > 0))
        return 0;
    if (seconds > longestTime)
        seconds = longestTime;
    const auto whole = static_cast<std::int64_t>(seconds);
    const double fraction = seconds - static_cast<double>(whole); // exact, as is the difference below
    const double scaled = fraction * static_cast<double>(microsecondsPerSecond);
    auto count = static_cast<std::int64_t>(scaled);
    const double rest = scaled - static_cast<double>(count);
    // What looks like a half may be one only since the product was rounded.
    if (rest > 0.5 || (rest == 0.5 && std::fma(fraction, static_cast<double>(microsecondsPerSecond), -scaled) >= 0))
        ++count;
    return whole * microsecondsPerSecond + count;
}

char *timeText(char *out, double seconds) noexcept
{
    return Common::LineDigits::seconds(out, microseconds(seconds));
}

char *flagText(char *out, bool isSet) noexcept
{
    return Common::LineDigits::character(out, isSet ? '1' : '0');
}

// Nearly all texts are ASCII, which needs no conversion and so no memory.
char *utf8Text(char *out, const QString &text)
{
    constexpr ushort firstBeyondAscii = 0x80;
    const ushort *unit = text.utf16();
    const ushort *const end = unit + text.size();
    for (; unit != end && *unit < firstBeyondAscii; ++unit)
        out = Common::LineDigits::character(out, static_cast<char>(*unit));
    if (unit == end)
        return out;
    const QByteArray rest = QStringView(unit, end).toUtf8();
    return Common::LineDigits::text(out, {rest.constData(), static_cast<std::size_t>(rest.size())});
}

char *idText(char *out, const BlfFrame &frame, const Common::LineDigits::HexTable &table) noexcept
{
    return Common::LineDigits::hex(out, frame.id, frame.isExtended ? extendedIdDigits : standardIdDigits, table);
}

char *payloadText(char *out, const QByteArray &data, const Common::LineDigits::HexTable &table) noexcept
{
    const auto *bytes = reinterpret_cast<const std::uint8_t *>(data.constData());
    return Common::LineDigits::payload(out, {bytes, static_cast<std::size_t>(data.size())}, table);
}

} // namespace BLF
