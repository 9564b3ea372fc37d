// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/support/OwnMounts.h"

#include <spawn.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <vector>

namespace tztest {

namespace {

constexpr const char *childVariable = "TZ_TEST_OWN_MOUNTS";

// Runs a program of util-linux or our own to its end. @return its exit code, -1 where it did not come to one
int run(std::vector<std::string> arguments)
{
    std::vector<char *> pointers;
    for (std::string &argument : arguments)
        pointers.push_back(argument.data());
    pointers.push_back(nullptr);
    pid_t child = 0;
    int status = 0;
    if (::posix_spawnp(&child, pointers[0], nullptr, nullptr, pointers.data(), environ) != 0 ||
        ::waitpid(child, &status, 0) != child || !WIFEXITED(status))
        return -1;
    return WEXITSTATUS(status);
}

// The user becomes root of new user and mount namespaces; nothing that is mounted in them is seen outside.
std::vector<std::string> inOwnMounts(const std::vector<std::string> &command)
{
    std::vector<std::string> arguments{"unshare", "--map-root-user", "--mount", "--propagation", "private"};
    arguments.insert(arguments.end(), command.begin(), command.end());
    return arguments;
}

} // namespace

bool isInOwnMounts()
{
    return ::getenv(childVariable) != nullptr;
}

OwnMountsResult runInOwnMounts()
{
    if (run(inOwnMounts({"true"})) != 0)
        return OwnMountsResult::NotPermitted;
    const auto *test = ::testing::UnitTest::GetInstance()->current_test_info();
    const std::string program = std::filesystem::read_symlink("/proc/self/exe").string();
    const std::string filter = std::string("--gtest_filter=") + test->test_suite_name() + '.' + test->name();
    const std::string variable = std::string(childVariable) + "=1";
    const int code = run(inOwnMounts({"env", variable, program, filter}));
    return code == 0 ? OwnMountsResult::Passed : OwnMountsResult::Failed;
}

bool mountSmallDisk(const std::string &path, std::size_t size)
{
    const std::string options = "size=" + std::to_string(size);
    return ::mount("none", path.c_str(), "tmpfs", 0, options.c_str()) == 0;
}

bool makeReadOnly(const std::string &path)
{
    return ::mount("none", path.c_str(), "tmpfs", MS_REMOUNT | MS_RDONLY, nullptr) == 0;
}

bool unmount(const std::string &path)
{
    return ::umount2(path.c_str(), MNT_DETACH) == 0;
}

bool bindMount(const std::string &source, const std::string &target)
{
    return ::mount(source.c_str(), target.c_str(), nullptr, MS_BIND, nullptr) == 0;
}

} // namespace tztest
