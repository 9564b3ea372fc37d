// SPDX-License-Identifier: GPL-3.0-or-later
// A reader that others wrote must take our ASC files for what they are: python3-can, for classic frames.
#include "logging/ui/LoggerWindow.h"
#include "tests/logging/readback/RecorderStack.h"
#include "tests/logging/readback/SentFrames.h"

#include <QCheckBox>
#include <QProcess>

using namespace tztest;

namespace {

const QString python = QStringLiteral("/usr/bin/python3"); // whose modules are those of the system's packages

/// The frames as python3-can reads them, with their times in microseconds.
void readByPython(const QString &path, std::vector<RecordedFrame> &frames, std::vector<double> &seconds)
{
    QProcess reader;
    reader.start(python, {QStringLiteral(READ_ASC_SCRIPT), path});
    ASSERT_TRUE(reader.waitForFinished(120'000));
    ASSERT_EQ(reader.exitCode(), 0) << reader.readAllStandardError().toStdString();
    for (const QString &line : QString::fromLatin1(reader.readAll()).split(QLatin1Char('\n'), Qt::SkipEmptyParts)) {
        const QStringList words = line.split(QLatin1Char(' '));
        ASSERT_EQ(words.size(), 10) << line.toStdString();
        const auto flag = [&words](int index) { return words[index] == QLatin1String("1"); };
        RecordedFrame frame;
        frame.channel = words[1].toInt();
        frame.id = words[2].toUInt(nullptr, 16);
        frame.isExtended = flag(3);
        frame.isRemote = flag(4);
        frame.isError = flag(5);
        frame.isFd = flag(6);
        frame.direction = flag(7) ? "Rx" : "Tx";
        frame.length = words[8].toInt();
        const QByteArray data = QByteArray::fromHex(words[9].mid(1).toLatin1());
        frame.data.assign(data.begin(), data.end());
        frames.push_back(frame);
        seconds.push_back(words[0].toDouble());
    }
}

} // namespace

class ForeignReader : public RecorderStack
{
};

TEST_F(ForeignReader, PythonCanAgreesOnClassicFrames)
{
    if (QProcess::execute(python, {QStringLiteral("-c"), QStringLiteral("import can")}) != 0)
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

    std::vector<RecordedFrame> frames;
    std::vector<double> seconds;
    readByPython(QStringLiteral("run.asc"), frames, seconds);
    ASSERT_EQ(frames.size(), sent.size());
    for (std::size_t i = 0; i < frames.size(); ++i)
        ASSERT_EQ(frames[i], sent[i]) << "frame " << i;

    const RecordedFile ours = readRecording(QStringLiteral("run.asc"), RecordFamily::Can, RecordFormat::Asc);
    std::vector<double> ourSeconds;
    for (std::size_t i = 0; i < ours.frames.size(); ++i) {
        if (!ours.frames[i].isError)
            ourSeconds.push_back(std::stod(ours.times[i]));
    }
    ASSERT_EQ(seconds.size(), ourSeconds.size());
    for (std::size_t i = 0; i < seconds.size(); ++i)
        ASSERT_NEAR(seconds[i], ourSeconds[i], 1e-6) << "frame " << i;
}
