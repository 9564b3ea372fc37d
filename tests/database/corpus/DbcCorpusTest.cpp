// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/dbc/DbcWriter.h"
#include "tests/database/corpus/DbcCompare.h"
#include "tests/database/corpus/DbcCorpusFixture.h"
#include "tests/database/corpus/DbcExpectation.h"
#include "tests/database/corpus/DbcFrameCheck.h"
#include "tests/database/corpus/DbcSaveRules.h"
#include "tests/database/corpus/RuleBook.h"

#include <map>

namespace tzcorpus {

TEST_P(DbcCorpus, LoadsOrFailsAsExpected)
{
    const bool isLoaded = parse(GetParam().path);
    EXPECT_EQ(isLoaded, m_text->isLoadable());
    if (m_golden.isLoadable && *m_golden.isLoadable != m_text->isLoadable()) {
        RuleBook::instance().add("file refused", "none of its messages is one that the reader takes");
        RuleBook::instance().count("file refused");
        EXPECT_TRUE(*m_golden.isLoadable && !m_text->messages().empty()) << "no rule explains the difference";
    }
    ++(isLoaded ? s_totals.files : s_totals.refused);
}

TEST_P(DbcCorpus, MessagesAndSignalsMatchFieldByField)
{
    if (!load()) {
        EXPECT_FALSE(hasMessages());
        return;
    }
    const std::vector<ExpectedMessage> expected = expectedMessages(m_golden, *m_text, RuleBook::Counting::on);
    ASSERT_EQ(expected.size(), model().messages.size());
    QStringList differences;
    for (std::size_t at = 0; at < expected.size(); ++at) {
        differences += compareMessages(expected[at].message, model().messages[at], Depth::description);
        s_totals.signals += static_cast<long>(expected[at].message.signals.size());
    }
    s_totals.messages += static_cast<long>(expected.size());
    reportDifferences(QStringLiteral("messages"), differences);
}

TEST_P(DbcCorpus, FramesDecodeAndEncodeAgain)
{
    DbcFrameCheck::addRules();
    if (!load())
        return;
    const std::vector<ExpectedMessage> expected = expectedMessages(m_golden, *m_text, RuleBook::Counting::off);
    ASSERT_EQ(expected.size(), model().messages.size());
    std::map<std::pair<std::uint32_t, bool>, DbcFrameCheck> checks;
    for (std::size_t at = 0; at < expected.size(); ++at) {
        const GoldenMessage *golden = expected[at].golden;
        if (golden != nullptr)
            checks.try_emplace({golden->id, golden->isExtended}, expected[at], model().messages[at]);
    }
    QStringList differences;
    for (const GoldenFrame &frame : m_golden.frames) {
        const auto check = checks.find({frame.id, frame.isExtended});
        if (check != checks.end())
            differences += check->second.check(frame, s_totals);
    }
    reportDifferences(QStringLiteral("frames"), differences);
}

TEST_P(DbcCorpus, SavedFileReadsAsTheSameButForTheKnownLosses)
{
    if (!load())
        return;
    const DbcFile before = model();
    const QString path = m_folder.filePath(QStringLiteral("saved.dbc"));
    ASSERT_TRUE(DbcWriter(before).save(path, m_encoding));
    ASSERT_TRUE(parse(path));
    reportDifferences(QStringLiteral("saved and read again"), compareFiles(expectedAfterSave(before), model()));
    ++s_totals.saved;
}

INSTANTIATE_TEST_SUITE_P(All, DbcCorpus, testing::ValuesIn(files(QStringLiteral("dbc"))), testName);

INSTANTIATE_TEST_SUITE_P(Own, DbcCorpus, testing::ValuesIn(ownFiles(QStringLiteral("dbc"))), testName);

TEST(DbcCorpusFolder, HoldsFiles)
{
    const std::vector<File> all = files(QStringLiteral("dbc"));
    ASSERT_FALSE(all.empty()) << "TZ_CORPUS names a folder without dbc files";
    if (all.front().name.isEmpty())
        GTEST_SKIP() << skipReason;
}

} // namespace tzcorpus
