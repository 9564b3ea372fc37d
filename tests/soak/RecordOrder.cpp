// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/soak/RecordOrder.h"

#include <array>
#include <charconv>
#include <utility>

namespace tzsoak {

namespace {

constexpr std::int64_t queuedMicroseconds = 200'000; // what waits for the flush of every 100 ms, with some to spare
constexpr std::size_t maxWords = 16;                 // of a line; all that matters stands among the first
constexpr std::string_view indexMark = "Index:";

struct Words
{
    std::array<std::string_view, maxWords> words;
    std::size_t count = 0;

    std::string_view operator[](std::size_t index) const { return index < count ? words[index] : std::string_view(); }
};

Words split(std::string_view line, char separator)
{
    Words words;
    while (words.count < maxWords) {
        const std::size_t end = line.find(separator);
        words.words[words.count++] = line.substr(0, end);
        if (end == std::string_view::npos)
            break;
        line.remove_prefix(end + 1);
    }
    return words;
}

template <typename Number> Number numberOf(std::string_view text, int base = 10)
{
    Number number{};
    std::from_chars(text.data(), text.data() + text.size(), number, base);
    return number;
}

// "12.345678"
std::int64_t microsecondsOf(std::string_view time)
{
    const std::size_t point = time.find('.');
    if (point == std::string_view::npos)
        return 0;
    const auto fraction = numberOf<std::int64_t>(time.substr(point + 1));
    return numberOf<std::int64_t>(time.substr(0, point)) * 1'000'000 + (time.front() == '-' ? -fraction : fraction);
}

// The lowest byte comes first.
std::uint32_t loadNumber(const Words &bytes, std::size_t first)
{
    std::uint32_t number = 0;
    for (std::size_t i = 0; i < 4; ++i)
        number |= numberOf<std::uint32_t>(bytes[first + i], 16) << (8 * i);
    return number;
}

std::string_view deviceOf(std::string_view line)
{
    const std::size_t mark = line.rfind(indexMark);
    if (mark == std::string_view::npos)
        return {};
    const std::string_view rest = line.substr(mark + indexMark.size());
    return rest.substr(rest.find_first_not_of(' ') == 1 ? 1 : 0);
}

} // namespace

void RecordOrder::add(std::string_view line)
{
    const std::string_view device = deviceOf(line);
    if (line.find(',') != std::string_view::npos) {
        const Words cells = split(line, ',');
        const bool isLin = cells.count == 11;
        const auto data = split(cells[isLin ? 7 : 6], ' ');
        addRecord({device, cells[1], cells[2].substr(2)}, {microsecondsOf(cells[0]), loadNumber(data, 0)}, line);
        return;
    }
    const Words words = split(line, ' ');
    if (words[1] == "ErrorFrame") // which tells no more than its channel
        return;
    const std::size_t channel = words[1] == "CANFD" ? 2 : 1;
    const std::size_t id = words[2] == "LIN" ? 4 : channel + 1;
    const std::size_t data = words[1] == "CANFD" ? 10 : 6;
    addRecord({device, words[channel], words[id]}, {microsecondsOf(words[0]), loadNumber(words, data)}, line);
}

void RecordOrder::addRecord(const Source &source, Record record, std::string_view line)
{
    const auto key =
        std::tuple(numberOf<int>(source.device), numberOf<int>(source.channel), numberOf<unsigned>(source.id, 16));
    const auto [place, isFirst] = m_last.try_emplace(key, record);
    const Record last = std::exchange(place->second, record);
    const std::int64_t back = last.microseconds - record.microseconds;
    const bool isBefore = back > 0 && back < queuedMicroseconds && record.number <= last.number;
    const bool isSame = back == 0 && record.number == last.number;
    if (!isFirst && m_problem.empty() && (isBefore || isSame))
        m_problem = "out of order or twice: " + std::string(line);
}

} // namespace tzsoak
