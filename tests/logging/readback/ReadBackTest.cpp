// SPDX-License-Identifier: GPL-3.0-or-later
// What simulated boxes send goes through the whole program into recordings, over the borders of their files, and must
// come back from there: nothing lost, nothing twice, in each channel's order.
#include "logging/ui/LoggerWindow.h"
#include "tests/logging/readback/RecorderStack.h"
#include "tests/logging/readback/SentFrames.h"
#include "vci/TzVciFrameEncoder.h"

using namespace tztest;
using tzsim::Family;

class ReadBack : public RecorderStack
{
protected:
    static constexpr std::size_t bigCount = 60'000; // frames of a family, several files of 1 MB in each format

    using Sent = std::map<Channel, std::vector<RecordedFrame>>;

    tzsim::Box &box(const tzsim::ChannelRef &channel) { return app.simulator.box(channel.box); }

    /// Frames of every kind on all CAN channels, as what the two formats must tell.
    void sendCan()
    {
        constexpr std::size_t burst = 250; // frames of a channel at once; the boxes wait for the program to follow
        FrameMaker maker(20261121);
        std::vector<tzsim::ChannelRef> channels;
        for (int box = 0; box < boxes; ++box) {
            for (int channel = 0; channel < AppFixture::canChannels; ++channel)
                channels.push_back({box, Family::can, channel});
        }
        while (sentCan < bigCount) {
            for (const tzsim::ChannelRef &channel : channels) {
                std::vector<tzsim::CanFrame> frames(burst);
                for (tzsim::CanFrame &frame : frames) {
                    frame = maker.can();
                    expectCan(channel, frame);
                }
                box(channel).injectCan(channel.channel, frames);
            }
            ASSERT_TRUE(allArrived(RecordFamily::Can, sentCan)) << "after " << sentCan;
        }
    }
    void sendLin()
    {
        constexpr std::size_t burst = 100;
        FrameMaker maker(20261122);
        while (sentLin < bigCount) {
            for (std::size_t i = 0; i < burst; ++i) {
                for (int box = 0; box < boxes; ++box) {
                    const tzsim::ChannelRef channel{box, Family::lin, 0};
                    const tzsim::LinFrame frame = maker.lin();
                    expectLin(channel, frame);
                    app.simulator.box(box).injectLin(channel.channel, frame);
                }
            }
            ASSERT_TRUE(allArrived(RecordFamily::Lin, sentLin)) << "after " << sentLin;
        }
    }

    void expectCan(const tzsim::ChannelRef &channel, const tzsim::CanFrame &frame)
    {
        for (const RecordFormat format : {RecordFormat::Asc, RecordFormat::Csv})
            expected[{RecordFamily::Can, format}][{channel.box, channel.channel}].push_back(
                expectedRecord(channel, frame, format));
        ++sentCan;
    }
    void expectLin(const tzsim::ChannelRef &channel, const tzsim::LinFrame &frame,
                   const std::string &direction = "Tx,Master Read")
    {
        for (const RecordFormat format : {RecordFormat::Asc, RecordFormat::Csv})
            expected[{RecordFamily::Lin, format}][{channel.box, channel.channel}].push_back(
                expectedRecord(channel, frame, format, direction));
        ++sentLin;
    }

    void compareAll(std::size_t leastFiles)
    {
        for (const Recorder &recorder : recorders) {
            SCOPED_TRACE(recorder.path.toStdString());
            const FramesByChannel read = readBack(recorder, leastFiles);
            const Sent &sent = expected[{recorder.family, recorder.format}];
            ASSERT_EQ(read.size(), sent.size());
            for (const auto &[channel, frames] : sent)
                compare(frames, read.at(channel));
        }
    }
    static void compare(const std::vector<RecordedFrame> &sent, const std::vector<RecordedFrame> &read)
    {
        EXPECT_EQ(read.size(), sent.size());
        for (std::size_t i = 0; i < std::min(sent.size(), read.size()); ++i)
            ASSERT_EQ(read[i], sent[i]) << "frame " << i;
    }

    std::map<std::pair<RecordFamily, RecordFormat>, Sent> expected;
    std::uint64_t sentCan = 0;
    std::uint64_t sentLin = 0;
};

