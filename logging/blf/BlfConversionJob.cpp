// SPDX-License-Identifier: GPL-3.0-or-later
#include "logging/blf/BlfConversionJob.h"

#include "common/LocalFileName.h"

#include <QDir>
#include <QFileInfo>
#include <QUrl>

#include <filesystem>
#include <system_error>

namespace BLF {

QString BlfConversionJob::formatName(TextFormat format)
{
    return format == TextFormat::Csv ? QStringLiteral("CSV") : QStringLiteral("ASC");
}

QString BlfConversionJob::extension(TextFormat format)
{
    return formatName(format).toLower();
}

QString BlfConversionJob::nameFilter(TextFormat format)
{
    return tr("%1 Files (*.%2);;All Files (*)").arg(formatName(format), extension(format));
}

QString BlfConversionJob::defaultOutputPath(const QString &inputPath, TextFormat format)
{
    const QFileInfo input(inputPath);
    if (input.fileName().isEmpty())
        return {};
    // Put together by hand: a name that begins with a colon is taken for a path of its own elsewhere.
    QString folder = input.absolutePath();
    if (!folder.endsWith(QLatin1Char('/')))
        folder += QLatin1Char('/');
    return folder + QStringLiteral("%1_processed.%2").arg(input.baseName(), extension(format));
}

QString BlfConversionJob::firstLog(const QList<QUrl> &files)
{
    for (const QUrl &file : files) {
        QString path = file.toLocalFile();
        if (path.endsWith(QLatin1String(".blf"), Qt::CaseInsensitive))
            return path;
    }
    return {};
}

bool BlfConversionJob::isComplete() const
{
    return hasInputFile() && !outputPath.isEmpty();
}

std::optional<QString> BlfConversionJob::problem() const
{
    if (inputPath.isEmpty())
        return tr("Please select an input file");
    if (!hasInputFile())
        return tr("Input file does not exist");
    if (outputPath.isEmpty())
        return tr("Please select an output file");
    if (writesOverInput())
        return tr("The output file is the input file. Please select another output file");
    return std::nullopt;
}

bool BlfConversionJob::replacesFile() const
{
    const QFileInfo output(outputPath);
    return output.exists() && !output.isDir();
}

// Not a folder, and not a pipe either, on which opening waits for somebody who writes.
bool BlfConversionJob::hasInputFile() const
{
    return !inputPath.isEmpty() && QFileInfo(inputPath).isFile();
}

// Also by another name of the same file. The log would be lost: nothing makes it of its text again.
bool BlfConversionJob::writesOverInput() const
{
    std::error_code error; // there is no output yet
    return std::filesystem::equivalent(Common::localFileName(inputPath), Common::localFileName(outputPath), error);
}

} // namespace BLF
