// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace tztest {

/// While it lives, closing a file that is open for writing alone fails with the given error for the whole process,
/// though the file is let go of: as where a file system tells only at the end that it lost something.
class CloseFailure
{
public:
    explicit CloseFailure(int error);
    ~CloseFailure();
    CloseFailure(const CloseFailure &) = delete;
    CloseFailure &operator=(const CloseFailure &) = delete;
};

} // namespace tztest
