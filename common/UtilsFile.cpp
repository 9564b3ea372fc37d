// SPDX-License-Identifier: GPL-3.0-or-later
#include "common/Utils.h"

#include <filesystem>
#include <system_error>

namespace Common {

bool Utils::ensureFilePath(const std::string &path)
{
    if (path.empty())
        return false;
    const std::filesystem::path directory = std::filesystem::path(path).parent_path();
    if (directory.empty())
        return true;
    std::error_code error;
    std::filesystem::create_directories(directory, error); // no error where it exists
    return std::filesystem::is_directory(directory, error);
}

bool Utils::fileExists(const std::string &path)
{
    std::error_code error;
    const auto status = std::filesystem::status(path, error);
    return std::filesystem::exists(status) && !std::filesystem::is_directory(status);
}

} // namespace Common
