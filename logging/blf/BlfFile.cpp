// SPDX-License-Identifier: GPL-3.0-or-later
#include "logging/blf/BlfFile.h"

#include <QFileInfo>

#include <algorithm>

namespace BLF {

namespace {

constexpr std::uint64_t blockSize = 256 * 1024;

} // namespace

bool BlfFile::open(const QString &path)
{
    if (!QFileInfo(path).isFile()) // a pipe would hold up the reader, a device might never end
        return false;
    m_file.setFileName(path);
    if (!m_file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        return false;
    m_size = static_cast<std::uint64_t>(m_file.size());
    return true;
}

bool BlfFile::ensure(std::size_t count)
{
    while (bytes().size() < count) {
        if (!readOn())
            return false;
    }
    return true;
}

bool BlfFile::readOn()
{
    const std::uint64_t wanted = std::min(blockSize, left() - bytes().size());
    if (wanted == 0)
        return false;
    const std::span<std::byte> room = m_window.room(wanted);
    const qint64 got = m_file.read(reinterpret_cast<char *>(room.data()), static_cast<qint64>(room.size()));
    if (got <= 0)
        return fail(got == 0 ? QStringLiteral("the file has become shorter") : m_file.errorString());
    m_window.append(static_cast<std::size_t>(got));
    return true;
}

void BlfFile::skip(std::uint64_t count)
{
    if (count <= bytes().size()) {
        m_window.consume(count);
        return;
    }
    const std::uint64_t target = position() + count;
    m_window.restartAt(target);
    if (!m_file.seek(static_cast<qint64>(target)))
        fail(m_file.errorString());
}

// What is in memory can still be used; there is no more.
bool BlfFile::fail(const QString &errorText)
{
    if (!m_hasFailed)
        m_errorText = errorText;
    m_hasFailed = true;
    m_size = position() + bytes().size();
    return false;
}

} // namespace BLF
