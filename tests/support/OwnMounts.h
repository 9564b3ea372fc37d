// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <string>

namespace tztest {

/// What became of a test that was run again in a child.
enum class OwnMountsResult
{
    Passed,
    Failed,
    NotPermitted, ///< the system grants no user and mount namespaces
};

/// Whether this process is the child, so that it may mount as it likes: nobody else sees it.
bool isInOwnMounts();
/// Runs the calling GoogleTest test once more, in a child with user and mount namespaces of its own.
OwnMountsResult runInOwnMounts();

/// In the child: an empty file system of @p size bytes at the folder @p path. @return false where it cannot be mounted
[[nodiscard]] bool mountSmallDisk(const std::string &path, std::size_t size);
/// In the child: from now on nobody can write to the file system mounted at @p path, not even root.
[[nodiscard]] bool makeReadOnly(const std::string &path);
/// In the child: takes a mount away, so that its folder can be removed. @return false where nothing is mounted
bool unmount(const std::string &path);
/// In the child: puts @p source in the place of @p target, which then can be neither removed nor renamed.
[[nodiscard]] bool bindMount(const std::string &source, const std::string &target);

} // namespace tztest

/// First line of a test that mounts something: the rest of the body runs in a child alone.
#define TZ_RUN_IN_OWN_MOUNTS()                                                                                         \
    if (!::tztest::isInOwnMounts()) {                                                                                  \
        const auto ownMountsResult = ::tztest::runInOwnMounts();                                                       \
        if (ownMountsResult == ::tztest::OwnMountsResult::NotPermitted)                                                \
            GTEST_SKIP() << "this system grants no user and mount namespaces";                                         \
        ASSERT_EQ(ownMountsResult, ::tztest::OwnMountsResult::Passed) << "see the output of the child above";          \
        return;                                                                                                        \
    }                                                                                                                  \
    static_assert(true, "wants a semicolon")
