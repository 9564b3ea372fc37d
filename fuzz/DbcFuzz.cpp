// SPDX-License-Identifier: GPL-3.0-or-later
// Any file in the place of a DBC file, and what users do with what it held.
#include "database/dbc/DbcConversions.h"
#include "database/dbc/DbcParser.h"
#include "database/dbc/DbcWriter.h"
#include "fuzz/FuzzFile.h"
#include "fuzz/FuzzSupport.h"

#include <QFile>
#include <QTemporaryDir>

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>

namespace {

constexpr std::size_t bytesOfFrame = 64;

void checkSignal(const DbcSignal &signal)
{
    require(!signal.name.isEmpty());
    require(signal.startBit < bytesOfFrame * 8);
    require(signal.name.startsWith(QLatin1String("ExtendedVersion")) || (signal.size >= 1 && signal.size <= 64));
    require(std::isfinite(signal.factor) && std::isfinite(signal.offset));
    require(signal.minimum <= signal.maximum);
    const double physical = getSignalPhysicalValue(signal);
    physicalToRawValue(physical, signal);
    isPhysicalInRange(physical, signal);
    isRawInRange(signal.value, signal);
    require(!formatSignalValue(signal).isEmpty());
}

// What is decoded from a payload and encoded again lies in it, bit for bit where signals do not overlap.
void checkMessage(DbcMessage message)
{
    require(message.size <= bytesOfFrame || message.name.startsWith(QLatin1String("DM3"))); // those are not checked
    std::array<std::uint8_t, 255> frame{};
    for (std::size_t index = 0; index < frame.size(); ++index)
        frame[index] = static_cast<std::uint8_t>(0xA5 + 37 * index);
    require(decodeMessage(frame.data(), frame.size(), message) == 0);
    for (const DbcSignal &signal : message.signals)
        checkSignal(signal);
    decodeMessage(frame.data(), message.size, message);
    const QByteArray payload = encodeMessage(message);
    require(payload.isEmpty() || payload.size() == message.size);
    DbcMessage again = message;
    if (payload.isEmpty())
        return;
    require(decodeMessage(reinterpret_cast<const std::uint8_t *>(payload.data()), message.size, again) == 0);
    for (std::size_t index = 0; index < message.signals.size(); ++index)
        require(again.signals[index].value == message.signals[index].value);
}

void checkModel(const DbcFile &file)
{
    require(!file.messages.empty());
    for (const DbcMessage &message : file.messages) {
        require(file.findMessage(message.id) != nullptr);
        for (const DbcSignal &signal : message.signals)
            require(file.findSignal(message.id, signal.name) != nullptr || file.findMessage(message.id) != &message);
        checkMessage(message);
    }
}

// What was loaded can be saved, and what was saved can be loaded, unless texts now make a block comment together.
void checkSaving(const DbcFile &file)
{
    static const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("saved.dbc"));
    require(DbcWriter(file).save(path, QStringLiteral("UTF-8")));
    Common::DbcParser parser;
    const bool loaded = parser.parseFile(path, QStringLiteral("UTF-8"));
    QFile saved(path);
    require(saved.open(QIODevice::ReadOnly));
    require(loaded || saved.readAll().contains("/*"));
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    makeLogLinesForNobody();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static FuzzFile input;
    input.write(data, size);
    Common::DbcParser parser;
    if (parser.parseFile(input.path(), fuzzEncoding(size))) {
        const DbcFile file = Common::DbcParser::model(); // a copy, as every user has
        checkModel(file);
        checkSaving(file);
    }
    return 0;
}
