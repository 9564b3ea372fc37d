// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/text/TextFile.h"

#include "database/text/TextCursor.h"

#include <QFile>
#include <QFileInfo>
#include <QTextCodec>

#include <memory>
#include <utility>

namespace Common::TextFile {

namespace {

QTextCodec *codecFor(const QByteArray &bytes, const QString &encoding)
{
    const QByteArray name = encoding.trimmed().toLatin1();
    QTextCodec *codec = name.isEmpty() ? nullptr : QTextCodec::codecForName(name);
    if (codec == nullptr)
        codec = QTextCodec::codecForLocale();
    return QTextCodec::codecForUtfText(bytes, codec);
}

// UTF-16 is taken over as it is; half a pair would make the engine refuse the whole text.
void replaceLoneSurrogates(QString &text)
{
    const auto isPair = [&text](int index) {
        return text.at(index).isHighSurrogate() && index + 1 < text.size() && text.at(index + 1).isLowSurrogate();
    };
    for (int index = 0; index < text.size(); ++index) {
        if (!text.at(index).isSurrogate())
            continue;
        if (isPair(index))
            ++index;
        else
            text[index] = QChar::ReplacementCharacter;
    }
}

} // namespace

std::optional<QString> read(const QString &path, const QString &encoding)
{
    if (!QFileInfo(path).isFile()) // a pipe would hold up the reader, a device might never end
        return std::nullopt;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly) || file.size() > maximumBytes)
        return std::nullopt;
    const QByteArray bytes = file.readAll();
    if (file.error() != QFileDevice::NoError)
        return std::nullopt;
    return decode(bytes, encoding);
}

QString decode(const QByteArray &bytes, const QString &encoding)
{
    QTextCodec *codec = codecFor(bytes, encoding);
    QTextCodec::ConverterState state; // as in a stream: a character cut off by the end is dropped
    QString text = codec->toUnicode(bytes.constData(), bytes.size(), &state);
    replaceLoneSurrogates(text);
    return text;
}

QString prepare(QString text)
{
    const QStringView source(text);
    if (!text.contains(u'\r') && findLiteral(source, u"/*", 0) < 0)
        return text;
    QString prepared(text.size(), Qt::Uninitialized);
    QChar *target = prepared.data();
    bool mayClose = true;        // false once no comment can end any more
    bool isBehindReturn = false; // in what is left, a "\r" stood last
    for (qsizetype index = 0; index < source.size(); ++index) {
        const QChar character = source[index];
        if (character == u'/' && mayClose && index + 1 < source.size() && source[index + 1] == u'*') {
            const qsizetype end = findLiteral(source, u"*/", index + 2);
            mayClose = end >= 0;
            if (mayClose) {
                index = end + 1;
                continue;
            }
        }
        const bool isReturn = character == u'\r';
        if (character != u'\n' || !isBehindReturn)
            *target++ = isReturn ? QChar(u'\n') : character;
        isBehindReturn = isReturn;
    }
    prepared.truncate(static_cast<int>(target - prepared.constData()));
    return prepared;
}

} // namespace Common::TextFile
