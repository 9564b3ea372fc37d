// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <fmt/format.h>

#include <QByteArray>
#include <QStringView>

#include <string_view>

namespace Common {

/// Hands a toolkit text to the log functions; it becomes UTF-8 only if the line is really written.
/// Lives no longer than the call that it is an argument of.
struct LogText
{
    explicit LogText(QStringView textToLog)
        : text(textToLog)
    {
    }
    QStringView text;
};

} // namespace Common

template <> struct fmt::formatter<Common::LogText> : fmt::formatter<std::string_view>
{
    template <typename Context> auto format(const Common::LogText &text, Context &context) const
    {
        const QByteArray utf8 = text.text.toUtf8();
        return fmt::formatter<std::string_view>::format(
            std::string_view(utf8.constData(), static_cast<std::size_t>(utf8.size())), context);
    }
};
