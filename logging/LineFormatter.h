// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "logging/LineDigits.h"
#include "logging/RecordFormatter.h"

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <utility>

namespace Common {

/// A formatter made of a Form, which knows one line:
///
///     static constexpr std::size_t maxLineLength;               // line feed, time and all
///     static constexpr std::string_view footer;
///     std::string header() const;
///     bool isWritten(const TzVciMessage &message) const;        // false: the record gets no line and no time
///     std::uint64_t timestampOf(const TzVciMessage &message) const;
///     char *line(char *out, const TzVciMessage &message) const; // what follows the time, without the line feed
template <typename Form> class LineFormatter final : public RecordFormatter
{
public:
    explicit LineFormatter(Form form)
        : m_form(std::move(form))
    {
    }

    std::string header() const override { return m_form.header(); }
    std::string_view footer() const override { return Form::footer; }
    void append(std::span<const TzVciMessage> records, RecordClock &clock, LineBuffer &out) const override
    {
        for (const TzVciMessage &message : records) {
            if (!m_form.isWritten(message))
                continue;
            char *at = out.reserve(Form::maxLineLength);
            at = LineDigits::seconds(at, clock.next(message.deviceIndex, m_form.timestampOf(message)));
            at = m_form.line(at, message);
            out.commit(LineDigits::character(at, '\n'));
        }
    }

private:
    Form m_form;
};

} // namespace Common
