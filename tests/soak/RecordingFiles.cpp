// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/soak/RecordingFiles.h"

#include "tests/soak/RecordOrder.h"

#include <fstream>
#include <string_view>
#include <vector>

namespace tzsoak {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view ascBegin = "Begin TriggerBlock";
constexpr std::string_view ascEnd = "End TriggerBlock";
constexpr std::string_view csvBegin = "Timestamp,";

struct FileContent
{
    std::uint64_t records = 0;
    bool begun = false;
    bool ended = false; // by one closing line, the last of all
    std::string disorder{};
};

FileContent readFile(const fs::path &path, bool isAsc)
{
    FileContent content;
    RecordOrder order;
    std::ifstream file(path);
    for (std::string line; std::getline(file, line);) {
        if (!content.begun)
            content.begun = line.starts_with(isAsc ? ascBegin : csvBegin);
        else if (content.ended)
            return {.begun = true}; // nothing may follow the closing line, not even another one
        else if (isAsc && line == ascEnd)
            content.ended = true;
        else {
            order.add(line);
            ++content.records;
        }
    }
    content.ended = content.ended || !isAsc;
    content.disorder = order.problem();
    return content;
}

// The kept parts "stem.1.asc", "stem.2.asc" and so on, and the last one at the path itself.
std::vector<fs::path> partsOf(const fs::path &path)
{
    std::vector<fs::path> parts;
    for (int number = 1;; ++number) {
        fs::path part =
            path.parent_path() / (path.stem().string() + "." + std::to_string(number) + path.extension().string());
        if (!fs::exists(part))
            break;
        parts.push_back(std::move(part));
    }
    parts.push_back(path);
    return parts;
}

} // namespace

RecordedFrames takeRecording(const fs::path &path)
{
    RecordedFrames recorded;
    for (const fs::path &part : partsOf(path)) {
        std::error_code error;
        recorded.bytes += fs::file_size(part, error);
        const FileContent content = readFile(part, path.extension() == ".asc");
        recorded.frames += content.records;
        ++recorded.files;
        if (error || !content.begun || !content.ended)
            recorded.problem = part.filename().string() + " is not whole";
        else if (!content.disorder.empty())
            recorded.problem = part.filename().string() + ", " + content.disorder;
        fs::remove(part, error);
    }
    return recorded;
}

} // namespace tzsoak
