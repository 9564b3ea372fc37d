// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/logging/PythonCan.h"

#include <gtest/gtest.h>

#include <QProcess>

namespace tztest {

namespace {

const QString python = QStringLiteral("/usr/bin/python3"); // whose modules are those of the system's packages
constexpr int patience = 120'000;                          // ms

// A frame as the scripts write and read it, one a line; "-" stands before the data, which may be empty.
QByteArray lineOf(const PythonFrame &frame)
{
    const auto digit = [](bool isSet) { return QByteArray(isSet ? "1" : "0"); };
    const QByteArray data(reinterpret_cast<const char *>(frame.data.data()), static_cast<int>(frame.data.size()));
    const QByteArrayList words{QByteArray::number(frame.seconds, 'f', 9),
                               QByteArray::number(frame.channel),
                               QByteArray::number(frame.id, 16),
                               digit(frame.isExtended),
                               digit(frame.isRemote),
                               digit(frame.isError),
                               digit(frame.isFd),
                               digit(frame.isBitRateSwitched),
                               digit(frame.isErrorStateIndicator),
                               digit(frame.isReceived),
                               QByteArray::number(frame.length),
                               '-' + data.toHex()};
    return words.join(' ');
}

PythonFrame frameOf(const QByteArray &line)
{
    const QByteArrayList words = line.split(' ');
    if (words.size() != 12) {
        ADD_FAILURE() << "not a frame: " << line.toStdString();
        return {};
    }
    const auto flag = [&words](int index) { return words[index] == "1"; };
    PythonFrame frame;
    frame.seconds = words[0].toDouble();
    frame.channel = words[1].toInt();
    frame.id = words[2].toUInt(nullptr, 16);
    frame.isExtended = flag(3);
    frame.isRemote = flag(4);
    frame.isError = flag(5);
    frame.isFd = flag(6);
    frame.isBitRateSwitched = flag(7);
    frame.isErrorStateIndicator = flag(8);
    frame.isReceived = flag(9);
    frame.length = words[10].toInt();
    const QByteArray data = QByteArray::fromHex(words[11].mid(1));
    frame.data.assign(data.begin(), data.end());
    return frame;
}

QByteArray runScript(const char *script, const QString &path, const QByteArray &input)
{
    QProcess process;
    process.start(python, {QString::fromLatin1(script), path});
    process.write(input);
    process.closeWriteChannel();
    if (!process.waitForFinished(patience) || process.exitStatus() != QProcess::NormalExit || process.exitCode() != 0)
        ADD_FAILURE() << script << ": " << process.readAllStandardError().toStdString();
    return process.readAllStandardOutput();
}

} // namespace

std::ostream &operator<<(std::ostream &stream, const PythonFrame &frame)
{
    return stream << lineOf(frame).toStdString();
}

bool hasPythonCan()
{
    return QProcess::execute(python, {QStringLiteral("-c"), QStringLiteral("import can")}) == 0;
}

std::vector<PythonFrame> readAscByPython(const QString &path)
{
    std::vector<PythonFrame> frames;
    for (const QByteArray &line : runScript(TZ_READ_ASC_SCRIPT, path, {}).split('\n')) {
        if (!line.isEmpty())
            frames.push_back(frameOf(line));
    }
    return frames;
}

void writeBlfByPython(const QString &path, const std::vector<PythonFrame> &frames)
{
    QByteArray lines;
    for (const PythonFrame &frame : frames)
        lines += lineOf(frame) + '\n';
    runScript(TZ_WRITE_BLF_SCRIPT, path, lines);
}

} // namespace tztest
