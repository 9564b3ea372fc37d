// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/dbc/DbcHeaderReader.h"

#include "common/Log.h"
#include "database/dbc/DbcFile.h"
#include "database/dbc/DbcNodeCheck.h"
#include "database/dbc/DbcScan.h"
#include "database/text/Sections.h"
#include "database/text/TextLines.h"

namespace DbcHeaderReader {

namespace {

// The words that end a section; any other word, EV_ or SG_ for example, belongs to it.
constexpr QStringView sectionWords[] = {u"VERSION", u"NS_",     u"VAL_TABLE_", u"BU_", u"BO_",
                                        u"CM_",     u"BA_DEF_", u"BA_",        u"VAL_"};

std::optional<QStringView> findNewSymbols(QStringView text)
{
    const auto head = Common::Sections::findLineHead(text, u"NS_");
    if (!head) {
        Common::logWarning("NS_ section not found");
        return std::nullopt;
    }
    const auto next = Common::Sections::findLineHead(text, u"BS_", head->end);
    const qsizetype end = next ? next->begin : text.size();
    return text.mid(head->end, end - head->end).trimmed();
}

} // namespace

void readVersion(const QString &text, DbcFile &file)
{
    if (const auto version = DbcScan::findVersion(text))
        file.version = version->toString();
    else
        Common::logWarning("VERSION section not found or empty");
}

bool readNewSymbols(const QString &text, DbcFile &file)
{
    auto block = findNewSymbols(text);
    if (!block) {
        Common::logWarning("NS_ section not found or empty");
        return false;
    }
    while (!block->isEmpty()) {
        const QStringView line = Common::takeLine(*block).trimmed();
        if (!line.isEmpty() && line != QStringView(u":"))
            file.newSymbols.append(line.toString());
    }
    return true;
}

void readNodes(const QString &text, DbcFile &file)
{
    const auto section = Common::Sections::findSection(text, u"BU_", sectionWords);
    if (!section) {
        Common::logError("BU_ section not found");
        return;
    }
    const qsizetype colon = section->indexOf(u':');
    if (colon < 0) {
        Common::logError("Invalid BU_ section format");
        return;
    }
    const QStringView names = section->mid(colon + 1).trimmed();
    qsizetype position = 0;
    for (QStringView name = DbcScan::nextWord(names, position); !name.isEmpty();
         name = DbcScan::nextWord(names, position))
        DbcNodeCheck::addIfValid(name.toString(), file);
}

} // namespace DbcHeaderReader
