// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/logging/readback/RecorderStack.h"

#include "logging/ui/LoggerWindow.h"
#include "views/ui/TzRawViewWindow.h"

#include <fmt/format.h>

#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QSpinBox>

#include <algorithm>
#include <cstdlib>

using namespace std::chrono_literals;

namespace tztest {
namespace {

std::uint8_t viewKindOf(RecordFamily family)
{
    return family == RecordFamily::Can ? TzVciViewKind::can : TzVciViewKind::lin;
}

} // namespace

void RecorderStack::SetUp()
{
    ASSERT_TRUE(app.simulatorStarted) << app.simulatorError;
    for (int device = 0; device < boxes; ++device)
        openBox(device);
    QCoreApplication::processEvents(); // the channels open views of their own; these tests want none of them
    app.helper().closeViews();
    ASSERT_TRUE(waitFor([this] { return app.helper().views().views().empty(); }));
}

void RecorderStack::openBox(int device)
{
    ASSERT_TRUE(app.openDevice(device));
    keepTimes(device);
    for (int channel = 0; channel < AppFixture::canChannels; ++channel)
        ASSERT_TRUE(app.openChannel(device, TzVciProtocolId::can, channel));
    for (int channel = 0; channel < AppFixture::linChannels; ++channel)
        ASSERT_TRUE(app.openChannel(device, TzVciProtocolId::lin, channel));
    ASSERT_TRUE(waitFor([this] {
        return app.helper().isDraining(TzVciProtocolId::can) && app.helper().isDraining(TzVciProtocolId::lin);
    }));
}

void RecorderStack::TearDown()
{
    app.manager.closeAllDevices(); // their subscribers write into this object
}

void RecorderStack::keepTimes(int device)
{
    const auto key = static_cast<std::uint64_t>(reinterpret_cast<std::uintptr_t>(this));
    const auto keeper = [this](RecordFamily family) {
        return [this, family](const std::vector<TzVciMessage> &batch) {
            const std::lock_guard lock(m_timesMutex);
            for (const TzVciMessage &message : batch)
                m_times[{family, {message.deviceIndex, message.channelIndex}}].push_back(
                    std::uint64_t{message.timestamp});
        };
    };
    app.manager.getDevice(device)->subscribeCan(key, keeper(RecordFamily::Can));
    app.manager.getDevice(device)->subscribeLin(key, keeper(RecordFamily::Lin));
}

void RecorderStack::record(RecordFamily family, RecordFormat format, const QString &path)
{
    const std::size_t place = app.helper().views().views().size();
    app.helper().newView(viewKindOf(family), TzBenchWindowHelper::Request::ByProgram);
    ASSERT_EQ(app.helper().views().views().size(), place + 1);
    auto *view = qobject_cast<TzRawViewWindow *>(app.helper().views().views().back());
    ASSERT_TRUE(view);
    Common::LoggerWindow *window = view->logger();
    window->findChild<QComboBox *>(QStringLiteral("comboFormat"))->setCurrentIndex(format == RecordFormat::Asc ? 0 : 1);
    window->findChild<QSpinBox *>(QStringLiteral("spinSizeLimit"))->setValue(0); // taken as 1 MB
    window->findChild<QCheckBox *>(QStringLiteral("checkExtraInfo"))->setChecked(true);
    window->findChild<QLineEdit *>(QStringLiteral("lineEditPath"))->setText(path);
    window->startRecording();
    ASSERT_TRUE(window->isRecording());
    recorders.push_back({place, family, format, path, window});
}

void RecorderStack::stopAll()
{
    for (const Recorder &recorder : recorders)
        recorder.window->stopRecording();
}

bool RecorderStack::allArrived(RecordFamily family, std::uint64_t frames)
{
    return waitFor([&] {
        return std::all_of(recorders.begin(), recorders.end(), [&](const Recorder &recorder) {
            return recorder.family != family || app.countersOf(recorder.view).total >= frames;
        });
    });
}

std::size_t RecorderStack::receivedFrames(RecordFamily family, Channel channel)
{
    const std::lock_guard lock(m_timesMutex);
    return m_times[{family, channel}].size();
}

RecorderStack::FramesByChannel RecorderStack::readBack(const Recorder &recorder, std::size_t leastFiles)
{
    const std::vector<RecordedFile> files = readRecordings(recorder.path, recorder.family, recorder.format);
    EXPECT_GE(files.size(), leastFiles) << recorder.path.toStdString();
    FramesByChannel frames;
    for (const RecordedFile &file : files) {
        EXPECT_TRUE(file.problems.empty()) << file.problems.size() << " lines, first: " << file.problems.front();
        for (const RecordedFrame &frame : file.frames)
            frames[{frame.device, frame.channel}].push_back(frame);
    }
    checkTimes(recorder, files);
    return frames;
}

// A frame's time is that of the device, converted to common time, in microseconds since the first frame of its file.
void RecorderStack::checkTimes(const Recorder &recorder, const std::vector<RecordedFile> &files)
{
    std::map<Channel, std::size_t> indexes;
    for (const RecordedFile &file : files) {
        std::int64_t base = 0;
        for (std::size_t i = 0; i < file.frames.size(); ++i) {
            const Channel channel{file.frames[i].device, file.frames[i].channel};
            const std::int64_t time = microseconds(recorder.family, channel, indexes[channel]++);
            if (i == 0)
                base = time;
            const std::int64_t wanted = time - base;
            ASSERT_EQ(file.times[i], fmt::format("{}.{:06}", wanted / 1'000'000, std::abs(wanted % 1'000'000)))
                << recorder.path.toStdString() << ", frame " << i;
        }
    }
}

std::int64_t RecorderStack::microseconds(RecordFamily family, Channel channel, std::size_t index)
{
    const std::lock_guard lock(m_timesMutex);
    const auto &times = m_times[{family, channel}];
    if (index >= times.size())
        return -1;
    return static_cast<std::int64_t>(app.manager.globalRelativeSeconds(channel.first, times[index]) * 1e6 + 0.5);
}

} // namespace tztest
