// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/dbc/DbcWriter.h"

#include "common/Log.h"
#include "common/ReplaceFile.h"
#include "database/dbc/DbcStatements.h"
#include "database/text/TextFile.h"

#include <QFile>
#include <QTextCodec>

#include <optional>

namespace {

enum class WriteResult
{
    Written,
    NotOpened,
    NotWritten
};

struct TextForm
{
    QTextCodec *codec = nullptr;
    bool hasByteOrderMark = false;
};

// The locale's codec where the name is empty or unknown.
QTextCodec *codecNamed(const QString &encoding)
{
    const QByteArray name = encoding.trimmed().toLatin1();
    QTextCodec *codec = name.isEmpty() ? nullptr : QTextCodec::codecForName(name);
    return codec ? codec : QTextCodec::codecForLocale();
}

// How a file was read, so that it can be written the same way.
TextForm formOf(const QString &path, const QString &encoding)
{
    constexpr qint64 longestMark = 4;
    QFile file(path);
    const QByteArray head = file.open(QIODevice::ReadOnly) ? file.read(longestMark) : QByteArray();
    if (QTextCodec *codec = QTextCodec::codecForUtfText(head, nullptr))
        return {codec, true};
    return {codecNamed(encoding), false};
}

Common::ReplaceFileResult writeText(const QString &path, const QString &text, const TextForm &form)
{
    QTextCodec::ConverterState state(form.hasByteOrderMark ? QTextCodec::DefaultConversion : QTextCodec::IgnoreHeader);
    return Common::replaceFile(path, form.codec->fromUnicode(text.constData(), text.size(), &state));
}

} // namespace

DbcWriter::DbcWriter(const DbcFile &file)
    : m_file(file)
{
}

bool DbcWriter::save(const QString &path, const QString &encoding)
{
    m_isAsciiEncoding = encoding.toLower().contains(QLatin1String("ascii"));
    switch (writeText(path, DbcStatements::fileText(m_file), {codecNamed(encoding), false})) {
    case Common::ReplaceFileResult::NotOpened:
        Common::logError("Failed to open file for writing: {}", path.toStdString());
        break;
    case Common::ReplaceFileResult::NotWritten: Common::logError("Failed to write file: {}", path.toStdString()); break;
    case Common::ReplaceFileResult::Replaced:
        Common::logInfo("Successfully saved DBC file: {}", path.toStdString());
        return true;
    }
    return false;
}

bool DbcWriter::merge(const QString &sourcePath, const QString &destinationPath,
                      const std::vector<DbcMessage> &messages, const QString &encoding)
{
    const auto fail = [](const QString &path) {
        Common::logError("DBC merge failed by save file: {}", path.toStdString());
        return false;
    };
    std::optional<QString> source = Common::TextFile::read(sourcePath, encoding);
    if (!source)
        return fail(sourcePath);
    const TextForm form =
        formOf(sourcePath, encoding); // before the destination, which may be the same file, is written
    source->replace(QLatin1String("\r\n"), QLatin1String("\n")).replace(QLatin1Char('\r'), QLatin1Char('\n'));
    const QString merged = DbcStatements::mergedText(*source, messages);
    return writeText(destinationPath, merged, form) == Common::ReplaceFileResult::Replaced || fail(destinationPath);
}
