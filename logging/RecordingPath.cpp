// SPDX-License-Identifier: GPL-3.0-or-later
#include "logging/RecordingPath.h"

#include <utility>

namespace Common {

RecordingPath::RecordingPath(std::string path)
    : m_path(std::move(path))
{
    const std::size_t separator = m_path.rfind('/');
    const std::size_t nameBegin = separator == std::string::npos ? 0 : separator + 1;
    const std::string name = m_path.substr(nameBegin);
    const std::size_t dot = name.rfind('.');
    m_directory = m_path.substr(0, nameBegin);
    m_stem = name.substr(0, dot);
    if (dot != std::string::npos)
        m_extension = name.substr(dot);
}

std::string RecordingPath::keptPath(int number) const
{
    return m_directory + m_stem + '.' + std::to_string(number) + m_extension;
}

} // namespace Common
