// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/text/TextFile.h"
#include "tests/support/TempWorkDir.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTextCodec>
#include <QTextStream>

using namespace Common;

namespace {

const QString sample = QStringLiteral("\u00b0C \u20ac");

void writeFile(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    ASSERT_EQ(file.write(bytes), bytes.size());
}

QString throughStream(const QByteArray &bytes, const char *codec)
{
    QTextStream stream(bytes);
    if (codec != nullptr)
        stream.setCodec(codec);
    return stream.readAll();
}

} // namespace

TEST(TextFile, IsDecodedByTheNamedCodec)
{
    for (const char *name : {"UTF-8", "GB18030", "Windows-1252", "UTF-16LE"}) {
        const QString text = qstrcmp(name, "GB18030") == 0 ? QStringLiteral("\u6e29\u5ea6") : sample;
        QTextCodec *codec = QTextCodec::codecForName(name);
        ASSERT_NE(codec, nullptr) << name;
        EXPECT_EQ(TextFile::decode(codec->fromUnicode(text), QString::fromLatin1(name)), text) << name;
    }
}

TEST(TextFile, TheNameOfTheCodecMayHaveBlanksAround)
{
    EXPECT_EQ(TextFile::decode("\xb0", QStringLiteral("  windows-1252 ")), QStringLiteral("\u00b0"));
}

TEST(TextFile, AByteOrderMarkOverridesTheCodecAndIsTakenOff)
{
    EXPECT_EQ(TextFile::decode("\xef\xbb\xbf" + sample.toUtf8(), QStringLiteral("Windows-1252")), sample);
    EXPECT_EQ(TextFile::decode(QByteArray("\xff\xfe\x41\x00", 4), QStringLiteral("UTF-8")), QStringLiteral("A"));
    EXPECT_EQ(TextFile::decode(QByteArray("\xfe\xff\x00\x41", 4), QStringLiteral("UTF-8")), QStringLiteral("A"));
}

TEST(TextFile, AnUnknownCodecLeavesTheStreamsDefault)
{
    for (const QByteArray &bytes : {QByteArray("plain"), sample.toUtf8(), QByteArray("\xef\xbb\xbfmark")}) {
        EXPECT_EQ(TextFile::decode(bytes, QStringLiteral("no-such-codec")), throughStream(bytes, nullptr));
        EXPECT_EQ(TextFile::decode(bytes, QString()), throughStream(bytes, nullptr));
    }
}

TEST(TextFile, IsDecodedAsATextStreamDoes)
{
    const QByteArray cut = sample.toUtf8().chopped(1);
    for (const QByteArray &bytes : {cut, QByteArray("\xff\xfe\xfd"), QByteArray("a\0b", 3), QByteArray()})
        EXPECT_EQ(TextFile::decode(bytes, QStringLiteral("UTF-8")), throughStream(bytes, "UTF-8"));
}

TEST(TextFile, HalfASurrogatePairBecomesAReplacement)
{
    const QByteArray bytes("\x00\xd8\x41\x00\x3d\xd8\x00\xde\x00\xdc", 10);
    const QString text = TextFile::decode(bytes, QStringLiteral("UTF-16LE"));
    EXPECT_EQ(text, QStringLiteral("\ufffdA\U0001F600\ufffd"));
}

TEST(TextFile, KeepsReturns)
{
    const tztest::TempWorkDir dir;
    writeFile(QStringLiteral("a.dbc"), "a\rb\r\nc");
    EXPECT_EQ(TextFile::read(QStringLiteral("a.dbc"), QStringLiteral("UTF-8")), QStringLiteral("a\rb\r\nc"));
}

// Characters of one to four bytes, so that the end of each piece that is read falls into one at some size or other.
TEST(TextFile, ALargeFileIsReadAsOne)
{
    const tztest::TempWorkDir dir;
    const QString unit = QStringLiteral("\u6e29a\u00b0\U0001F600\r\n");
    for (const char *name : {"UTF-8", "GB18030", "UTF-16LE", "UTF-16"}) {
        QTextCodec *codec = QTextCodec::codecForName(name);
        for (int offset = 0; offset < 4; ++offset) {
            const QString text = QString(offset, u'x') + unit.repeated(30000);
            writeFile(QStringLiteral("large"), codec->fromUnicode(text));
            const auto read = TextFile::read(QStringLiteral("large"), QString::fromLatin1(name));
            ASSERT_TRUE(read == text) << name << ", moved by " << offset; // not printed: it is long
        }
    }
}

TEST(TextFile, AnEmptyFileIsAnEmptyText)
{
    const tztest::TempWorkDir dir;
    writeFile(QStringLiteral("a.dbc"), {});
    EXPECT_EQ(TextFile::read(QStringLiteral("a.dbc"), {}), QString());
}

TEST(TextFile, WhatIsNoRegularFileIsRefused)
{
    const tztest::TempWorkDir dir;
    QDir().mkdir(QStringLiteral("folder"));
    for (const QString &path :
         {QStringLiteral("missing"), QStringLiteral("folder"), QStringLiteral("/dev/zero"), QString()})
        EXPECT_EQ(TextFile::read(path, {}), std::nullopt) << path.toStdString();
}

TEST(TextFile, AHugeFileIsRefused)
{
    const tztest::TempWorkDir dir;
    QFile file(QStringLiteral("huge"));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    ASSERT_TRUE(file.resize(TextFile::maximumBytes + 1)); // sparse
    EXPECT_EQ(TextFile::read(QStringLiteral("huge"), {}), std::nullopt);
}
