// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tests/database/history/FakeFiles.h"
#include "tests/support/LogCapture.h"
#include "tests/support/NoMoreThreads.h"
#include "tests/support/TempWorkDir.h"
#include "tests/support/WaitFor.h"

#include <QString>

#include <gtest/gtest.h>

#include <memory>

namespace tztest {

/// A manager that loads its history, and the parser that it works with.
class HistoryLoadFixture : public testing::Test
{
protected:
    HistoryLoadFixture()
    {
        parser.reset();
        FakeDisk::instance().reset();
    }

    /// True once the load has told its end.
    bool hasEnded(const char *lastLine)
    {
        return waitBlocking([&] { return log.count(1, lastLine) > 0 || log.countContaining(3, lastLine) > 0; });
    }
    /// Asks for the load, but no thread is left that would do it.
    void startWithoutAThread()
    {
        const NoMoreThreads noThreads;
        manager->startHistoryLoad();
    }
    QString customFile(const QString &key)
    {
        QString value;
        manager->getCustomFile(key, value);
        return value;
    }

    TempWorkDir workDir;
    LogCapture log;
    FakeParser &parser = FakeParser::instance();
    std::unique_ptr<FakeManager> manager = std::make_unique<FakeManager>();
};

} // namespace tztest
