// SPDX-License-Identifier: GPL-3.0-or-later
#include "common/ReplaceFile.h"

#include "tests/support/FileSizeLimit.h"
#include "tests/support/TempWorkDir.h"

#include <QDir>
#include <QFile>

#include <gtest/gtest.h>

#include <utility>

using Common::replaceFile;
using Common::ReplaceFileResult;

namespace {

const QByteArray before("what was there");

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

class ReplaceFile : public ::testing::TestWithParam<std::pair<int, int>> // bytes to write, bytes that the disk takes
{
protected:
    ReplaceFile() { EXPECT_EQ(replaceFile(path, before), ReplaceFileResult::Replaced); }

    tztest::TempWorkDir workDir;
    const QString path = QStringLiteral("settings.json");
};

TEST_F(ReplaceFile, WritesAllAndLeavesNothingElse)
{
    const QByteArray content(1'000'000, 'x');
    EXPECT_EQ(replaceFile(path, content), ReplaceFileResult::Replaced);
    EXPECT_EQ(contentOf(path), content);
    EXPECT_EQ(QDir().entryList(QDir::Files), QStringList(path));
}

TEST_F(ReplaceFile, AnEmptyContentEmptiesTheFile)
{
    EXPECT_EQ(replaceFile(path, {}), ReplaceFileResult::Replaced);
    EXPECT_EQ(contentOf(path), QByteArray());
}

TEST_F(ReplaceFile, AFolderThatIsNotThereIsTold)
{
    QString problem;
    EXPECT_EQ(replaceFile(QStringLiteral("no/settings.json"), before, &problem), ReplaceFileResult::NotOpened);
    EXPECT_FALSE(problem.isEmpty());
}

TEST_P(ReplaceFile, AFullDiskIsToldAndLeavesWhatWasThere)
{
    const auto [size, room] = GetParam();
    QString problem;
    {
        const tztest::FileSizeLimit limit(static_cast<rlim_t>(room));
        EXPECT_EQ(replaceFile(path, QByteArray(size, 'x'), &problem), ReplaceFileResult::NotWritten);
    }
    EXPECT_FALSE(problem.isEmpty());
    EXPECT_EQ(contentOf(path), before);
    EXPECT_EQ(QDir().entryList(QDir::Files), QStringList(path));
}

INSTANTIATE_TEST_SUITE_P(Sizes, ReplaceFile,
                         ::testing::Values(std::pair(1'000, 0), std::pair(1'000, 999), std::pair(16'000, 100),
                                           std::pair(16'385, 16'384), std::pair(510'000, 500'000),
                                           std::pair(1'000'000, 500'000)));

} // namespace
