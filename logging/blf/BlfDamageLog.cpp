// SPDX-License-Identifier: GPL-3.0-or-later
#include "logging/blf/BlfDamageLog.h"

#include "logging/blf/BlfObjectSearch.h"

namespace BLF {

BlfDamageLog::BlfDamageLog(const QString &path)
    : m_path(path.toStdString())
{
}

BlfDamageLog::~BlfDamageLog()
{
    if (m_count > maxLines)
        Common::logError("{}: {} more errors", m_path, m_count - maxLines);
}

void BlfDamageLog::tellGap(const BlfGap &gap, std::string_view data)
{
    if (gap.cutObjectSize > 0)
        tell("the object at byte {}{} is cut: {} of {} bytes are there", gap.position, data, gap.length,
             gap.cutObjectSize);
    else if (gap.suspectSize > 0)
        tell("passed over {} bytes at byte {}{} that are no object, behind one of type {} whose size of {} bytes may "
             "be wrong",
             gap.length, gap.position, data, gap.suspectType, gap.suspectSize);
    else
        tell("passed over {} bytes at byte {}{} that are no object", gap.length, gap.position, data);
}

} // namespace BLF
