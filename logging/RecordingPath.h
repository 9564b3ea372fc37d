// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

namespace Common {

/// The path of a recording, and the names under which its full files are kept: "logs/run.asc", "logs/run.1.asc", ...
/// Paths are in the local 8-bit encoding.
class RecordingPath
{
public:
    RecordingPath() = default;
    explicit RecordingPath(std::string path);

    const std::string &path() const noexcept { return m_path; }
    /// With a trailing separator; empty when the path has none.
    const std::string &directory() const noexcept { return m_directory; }
    const std::string &stem() const noexcept { return m_stem; }
    /// From the last dot of the file name on; empty when it has none.
    const std::string &extension() const noexcept { return m_extension; }
    std::string keptPath(int number) const;

private:
    std::string m_path;
    std::string m_directory;
    std::string m_stem;
    std::string m_extension;
};

} // namespace Common
