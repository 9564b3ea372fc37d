// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <vector>

namespace tzsoak {

/// The table at the end of a run: figures, and what was wrong.
class Verdict
{
public:
    /// A figure that is told and not judged.
    void tell(const std::string &name, const std::string &value);
    /// A figure that must be as it should.
    void judge(const std::string &name, bool ok, const std::string &value, const std::string &wanted);
    /// Something that must not have happened.
    void fail(const std::string &reason);

    bool isGood() const { return m_reasons.empty(); }
    /// Prints the table and, where there are some, the reasons of the failure.
    void print() const;

private:
    struct Row
    {
        std::string name;
        std::string value;
        std::string wanted;
        std::string mark;
    };
    std::vector<Row> m_rows;
    std::vector<std::string> m_reasons;
};

} // namespace tzsoak
