// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <tuple>

namespace tzsoak {

/// Watches that the records of one file stand in each channel's order and none stands there twice. It compares those of
/// one identifier: a burst overtakes the load that a box sends meanwhile.
///
/// Frames of a load carry a growing number in their first four bytes. Numbers alone may begin anew, as traffic does,
/// and times alone may step back, as the time of a device does that was opened again; that both go back by what a
/// recorder has in its queue at a time is neither.
class RecordOrder
{
public:
    /// Takes the next line, which must tell the index of its device.
    void add(std::string_view line);
    /// The first line out of order; empty while there is none.
    const std::string &problem() const { return m_problem; }

private:
    struct Record
    {
        std::int64_t microseconds = 0;
        std::uint32_t number = 0;
    };

    struct Source
    {
        std::string_view device;
        std::string_view channel;
        std::string_view id;
    };

    void addRecord(const Source &source, Record record, std::string_view line);

    std::map<std::tuple<int, int, unsigned>, Record> m_last; // by the source's numbers
    std::string m_problem;
};

} // namespace tzsoak
