// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/soak/Verdict.h"

#include <fmt/format.h>

#include <cstdio>

namespace tzsoak {

void Verdict::tell(const std::string &name, const std::string &value)
{
    m_rows.push_back({name, value, "", ""});
}

void Verdict::judge(const std::string &name, bool ok, const std::string &value, const std::string &wanted)
{
    m_rows.push_back({name, value, wanted, ok ? "ok" : "WRONG"});
    if (!ok)
        m_reasons.push_back(fmt::format("{}: {}, wanted {}", name, value, wanted));
}

void Verdict::fail(const std::string &reason)
{
    m_reasons.push_back(reason);
}

void Verdict::print() const
{
    for (const Row &row : m_rows)
        fmt::print("{:<44} {:>28}  {:<34} {}\n", row.name, row.value, row.wanted, row.mark);
    for (const std::string &reason : m_reasons)
        fmt::print("FAILED: {}\n", reason);
    fmt::print("{}\n", isGood() ? "soak passed" : "soak FAILED");
    std::fflush(stdout);
}

} // namespace tzsoak
