// SPDX-License-Identifier: GPL-3.0-or-later
#include "logging/RecordingFile.h"

namespace Common {

RecordingFile::RecordingFile()
    : m_buffer(std::make_unique_for_overwrite<char[]>(bufferSize))
{
}

bool RecordingFile::open(const std::string &path, std::string_view footer)
{
    m_footer = footer;
    m_buffered = 0;
    m_bytesWritten = 0;
    m_fileSize = 0;
    m_hasFailed = false;
    return !m_file.open(path);
}

void RecordingFile::write(std::string_view lines)
{
    m_bytesWritten += lines.size();
    if (lines.size() > bufferSize - m_buffered)
        flush();
    if (lines.size() > bufferSize) {
        writeThrough(lines);
    } else {
        m_buffered += lines.copy(m_buffer.get() + m_buffered, lines.size());
    }
}

bool RecordingFile::flush()
{
    writeThrough({m_buffer.get(), m_buffered});
    m_buffered = 0;
    return isGood();
}

void RecordingFile::finish()
{
    write(m_footer);
    flush();
}

void RecordingFile::close()
{
    m_file.close();
}

void RecordingFile::writeThrough(std::string_view lines)
{
    if (m_hasFailed)
        return;
    const std::size_t reached = m_file.write(lines);
    if (reached == lines.size()) {
        m_fileSize += reached;
        return;
    }
    m_hasFailed = true;
    endAfterFailure(lines.substr(0, reached));
}

// The closing line takes the place of lines that had reached the disk, since there is no other on a full one.
void RecordingFile::endAfterFailure(std::string_view reached)
{
    std::size_t kept = 0;
    if (reached.size() > m_footer.size()) {
        const std::size_t lineEnd = reached.rfind('\n', reached.size() - m_footer.size() - 1);
        kept = lineEnd == std::string_view::npos ? 0 : lineEnd + 1;
    }
    m_fileSize += kept;
    if (m_file.truncate(m_fileSize) && m_file.write(m_footer) != m_footer.size())
        m_file.truncate(m_fileSize);
}

} // namespace Common
