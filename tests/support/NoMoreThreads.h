// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <pthread.h>

#include <cstddef>

namespace tztest {

/// While it lives a new thread of this process cannot get the stack that it asks for, so that none can be started.
class NoMoreThreads
{
public:
    NoMoreThreads()
    {
        ::pthread_getattr_default_np(&m_before);
        pthread_attr_t absurd;
        ::pthread_getattr_default_np(&absurd);
        ::pthread_attr_setstacksize(&absurd, std::size_t{1} << 47);
        ::pthread_setattr_default_np(&absurd);
        ::pthread_attr_destroy(&absurd);
    }
    ~NoMoreThreads()
    {
        ::pthread_setattr_default_np(&m_before);
        ::pthread_attr_destroy(&m_before);
    }
    NoMoreThreads(const NoMoreThreads &) = delete;
    NoMoreThreads &operator=(const NoMoreThreads &) = delete;

private:
    pthread_attr_t m_before;
};

} // namespace tztest
