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
    m_settled = 0;
    m_tail.clear();
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
    follow(lines.substr(0, reached));
    if (reached == lines.size())
        return;
    m_hasFailed = true;
    endAfterFailure();
}

// Keeps no more than the end of a long text.
void RecordingFile::follow(std::string_view reached)
{
    if (const std::size_t settled = settledPart(reached); settled > 0) {
        m_settled += m_tail.size() + settled;
        m_tail = reached.substr(settled);
        return;
    }
    m_tail += reached;
    const std::size_t settled = settledPart(m_tail);
    m_settled += settled;
    m_tail.erase(0, settled);
}

// The length of the lines behind which the text is at least as long as the closing line.
std::size_t RecordingFile::settledPart(std::string_view text) const noexcept
{
    if (text.size() <= m_footer.size())
        return 0;
    const std::size_t lineEnd = text.rfind('\n', text.size() - m_footer.size() - 1);
    return lineEnd == std::string_view::npos ? 0 : lineEnd + 1;
}

// The closing line takes the place of lines that had reached the disk, since there is no other on a full one.
void RecordingFile::endAfterFailure()
{
    if (m_file.truncate(m_settled) && m_file.write(m_footer) != m_footer.size())
        m_file.truncate(m_settled);
}

} // namespace Common
