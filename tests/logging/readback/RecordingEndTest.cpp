// SPDX-License-Identifier: GPL-3.0-or-later
// The ends that a recording may come to while frames arrive: what was written so far is whole.
#include "logging/ui/LoggerWindow.h"
#include "tests/logging/readback/RecorderStack.h"
#include "tests/support/LogCapture.h"
#include "vci/TzVciFrameEncoder.h"
#include "views/ui/TzRawViewWindow.h"

#include <QPointer>

using namespace tztest;

class RecordingEnd : public RecorderStack
{
protected:
    static constexpr std::uint64_t someFrames = 500;

    /// An ASC and a CSV recording of the family.
    void recordBothFormats(RecordFamily family, const QString &name)
    {
        record(family, RecordFormat::Asc, name + QStringLiteral(".asc"));
        record(family, RecordFormat::Csv, name + QStringLiteral(".csv"));
    }
    /// A load on CAN channel 0 of box 0, whose frames carry their number, and an ASC and a CSV recording of it.
    void recordLoad()
    {
        recordBothFormats(RecordFamily::Can, QStringLiteral("run"));
        app.simulator.box(0).startLoad({.framesPerSecond = 5000});
        ASSERT_TRUE(allArrived(RecordFamily::Can, someFrames));
    }
    /// The same on LIN channel 0 beside it.
    void recordLoadOfBothFamilies()
    {
        recordBothFormats(RecordFamily::Can, QStringLiteral("can"));
        recordBothFormats(RecordFamily::Lin, QStringLiteral("lin"));
        app.simulator.box(0).startLoad({.framesPerSecond = 5000, .linChannels = {0}});
        ASSERT_TRUE(allArrived(RecordFamily::Can, someFrames));
        ASSERT_TRUE(allArrived(RecordFamily::Lin, someFrames));
    }
    /// The frames of all files: counted without a gap from the first one, which the recorder got as it began.
    std::size_t verifyUnbroken()
    {
        std::size_t least = ~std::size_t{0};
        for (const Recorder &recorder : recorders)
            least = std::min(least, unbrokenFrames(recorder));
        return least;
    }
    std::size_t unbrokenFrames(const Recorder &recorder)
    {
        SCOPED_TRACE(recorder.path.toStdString());
        const FramesByChannel read = readBack(recorder, 1);
        EXPECT_EQ(read.size(), 1U);
        const auto &frames = read.at({0, 0});
        for (std::size_t i = 0; i < frames.size(); ++i) {
            if (numberOf(frames[i]) != i) {
                ADD_FAILURE() << "frame " << i << ": " << frames[i];
                break;
            }
        }
        return frames.size();
    }

    static std::uint32_t numberOf(const RecordedFrame &frame)
    {
        std::uint32_t number = 0;
        for (std::size_t i = 0; i < 4 && i < frame.data.size(); ++i)
            number |= std::uint32_t{frame.data[i]} << (8 * i);
        return number;
    }

    LogCapture log;
};

TEST_F(RecordingEnd, ViewClosedWhileRecording)
{
    recordLoad();
    for (const std::size_t view : {recorders[1].view, recorders[0].view}) {
        const QPointer<TzVciBaseViewWindow> window(app.helper().views().views().at(view));
        ASSERT_TRUE(window->close());
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        EXPECT_TRUE(window.isNull());
    }
    EXPECT_GE(verifyUnbroken(), someFrames);
    EXPECT_EQ(log.count(1, "CAN logger recording stopped"), 2U);
}

TEST_F(RecordingEnd, RecorderWindowClosedWhileRecording)
{
    recordLoad();
    for (const Recorder &recorder : recorders) {
        recorder.window->showNormal();
        EXPECT_FALSE(recorder.window->close());
        auto *question = recorder.window->findChild<QMessageBox *>();
        ASSERT_TRUE(question);
        question->button(QMessageBox::Yes)->click();
        EXPECT_FALSE(recorder.window->isVisible());
        EXPECT_FALSE(recorder.window->isRecording());
    }
    const std::uint64_t shown = app.countersOf(0).total;
    EXPECT_TRUE(allArrived(RecordFamily::Can, shown + someFrames)); // the views go on
    EXPECT_GE(verifyUnbroken(), someFrames);
}

TEST_F(RecordingEnd, MainWindowClosedWhileRecording)
{
    recordLoad();
    app.window->closeWithoutQuestion();
    EXPECT_GE(verifyUnbroken(), someFrames);
}

