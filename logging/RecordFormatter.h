// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "logging/LineBuffer.h"
#include "logging/RecordClock.h"
#include "vci/TzVciMessage.h"

#include <span>
#include <string>
#include <string_view>

namespace Common {

/// The text of one kind of recording: what stands before, in and after the records of a file. Has no state of its own.
class RecordFormatter
{
public:
    virtual ~RecordFormatter() = default;

    /// What a file begins with: whole lines.
    virtual std::string header() const = 0;
    /// The line after the last record; empty where the form has none. Outlives the formatter.
    virtual std::string_view footer() const = 0;
    /// Appends a line for each record that is to be written, in order. Allocates nothing but to grow the buffer.
    virtual void append(std::span<const TzVciMessage> records, RecordClock &clock, LineBuffer &out) const = 0;
};

} // namespace Common
