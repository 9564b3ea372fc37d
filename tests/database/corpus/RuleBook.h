// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <map>
#include <string>

namespace tzcorpus {

/// Counts how often each deliberate difference from the independent tools showed up, and prints it when the program
/// ends. A rule is known by its name; its reason stands where the rule is written.
class RuleBook
{
public:
    enum class Counting
    {
        off, ///< for what is worked out a second time
        on
    };

    static RuleBook &instance();

    void setCounting(Counting counting) { m_counting = counting; }

    /// Makes a rule known, so that it is listed even if it never applies.
    void add(const char *name, const char *reason);
    void count(const char *name, int times = 1);
    void print() const;

private:
    struct Entry
    {
        std::string reason;
        long times = 0;
    };
    std::map<std::string, Entry> m_entries;
    Counting m_counting = Counting::on;
};

/// Some rules of one kind: a row tells a name, a reason and a function that changes what is expected and says whether
/// it did so (how often, where it returns a number).
template <typename Rule, typename... Arguments> void applyRules(const Rule &rules, Arguments &...arguments)
{
    for (const auto &rule : rules) {
        RuleBook::instance().add(rule.name, rule.reason);
        RuleBook::instance().count(rule.name, static_cast<int>(rule.apply(arguments...)));
    }
}

} // namespace tzcorpus
