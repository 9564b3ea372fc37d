// SPDX-License-Identifier: GPL-3.0-or-later
#include "logging/blf/BlfTextFile.h"

#include "common/LocalFileName.h"
#include "common/Log.h"
#include "common/platform/ExclusiveFile.h"
#include "logging/LineBuffer.h"
#include "logging/blf/BlfPulse.h"

namespace BLF {

namespace {

constexpr std::size_t blockSize = 262'144;
constexpr std::size_t roomForOneMoreLine = 4096; // longer ones make the buffer grow

/// Text on its way to a file, in large blocks.
class BlockWriter
{
public:
    explicit BlockWriter(Common::platform::ExclusiveFile &file)
        : m_file(file)
        , m_buffer(blockSize + roomForOneMoreLine)
    {
    }

    Common::LineBuffer &buffer() noexcept { return m_buffer; }
    bool holdsBlock() const noexcept { return m_buffer.text().size() >= blockSize; }
    /// @return false where not all of it reached the file
    bool flush()
    {
        const std::string_view block = m_buffer.text();
        const bool isWhole = m_file.write(block) == block.size();
        m_buffer.clear();
        return isWhole;
    }
    void add(std::string_view lines)
    {
        char *const at = m_buffer.reserve(lines.size());
        m_buffer.commit(Common::LineDigits::text(at, lines));
    }

private:
    Common::platform::ExclusiveFile &m_file;
    Common::LineBuffer m_buffer;
};

bool writeAll(BlockWriter &writer, const BlfFrames &frames, const BlfLineForm &form, bool withInternalEvents,
              BlfPulse &pulse)
{
    writer.add(form.header());
    for (const BlfFrame &frame : frames) {
        pulse.step();
        if (!withInternalEvents && !isBusFrame(frame))
            continue;
        form.append(frame, writer.buffer());
        if (!writer.holdsBlock())
            continue;
        if (!writer.flush())
            return false;
        pulse.beat(); // the disk may be slow, and few records may be much text
    }
    writer.add(form.footer());
    return writer.flush();
}

} // namespace

bool saveRecords(const QString &path, const BlfFrames &frames, const BlfLineForm &form, bool withInternalEvents,
                 const std::function<void()> &pulse)
{
    if (frames.empty())
        return false;
    Common::platform::ExclusiveFile file; // so that the file of a running recording is not emptied under it
    if (const auto error = file.open(Common::localFileName(path))) {
        Common::logError("Cannot open {} for writing: {}", path.toStdString(), error.message());
        return false;
    }
    BlockWriter writer(file);
    BlfPulse beats(pulse);
    if (!writeAll(writer, frames, form, withInternalEvents, beats)) {
        Common::logError("Could not write all of {}", path.toStdString());
        return false;
    }
    if (const auto error = file.close()) {
        Common::logError("Could not write all of {}: {}", path.toStdString(), error.message());
        return false;
    }
    return true;
}

} // namespace BLF
