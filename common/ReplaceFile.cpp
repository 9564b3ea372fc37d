// SPDX-License-Identifier: GPL-3.0-or-later
#include "common/ReplaceFile.h"

#include <QSaveFile>

namespace Common {

namespace {

// A device that takes a part only reports no error by itself; the next write does.
bool writeAll(QSaveFile &file, const QByteArray &content)
{
    qint64 written = 0;
    while (written < content.size()) {
        const qint64 count = file.write(content.constData() + written, content.size() - written);
        if (count <= 0)
            return false;
        written += count;
    }
    return true;
}

} // namespace

ReplaceFileResult replaceFile(const QString &path, const QByteArray &content, QString *problem)
{
    QSaveFile file(path);
    file.setDirectWriteFallback(true);
    const auto fail = [&](ReplaceFileResult result) {
        if (problem)
            *problem = file.errorString();
        return result;
    };
    // Unbuffered: what a buffer holds is written by commit(), which replaces the file also where that falls short.
    if (!file.open(QIODevice::WriteOnly | QIODevice::Unbuffered))
        return fail(ReplaceFileResult::NotOpened);
    if (!writeAll(file, content)) {
        const ReplaceFileResult result = fail(ReplaceFileResult::NotWritten);
        file.cancelWriting();
        return result;
    }
    return file.commit() ? ReplaceFileResult::Replaced : fail(ReplaceFileResult::NotWritten);
}

} // namespace Common
