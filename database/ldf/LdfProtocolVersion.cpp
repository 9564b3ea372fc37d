// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/ldf/LdfProtocolVersion.h"

#include "database/text/Sections.h"

#include <QRegularExpression>

#include <array>

namespace {

struct VersionText
{
    const char *text;
    LdfProtocolVersion version;
};

constexpr std::array<const char *, 11> summaryTexts{"LIN 1.3",        "LIN 2.0",        "LIN 2.1",     "LIN 2.2",
                                                    "J2602 1.1.0",    "J2602 2.1.0",    "J2602 3.1.0", "ISO 17987:2015",
                                                    "ISO 17987:2016", "ISO 17987:2017", "Unknown"};

LdfProtocolVersion versionOf(const QString &text)
{
    static constexpr std::array versions{
        VersionText{"1.3", LdfProtocolVersion::lin13},
        VersionText{"2.0", LdfProtocolVersion::lin20},
        VersionText{"2.1", LdfProtocolVersion::lin21},
        VersionText{"2.2", LdfProtocolVersion::lin22},
        VersionText{"J2602_1_1.0", LdfProtocolVersion::j2602Rev110},
        VersionText{"J2602_3_1.0", LdfProtocolVersion::j2602Rev310},
        VersionText{"ISO17987:2015", LdfProtocolVersion::iso17987Year2015},
        VersionText{"ISO17987:2016", LdfProtocolVersion::iso17987Year2016},
        VersionText{"ISO17987:2017", LdfProtocolVersion::iso17987Year2017},
    };
    for (const VersionText &entry : versions) {
        if (text == QLatin1String(entry.text))
            return entry.version;
    }
    return text.startsWith(QLatin1String("J2602")) ? LdfProtocolVersion::j2602Rev210 : LdfProtocolVersion::lin20;
}

} // namespace

QString ldfProtocolVersionText(LdfProtocolVersion version)
{
    const auto index = static_cast<std::size_t>(version);
    return QString::fromLatin1(summaryTexts[index < summaryTexts.size() ? index : summaryTexts.size() - 1]);
}

LdfProtocolVersion detectLdfProtocolVersion(const QString &preparedText)
{
    static const QRegularExpression pattern(QStringLiteral("LIN_protocol_version\\s*=\\s*\"([^\"]+)\""));
    const auto match = Common::Sections::match(pattern, preparedText);
    return match.hasMatch() ? versionOf(match.captured(1).trimmed()) : LdfProtocolVersion::unknown;
}
