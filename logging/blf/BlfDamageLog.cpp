// SPDX-License-Identifier: GPL-3.0-or-later
#include "logging/blf/BlfDamageLog.h"

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

} // namespace BLF
