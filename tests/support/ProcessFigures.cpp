// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/support/ProcessFigures.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <unistd.h>

namespace tztest {

namespace {

namespace fs = std::filesystem;

constexpr double mebibyte = 1024.0 * 1024.0;

fs::path processFolder(int pid)
{
    return fs::path("/proc") / (pid == 0 ? std::string("self") : std::to_string(pid));
}

std::size_t entries(const fs::path &folder)
{
    std::error_code error;
    const fs::directory_iterator first(folder, error);
    return error ? 0 : static_cast<std::size_t>(std::distance(first, fs::directory_iterator()));
}

double residentMiB(const fs::path &process)
{
    std::size_t total = 0;
    std::size_t resident = 0;
    std::ifstream(process / "statm") >> total >> resident;
    return static_cast<double>(resident) * static_cast<double>(::sysconf(_SC_PAGESIZE)) / mebibyte;
}

// The fields 14 and 15 of "stat"; the name in field 2 may hold blanks, so they are counted from its closing bracket.
double cpuSeconds(const fs::path &process)
{
    std::string line;
    std::getline(std::ifstream(process / "stat"), line);
    const std::size_t bracket = line.rfind(')');
    if (bracket == std::string::npos)
        return 0;
    constexpr int fieldsBefore = 11; // 3 to 13
    std::istringstream fields(line.substr(bracket + 1));
    std::string skipped;
    for (int i = 0; i < fieldsBefore; ++i)
        fields >> skipped;
    double user = 0;
    double system = 0;
    fields >> user >> system;
    return (user + system) / static_cast<double>(::sysconf(_SC_CLK_TCK));
}

} // namespace

ProcessFigures ProcessFigures::of(int pid)
{
    const fs::path process = processFolder(pid);
    std::size_t descriptors = entries(process / "fd");
    if (pid == 0 && descriptors > 0)
        --descriptors; // the one through which they were just listed
    return {entries(process / "task"), descriptors, ::tztest::residentMiB(process), ::tztest::cpuSeconds(process)};
}

std::vector<std::string> threadNames()
{
    std::vector<std::string> names;
    for (const fs::directory_entry &task : fs::directory_iterator("/proc/self/task")) {
        std::string name;
        std::getline(std::ifstream(task.path() / "comm"), name);
        names.push_back(name);
    }
    std::sort(names.begin(), names.end());
    return names;
}

} // namespace tztest
