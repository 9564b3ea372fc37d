// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/support/OwnMounts.h"

#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <vector>

namespace tztest {

namespace {

constexpr const char *childVariable = "TZ_TEST_OWN_MOUNTS";
constexpr int notPermitted = 77; // exit code of the child

// Between fork() and exec(), where only what is safe in a signal handler may be called.
bool writeText(const char *path, const char *text)
{
    const int file = ::open(path, O_WRONLY | O_CLOEXEC);
    if (file < 0)
        return false;
    const auto length = std::strlen(text);
    const bool written = ::write(file, text, length) == static_cast<ssize_t>(length);
    ::close(file);
    return written;
}

// The user becomes root of the new namespace; nothing that is mounted in it leaves it.
bool enterOwnMounts(const char *userMap, const char *groupMap)
{
    return ::unshare(CLONE_NEWUSER | CLONE_NEWNS) == 0 && writeText("/proc/self/setgroups", "deny") &&
           writeText("/proc/self/uid_map", userMap) && writeText("/proc/self/gid_map", groupMap) &&
           ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
}

std::vector<std::string> environmentOfChild()
{
    std::vector<std::string> variables{std::string(childVariable) + "=1"};
    for (char **variable = environ; *variable; ++variable)
        variables.emplace_back(*variable);
    return variables;
}

std::vector<char *> pointers(std::vector<std::string> &texts)
{
    std::vector<char *> result;
    for (std::string &text : texts)
        result.push_back(text.data());
    result.push_back(nullptr);
    return result;
}

} // namespace

bool isInOwnMounts()
{
    return ::getenv(childVariable) != nullptr;
}

OwnMountsResult runInOwnMounts()
{
    const auto *test = ::testing::UnitTest::GetInstance()->current_test_info();
    const std::string program = std::filesystem::read_symlink("/proc/self/exe").string();
    std::vector<std::string> arguments{program,
                                       std::string("--gtest_filter=") + test->test_suite_name() + '.' + test->name()};
    std::vector<std::string> environment = environmentOfChild();
    const std::vector<char *> argumentPointers = pointers(arguments);
    const std::vector<char *> environmentPointers = pointers(environment);
    const std::string userMap = "0 " + std::to_string(::getuid()) + " 1";
    const std::string groupMap = "0 " + std::to_string(::getgid()) + " 1";

    const pid_t child = ::fork();
    if (child == 0) {
        if (!enterOwnMounts(userMap.c_str(), groupMap.c_str()))
            ::_exit(notPermitted);
        ::execve(program.c_str(), argumentPointers.data(), environmentPointers.data());
        ::_exit(EXIT_FAILURE);
    }
    int status = 0;
    if (child < 0 || ::waitpid(child, &status, 0) != child || !WIFEXITED(status))
        return OwnMountsResult::Failed;
    switch (WEXITSTATUS(status)) {
    case 0: return OwnMountsResult::Passed;
    case notPermitted: return OwnMountsResult::NotPermitted;
    }
    return OwnMountsResult::Failed;
}

bool mountSmallDisk(const std::string &path, std::size_t size)
{
    const std::string options = "size=" + std::to_string(size);
    return ::mount("none", path.c_str(), "tmpfs", 0, options.c_str()) == 0;
}

bool bindMount(const std::string &source, const std::string &target)
{
    return ::mount(source.c_str(), target.c_str(), nullptr, MS_BIND, nullptr) == 0;
}

} // namespace tztest
