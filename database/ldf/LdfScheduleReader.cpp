// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/ldf/LdfSectionReaders.h"

#include "common/Log.h"
#include "database/ldf/LdfNumbers.h"
#include "database/ldf/LdfParser.h"
#include "database/ldf/LdfSections.h"
#include "database/ldf/LdfStatements.h"
#include "database/text/LogText.h"
#include "database/text/TextLines.h"

#include <algorithm>
#include <cmath>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

namespace Common {
namespace {

constexpr double noPeriod = 1e-6; // ms; a shorter period is none
// How often a standard's rules may update members of event-triggered frames, slots times members: far beyond any real
// cluster.
constexpr std::size_t memberUpdatesAllowed = 200'000;

struct TableText
{
    QString name;
    QString text;
};

std::uint32_t tableType(const QString &name)
{
    if (name == QLatin1String("ETFCollisionResolving"))
        return LdfScheduleTableType::collisionResolving;
    if (name == QLatin1String("InitTable"))
        return LdfScheduleTableType::init;
    if (name == QLatin1String("MasterReqTable"))
        return LdfScheduleTableType::masterRequest;
    if (name == QLatin1String("SlaveRespTable"))
        return LdfScheduleTableType::slaveResponse;
    return LdfScheduleTableType::ordinary;
}

// Walks the lines; a line that opens a table counts as its opening alone, so a table ends on a line behind that one.
std::vector<TableText> splitTables(QStringView section)
{
    std::vector<TableText> tables;
    int depth = 0;
    bool isInside = false;
    for (QStringView rest = section; !rest.isEmpty();) {
        const QStringView line = takeLine(rest).trimmed();
        if (line.isEmpty())
            continue;
        if (!isInside) {
            if (const LdfMatch start = matchLdfBlockStart(line)) {
                tables.push_back({start.text(1), line.mid(start.end).toString() + u'\n'});
                isInside = true;
                depth = 1;
            }
            continue;
        }
        for (const QChar character : line)
            depth += character == u'{' ? 1 : character == u'}' ? -1 : 0;
        isInside = depth != 0;
        if (isInside)
            tables.back().text.append(line.data(), static_cast<int>(line.size())).append(u'\n');
    }
    if (isInside) {
        logWarning("Schedule table '{}' is not closed, it is left out", LogText(tables.back().name));
        tables.pop_back();
    }
    return tables;
}

QString withoutLineComments(QStringView text)
{
    QString kept;
    while (!text.isEmpty()) {
        const QStringView line = takeLine(text);
        const qsizetype comment = line.indexOf(u"//");
        const QStringView code = comment < 0 ? line : line.left(comment);
        kept.append(code.data(), static_cast<int>(code.size())).append(u'\n');
    }
    return kept;
}

bool isFrameName(const QString &name, const LdfConfig &config)
{
    return config.frames.count(name) > 0 || config.diagnosticFrames.count(name) > 0 ||
           config.sporadicFrames.count(name) > 0 || config.eventTriggeredFrames.count(name) > 0 ||
           name == QLatin1String("MasterReq") || name == QLatin1String("SlaveResp");
}

bool readEntry(QStringView part, const LdfConfig &config, LdfScheduleEntry &entry)
{
    const LdfMatch match = matchLdfFrameSlot(part);
    if (!match || !isFrameName(match.text(1), config))
        return false;
    entry.frameName = match.text(1);
    entry.delay = Numbers::doubleOrZero(match[2]);
    return true;
}

bool readInitEntry(QStringView part, LdfScheduleEntry &entry)
{
    if (const LdfMatch slot = matchLdfFrameSlot(part)) {
        entry.frameName = slot.text(1);
        entry.delay = Numbers::doubleOrZero(slot[2]);
        return true;
    }
    const LdfMatch command = matchLdfCommandSlot(part);
    if (!command)
        return false;
    entry.command = command.text(1);
    entry.arguments = ldfCommaList(command[2]);
    entry.delay = Numbers::doubleOrZero(command[3]);
    return true;
}

bool readTable(const TableText &source, const LdfReading &reading)
{
    LdfScheduleTable table;
    table.name = source.name;
    table.type = tableType(source.name);
    const QString text = withoutLineComments(source.text);
    for (const QStringView part : ldfParts(text, u';')) {
        if (part.isEmpty())
            continue;
        LdfScheduleEntry entry;
        const bool isRead = table.type == LdfScheduleTableType::init ? readInitEntry(part, entry)
                                                                     : readEntry(part, reading.config, entry);
        if (!isRead)
            return false;
        table.entries.push_back(std::move(entry));
    }
    reading.config.scheduleTables.push_back(std::move(table));
    return true;
}

LdfFrame *findFrame(const QString &name, LdfConfig &config)
{
    for (auto *frames : {&config.frames, &config.diagnosticFrames}) {
        const auto frame = frames->find(name);
        if (frame != frames->end())
            return &frame->second;
    }
    return nullptr;
}

void updatePeriods(LdfFrame &frame, const LdfScheduleEntry &entry, std::uint32_t type)
{
    const bool isOrdinary = type == LdfScheduleTableType::ordinary;
    if (isOrdinary && entry.delay > frame.maxPeriod)
        frame.maxPeriod = entry.delay;
    if ((isOrdinary || type == LdfScheduleTableType::timed) &&
        (std::abs(frame.minPeriod) < noPeriod || frame.minPeriod > entry.delay))
        frame.minPeriod = entry.delay;
}

// Takes slots over to the frames that they name.
class SlotReader
{
public:
    explicit SlotReader(const LdfReading &reading)
        : m_reading(reading)
    {
    }

