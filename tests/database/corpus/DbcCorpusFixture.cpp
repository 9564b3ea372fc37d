// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/database/corpus/DbcCorpusFixture.h"

#include <QFile>
#include <QTextCodec>

#include <algorithm>
#include <cstdio>

namespace tzcorpus {

void DbcCorpus::TearDownTestSuite()
{
    std::printf(
        "DBC files read: %ld, refused: %ld; messages: %ld, signals: %ld; frames: %ld, values: %ld, encoded: %ld; "
        "files saved and read again: %ld, merged: %ld\n",
        s_totals.files, s_totals.refused, s_totals.messages, s_totals.signals, s_totals.frames, s_totals.values,
        s_totals.encoded, s_totals.saved, s_totals.merged);
}

void DbcCorpus::SetUp()
{
    const File &file = GetParam();
    if (file.name.isEmpty())
        GTEST_SKIP() << skipReason;
    const QJsonObject json = readGolden(file);
    m_encoding = encodingOf(file, json);
    ASSERT_NE(QTextCodec::codecForName(m_encoding.toLatin1()), nullptr) << m_encoding.toStdString();
    m_golden = DbcGolden::fromJson(json);
    m_text.emplace(decode(file.path));
}

bool DbcCorpus::load()
{
    m_loadedPath = GetParam().path;
    if (!m_text->hasNewSymbols() && hasMessages()) {
        m_loadedPath = m_folder.filePath(QStringLiteral("with_symbols.dbc"));
        QFile file(m_loadedPath);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("NS_ :\n\nBS_:\n" + readBytes(GetParam().path));
    }
    return parse(m_loadedPath);
}

bool DbcCorpus::hasMessages() const
{
    const auto &messages = m_text->messages();
    return std::any_of(messages.begin(), messages.end(), [](const auto &message) { return message.isOrdinary(); });
}

QString DbcCorpus::decode(const QString &path) const
{
    const QByteArray bytes = readBytes(path);
    QTextCodec *codec = QTextCodec::codecForUtfText(bytes, QTextCodec::codecForName(m_encoding.toLatin1()));
    QTextCodec::ConverterState state;
    return codec->toUnicode(bytes.constData(), bytes.size(), &state);
}

} // namespace tzcorpus