// With its last channel a family's drain ends: the rest is delivered by the thread that ends it, and by a new drain
// thread after the next opening.
TEST_F(RecordingEnd, LastChannelOfTheFamilyClosedAndOpenedWhileRecording)
{
    for (const auto &[device, channel] : {std::pair(0, 1), std::pair(1, 0), std::pair(1, 1)})
        ASSERT_EQ(app.manager.closeChannel(device, TzVciProtocolId::can, channel), 0);
    recordLoad();
    for (int closing = 0; closing < 10; ++closing) {
        const std::uint64_t counted = app.countersOf(0).total;
        ASSERT_TRUE(allArrived(RecordFamily::Can, counted + someFrames));
        ASSERT_EQ(app.manager.closeChannel(0, TzVciProtocolId::can, 0), 0);
        QCoreApplication::processEvents();
        EXPECT_FALSE(app.helper().isDraining(TzVciProtocolId::can));
        ASSERT_TRUE(app.openChannel(0, TzVciProtocolId::can, 0));
        QCoreApplication::processEvents();
    }
    app.simulator.box(0).stopTraffic();
    ASSERT_EQ(app.manager.closeChannel(0, TzVciProtocolId::can, 0), 0);
    QCoreApplication::processEvents();
    stopAll();
    for (const Recorder &recorder : recorders) {
        SCOPED_TRACE(recorder.path.toStdString());
        const std::vector<RecordedFrame> frames = readBack(recorder, 1).at({0, 0});
        EXPECT_EQ(frames.size(), receivedFrames(RecordFamily::Can, {0, 0}));
        for (std::size_t i = 1; i < frames.size(); ++i)
            ASSERT_GT(numberOf(frames[i]), numberOf(frames[i - 1])) << "frame " << i;
    }
}

// A recording outlives the device: it waits for what comes, and is whole when it is stopped.
TEST_F(RecordingEnd, DeviceLostWhileRecording)
{
    recordLoadOfBothFamilies();
    app.simulator.box(0).vanish();
    EXPECT_TRUE(waitFor([&] { // the system answers the next datagram with an error
        if (const auto device = app.manager.getDevice(0))
            device->send(encodeCanFrame(0, {}));
        return !app.store.isDeviceOpen(0);
    }));
    for (const Recorder &recorder : recorders)
        EXPECT_TRUE(recorder.window->isRecording());
    for (const RecordFamily family : {RecordFamily::Can, RecordFamily::Lin})
        ASSERT_TRUE(allArrived(family, receivedFrames(family, {0, 0})));
    stopAll();
    for (const Recorder &recorder : recorders) // whatever had come is there
        EXPECT_EQ(unbrokenFrames(recorder), receivedFrames(recorder.family, {0, 0}));
}

TEST_F(RecordingEnd, DeviceComesBackIntoTheSameRecording)
{
    recordBothFormats(RecordFamily::Can, QStringLiteral("can"));
    recordBothFormats(RecordFamily::Lin, QStringLiteral("lin"));
    const auto sendBoth = [this](std::uint32_t canId, std::uint8_t linId, std::uint64_t arrived) {
        const std::array<std::uint8_t, 1> data{1};
        app.simulator.box(0).injectCan(0, tzsim::CanFrame::make(canId, data));
        app.simulator.box(0).injectLin(0, tzsim::LinFrame::make(linId, data));
        return allArrived(RecordFamily::Can, arrived) && allArrived(RecordFamily::Lin, arrived);
    };
    ASSERT_TRUE(sendBoth(0x111, 0x11, 1));
    ASSERT_EQ(app.manager.closeDevice(0), 0);
    ASSERT_TRUE(app.openAll(0, TzVciProtocolId::can, 0));
    ASSERT_TRUE(app.openChannel(0, TzVciProtocolId::lin, 0));
    ASSERT_TRUE(waitFor([this] { return app.helper().isDraining(TzVciProtocolId::lin); }));
    ASSERT_TRUE(sendBoth(0x222, 0x22, 2));
    stopAll();
    for (const Recorder &recorder : recorders) {
        SCOPED_TRACE(recorder.path.toStdString());
        const bool isCan = recorder.family == RecordFamily::Can;
        const RecordedFile file = readRecording(recorder.path, recorder.family, recorder.format);
        EXPECT_TRUE(file.problems.empty());
        ASSERT_EQ(file.frames.size(), 2U);
        EXPECT_EQ(file.frames[0].id, isCan ? 0x111U : 0x11U);
        EXPECT_EQ(file.frames[1].id, isCan ? 0x222U : 0x22U);
    }
}
