// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QCoreApplication>
#include <QList>
#include <QString>

#include <optional>

class QUrl;

namespace BLF {

/// What a log becomes.
enum class TextFormat
{
    Csv,
    Asc
};

/// Which log becomes which text file, as the user said it: the names that belong to it, and what stands in its way.
/// Paths have slashes; a relative one counts from the working directory.
class BlfConversionJob
{
    Q_DECLARE_TR_FUNCTIONS(BLF::BlfConversionJob)
public:
    QString inputPath;
    QString outputPath;
    TextFormat format = TextFormat::Csv;

    static QString formatName(TextFormat format); ///< in capitals
    static QString extension(TextFormat format);  ///< in lower case, without a dot
    static QString nameFilter(TextFormat format); ///< for a file dialog
    /// Beside the log; empty where @p inputPath names no file.
    static QString defaultOutputPath(const QString &inputPath, TextFormat format);
    /// The first of some dropped files that is a log by its name; empty if there is none.
    static QString firstLog(const QList<QUrl> &files);

    /// Whether it is worth to offer a start.
    bool isComplete() const;
    /// Why it cannot start, for the user; nothing where it can.
    std::optional<QString> problem() const;
    /// Whether a file would be overwritten. A folder never is: saving fails on it.
    bool replacesFile() const;

private:
    bool hasInputFile() const;
    bool writesOverInput() const;
};

} // namespace BLF
