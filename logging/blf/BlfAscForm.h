// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "logging/blf/BlfExportOptions.h"
#include "logging/blf/BlfLineForm.h"

#include <QDateTime>

namespace BLF {

/// The ASC log: hexadecimal, absolute times, one trigger block.
class BlfAscForm final : public BlfLineForm
{
public:
    /// @param now  stands in the file's first line
    BlfAscForm(const BlfExportOptions &options, const QDateTime &now)
        : m_options(options)
        , m_now(now)
    {
    }

    std::string header() const override;
    std::string_view footer() const override { return "End TriggerBlock\n"; }

protected:
    char *line(char *out, const BlfFrame &frame) const override;

private:
    char *classicFrame(char *out, const BlfFrame &frame) const;
    char *fdFrame(char *out, const BlfFrame &frame) const;

    BlfExportOptions m_options;
    QDateTime m_now;
};

} // namespace BLF
