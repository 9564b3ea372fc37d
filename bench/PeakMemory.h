// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <malloc.h>

#include <fstream>
#include <limits>
#include <stdexcept>
#include <string>

namespace tzbench_report {

/// The most memory that this process holds at once, beyond what it held when this was made.
class PeakMemory
{
public:
    PeakMemory()
    {
        begin();
        m_before = peakBytes();
    }

    /// Forgets the peak so far and gives back what is free.
    static void begin()
    {
        ::malloc_trim(0);
        std::ofstream file("/proc/self/clear_refs");
        if (!(file << "5" << std::flush)) // the kernel's code for the peak
            throw std::runtime_error("the kernel does not let the peak of memory be measured");
    }
    /// Bytes at the worst moment since begin().
    double growth() const { return peakBytes() - m_before; }

private:
    static double peakBytes()
    {
        std::ifstream status("/proc/self/status");
        for (std::string word; status >> word; status.ignore(std::numeric_limits<std::streamsize>::max(), '\n')) {
            double kibibytes = 0;
            if (word == "VmHWM:" && status >> kibibytes)
                return kibibytes * 1024;
        }
        throw std::runtime_error("the kernel tells no peak of memory");
    }

    double m_before = 0;
};

} // namespace tzbench_report
