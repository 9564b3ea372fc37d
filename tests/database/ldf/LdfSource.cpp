// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/database/ldf/LdfSource.h"

#include "database/ldf/LdfParser.h"

#include <QTemporaryFile>

#include <stdexcept>

namespace {

QString section(const char *name, const QString &content)
{
    return content.isEmpty() ? QString() : QStringLiteral("%1 {\n%2\n}\n\n").arg(QLatin1String(name), content);
}

} // namespace

QString LdfSource::slaveAttributes(const char *name, const char *nad, const char *responseError, const char *protocol,
                                   const char *more)
{
    QString block =
        QStringLiteral("%1 {\nLIN_protocol = %2;\n").arg(QString::fromLatin1(name), QString::fromLatin1(protocol));
    if (*nad != '\0')
        block += QStringLiteral("configured_NAD = %1;\n").arg(QLatin1String(nad));
    if (*responseError != '\0')
        block += QStringLiteral("response_error = %1;\n").arg(QLatin1String(responseError));
    return block + QString::fromLatin1(more) + QStringLiteral("\n}\n");
}

void LdfSource::setProtocol(const char *version)
{
    header.replace(QStringLiteral("LIN_protocol_version = \"2.1\""),
                   QStringLiteral("LIN_protocol_version = \"%1\"").arg(QLatin1String(version)));
}

QString LdfSource::text() const
{
    return header + section("Nodes", nodes) + section("Signals", signalList) +
           section("Diagnostic_signals", diagnosticSignals) + section("Frames", frames) +
           section("Sporadic_frames", sporadicFrames) + section("Event_triggered_frames", eventFrames) +
           section("Diagnostic_frames", diagnosticFrames) + section("Node_attributes", attributes) +
           section("Schedule_tables", schedules) + section("Signal_encoding_types", encodings) +
           section("Signal_representation", representations);
}

std::optional<LdfConfig> loadLdfBytes(const QByteArray &bytes, const QString &encoding)
{
    QTemporaryFile file;
    if (!file.open() || file.write(bytes) != bytes.size() || !file.flush())
        throw std::runtime_error("no temporary file");
    LdfConfig config;
    if (!Common::LdfParser::loadLdfConfig(config, file.fileName(), encoding))
        return std::nullopt;
    return config;
}
