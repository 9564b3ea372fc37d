// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/database/corpus/Corpus.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QTextCodec>

#include <limits>
#include <stdexcept>

namespace tzcorpus {

namespace {

constexpr const char *variable = "TZ_CORPUS";

bool isUtf8(const QByteArray &bytes)
{
    QTextCodec::ConverterState state;
    QTextCodec::codecForName("UTF-8")->toUnicode(bytes.constData(), bytes.size(), &state);
    return state.invalidChars == 0 && state.remainingChars == 0;
}

// The results use names of another library's codecs; "cp1252" is "windows-1252" here.
QString knownCodecName(const QString &name)
{
    if (QTextCodec::codecForName(name.toLatin1()) != nullptr || !name.startsWith(QLatin1String("cp")))
        return name;
    return QLatin1String("windows-") + name.mid(2);
}

std::vector<File> filesIn(const QDir &folder, const QString &kind)
{
    const QDir kindFolder(folder.filePath(kind));
    std::vector<File> result;
    for (const QString &name : kindFolder.entryList({QLatin1String("*.") + kind}, QDir::Files, QDir::Name)) {
        const QString golden = folder.filePath(QStringLiteral("golden/%1.json").arg(name));
        result.push_back({name, kindFolder.filePath(name), QFile::exists(golden) ? golden : QString()});
    }
    return result;
}

} // namespace

std::vector<File> files(const QString &kind)
{
    return qEnvironmentVariableIsSet(variable) ? filesIn(QDir(qEnvironmentVariable(variable)), kind)
                                               : std::vector<File>{File{}};
}

std::vector<File> ownFiles(const QString &kind)
{
    return filesIn(QDir(QStringLiteral(TZ_OWN_CORPUS)), kind);
}

std::string testName(const testing::TestParamInfo<File> &info)
{
    std::string name = info.param.name.isEmpty() ? std::string("NoCorpus") : info.param.name.toStdString();
    for (char &character : name) {
        if (std::isalnum(static_cast<unsigned char>(character)) == 0)
            character = '_';
    }
    return std::to_string(info.index) + "_" + name; // two names may differ in signs alone
}

QByteArray readBytes(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        throw std::runtime_error("cannot read " + path.toStdString());
    return file.readAll();
}

QJsonObject readGolden(const File &file)
{
    if (file.goldenPath.isEmpty())
        return {};
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(readBytes(file.goldenPath), &error);
    if (!document.isObject())
        throw std::runtime_error(file.goldenPath.toStdString() + ": " + error.errorString().toStdString());
    return document.object();
}

QString encodingOf(const File &file, const QJsonObject &golden)
{
    if (golden.contains(QLatin1String("encoding")))
        return knownCodecName(golden.value(QLatin1String("encoding")).toString());
    return isUtf8(readBytes(file.path)) ? QStringLiteral("UTF-8") : QStringLiteral("windows-1252");
}

double toDouble(const QJsonValue &value)
{
    if (!value.isString())
        return value.toDouble();
    const QString text = value.toString();
    if (text == QLatin1String("NaN"))
        return std::numeric_limits<double>::quiet_NaN();
    if (text.endsWith(QLatin1String("Infinity")))
        return text.startsWith(u'-') ? -std::numeric_limits<double>::infinity()
                                     : std::numeric_limits<double>::infinity();
    return text.toDouble();
}

std::uint64_t toUnsigned(const QJsonValue &value)
{
    return value.isString() ? value.toString().toULongLong() : static_cast<std::uint64_t>(value.toDouble());
}

void reportDifferences(const QString &what, const QStringList &differences)
{
    if (differences.isEmpty())
        return;
    constexpr int shown = 25;
    ADD_FAILURE() << what.toStdString() << ": " << differences.size() << " differences\n"
                  << differences.mid(0, shown).join(u'\n').toStdString();
}

} // namespace tzcorpus
