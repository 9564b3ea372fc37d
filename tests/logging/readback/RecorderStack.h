// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tests/app/AppFixture.h"
#include "tests/logging/readback/RecordingReader.h"
#include "vci/TzVciMessage.h"

#include <gtest/gtest.h>

#include <map>
#include <mutex>
#include <utility>
#include <vector>

namespace Common {
class LoggerWindow;
}

namespace tztest {

/// The whole program with two simulated boxes, all channels open, and views that record. A second subscriber keeps the
/// times of all frames.
class RecorderStack : public testing::Test
{
protected:
    /// A view that records.
    struct Recorder
    {
        std::size_t view = 0; ///< its place in the list
        RecordFamily family = RecordFamily::Can;
        RecordFormat format = RecordFormat::Asc;
        QString path{};
        Common::LoggerWindow *window = nullptr;
    };
    using Channel = std::pair<int, int>; // device, channel
    using FramesByChannel = std::map<Channel, std::vector<RecordedFrame>>;

    static constexpr int boxes = 2;

    void SetUp() override;
    void TearDown() override;

    /// Opens a view of the family, sets its recorder to the smallest files with all information and starts it.
    void record(RecordFamily family, RecordFormat format, const QString &path);
    void stopAll();
    /// Waits until every recording view of the family has counted so many frames.
    bool allArrived(RecordFamily family, std::uint64_t frames);
    /// Frames that the second subscriber got from the channel.
    std::size_t receivedFrames(RecordFamily family, Channel channel);
    /// All files of the recorder, checked for form, and for times that restart in each file and follow the devices'.
    FramesByChannel readBack(const Recorder &recorder, std::size_t leastFiles);

    AppFixture app{boxes};
    std::vector<Recorder> recorders;

private:
    void keepTimes(int device);
    void openBox(int device);
    void checkTimes(const Recorder &recorder, const std::vector<RecordedFile> &files);
    std::int64_t microseconds(RecordFamily family, Channel channel, std::size_t index);

    std::mutex m_timesMutex; // protects m_times, which receive threads fill
    std::map<std::pair<RecordFamily, Channel>, std::vector<std::uint64_t>> m_times; // in 0.1 microsecond
};

} // namespace tztest
