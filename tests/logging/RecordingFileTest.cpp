// SPDX-License-Identifier: GPL-3.0-or-later
// The buffered file of whole lines. A limit on the size of files stands for a full disk.
#include "logging/RecordingFile.h"
#include "tests/logging/RecorderFixture.h"
#include "tests/support/FileSizeLimit.h"

using Common::RecordingFile;
using tztest::textOf;

namespace {

constexpr std::string_view footer = "End\n";

class RecordingFileText : public testing::Test
{
protected:
    tztest::TempWorkDir workDir;
    RecordingFile file;
};

std::string numberedLines(int count)
{
    std::string text;
    for (int i = 0; i < count; ++i)
        text += fmt::format("line {}\n", i);
    return text;
}

TEST_F(RecordingFileText, WaitsInTheBufferUntilFlushed)
{
    ASSERT_TRUE(file.open("run", footer));
    file.write("one\n");
    file.write("two\n");
    EXPECT_EQ(textOf("run"), "");
    EXPECT_EQ(file.bytesWritten(), 8u);
    EXPECT_TRUE(file.flush());
    EXPECT_EQ(textOf("run"), "one\ntwo\n");
    file.finish();
    EXPECT_EQ(textOf("run"), "one\ntwo\nEnd\n");
}

TEST_F(RecordingFileText, KeepsTheOrderOfSmallAndLargeWrites)
{
    const std::string large = numberedLines(20'000);
    ASSERT_GT(large.size(), 2 * RecordingFile::bufferSize);
    ASSERT_TRUE(file.open("run", footer));
    std::string expected;
    for (const std::string &text : {std::string("first\n"), large, std::string("between\n"),
                                    large.substr(0, RecordingFile::bufferSize), std::string("last\n")}) {
        file.write(text);
        expected += text;
    }
    file.finish();
    EXPECT_EQ(textOf("run"), expected + "End\n");
    EXPECT_EQ(file.bytesWritten(), expected.size() + footer.size());
}

TEST_F(RecordingFileText, EmptiesAnOlderFileWhenOpened)
{
    tztest::writeText("run", "older and longer than what comes now");
    ASSERT_TRUE(file.open("run", footer));
    file.finish();
    file.close();
    EXPECT_EQ(textOf("run"), "End\n");
    EXPECT_FALSE(file.isOpen());
}

TEST_F(RecordingFileText, EndsInWholeLinesAndTheClosingLineWhereverTheDiskIsFull)
{
    const std::string text = numberedLines(20); // of 7 and 8 bytes
    for (std::size_t limit = 0; limit < text.size(); ++limit) {
        ASSERT_TRUE(file.open("run", footer));
        {
            const tztest::FileSizeLimit full(limit);
            file.write(text);
            EXPECT_FALSE(file.flush());
        }
        file.write("dropped, though there is room again\n");
        file.finish();
        const std::string written = textOf("run");
        ASSERT_LE(written.size(), limit);
        if (limit < footer.size()) {
            ASSERT_EQ(written, "");
            continue;
        }
        ASSERT_TRUE(written.ends_with(footer)) << written;
        const std::string lines = written.substr(0, written.size() - footer.size());
        ASSERT_TRUE(text.starts_with(lines) && (lines.empty() || lines.back() == '\n')) << lines;
        ASSERT_GT(written.size() + 8 + footer.size(), limit) << "a line was given up for nothing";
    }
}

// The closing line takes the place of lines of earlier writes where those behind them leave it too little room.
TEST_F(RecordingFileText, EndsInTheClosingLineAlsoWhereFewerBytesThanItReachedTheDisk)
{
    for (const std::string_view closingLine : {std::string_view("End\n"), std::string_view("End of many words\n")}) {
        const std::string text = numberedLines(20);
        for (std::size_t limit = closingLine.size(); limit < text.size(); ++limit) {
            ASSERT_TRUE(file.open("run", closingLine));
            {
                const tztest::FileSizeLimit full(limit);
                for (const std::string &line : tztest::linesOfText(text)) {
                    file.write(line + '\n');
                    file.flush();
                }
                EXPECT_FALSE(file.isGood());
            }
            file.finish();
            const std::string written = textOf("run");
            ASSERT_TRUE(written.ends_with(closingLine)) << written;
            const std::string lines = written.substr(0, written.size() - closingLine.size());
            ASSERT_TRUE(text.starts_with(lines) && (lines.empty() || lines.back() == '\n')) << lines;
            ASSERT_LE(written.size(), limit);
            ASSERT_GT(written.size() + 8, limit) << "a line was given up for nothing";
        }
    }
}

TEST_F(RecordingFileText, EndsInTheClosingLineAlsoWhereOnlyThatFailed)
{
    ASSERT_TRUE(file.open("run", footer));
    file.write("kept\nlost\n");
    EXPECT_TRUE(file.flush());
    {
        const tztest::FileSizeLimit full(11);
        file.finish();
        EXPECT_FALSE(file.isGood());
    }
    EXPECT_EQ(textOf("run"), "kept\nEnd\n");
}

TEST_F(RecordingFileText, WithoutAClosingLineEarlierWritesStayWhole)
{
    ASSERT_TRUE(file.open("run", {}));
    file.write("kept\n");
    EXPECT_TRUE(file.flush());
    {
        const tztest::FileSizeLimit full(8);
        file.write("lost line\n");
        EXPECT_FALSE(file.flush());
    }
    file.finish();
    EXPECT_EQ(textOf("run"), "kept\n");
}

TEST_F(RecordingFileText, IsGoodAgainAfterTheNextOpen)
{
    ASSERT_TRUE(file.open("run", footer));
    {
        const tztest::FileSizeLimit full(0);
        file.write("lost\n");
        EXPECT_FALSE(file.flush());
    }
    ASSERT_TRUE(file.open("run", footer));
    EXPECT_TRUE(file.isGood());
    file.write("kept\n");
    file.finish();
    EXPECT_EQ(textOf("run"), "kept\nEnd\n");
}

TEST_F(RecordingFileText, ADescriptorIsNotHandedToChildren)
{
    ASSERT_TRUE(file.open("run", footer));
    int found = 0;
    for (const auto &entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        std::error_code error;
        if (std::filesystem::read_symlink(entry, error).filename() != "run")
            continue;
        ++found;
        EXPECT_THAT(textOf("/proc/self/fdinfo/" + entry.path().filename().string()),
                    testing::ContainsRegex("flags:\t[0-7]*2[0-7]{6}")); // O_CLOEXEC, octal
    }
    EXPECT_EQ(found, 1);
}

} // namespace
