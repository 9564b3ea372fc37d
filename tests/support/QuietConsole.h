// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <fcntl.h>
#include <unistd.h>

namespace tztest {

/// While it lives, what goes to the console goes nowhere: it takes what is logged between a stop and a start, and a
/// flood of that would only hide what a test has to say.
class QuietConsole
{
public:
    QuietConsole()
        : m_stderr(::dup(STDERR_FILENO))
    {
        const int nowhere = ::open("/dev/null", O_WRONLY);
        ::dup2(nowhere, STDERR_FILENO);
        ::close(nowhere);
    }
    ~QuietConsole()
    {
        ::dup2(m_stderr, STDERR_FILENO);
        ::close(m_stderr);
    }
    QuietConsole(const QuietConsole &) = delete;
    QuietConsole &operator=(const QuietConsole &) = delete;

private:
    int m_stderr;
};

} // namespace tztest
