// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/TzViewSnapshot.h"

#include "views/TzViewAscText.h"
#include "views/TzViewTextWriter.h"

#include "common/LocalFileName.h"
#include "common/Log.h"
#include "common/platform/ExclusiveFile.h"

#include <string>

namespace {

QLatin1String extension(TzViewSnapshot::Format format)
{
    switch (format) {
    case TzViewSnapshot::Format::Asc: return QLatin1String(".asc");
    case TzViewSnapshot::Format::Csv: return QLatin1String(".csv");
    case TzViewSnapshot::Format::Txt: break;
    }
    return QLatin1String(".txt");
}

QString tableText(const QAbstractItemModel &model, TzViewTextWriter::Style style)
{
    TzViewTextWriter writer(model, style);
    writer.addHeader();
    writer.addAllRows();
    return writer.text();
}

} // namespace

QString TzViewSnapshot::nameFilter(Format format)
{
    switch (format) {
    case Format::Asc: return tr("ASC Files (*.asc)");
    case Format::Csv: return tr("CSV Files (*.csv)");
    case Format::Txt: break;
    }
    return tr("Text Files (*.txt)");
}

QString TzViewSnapshot::completedPath(const QString &path, Format format)
{
    const QLatin1String wanted = extension(format);
    return path.endsWith(wanted, Qt::CaseInsensitive) ? path : path + wanted;
}

QString TzViewSnapshot::text(const QAbstractItemModel &model, Format format, const QDateTime &now)
{
    switch (format) {
    case Format::Asc: return tzViewAscText(model, now);
    case Format::Csv: return tableText(model, TzViewTextWriter::Style::Csv);
    case Format::Txt: break;
    }
    return tableText(model, TzViewTextWriter::Style::Tabbed);
}

bool TzViewSnapshot::save(const QAbstractItemModel &model, Format format, const QString &path)
{
    Common::platform::ExclusiveFile file; // so that the file of a running recording is not emptied under it
    if (const auto error = file.open(Common::localFileName(path))) {
        Common::logWarning("Cannot open {} for writing: {}", path.toStdString(), error.message());
        return false;
    }
    const std::string content = text(model, format, QDateTime::currentDateTime()).toStdString();
    if (const std::size_t reached = file.write(content); reached != content.size()) {
        Common::logWarning("Could not write all of {}: {} of {} bytes are in the file", path.toStdString(), reached,
                           content.size());
    }
    if (const auto error = file.close())
        Common::logWarning("Could not write all of {}: {}", path.toStdString(), error.message());
    return true;
}
