// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "logging/blf/BlfFrame.h"

#include <QCoreApplication>
#include <QString>

#include <functional>

namespace BLF {

class BLFParser;
class BlfConversionJob;

/// Turns a BLF log into a text file, with the options that the writers have at the time, and tells each step. Works in
/// the thread that calls; it takes as long as the log is long. Throws nothing of its own.
class BlfConverter
{
    Q_DECLARE_TR_FUNCTIONS(BLF::BlfConverter)
public:
    enum class Result
    {
        Succeeded,
        Failed, ///< the reports tell why
        GivenUp ///< because of mayGoOn; what was written so far stays
    };

    struct Callbacks
    {
        std::function<void(const QString &text, bool isError)> report; ///< at each step, for the user
        std::function<bool()> mayGoOn;                                 ///< about every 50 ms and between the steps
    };

    /// @param parser  must outlive the converter, which takes its pulse
    BlfConverter(BLFParser *parser, Callbacks callbacks);

    /// Checks nothing beforehand: see BlfConversionJob::problem().
    Result convert(const BlfConversionJob &job);

private:
    bool parseAndSave(const BlfConversionJob &job);
    void letGo(BlfFrames &frames);
    void tell(const QString &text, bool isError = false);
    void checkWhetherToGoOn();

    BLFParser *const m_parser;
    const Callbacks m_callbacks;
};

} // namespace BLF
