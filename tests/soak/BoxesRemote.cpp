// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/soak/BoxesRemote.h"

#include <QCoreApplication>
#include <QStringList>

#include <numeric>

namespace tzsoak {

namespace {

constexpr int longestAnswerMs = 10'000; // on a machine that stands still for a while
constexpr int longestEndMs = 5'000;

} // namespace

std::uint64_t FrameCounts::can() const
{
    return std::accumulate(boxes.begin(), boxes.end(), std::uint64_t{0},
                           [](std::uint64_t sum, const OfBox &box) { return sum + box.can; });
}

std::uint64_t FrameCounts::lin() const
{
    return std::accumulate(boxes.begin(), boxes.end(), std::uint64_t{0},
                           [](std::uint64_t sum, const OfBox &box) { return sum + box.lin; });
}

BoxesRemote::~BoxesRemote()
{
    m_process.closeWriteChannel();
    if (m_process.state() != QProcess::NotRunning && !m_process.waitForFinished(longestEndMs))
        m_process.kill();
    m_process.waitForFinished(longestEndMs);
}

bool BoxesRemote::start(const QString &argument)
{
    m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_process.start(QCoreApplication::applicationFilePath(), {argument});
    return answer(QStringLiteral("the start")).has_value();
}

bool BoxesRemote::command(const QString &text)
{
    m_process.write(text.toLatin1() + '\n');
    return answer(text).has_value();
}

std::optional<FrameCounts> BoxesRemote::sent()
{
    m_process.write("sent\n");
    const std::optional<QString> text = answer(QStringLiteral("sent"));
    if (!text)
        return std::nullopt;
    const QStringList numbers = text->split(QLatin1Char(' '), Qt::SkipEmptyParts);
    if (numbers.size() != 2 * boxCount) {
        m_error = QStringLiteral("the boxes answered \"%1\" to \"sent\"").arg(*text);
        return std::nullopt;
    }
    FrameCounts counts;
    for (int box = 0; box < boxCount; ++box) {
        auto &of = counts.boxes[static_cast<std::size_t>(box)];
        of = {numbers[2 * box].toULongLong(), numbers[2 * box + 1].toULongLong()};
    }
    return counts;
}

// What follows on "ok".
std::optional<QString> BoxesRemote::answer(const QString &to)
{
    if (!m_error.isEmpty())
        return std::nullopt;
    while (!m_process.canReadLine()) {
        if (!m_process.waitForReadyRead(longestAnswerMs)) {
            m_error =
                QStringLiteral("the boxes' process does not answer to \"%1\": %2").arg(to, m_process.errorString());
            return std::nullopt;
        }
    }
    const QString line = QString::fromLatin1(m_process.readLine()).trimmed();
    if (line.startsWith(QLatin1String("ok")))
        return line.mid(2);
    m_error = QStringLiteral("the boxes' process: %1").arg(line);
    return std::nullopt;
}

} // namespace tzsoak