    // False where a hostile file would keep the reader busy for hours.
    bool apply(const LdfScheduleEntry &entry, std::uint32_t type)
    {
        if (LdfFrame *frame = findFrame(entry.frameName, m_reading.config)) {
            updatePeriods(*frame, entry, type);
            m_reading.rules.updateFrameTiming(*frame); // what it finds wrong it logs; the table stands
        }
        const auto event = m_reading.config.eventTriggeredFrames.find(entry.frameName);
        return event == m_reading.config.eventTriggeredFrames.end() || updateMembers(event->second);
    }

private:
    using Members = std::vector<LdfFrame *>;

    bool updateMembers(const LdfEventTriggeredFrame &event)
    {
        const std::size_t updatesBefore = m_reading.rules.eventUpdates();
        Members &members = membersOf(event);
        for (LdfFrame *member : members)
            m_reading.rules.updateEventTriggeredFrame(*member, event);
        if (m_reading.rules.eventUpdates() == updatesBefore)
            members.clear(); // no rule takes part, so nobody need be asked for any further slot
        if (m_reading.rules.eventUpdates() <= memberUpdatesAllowed)
            return true;
        logError("Too many slots for event triggered frame {}", LogText(event.name));
        return false;
    }

    // The frames that the event lists, each once; looked up for the first slot only. Empty where no rule updates
    // them.
    Members &membersOf(const LdfEventTriggeredFrame &event)
    {
        const auto [members, isNew] = m_members.try_emplace(&event);
        if (!isNew)
            return members->second;
        std::unordered_set<const LdfFrame *> seen;
        for (const QString &name : event.frames) {
            const auto frame = m_reading.config.frames.find(name);
            if (frame != m_reading.config.frames.end() && seen.insert(&frame->second).second)
                members->second.push_back(&frame->second);
        }
        return members->second;
    }

    const LdfReading &m_reading;
    std::unordered_map<const LdfEventTriggeredFrame *, Members> m_members;
};

// Takes the tables' delays over to the frames and checks the tables.
bool applySchedules(const LdfReading &reading)
{
    SlotReader slotReader(reading);
    for (const LdfScheduleTable &table : reading.config.scheduleTables) {
        for (const LdfScheduleEntry &entry : table.entries) {
            if (!entry.frameName.isEmpty() && !slotReader.apply(entry, table.type))
                return false;
        }
        if (table.name.isEmpty())
            return false;
        // The names in all other tables were looked up when they were read.
        const bool hasKnownFrames =
            table.type != LdfScheduleTableType::init ||
            std::all_of(table.entries.begin(), table.entries.end(), [&](const auto &entry) {
                return entry.frameName.isEmpty() || isFrameName(entry.frameName, reading.config);
            });
        if (!hasKnownFrames || !reading.rules.validateScheduleTable(table))
            return false;
    }
    return true;
}

} // namespace

bool readLdfSchedules(const QString &text, const LdfReading &reading)
{
    const auto section = findLdfSection(text, u"Schedule_tables");
    if (!section) {
        logError("Schedule tables section not found in LDF file");
        return false;
    }
    for (const TableText &table : splitTables(*section)) {
        if (!readTable(table, reading))
            return false;
    }
    return applySchedules(reading);
}

} // namespace Common
