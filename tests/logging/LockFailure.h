// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace tztest {

/// While it lives, locking a file fails with the given error for the whole process.
class LockFailure
{
public:
    explicit LockFailure(int error);
    ~LockFailure();
    LockFailure(const LockFailure &) = delete;
    LockFailure &operator=(const LockFailure &) = delete;
};

} // namespace tztest
