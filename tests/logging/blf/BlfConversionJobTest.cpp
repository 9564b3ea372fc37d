// SPDX-License-Identifier: GPL-3.0-or-later
#include "logging/blf/BlfConversionJob.h"

#include "tests/support/TempWorkDir.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QFileInfo>
#include <QUrl>

#include <sys/stat.h>

using BLF::BlfConversionJob;
using BLF::TextFormat;

namespace {

BlfConversionJob jobOf(const QString &input, const QString &output)
{
    BlfConversionJob job;
    job.inputPath = input;
    job.outputPath = output;
    return job;
}

void makeFile(const QString &path)
{
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
}

std::string problemOf(const BlfConversionJob &job)
{
    return job.problem().value_or(QString()).toStdString();
}

struct PathCase
{
    const char *name;
    const char *input;
    TextFormat format;
    const char *output;
};

class BlfDefaultOutput : public testing::TestWithParam<PathCase>
{
};

} // namespace

TEST_P(BlfDefaultOutput, LiesBesideTheInput)
{
    const PathCase &test = GetParam();
    EXPECT_EQ(BlfConversionJob::defaultOutputPath(QString::fromUtf8(test.input), test.format).toStdString(),
              test.output);
}

INSTANTIATE_TEST_SUITE_P(
    Paths, BlfDefaultOutput,
    testing::Values(PathCase{"Csv", "/logs/drive.blf", TextFormat::Csv, "/logs/drive_processed.csv"},
                    PathCase{"Asc", "/logs/drive.blf", TextFormat::Asc, "/logs/drive_processed.asc"},
                    PathCase{"CapitalExtension", "/logs/DRIVE.BLF", TextFormat::Csv, "/logs/DRIVE_processed.csv"},
                    PathCase{"SeveralDots", "/logs/drive.2024.11.blf", TextFormat::Csv, "/logs/drive_processed.csv"},
                    PathCase{"NoExtension", "/logs/drive", TextFormat::Csv, "/logs/drive_processed.csv"},
                    PathCase{"DotInFolder", "/logs.d/drive", TextFormat::Csv, "/logs.d/drive_processed.csv"},
                    PathCase{"RootFolder", "/drive.blf", TextFormat::Csv, "/drive_processed.csv"},
                    PathCase{"Blanks", "/my logs/a drive.blf", TextFormat::Asc, "/my logs/a drive_processed.asc"},
                    PathCase{"Chinese", "/日志/行车 记录.blf", TextFormat::Csv, "/日志/行车 记录_processed.csv"},
                    PathCase{"Colon", "/logs/:a.blf", TextFormat::Csv, "/logs/:a_processed.csv"},
                    PathCase{"ColonInRootFolder", "/:a.blf", TextFormat::Csv, "/:a_processed.csv"},
                    PathCase{"Folder", "/logs/", TextFormat::Csv, ""}, PathCase{"Nothing", "", TextFormat::Csv, ""}),
    [](const auto &test) { return std::string(test.param.name); });

TEST(BlfConversionJob, ARelativeInputGetsAnOutputBesideIt)
{
    const tztest::TempWorkDir workDir;
    EXPECT_EQ(BlfConversionJob::defaultOutputPath(QStringLiteral("logs/a.blf"), TextFormat::Csv).toStdString(),
              QDir::current().filePath(QStringLiteral("logs/a_processed.csv")).toStdString());
}

TEST(BlfConversionJob, NamesOfTheFormats)
{
    EXPECT_EQ(BlfConversionJob::formatName(TextFormat::Csv).toStdString(), "CSV");
    EXPECT_EQ(BlfConversionJob::formatName(TextFormat::Asc).toStdString(), "ASC");
    EXPECT_EQ(BlfConversionJob::extension(TextFormat::Csv).toStdString(), "csv");
    EXPECT_EQ(BlfConversionJob::extension(TextFormat::Asc).toStdString(), "asc");
    EXPECT_EQ(BlfConversionJob::nameFilter(TextFormat::Csv).toStdString(), "CSV Files (*.csv);;All Files (*)");
    EXPECT_EQ(BlfConversionJob::nameFilter(TextFormat::Asc).toStdString(), "ASC Files (*.asc);;All Files (*)");
}

