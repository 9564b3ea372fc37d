// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/dbc/DbcConversions.h"
#include "database/dbc/DbcParser.h"
#include "tests/database/corpus/Corpus.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <map>

namespace {

using namespace tzcorpus;

constexpr double relativeTolerance = 1e-9;

/// What all values of one signal come to.
struct SignalSum
{
    std::uint64_t count = 0;
    std::uint64_t rawSum = 0; ///< modulo 2^64
    double minimum = 0.0;
    double maximum = 0.0;
    double first = 0.0;
    double last = 0.0;

    void add(std::uint64_t raw, double physical)
    {
        minimum = count == 0 ? physical : std::min(minimum, physical);
        maximum = count == 0 ? physical : std::max(maximum, physical);
        first = count == 0 ? physical : first;
        last = physical;
        rawSum += raw;
        ++count;
    }
};

using FrameId = std::pair<std::uint32_t, bool>; ///< identifier and whether it has 29 bits

/// Decodes a log, "(time) channel ID#DATA" a line, with the messages of the model.
class LogDecoder
{
public:
    LogDecoder()
    {
        for (const DbcMessage &message : Common::DbcParser::model().messages)
            m_messages[{message.id, message.isExtended}] = message;
    }

    void decode(const QByteArray &log)
    {
        for (const QByteArray &line : log.split('\n')) {
            const QByteArray frame = line.trimmed().split(' ').last();
            const int hash = frame.indexOf('#');
            if (hash < 0)
                continue;
            const QByteArray id = frame.left(hash);
            const auto message = m_messages.find({id.toUInt(nullptr, 16), id.size() > 3});
            if (message != m_messages.end())
                decode(message->second, QByteArray::fromHex(frame.mid(hash + 1)));
        }
    }

    const SignalSum &sum(const FrameId &id, const QString &name) { return m_sums[{id, name}]; }

private:
    void decode(DbcMessage &message, const QByteArray &data)
    {
        for (DbcSignal &signal : message.signals) {
            decodeSignal(reinterpret_cast<const std::uint8_t *>(data.constData()),
                         static_cast<std::size_t>(data.size()), signal);
            m_sums[{{message.id, message.isExtended}, signal.name}].add(signal.value, getSignalPhysicalValue(signal));
        }
    }

    std::map<FrameId, DbcMessage> m_messages;
    std::map<std::pair<FrameId, QString>, SignalSum> m_sums;
};

QStringList compareSums(const QString &where, const QJsonObject &expected, const SignalSum &actual)
{
    QStringList differences;
    const auto compare = [&](const char *key, double value) {
        const double wanted = toDouble(expected.value(QLatin1String(key)));
        if (std::abs(wanted - value) > relativeTolerance * std::max(std::abs(wanted), std::abs(value)))
            differences +=
                QStringLiteral("%1 %2: expected %3, is %4").arg(where, QLatin1String(key)).arg(wanted).arg(value);
    };
    if (toUnsigned(expected.value(QLatin1String("count"))) != actual.count ||
        toUnsigned(expected.value(QLatin1String("raw_sum_mod_2_64"))) != actual.rawSum)
        differences += where + QStringLiteral(" count or sum of raw values");
    compare("min", actual.minimum);
    compare("max", actual.maximum);
    compare("first", actual.first);
    compare("last", actual.last);
    return differences;
}

QStringList compareLog(const QJsonObject &golden, LogDecoder &decoder, long &signalsCompared)
{
    QStringList differences;
    for (const QJsonValue &value : golden.value(QLatin1String("ids")).toArray()) {
        const QJsonObject frame = value.toObject();
        const FrameId id{static_cast<std::uint32_t>(toUnsigned(frame.value(QLatin1String("id")))),
                         frame.value(QLatin1String("extended")).toBool()};
        const QJsonObject signalSums = frame.value(QLatin1String("signals")).toObject();
        for (auto signal = signalSums.begin(); signal != signalSums.end(); ++signal, ++signalsCompared)
            differences += compareSums(frame.value(QLatin1String("message")).toString() + u'.' + signal.key(),
                                       signal.value().toObject(), decoder.sum(id, signal.key()));
    }
    return differences;
}

TEST(DbcLogCorpus, LogsDecodeToTheSameSums)
{
    if (!qEnvironmentVariableIsSet("TZ_CORPUS"))
        GTEST_SKIP() << skipReason;
    const QDir folder(qEnvironmentVariable("TZ_CORPUS"));
    long signalsCompared = 0;
    for (const QString &name :
         QDir(folder.filePath(QStringLiteral("golden"))).entryList({QStringLiteral("*.log.json")})) {
        const QJsonObject golden = readGolden({name, QString(), folder.filePath(QStringLiteral("golden/") + name)});
        const QString dbc = golden.value(QLatin1String("dbc")).toString();
        const QJsonObject dbcGolden =
            readGolden({dbc, QString(), folder.filePath(QStringLiteral("golden/%1.json").arg(dbc.section(u'/', -1)))});
        const File dbcFile{dbc, folder.filePath(dbc), QString()};
        Common::DbcParser parser;
        ASSERT_TRUE(parser.parseFile(dbcFile.path, encodingOf(dbcFile, dbcGolden))) << dbc.toStdString();
        LogDecoder decoder;
        decoder.decode(readBytes(folder.filePath(golden.value(QLatin1String("file")).toString())));
        reportDifferences(name, compareLog(golden, decoder, signalsCompared));
    }
    std::printf("signals of logs compared: %ld\n", signalsCompared);
}

} // namespace
