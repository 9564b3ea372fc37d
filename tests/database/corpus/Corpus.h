// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QJsonValue>
#include <QString>
#include <QStringList>

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

/// A folder of public files with results that independent tools made from them, named by the environment variable
/// TZ_CORPUS: dbc/ and ldf/ hold the files, golden/NAME.json the results, golden/README.md the form of these.
namespace tzcorpus {

/// One file of the corpus.
struct File
{
    QString name;       ///< without folder; empty stands for "there is no corpus"
    QString path;       ///< of the file itself
    QString goldenPath; ///< of its results; empty where there are none
};

/// What a skipped test says.
inline constexpr const char *skipReason =
    "TZ_CORPUS names no folder of public files: the corpus tests are skipped. Set it to run them.";

/// All files of @p kind ("dbc" or "ldf"), by name. One nameless file where TZ_CORPUS is unset, so that each test is
/// there and says that it is skipped; none where the folder it names holds no such files.
std::vector<File> files(const QString &kind);

/// The same for the small files that lie beside the tests, and show every rule at work; they have no results.
std::vector<File> ownFiles(const QString &kind);

/// A file's name as a name of a test.
std::string testName(const testing::TestParamInfo<File> &info);

/// Makes a failing test print the name instead of bytes.
inline void PrintTo(const File &file, std::ostream *stream)
{
    *stream << file.name.toStdString();
}

QByteArray readBytes(const QString &path);

/// The results of a file; an empty object where it has none. Throws std::runtime_error for broken JSON.
QJsonObject readGolden(const File &file);

/// Name of the codec that the results name, or, where there are none, UTF-8 if the bytes are that and Windows-1252 if
/// not.
QString encodingOf(const File &file, const QJsonObject &golden);

/// A number of the results: integers beyond 2^53 and non-finite numbers stand there as text.
double toDouble(const QJsonValue &value);
std::uint64_t toUnsigned(const QJsonValue &value);

/// Fails the running test with the first lines of @p differences, if there are any.
void reportDifferences(const QString &what, const QStringList &differences);

} // namespace tzcorpus
