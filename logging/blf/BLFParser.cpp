// SPDX-License-Identifier: GPL-3.0-or-later
#include "logging/blf/BLFParser.h"

#include "common/Log.h"
#include "logging/blf/BlfObjects.h"
#include "logging/blf/BlfPulse.h"
#include "logging/blf/BlfReader.h"
#include "logging/blf/BlfRecordText.h"
#include "logging/blf/BlfRecords.h"

#include <QFileInfo>
#include <QMetaMethod>

#include <utility>

namespace BLF {

namespace {

constexpr int reportValue = 100;

using ReadRecord = bool (*)(BlfReader &reader, const ObjectHeader &header, BlfFrame &record);

template <typename Object> bool readRecord(BlfReader &reader, const ObjectHeader &header, BlfFrame &record)
{
    Object object;
    if (!reader.read(object))
        return false;
    record = makeRecord(header, object);
    reader.release();
    return true;
}

// Null for objects that become no record.
ReadRecord recordReader(std::uint32_t type)
{
    switch (type) {
    case ObjectType::canMessage:
    case ObjectType::canMessage2: return readRecord<CanMessage>;
    case ObjectType::canErrorFrame: return readRecord<CanErrorFrame>;
    case ObjectType::canStatistic: return readRecord<CanStatistic>;
    case ObjectType::canDriverError: return readRecord<CanDriverError>;
    case ObjectType::systemVariable: return readRecord<SystemVariable>;
    case ObjectType::canErrorFrameExt: return readRecord<CanErrorFrameExt>;
    case ObjectType::overrun: return readRecord<Overrun>;
    case ObjectType::canFdMessage: return readRecord<CanFdMessage>;
    case ObjectType::canFdMessage64: return readRecord<CanFdMessage64>;
    case ObjectType::canFdErrorFrame64: return readRecord<CanFdErrorFrame64>;
    case ObjectType::canSettingChanged: return readRecord<CanSettingChanged>;
    default: return nullptr;
    }
}

// Known, but of no interest beside the bus.
bool isPassedOverInSilence(std::uint32_t type)
{
    switch (type) {
    case ObjectType::environmentInteger:
    case ObjectType::environmentDouble:
    case ObjectType::environmentString:
    case ObjectType::environmentData:
    case ObjectType::applicationText:
    case ObjectType::restorePoints:
    case ObjectType::testStructure:
    case ObjectType::diagnosticRequest: return true;
    default: return false;
    }
}

// Tells of each object that is not handled, but does not fill the log with one file.
class UnhandledObjects
{
public:
    void add(std::uint32_t type)
    {
        if (m_count < maxLines)
            Common::logWarning("Unhandled object type: {}", type);
        else if (m_count == maxLines)
            Common::logWarning("More than {} unhandled objects, the others are not logged", maxLines);
        ++m_count;
    }

private:
    static constexpr std::uint64_t maxLines = 1000;

    std::uint64_t m_count = 0;
};

} // namespace

BLFParser::BLFParser(QObject *parent)
    : QObject(parent)
{
}

void BLFParser::setPulse(std::function<void()> pulse)
{
    m_pulse = std::move(pulse);
}

bool BLFParser::parseFile(const QString &path, BlfFrames &outFrames)
{
    m_hasReadAll = false;
    if (path.isEmpty() || !QFileInfo::exists(path)) {
        Common::logError("File path is empty or file doesn't exist: {}", path.toStdString());
        return false;
    }
    BlfReader reader;
    if (!reader.open(path)) {
        Common::logError("BLCreateFile failed: {}", path.toStdString());
        return false;
    }
    BlfMemoryBudget budget(m_memoryBudget);
    const std::uint64_t count = readObjects(reader, budget, outFrames);
    if (budget.isUsedUp()) {
        Common::logError("Not enough memory for all of {}: {} objects were read, the rest was not", path.toStdString(),
                         count);
    }
    m_hasReadAll = !budget.isUsedUp() && !reader.isDamaged();
    Common::logInfo("Parsed {} objects from BLF file", count);
    reader.close();
    return count > 0;
}

std::uint64_t BLFParser::readObjects(BlfReader &reader, BlfMemoryBudget &budget, BlfFrames &outFrames)
{
    // Asking for receivers takes a lock, and they change only in what is called from here.
    bool wantsReport = isReportWanted();
    std::function<void()> onPulse;
    if (m_pulse) {
        onPulse = [this, &wantsReport, pulse = m_pulse] {
            pulse();
            wantsReport = isReportWanted();
        };
    }
    BlfPulse pulse(std::move(onPulse));
    reader.setPulse([&pulse] { pulse.beat(); });

    UnhandledObjects unhandled;
    std::uint64_t count = 0;
    for (ObjectHeader header; reader.peek(header); pulse.step()) {
        const ReadRecord read = recordReader(header.type);
        if (read == nullptr) {
            if (!isPassedOverInSilence(header.type))
                unhandled.add(header.type);
            reader.skip();
            continue;
        }
        BlfFrame record;
        if (!read(reader, header, record))
            continue;
        if (!budget.take(record))
            break;
        if (wantsReport) {
            report(record);
            wantsReport = isReportWanted();
        }
        outFrames.push_back(std::move(record));
        ++count;
    }
    reader.setPulse({}); // what it calls ends here
    return count;
}

bool BLFParser::isReportWanted() const
{
    static const QMetaMethod full =
        QMetaMethod::fromSignal(qOverload<const QString &, int, bool>(&BLFParser::sigProcessReport));
    static const QMetaMethod withValue =
        QMetaMethod::fromSignal(qOverload<const QString &, int>(&BLFParser::sigProcessReport));
    static const QMetaMethod textAlone =
        QMetaMethod::fromSignal(qOverload<const QString &>(&BLFParser::sigProcessReport));
    return logFrames || isSignalConnected(full) || isSignalConnected(withValue) || isSignalConnected(textAlone);
}

void BLFParser::report(const BlfFrame &record)
{
    const QString text = reportText(record);
    if (logFrames && Common::shouldLogLevel(Common::LogLevel::debug))
        Common::logRawString(Common::LogLevel::debug, text.toStdString());
    Q_EMIT sigProcessReport(text, reportValue, isErrorReport(record));
    Q_EMIT sigProcessReport(text, reportValue);
    Q_EMIT sigProcessReport(text);
}

} // namespace BLF
