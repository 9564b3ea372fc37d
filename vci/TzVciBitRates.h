// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <span>

/// One bit rate that is offered to the user.
struct TzVciBitRate
{
    const char *text;    ///< as shown, e.g. "500 kbit/s"
    std::uint32_t value; ///< in bit/s
};

/// The bit rates that the dialogs offer, fastest first. Constant tables, any thread.
namespace TzVciBitRates {
std::span<const TzVciBitRate> canNominal() noexcept;
std::span<const TzVciBitRate> canFdData() noexcept;
std::span<const TzVciBitRate> lin() noexcept;
} // namespace TzVciBitRates
