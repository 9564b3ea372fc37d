// SPDX-License-Identifier: GPL-3.0-or-later
// Logs that others write and read must mean the same to us: python3-can writes BLF for us and reads the ASC that we
// make.
#include "common/Log.h"
#include "logging/blf/BLFParser.h"
#include "logging/blf/BlfAscWriter.h"
#include "tests/logging/PythonCan.h"
#include "tests/support/LogCapture.h"
#include "tests/support/TempWorkDir.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QtEndian>

#include <algorithm>
#include <array>
#include <random>

namespace tztest {

namespace {

constexpr int frameCount = 20'000;
const QString blfName = QStringLiteral("python.blf");
const QString ascName = QStringLiteral("ours.asc");

enum class Kind
{
    Classic,
    Remote,
    Fd,
    Error
};

class FrameMaker
{
public:
    PythonFrame make(Kind kind)
    {
        PythonFrame frame;
        m_seconds += 1e-6 * (1 + below(2'000'000));
        frame.seconds = m_seconds;
        frame.channel = below(4);
        frame.isError = kind == Kind::Error;
        if (frame.isError)
            return frame; // written without a direction
        frame.isReceived = below(2) == 0;
        frame.isExtended = below(2) == 0;
        frame.id = frame.isExtended ? m_random() & 0x1FFFFFFFU : m_random() & 0x7FFU;
        frame.isRemote = kind == Kind::Remote;
        frame.isFd = kind == Kind::Fd;
        frame.isBitRateSwitched = frame.isFd && below(2) == 0;
        frame.isErrorStateIndicator = frame.isFd && below(2) == 0;
        frame.length = frame.isFd ? fdLengths[static_cast<std::size_t>(below(16))] : below(9);
        if (!frame.isRemote)
            std::generate_n(std::back_inserter(frame.data), frame.length, [this] { return below(256); });
        return frame;
    }

    std::vector<PythonFrame> make(int count, const std::vector<Kind> &kinds)
    {
        std::vector<PythonFrame> frames;
        for (int n = 0; n < count; ++n)
            frames.push_back(make(kinds[static_cast<std::size_t>(below(static_cast<int>(kinds.size())))]));
        return frames;
    }

    static constexpr std::array fdLengths{0, 1, 2, 3, 4, 5, 6, 7, 8, 12, 16, 20, 24, 32, 48, 64};

private:
    int below(int limit) { return static_cast<int>(m_random() % static_cast<unsigned>(limit)); }

    std::mt19937 m_random{20261121};
    double m_seconds = 1000;
};

// What our record says, in the other library's terms: channels from 0, and the length in place of its code.
PythonFrame frameOf(const BLF::BlfFrame &record)
{
    PythonFrame frame;
    frame.seconds = record.time;
    frame.channel = static_cast<int>(record.channel) - 1;
    frame.isReceived = record.dir == QLatin1String("Rx");
    frame.isError = record.frameType == BLF::FrameType::error;
    if (frame.isError)
        return frame;
    frame.id = record.id;
    frame.isExtended = record.isExtended;
    frame.isRemote = record.isRtr;
    frame.isFd = record.isFd;
    frame.isBitRateSwitched = record.isBrs;
    frame.isErrorStateIndicator = record.isEsi;
    frame.length = FrameMaker::fdLengths.at(record.dlc);
    frame.data.assign(record.data.begin(), record.data.end());
    return frame;
}

// Times count from the first frame of the log, and doubles that are far from 0 are coarse.
void expectSameFrames(std::vector<PythonFrame> expected, std::vector<PythonFrame> actual)
{
    ASSERT_EQ(expected.size(), actual.size());
    const double start = expected.front().seconds;
    for (std::size_t at = 0; at < expected.size(); ++at) {
        ASSERT_NEAR(expected[at].seconds - start, actual[at].seconds, 1.1e-6) << "frame " << at;
        expected[at].seconds = actual[at].seconds = 0;
        ASSERT_EQ(expected[at], actual[at]) << "frame " << at;
    }
}

std::size_t containersIn(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    const QByteArray bytes = file.readAll();
    std::size_t containers = 0;
    for (qint64 at = 144; at + 16 <= bytes.size() && bytes.mid(static_cast<int>(at), 4) == "LOBJ";) {
        const auto size = qFromLittleEndian<quint32>(bytes.constData() + at + 8);
        containers += qFromLittleEndian<quint32>(bytes.constData() + at + 12) == 10 ? 1 : 0;
        at += size + size % 4;
    }
    return containers;
}

} // namespace

class BlfPython : public testing::Test
{
protected:
    void SetUp() override
    {
        if (!hasPythonCan())
            GTEST_SKIP() << "python3-can is not installed";
    }

    /// The records of a log that the other library makes of the frames.
    BLF::BlfFrames recordsOf(const std::vector<PythonFrame> &frames)
    {
        writeBlfByPython(m_folder.filePath(blfName), frames);
        BLF::BlfFrames records;
        EXPECT_TRUE(BLF::BLFParser().parseFile(m_folder.filePath(blfName), records));
        EXPECT_EQ(m_log.countContaining(Common::LogLevel::error, ""), 0U) << "nothing is damaged";
        return records;
    }

    void expectReadFrameByFrame(const std::vector<PythonFrame> &frames)
    {
        const BLF::BlfFrames records = recordsOf(frames);
        std::vector<PythonFrame> read;
        std::transform(records.begin(), records.end(), std::back_inserter(read), frameOf);
        expectSameFrames(frames, read);
    }

    void expectAscReadByPython(const BLF::BlfExportOptions &options)
    {
        // Remote frames bear the letter of data frames in our files, and error frames a form of our own.
        const std::vector<PythonFrame> frames = m_maker.make(2'000, {Kind::Classic});
        BLF::BlfAscWriter::options = options;
        EXPECT_TRUE(BLF::BlfAscWriter::saveAsc(m_folder.filePath(ascName), recordsOf(frames)));
        BLF::BlfAscWriter::options = {};
        expectSameFrames(frames, readAscByPython(m_folder.filePath(ascName)));
    }

    FrameMaker m_maker;
    TempWorkDir m_folder;
    LogCapture m_log;
};

TEST_F(BlfPython, ClassicFramesAreReadFrameByFrame)
{
    expectReadFrameByFrame(m_maker.make(frameCount, {Kind::Classic}));
}

TEST_F(BlfPython, RemoteFramesAreReadFrameByFrame)
{
    expectReadFrameByFrame(m_maker.make(frameCount, {Kind::Remote}));
}

TEST_F(BlfPython, FdFramesAreReadFrameByFrame)
{
    expectReadFrameByFrame(m_maker.make(frameCount, {Kind::Fd}));
}

TEST_F(BlfPython, ErrorFramesAreReadFrameByFrame)
{
    expectReadFrameByFrame(m_maker.make(200, {Kind::Error}));
}

TEST_F(BlfPython, FramesOfAllKindsInManyContainersAreReadFrameByFrame)
{
    expectReadFrameByFrame(m_maker.make(frameCount, {Kind::Classic, Kind::Remote, Kind::Fd, Kind::Error}));
    EXPECT_GE(containersIn(m_folder.filePath(blfName)), 8U);
}

TEST_F(BlfPython, OurAscIsReadFrameByFrame)
{
    expectAscReadByPython({.exportInternalEvents = true, .exportAdditionalInfo = true});
}

TEST_F(BlfPython, OurAscWithoutAdditionalInfoIsReadFrameByFrame)
{
    expectAscReadByPython({.exportInternalEvents = false, .exportAdditionalInfo = false});
}

} // namespace tztest
