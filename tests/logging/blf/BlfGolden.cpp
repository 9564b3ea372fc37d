// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/logging/blf/BlfGolden.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QRegularExpression>

#include <algorithm>
#include <stdexcept>

namespace tztest {

namespace {

constexpr const char *variable = "TZ_CORPUS";

// Time stamps have more digits than a double can hold, so they are read as text.
QByteArray withLongNumbersAsText(const QByteArray &json)
{
    static const QRegularExpression longNumber(QStringLiteral(R"(([:\[,]\s*)(\d{16,}))"));
    return QString::fromUtf8(json).replace(longNumber, QStringLiteral("\\1\"\\2\"")).toUtf8();
}

void appendFiles(std::vector<tzcorpus::File> &files, const QDir &corpus, const QString &folder, const QString &prefix)
{
    const QDir logs(corpus.filePath(folder));
    for (const QString &name : logs.entryList({QStringLiteral("*.blf")}, QDir::Files, QDir::Name)) {
        const QString golden = corpus.filePath(QStringLiteral("golden/blf/%1%2.json").arg(prefix, name));
        files.push_back({name, logs.filePath(name), QFile::exists(golden) ? golden : QString()});
    }
}

} // namespace

std::uint64_t GoldenBlfObject::number(const char *name) const
{
    const QJsonValue value = fields.value(QLatin1String(name));
    if (value.isString())
        return value.toString().toULongLong(nullptr, 0); // its prefix tells the base
    return static_cast<std::uint64_t>(value.toDouble());
}

QByteArray GoldenBlfObject::bytes(const char *name) const
{
    return QByteArray::fromHex(text(name).toLatin1());
}

QString GoldenBlfObject::text(const char *name) const
{
    return fields.value(QLatin1String(name)).toString();
}

GoldenBlf GoldenBlf::of(const tzcorpus::File &file)
{
    QJsonParseError error;
    const QByteArray text = withLongNumbersAsText(tzcorpus::readBytes(file.goldenPath));
    const QJsonObject json = QJsonDocument::fromJson(text, &error).object();
    if (error.error != QJsonParseError::NoError)
        throw std::runtime_error(file.goldenPath.toStdString() + ": " + error.errorString().toStdString());
    GoldenBlf golden;
    golden.hasMagic = json.value(QLatin1String("magic")).toBool();
    const QJsonObject counts = json.value(QLatin1String("counts")).toObject();
    for (auto count = counts.begin(); count != counts.end(); ++count)
        golden.counts[count.key().toUInt()] = static_cast<std::size_t>(count.value().toInt());
    for (const QJsonValue &warning : json.value(QLatin1String("warnings")).toArray())
        golden.warnings += warning.toString();
    for (const QJsonValue &value : json.value(QLatin1String("objects")).toArray()) {
        const QJsonObject object = value.toObject();
        golden.objects.push_back({static_cast<std::uint32_t>(object.value(QLatin1String("type")).toInt()),
                                  tzcorpus::toUnsigned(object.value(QLatin1String("time_ns"))),
                                  object.value(QLatin1String("fields")).toObject()});
    }
    return golden;
}

bool GoldenBlf::isTruncated() const
{
    return std::any_of(warnings.begin(), warnings.end(),
                       [](const QString &warning) { return warning.contains(QLatin1String("truncated")); });
}

std::vector<tzcorpus::File> blfCorpusFiles()
{
    if (!qEnvironmentVariableIsSet(variable))
        return {tzcorpus::File{}};
    const QDir corpus(qEnvironmentVariable(variable));
    std::vector<tzcorpus::File> files;
    appendFiles(files, corpus, QStringLiteral("blf"), QString());
    appendFiles(files, corpus, QStringLiteral("blf/errors"), QStringLiteral("errors_"));
    return files;
}

} // namespace tztest
