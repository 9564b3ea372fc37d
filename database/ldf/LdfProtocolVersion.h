// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <cstdint>

/// Protocol and revision that a LIN description file states for its cluster.
enum class LdfProtocolVersion : std::int32_t
{
    lin13 = 0,
    lin20 = 1,
    lin21 = 2,
    lin22 = 3,
    j2602Rev110 = 4,
    j2602Rev210 = 5,
    j2602Rev310 = 6,
    iso17987Year2015 = 7,
    iso17987Year2016 = 8,
    iso17987Year2017 = 9,
    unknown = 10, ///< the file states none
};

/// Text for logs and summaries, for example "LIN 2.1"; "Unknown" for unknown and for any value outside the list.
QString ldfProtocolVersionText(LdfProtocolVersion version);

/// True for the J2602 revisions.
constexpr bool isJ2602(LdfProtocolVersion version) noexcept
{
    return version >= LdfProtocolVersion::j2602Rev110 && version <= LdfProtocolVersion::j2602Rev310;
}
/// True for the ISO 17987 editions.
constexpr bool isIso17987(LdfProtocolVersion version) noexcept
{
    return version >= LdfProtocolVersion::iso17987Year2015 && version <= LdfProtocolVersion::iso17987Year2017;
}

/// Finds the statement LIN_protocol_version in a prepared text (no block comments); unknown without one. A J2602
/// revision that is not in the list counts as 2.1.0; any other text, an unlisted edition of ISO 17987 too, as LIN 2.0.
LdfProtocolVersion detectLdfProtocolVersion(const QString &preparedText);
