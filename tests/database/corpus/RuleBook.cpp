// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/database/corpus/RuleBook.h"

#include <gtest/gtest.h>

#include <cstdio>

namespace tzcorpus {

namespace {

class Printer : public testing::Environment
{
public:
    void TearDown() override { RuleBook::instance().print(); }
};

[[maybe_unused]] const testing::Environment *const printer =
    testing::AddGlobalTestEnvironment(new Printer); // the test library takes it over

} // namespace

RuleBook &RuleBook::instance()
{
    static RuleBook book;
    return book;
}

void RuleBook::add(const char *name, const char *reason)
{
    m_entries.try_emplace(name, Entry{reason, 0});
}

void RuleBook::count(const char *name, int times)
{
    m_entries.at(name).times += m_counting == Counting::on ? times : 0;
}

void RuleBook::print() const
{
    if (m_entries.empty())
        return;
    std::printf("\nDeliberate differences (times applied, rule, reason):\n");
    for (const auto &[name, entry] : m_entries)
        std::printf("%8ld  %-28s %s\n", entry.times, name.c_str(), entry.reason.c_str());
}

} // namespace tzcorpus
