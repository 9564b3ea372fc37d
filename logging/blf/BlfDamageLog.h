// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "common/Log.h"

#include <QString>

#include <cstdint>
#include <string>
#include <string_view>

namespace BLF {

struct BlfGap;

/// Tells what of a log could not be read, by error lines that name it: a bounded number of them, and at the end one
/// with the number of those that were kept back.
class BlfDamageLog
{
public:
    static constexpr std::uint64_t maxLines = 100;

    explicit BlfDamageLog(const QString &path);
    ~BlfDamageLog();
    BlfDamageLog(const BlfDamageLog &) = delete;
    BlfDamageLog &operator=(const BlfDamageLog &) = delete;

    template <typename... Args> void tell(fmt::format_string<Args...> text, Args &&...args)
    {
        if (++m_count <= maxLines)
            Common::logError("{}: {}", m_path, fmt::format(text, std::forward<Args>(args)...));
    }
    /// Tells of bytes that were passed over.
    /// @param data  what its position counts in, to be put behind that; empty for the file
    void tellGap(const BlfGap &gap, std::string_view data);
    /// How often something was told.
    std::uint64_t count() const noexcept { return m_count; }

private:
    const std::string m_path; // UTF-8
    std::uint64_t m_count = 0;
};

} // namespace BLF
