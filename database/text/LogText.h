// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <fmt/format.h>

#include <QByteArray>
#include <QStringView>

#include <string_view>

namespace Common {

/// Hands a toolkit text to the log functions; it becomes UTF-8 only if the line is really written. A text longer than
/// anybody reads is cut and ends in "...", so that a line costs little however long the names of a hostile file are.
/// Lives no longer than the call that it is an argument of.
struct LogText
{
    static constexpr qsizetype longest = 1000; ///< characters that a line shows of a text

    explicit LogText(QStringView textToLog)
        : text(textToLog)
    {
    }
    /// Shown to its end, however long: for what a file brings once, so that its lines together are no longer than it
    /// is.
    static LogText whole(QStringView textToLog)
    {
        LogText result(textToLog);
        result.most = textToLog.size();
        return result;
    }

    QByteArray toUtf8() const
    {
        if (text.size() <= most)
            return text.toUtf8();
        const bool splitsPair = text[most - 1].isHighSurrogate();
        return text.left(splitsPair ? most - 1 : most).toUtf8() + "...";
    }

    QStringView text;
    qsizetype most = longest;
};

} // namespace Common

template <> struct fmt::formatter<Common::LogText> : fmt::formatter<std::string_view>
{
    template <typename Context> auto format(const Common::LogText &text, Context &context) const
    {
        const QByteArray utf8 = text.toUtf8();
        return fmt::formatter<std::string_view>::format(
            std::string_view(utf8.constData(), static_cast<std::size_t>(utf8.size())), context);
    }
};
