// SPDX-License-Identifier: GPL-3.0-or-later
#include "common/ReplaceFile.h"

#include "tests/support/FileSizeLimit.h"
#include "tests/support/TempWorkDir.h"

#include <QDir>
#include <QFile>

#include <gtest/gtest.h>

#include <utility>

#include <sys/stat.h>
#include <unistd.h>

using Common::replaceFile;
using Common::ReplaceFileResult;

namespace {

const QByteArray before("what was there");

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// While it lives, the process is a user who may not pass over the rights of files.
class OrdinaryUser
{
public:
    OrdinaryUser() { EXPECT_TRUE(m_before != 0 || ::setresuid(nobody, nobody, 0) == 0); }
    ~OrdinaryUser() { EXPECT_TRUE(m_before != 0 || ::setresuid(0, 0, 0) == 0); }
    OrdinaryUser(const OrdinaryUser &) = delete;
    OrdinaryUser &operator=(const OrdinaryUser &) = delete;

private:
    static constexpr uid_t nobody = 65534;
    const uid_t m_before = ::geteuid();
};

/// While it lives, the working directory takes no new file.
class NoNewFiles
{
public:
    NoNewFiles() { EXPECT_EQ(::chmod(".", 0555), 0); }
    ~NoNewFiles() { EXPECT_EQ(::chmod(".", 0755), 0); }
    NoNewFiles(const NoNewFiles &) = delete;
    NoNewFiles &operator=(const NoNewFiles &) = delete;
};

ino_t inodeOf(const char *path)
{
    struct stat status = {};
    return ::stat(path, &status) == 0 ? status.st_ino : 0;
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

TEST_F(ReplaceFile, InAFolderThatTakesNoNewFileTheOldOneIsWrittenDirectly)
{
    ASSERT_EQ(::chmod("settings.json", 0666), 0);
    const ino_t inode = inodeOf("settings.json");
    {
        const NoNewFiles noNewFiles;
        const OrdinaryUser user;
        EXPECT_EQ(replaceFile(path, "new"), ReplaceFileResult::Replaced);
        EXPECT_EQ(replaceFile(QStringLiteral("other.json"), "new"), ReplaceFileResult::NotOpened);
    }
    EXPECT_EQ(contentOf(path), "new");
    EXPECT_EQ(inodeOf("settings.json"), inode);
    EXPECT_EQ(QDir().entryList(QDir::Files), QStringList(path));
}

TEST_F(ReplaceFile, AFileThatMayNotBeWrittenStaysAlthoughItsFolderTakesNewOnes)
{
    ASSERT_EQ(::chmod(".", 0777), 0);
    ASSERT_EQ(::chmod("settings.json", 0444), 0);
    QString problem;
    {
        const OrdinaryUser user;
        EXPECT_EQ(replaceFile(path, "new", &problem), ReplaceFileResult::NotOpened);
    }
    EXPECT_FALSE(problem.isEmpty());
    EXPECT_EQ(contentOf(path), before);
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
