// SPDX-License-Identifier: GPL-3.0-or-later
#include "logging/blf/BlfConverter.h"

#include "common/Log.h"
#include "logging/blf/BLFParser.h"
#include "logging/blf/BlfAscWriter.h"
#include "logging/blf/BlfConversionJob.h"
#include "logging/blf/BlfCsvWriter.h"

#include <QScopeGuard>

#include <algorithm>
#include <exception>
#include <new>
#include <utility>

namespace BLF {

namespace {

/// Thrown by the pulse through the parser and the writers, which let go of their files and records on the way.
struct NotToGoOn
{
};

bool saveText(const BlfConversionJob &job, const BlfFrames &frames, const std::function<void()> &pulse)
{
    return job.format == TextFormat::Csv ? BlfCsvWriter::saveCsv(job.outputPath, frames, pulse)
                                         : BlfAscWriter::saveAsc(job.outputPath, frames, pulse);
}

} // namespace

BlfConverter::BlfConverter(BLFParser *parser, Callbacks callbacks)
    : m_parser(parser)
    , m_callbacks(std::move(callbacks))
{
}

BlfConverter::Result BlfConverter::convert(const BlfConversionJob &job)
{
    m_parser->setPulse([this] { checkWhetherToGoOn(); });
    const auto takePulseBack = qScopeGuard([this] { m_parser->setPulse({}); });
    const auto fail = [&](const QString &text, const char *reason) {
        Common::logError("BLF conversion failed: {}: {}", job.inputPath.toStdString(), reason);
        m_callbacks.report(text, true);
        return Result::Failed;
    };
    try {
        return parseAndSave(job) ? Result::Succeeded : Result::Failed;
    } catch (const NotToGoOn &) {
        Common::logWarning("BLF conversion given up: {}", job.inputPath.toStdString());
        return Result::GivenUp;
    } catch (const std::bad_alloc &failure) {
        return fail(tr("Not enough memory for the frames of this file"), failure.what());
    } catch (const std::exception &failure) {
        return fail(tr("The conversion broke off: %1").arg(QString::fromUtf8(failure.what())), failure.what());
    }
}

bool BlfConverter::parseAndSave(const BlfConversionJob &job)
{
    tell(tr("Starting to parse BLF file: %1").arg(job.inputPath));
    BlfFrames frames;
    if (!m_parser->parseFile(job.inputPath, frames)) {
        tell(tr("Failed to parse BLF file"), true);
        return false;
    }
    if (!m_parser->hasReadAll())
        tell(tr("Not all of the file could be read: the program's log tells what is missing"), true);
    tell(tr("Parsing complete, read %1 frames").arg(frames.size()));
    const QString format = BlfConversionJob::formatName(job.format);
    tell(tr("Starting conversion to %1 format...").arg(format));
    const bool saved = saveText(job, frames, [this] { checkWhetherToGoOn(); });
    letGo(frames);
    if (!saved) {
        tell(tr("Failed to save %1 file").arg(format), true);
        return false;
    }
    tell(tr("Successfully saved %1 file: %2").arg(format, job.outputPath));
    return true;
}

// A long log has millions of records: letting go of them in one go would hold up the window.
void BlfConverter::letGo(BlfFrames &frames)
{
    constexpr BlfFrames::difference_type blockSize = 100'000;
    while (!frames.empty()) {
        const auto size = static_cast<BlfFrames::difference_type>(frames.size());
        frames.erase(frames.begin(), frames.begin() + std::min(size, blockSize));
        checkWhetherToGoOn();
    }
}

void BlfConverter::tell(const QString &text, bool isError)
{
    m_callbacks.report(text, isError);
    checkWhetherToGoOn();
}

void BlfConverter::checkWhetherToGoOn()
{
    if (!m_callbacks.mayGoOn())
        throw NotToGoOn();
}

} // namespace BLF
