// SPDX-License-Identifier: GPL-3.0-or-later
// A reader that others wrote must take our ASC files for what they are: python3-can, for classic frames.
#include "logging/ui/LoggerWindow.h"
#include "tests/logging/PythonCan.h"
#include "tests/logging/readback/RecorderStack.h"
#include "tests/logging/readback/SentFrames.h"

#include <QCheckBox>

using namespace tztest;

namespace {

/// A frame as the recordings' own reader would see it.
RecordedFrame recordOf(const PythonFrame &frame)
{
    RecordedFrame record;
    record.channel = frame.channel;
    record.id = frame.id;
    record.isExtended = frame.isExtended;
    record.isRemote = frame.isRemote;
    record.isError = frame.isError;
    record.isFd = frame.isFd;
    record.direction = frame.isReceived ? "Rx" : "Tx";
    record.length = frame.length;
    record.data = frame.data;
    return record;
}

} // namespace

class ForeignReader : public RecorderStack
{
};

TEST_F(ForeignReader, PythonCanAgreesOnClassicFrames)
{
    if (!hasPythonCan())
        GTEST_SKIP() << "python3-can is not installed";
    record(RecordFamily::Can, RecordFormat::Asc, QStringLiteral("run.asc"));
    constexpr int count = 3000;
    FrameMaker maker(20261123);
    std::vector<RecordedFrame> sent;
    std::vector<tzsim::CanFrame> burst;
    for (int i = 0; i < count; ++i) {
        const tzsim::CanFrame frame = maker.can(FrameMaker::Kinds::Classic);
        burst.push_back(frame);
        if (!frame.isError()) { // of which that reader takes another form
            sent.push_back(expectedRecord({0, tzsim::Family::can, 1}, frame, RecordFormat::Asc));
            sent.back().device = -1; // told in a comment
        }
        if (burst.size() == 300) {
            app.simulator.box(0).injectCan(1, burst);
            burst.clear();
            ASSERT_TRUE(allArrived(RecordFamily::Can, static_cast<std::uint64_t>(i) + 1));
        }
    }
    stopAll();

    const std::vector<PythonFrame> frames = readAscByPython(QStringLiteral("run.asc"));
    ASSERT_EQ(frames.size(), sent.size());
    for (std::size_t i = 0; i < frames.size(); ++i)
        ASSERT_EQ(recordOf(frames[i]), sent[i]) << "frame " << i;

    const RecordedFile ours = readRecording(QStringLiteral("run.asc"), RecordFamily::Can, RecordFormat::Asc);
    std::vector<double> ourSeconds;
    for (std::size_t i = 0; i < ours.frames.size(); ++i) {
        if (!ours.frames[i].isError)
            ourSeconds.push_back(std::stod(ours.times[i]));
    }
    ASSERT_EQ(frames.size(), ourSeconds.size());
    for (std::size_t i = 0; i < frames.size(); ++i)
        ASSERT_NEAR(frames[i].seconds, ourSeconds[i], 1e-6) << "frame " << i;
}
