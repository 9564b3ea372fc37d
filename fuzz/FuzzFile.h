// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "fuzz/FuzzSupport.h"

#include <QString>

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include <sys/mman.h>
#include <unistd.h>

/// A file in memory, for readers that take a path.
class FuzzFile
{
public:
    FuzzFile()
        : m_descriptor(memfd_create("fuzz", MFD_CLOEXEC))
    {
        require(m_descriptor >= 0);
    }
    ~FuzzFile() { close(m_descriptor); }
    FuzzFile(const FuzzFile &) = delete;
    FuzzFile &operator=(const FuzzFile &) = delete;

    /// Replaces the content.
    void write(const std::uint8_t *data, std::size_t size)
    {
        require(ftruncate(m_descriptor, 0) == 0);
        require(pwrite(m_descriptor, data, size, 0) == static_cast<ssize_t>(size));
    }

    QString path() const { return QStringLiteral("/proc/self/fd/%1").arg(m_descriptor); }

private:
    const int m_descriptor;
};

/// One of the encodings that users choose, by the length of the input: the same input always gets the same one.
inline QString fuzzEncoding(std::size_t size)
{
    static const std::array<QString, 4> names{QStringLiteral("UTF-8"), QStringLiteral("GB18030"),
                                              QStringLiteral("windows-1252"), QStringLiteral("UTF-16")};
    return size % 8 < names.size() ? names[size % 8] : names.front();
}
