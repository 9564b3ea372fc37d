// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "database/dbc/DbcParser.h"
#include "tests/database/corpus/Corpus.h"
#include "tests/database/corpus/DbcGolden.h"
#include "tests/database/corpus/DbcText.h"
#include "tests/database/corpus/DbcTotals.h"
#include "tests/support/TempWorkDir.h"

#include <optional>

namespace tzcorpus {

/// Reads one file of the corpus and its results.
class DbcCorpus : public testing::TestWithParam<File>
{
public:
    static void TearDownTestSuite(); ///< prints the totals

protected:
    void SetUp() override;

    bool parse(const QString &path) { return m_parser.parseFile(path, m_encoding); }
    /// Loads the file, with a list of symbols put before it where it lacks one, so that the rest of it can be compared.
    /// False for a file without messages.
    bool load();
    bool hasMessages() const;
    QString decode(const QString &path) const;
    static const DbcFile &model() { return Common::DbcParser::model(); }

    inline static DbcTotals s_totals;
    QString m_encoding;
    DbcGolden m_golden;
    std::optional<DbcText> m_text;
    tztest::TempWorkDir m_folder;
    QString m_loadedPath; ///< of the file that load() has read

private:
    Common::DbcParser m_parser;
};

} // namespace tzcorpus
