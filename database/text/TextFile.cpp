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

// All of the text in one loop without a way out, which the compiler turns into vector instructions.
bool hasSurrogates(const QString &text)
{
    constexpr char16_t classBits = 0xF800;
    constexpr char16_t surrogates = 0xD800;
    bool found = false;
    for (const QChar character : text)
        found |= (character.unicode() & classBits) == surrogates;
    return found;
}

// UTF-16 is taken over as it is; half a pair would make the engine refuse the whole text.
void replaceLoneSurrogates(QString &text)
{
    if (!hasSurrogates(text))
        return;
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

// A text that comes piece by piece. As in a stream, a character that the end cuts off is dropped.
class PieceDecoder
{
public:
    /// @param begin  the first bytes of the text, with its byte order mark if it has one
    PieceDecoder(const QByteArray &begin, const QString &encoding)
        : m_codec(codecFor(begin, encoding))
    {
    }

    QString decode(const char *bytes, int size) { return m_codec->toUnicode(bytes, size, &m_state); }

private:
    QTextCodec *m_codec;
    QTextCodec::ConverterState m_state;
};

// In pieces: a large file is not held in bytes as well, and a piece's memory serves the next one. Nothing where reading
// fails.
std::optional<QString> decodePieces(QFile &file, const QString &encoding)
{
    constexpr int pieceBytes = 32 * 1024;
    QByteArray piece = file.read(pieceBytes);
    PieceDecoder decoder(piece, encoding);
    QString text;
    text.reserve(static_cast<int>(file.size()));             // of characters, which seldom are more than bytes
    while (!piece.isEmpty() && file.pos() <= maximumBytes) { // also where the file grows meanwhile
        text += decoder.decode(piece.constData(), piece.size());
        piece = file.read(pieceBytes);
    }
    return piece.isEmpty() && file.error() == QFileDevice::NoError ? std::optional(std::move(text)) : std::nullopt;
}

} // namespace

std::optional<QString> read(const QString &path, const QString &encoding)
{
    if (!QFileInfo(path).isFile()) // a pipe would hold up the reader, a device might never end
        return std::nullopt;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered) || file.size() > maximumBytes)
        return std::nullopt;
    std::optional<QString> text = decodePieces(file, encoding);
    if (text)
        replaceLoneSurrogates(*text);
    return text;
}

QString decode(const QByteArray &bytes, const QString &encoding)
{
    QString text = PieceDecoder(bytes, encoding).decode(bytes.constData(), bytes.size());
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
