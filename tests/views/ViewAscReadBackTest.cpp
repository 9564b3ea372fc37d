// SPDX-License-Identifier: GPL-3.0-or-later
// A CAN view saved as ASC is read back, by a small reader and by one that others wrote, and compared frame by frame.
#include "views/TzViewSnapshot.h"

#include "tests/support/TempWorkDir.h"
#include "tests/views/SnapshotFrames.h"
#include "vci/TzVciDeviceManager.h"
#include "vci/TzVciDeviceStore.h"
#include "views/TzCanViewModel.h"

#include <QFile>
#include <QProcess>
#include <QRegularExpression>

#include <gtest/gtest.h>

#include <random>

using namespace tztest;

namespace {

/// What a line of the log tells of a frame.
struct LoggedFrame
{
    qint64 microseconds = 0;
    int channel = 0; // from 0
    std::uint32_t id = 0;
    bool received = false;
    QByteArray data;

    bool operator==(const LoggedFrame &) const = default;
};

std::ostream &operator<<(std::ostream &stream, const LoggedFrame &frame)
{
    return stream << frame.microseconds << " us, channel " << frame.channel << ", id " << frame.id
                  << (frame.received ? " Rx " : " Tx ") << frame.data.toHex(' ').toStdString();
}

LoggedFrame logged(const TzVciMessage &message)
{
    const TzVciCanDataType &frame = message.frame.can;
    return {static_cast<qint64>(message.timestamp / 10), message.channelIndex, frame.canId,
            frame.frameType == TzVciCanFrameType::received,
            QByteArray(reinterpret_cast<const char *>(frame.data.data()), frame.dataLength)};
}

std::vector<LoggedFrame> logged(const std::vector<TzVciMessage> &messages)
{
    std::vector<LoggedFrame> frames;
    for (const TzVciMessage &message : messages)
        frames.push_back(logged(message));
    return frames;
}

/// Frames of all channels with any identifier and payload, a full view of them.
std::vector<TzVciMessage> randomFrames(std::uint8_t maxLength)
{
    std::mt19937 random(20261107);
    std::vector<TzVciMessage> messages(TzRawViewModel::maxRows);
    std::uint64_t ticks = 0;
    for (TzVciMessage &message : messages) {
        ticks += 10 * (random() % 100'000);
        message = at(ticks, from(0, static_cast<std::uint8_t>(random() % 8), canMessage(0)));
        TzVciCanDataType &frame = message.frame.can;
        const bool extended = random() % 2;
        frame.canId = static_cast<std::uint32_t>(random() & (extended ? 0x1FFFFFFF : 0x7FF));
        frame.flags = extended ? TzVciCanFlag::extendedId : 0;
        frame.frameType = random() % 2 ? TzVciCanFrameType::received : TzVciCanFrameType::transmitted;
        frame.dataLength = static_cast<std::uint8_t>(random() % (maxLength + 1));
        for (std::uint8_t n = 0; n < frame.dataLength; ++n)
            frame.data[n] = static_cast<std::uint8_t>(random());
    }
    return messages;
}

qint64 microseconds(const QString &seconds)
{
    return qRound64(seconds.toDouble() * 1e6);
}

class ViewAscReadBack : public testing::Test
{
protected:
    void save(const std::vector<TzVciMessage> &messages)
    {
        TzCanViewModel model(&m_manager);
        model.addMessages(messages);
        while (model.rowCount() < static_cast<int>(messages.size()))
            model.updateData();
        ASSERT_TRUE(TzViewSnapshot::save(model, TzViewSnapshot::Format::Asc, path()));
    }
    QString path() const { return m_workDir.filePath(QStringLiteral("view.asc")); }

    TempWorkDir m_workDir;
    TzVciDeviceStore m_store;
    TzVciDeviceManager m_manager{&m_store};
};

/// The frames between the trigger block's begin and its end; a line that is none is a failure.
std::vector<LoggedFrame> readAsc(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    const QStringList lines = QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'));
    const int begin = lines.indexOf(QRegularExpression(QStringLiteral("^Begin Triggerblock .*")));
    const int end = lines.indexOf(QStringLiteral("End TriggerBlock"));
    EXPECT_EQ(begin, 4);
    EXPECT_EQ(end, lines.size() - 2) << "the end is the last line";
    std::vector<LoggedFrame> frames;
    for (int n = begin + 1; n < end; ++n) {
        const QStringList fields = lines[n].split(QLatin1Char(' '), Qt::SkipEmptyParts);
        if (fields.size() < 6 || fields[4] != QLatin1String("d")) {
            ADD_FAILURE() << "not a frame: " << lines[n].toStdString();
            continue;
        }
        const QString data = fields.mid(6).join(QString());
        frames.push_back({microseconds(fields[0]), fields[1].toInt() - 1, fields[2].toUInt(nullptr, 16),
                          fields[3] == QLatin1String("Rx"), QByteArray::fromHex(data.toLatin1())});
        EXPECT_EQ(frames.back().data.size(), fields[5].toInt()) << lines[n].toStdString();
    }
    return frames;
}

} // namespace

TEST_F(ViewAscReadBack, SmallReaderFindsEveryFrame)
{
    const std::vector<TzVciMessage> messages = randomFrames(64);
    save(messages);
    EXPECT_EQ(readAsc(path()), logged(messages));
}

// The reader knows classic frames only, and passes over the rows of errors.
TEST_F(ViewAscReadBack, Python3CanFindsEveryClassicFrame)
{
    const QString python = QStringLiteral("/usr/bin/python3"); // whose modules are those of the system's packages
    if (QProcess::execute(python, {QStringLiteral("-c"), QStringLiteral("import can")}) != 0)
        GTEST_SKIP() << "python3-can is not installed";
    std::vector<TzVciMessage> messages = randomFrames(8);
    const std::vector<LoggedFrame> expected = logged(messages);
    messages.pop_back();
    messages.push_back(canData({0, 0, 0, 8}, canMessage(0, TzVciCanFrameType::error)));
    save(messages);

    QProcess reader;
    const QString script = QStringLiteral("import can, sys\n"
                                          "for m in can.ASCReader(sys.argv[1]):\n"
                                          "    print('%.6f' % m.timestamp, m.channel, '%x' % m.arbitration_id,"
                                          " int(m.is_rx), '-' + m.data.hex())\n");
    reader.start(python, {QStringLiteral("-c"), script, path()});
    ASSERT_TRUE(reader.waitForFinished(60'000));
    ASSERT_EQ(reader.exitCode(), 0) << reader.readAllStandardError().toStdString();
    std::vector<LoggedFrame> frames;
    for (const QString &line : QString::fromLatin1(reader.readAll()).split(QLatin1Char('\n'), Qt::SkipEmptyParts)) {
        const QStringList fields = line.split(QLatin1Char(' '));
        ASSERT_EQ(fields.size(), 5) << line.toStdString();
        frames.push_back({microseconds(fields[0]), fields[1].toInt(), fields[2].toUInt(nullptr, 16),
                          fields[3] == QLatin1String("1"), QByteArray::fromHex(fields[4].mid(1).toLatin1())});
    }
    EXPECT_EQ(frames, std::vector<LoggedFrame>(expected.begin(), expected.end() - 1));
}