TEST_F(ReadBack, CanFramesOfEveryKindOverTheBordersOfFiles)
{
    record(RecordFamily::Can, RecordFormat::Asc, QStringLiteral("logs/can.asc"));
    record(RecordFamily::Can, RecordFormat::Csv, QStringLiteral("logs/can.csv"));
    sendCan();
    stopAll();
    compareAll(3);
}

TEST_F(ReadBack, LinFramesOverTheBordersOfFiles)
{
    record(RecordFamily::Lin, RecordFormat::Asc, QStringLiteral("logs/lin.asc"));
    record(RecordFamily::Lin, RecordFormat::Csv, QStringLiteral("logs/lin.csv"));
    sendLin();
    stopAll();
    compareAll(3);
}

TEST_F(ReadBack, TransmittedFramesStandOnBothSides)
{
    ASSERT_TRUE(app.simulator.join({{0, Family::can, 0}, {1, Family::can, 1}}));
    record(RecordFamily::Can, RecordFormat::Asc, QStringLiteral("logs/can.asc"));
    record(RecordFamily::Can, RecordFormat::Csv, QStringLiteral("logs/can.csv"));
    constexpr int count = 50;
    for (int i = 0; i < count; ++i) {
        TzVciCanDataType sent;
        sent.canId = 0x7E0;
        sent.dataLength = 2;
        sent.data[0] = static_cast<std::uint8_t>(i);
        ASSERT_EQ(app.manager.getDevice(0)->send(encodeCanFrame(0, sent)), 0);
        const auto frame = tzsim::CanFrame::make(sent.canId, std::span(sent.data).first(sent.dataLength));
        expectCan({0, Family::can, 0}, frame);
        expectCan({1, Family::can, 1}, frame);
    }
    for (auto &[format, sent] : expected) {
        for (RecordedFrame &frame : sent[{0, 0}])
            frame.direction = "Tx";
    }
    ASSERT_TRUE(allArrived(RecordFamily::Can, sentCan));
    stopAll();
    compareAll(1);
}

TEST_F(ReadBack, LinFramesThatTheBoxWrites)
{
    record(RecordFamily::Lin, RecordFormat::Asc, QStringLiteral("logs/lin.asc"));
    record(RecordFamily::Lin, RecordFormat::Csv, QStringLiteral("logs/lin.csv"));
    TzVciLinDataType sent;
    sent.linId = 0x11;
    sent.dataLength = 3;
    sent.checksumType = 1;
    sent.linAction = TzVciLinAction::headerAndResponse;
    sent.data = {1, 2, 3};
    ASSERT_EQ(app.manager.getDevice(0)->send(encodeLinFrame(0, sent)), 0);
    expectLin({0, Family::lin, 0}, tzsim::LinFrame::make(0x11, std::span(sent.data).first(3)), "Tx,Master Write");
    ASSERT_TRUE(allArrived(RecordFamily::Lin, 1));
    stopAll();
    compareAll(1);
}

// Each view has a recorder of its own, and a view may begin later and end earlier than another.
TEST_F(ReadBack, RecordingsBeginAndEndOnTheirOwn)
{
    const std::array<std::uint8_t, 1> data{7};
    const tzsim::ChannelRef channel{0, Family::can, 0};
    std::vector<RecordedFrame> sent;
    const auto send = [&](std::uint32_t id) {
        const auto frame = tzsim::CanFrame::make(id, data);
        sent.push_back(expectedRecord(channel, frame, RecordFormat::Asc));
        box(channel).injectCan(0, frame);
        ASSERT_TRUE(waitFor([&] { return app.countersOf(0).total == sent.size(); }));
    };
    record(RecordFamily::Can, RecordFormat::Asc, QStringLiteral("first.asc"));
    send(1);
    record(RecordFamily::Can, RecordFormat::Asc, QStringLiteral("second.asc"));
    send(2);
    recorders[0].window->stopRecording();
    send(3);
    recorders[1].window->stopRecording();
    send(4);
    const auto framesOf = [&](const QString &path) {
        return readRecording(path, RecordFamily::Can, RecordFormat::Asc).frames;
    };
    EXPECT_EQ(framesOf(QStringLiteral("first.asc")), (std::vector<RecordedFrame>{sent[0], sent[1]}));
    EXPECT_EQ(framesOf(QStringLiteral("second.asc")), (std::vector<RecordedFrame>{sent[1], sent[2]}));
}
