// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "logging/blf/BlfLineForm.h"

namespace BLF {

/// Comma separated values. Nothing is quoted.
///
/// Lines of classic frames have no column of those that CAN FD frames and the other records fill between "RTR" and
/// "Description": readers of such files know them by their lengths.
class BlfCsvForm final : public BlfLineForm
{
public:
    /// @param hasFd  whether there is a CAN FD frame among the records
    BlfCsvForm(bool hasAdditionalInfo, bool hasFd) noexcept
        : m_hasAdditionalInfo(hasAdditionalInfo)
        , m_hasFd(hasFd)
    {
    }

    std::string header() const override;
    std::string_view footer() const override { return {}; }

protected:
    char *line(char *out, const BlfFrame &frame) const override;

private:
    char *busFrame(char *out, const BlfFrame &frame) const;
    char *event(char *out, const BlfFrame &frame) const;

    bool m_hasAdditionalInfo;
    bool m_hasFd;
};

} // namespace BLF