TEST(BlfConversionJob, ProblemsInTheirOrder)
{
    const tztest::TempWorkDir workDir;
    makeFile(QStringLiteral("a.blf"));
    EXPECT_EQ(problemOf(jobOf({}, {})), "Please select an input file");
    EXPECT_EQ(problemOf(jobOf({}, QStringLiteral("a.csv"))), "Please select an input file");
    EXPECT_EQ(problemOf(jobOf(QStringLiteral("none.blf"), {})), "Input file does not exist");
    EXPECT_EQ(problemOf(jobOf(QStringLiteral("a.blf"), {})), "Please select an output file");
    EXPECT_EQ(problemOf(jobOf(QStringLiteral("a.blf"), QStringLiteral("a.csv"))), "");
}

TEST(BlfConversionJob, IsCompleteWithAnInputThatExistsAndAnOutput)
{
    const tztest::TempWorkDir workDir;
    makeFile(QStringLiteral("a.blf"));
    EXPECT_FALSE(jobOf({}, {}).isComplete());
    EXPECT_FALSE(jobOf(QStringLiteral("none.blf"), QStringLiteral("a.csv")).isComplete());
    EXPECT_FALSE(jobOf(QStringLiteral("a.blf"), {}).isComplete());
    EXPECT_TRUE(jobOf(QStringLiteral("a.blf"), QStringLiteral("a.csv")).isComplete());
}

TEST(BlfConversionJob, AFolderOrAPipeIsNoInput)
{
    const tztest::TempWorkDir workDir;
    ASSERT_EQ(::mkfifo("pipe.blf", 0600), 0);
    for (const char *input : {".", "pipe.blf"}) {
        const BlfConversionJob job = jobOf(QString::fromLatin1(input), QStringLiteral("a.csv"));
        EXPECT_FALSE(job.isComplete()) << input;
        EXPECT_EQ(problemOf(job), "Input file does not exist") << input;
    }
}

TEST(BlfConversionJob, TheLogItselfIsNoOutputByWhateverName)
{
    const tztest::TempWorkDir workDir;
    makeFile(QStringLiteral("a.blf"));
    ASSERT_TRUE(QFile::link(QStringLiteral("a.blf"), QStringLiteral("symbolic.csv")));
    ASSERT_EQ(::link("a.blf", "hard.csv"), 0);
    for (const char *output : {"a.blf", "./a.blf", "symbolic.csv", "hard.csv"}) {
        EXPECT_EQ(problemOf(jobOf(QStringLiteral("a.blf"), QString::fromLatin1(output))),
                  "The output file is the input file. Please select another output file")
            << output;
    }
}

TEST(BlfConversionJob, ReplacesFilesButNoFolders)
{
    const tztest::TempWorkDir workDir;
    makeFile(QStringLiteral("日志 1.csv"));
    ASSERT_TRUE(QDir().mkdir(QStringLiteral("folder")));
    EXPECT_TRUE(jobOf({}, QStringLiteral("日志 1.csv")).replacesFile());
    EXPECT_FALSE(jobOf({}, QStringLiteral("none.csv")).replacesFile());
    EXPECT_FALSE(jobOf({}, QStringLiteral("folder")).replacesFile());
}

TEST(BlfConversionJob, TakesTheFirstLogOfWhatIsDropped)
{
    const auto local = [](const char *path) { return QUrl::fromLocalFile(QString::fromUtf8(path)); };
    EXPECT_EQ(BlfConversionJob::firstLog({}).toStdString(), "");
    EXPECT_EQ(BlfConversionJob::firstLog({local("/a.asc")}).toStdString(), "");
    EXPECT_EQ(BlfConversionJob::firstLog({QUrl(QStringLiteral("http://a/b.blf"))}).toStdString(), "");
    EXPECT_EQ(BlfConversionJob::firstLog({local("/a.asc"), local("/日志 1.BLF"), local("/c.blf")}).toStdString(),
              "/日志 1.BLF");
}
