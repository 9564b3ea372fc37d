// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/logging/ui/TestLoggerRecording.h"

#include "tests/logging/ui/LoggerWindowFixture.h"
#include "tests/support/FileSizeLimit.h"
#include "tests/support/NoMoreThreads.h"

#include <array>
#include <stop_token>
#include <thread>

using namespace tztest;

namespace {

constexpr int infoLevel = 1;
constexpr int errorLevel = 3;
/// The next message box, which is answered by OK; its title and text, and the icon's number.
void verifyTold(QMessageBox::Icon icon, const QString &title, const QString &text)
{
    QTRY_COMPARE(fixture->driver.seen().size(), std::size_t{1});
    QCOMPARE(fixture->driver.seen()[0].icon, static_cast<int>(icon));
    QCOMPARE(fixture->driver.seen()[0].title, title);
    QCOMPARE(fixture->driver.seen()[0].text, text);
}

} // namespace

void TestLoggerRecording::emptyPathWarns()
{
    fixture->driver.expectBox(QMessageBox::Ok);
    fixture->start(QString());
    verifyTold(QMessageBox::Warning, QStringLiteral("Error"), QStringLiteral("Please specify a log file path"));
    QVERIFY(!fixture->window->isRecording());
}

void TestLoggerRecording::unopenableFileIsTold()
{
    QVERIFY(QDir().mkdir(QStringLiteral("folder")));
    fixture->driver.expectBox(QMessageBox::Ok);
    fixture->start(QStringLiteral("folder"));
    verifyTold(QMessageBox::Critical, QStringLiteral("Recording Failed"),
               QStringLiteral("Cannot start logging: Cannot open log file"));
    QVERIFY(!fixture->window->isRecording());
    QCOMPARE(fixture->button("buttonStartStop")->text(), QStringLiteral("Start Recording"));
}

void TestLoggerRecording::unwritableHeaderIsTold()
{
    const tztest::FileSizeLimit fullDisk(0);
    fixture->driver.expectBox(QMessageBox::Ok);
    fixture->start(QStringLiteral("run.asc"));
    verifyTold(QMessageBox::Critical, QStringLiteral("Recording Failed"),
               QStringLiteral("Cannot start logging: Failed to write to file"));
    QVERIFY(!fixture->window->isRecording());
}

void TestLoggerRecording::otherFailureIsToldWithItsCode()
{
    fixture->driver.expectBox(QMessageBox::Ok);
    {
        const NoMoreThreads none;
        fixture->start(QStringLiteral("run.asc"));
    }
    verifyTold(QMessageBox::Critical, QStringLiteral("Recording Failed"),
               QStringLiteral("Cannot start logging: Unknown error (Code: -4)"));
    QVERIFY(!fixture->window->isRecording());
    QCOMPARE(fixture->button("buttonStartStop")->text(), QStringLiteral("Start Recording"));
}

void TestLoggerRecording::fileOfAnotherRecordingIsRefused()
{
    Common::CANLoggerWindow other(nullptr);
    other.findChild<QLineEdit *>(QStringLiteral("lineEditPath"))->setText(QStringLiteral("run.asc"));
    other.startRecording();
    QVERIFY(other.isRecording());
    fixture->driver.expectBox(QMessageBox::Ok);
    fixture->start(QStringLiteral("run.asc"));
    verifyTold(QMessageBox::Critical, QStringLiteral("Recording Failed"),
               QStringLiteral("Cannot start logging: Cannot open log file"));
    const TzVciMessage frame = canMessage(0x123);
    QVERIFY(other.addMessages({&frame, 1}));
    other.stopRecording();
    QCOMPARE(LoggerWindowFixture::recordsOf(QStringLiteral("run.asc")).size(), 1);
}

void TestLoggerRecording::secondStartIsRefused()
{
    fixture->start(QStringLiteral("run.asc"));
    QVERIFY(fixture->window->isRecording());
    fixture->driver.expectBox(QMessageBox::Ok);
    fixture->window->startRecording();
    verifyTold(QMessageBox::Critical, QStringLiteral("Recording Failed"),
               QStringLiteral("Cannot start logging: Logger is already running"));
    QVERIFY(
        fixture->log.has(errorLevel, fmt::format("Cannot change {}Logger config while running", fixture->family())));
    QVERIFY(fixture->log.has(errorLevel, fixture->isLin ? "LINLogger already running" : "Logger already running"));
    QVERIFY(fixture->window->isRecording()); // the first goes on
    QVERIFY(fixture->add({fixture->frame(1)}));
    fixture->window->stopRecording();
    QCOMPARE(LoggerWindowFixture::recordsOf(QStringLiteral("run.asc")).size(), 1);
}

void TestLoggerRecording::startAndStopShowTheState()
{
    const QString path = QStringLiteral("logs/new folder/run.asc");
    const auto settingsEnabled = [] {
        return std::array{fixture->path()->isEnabled(),
                          fixture->button("buttonBrowse")->isEnabled(),
                          fixture->format()->isEnabled(),
                          fixture->sizeLimit()->isEnabled(),
                          fixture->get<QCheckBox>("checkExtraInfo")->isEnabled(),
                          fixture->button("buttonReset")->isEnabled()};
    };
    const QPushButton *startStop = fixture->button("buttonStartStop");
    const QString ready = fixture->labelText("labelStatus");
    const QString startStyle = QStringLiteral("QPushButton { background-color: #50c050; color: white; }");
    QCOMPARE(startStop->text(), QStringLiteral("Start Recording"));
    QCOMPARE(startStop->styleSheet(), startStyle);
    const int width = startStop->width();

    fixture->start(path);
    QVERIFY(fixture->window->isRecording());
    QCOMPARE(startStop->text(), QStringLiteral("Stop Recording"));
    QCOMPARE(startStop->styleSheet(), QStringLiteral("QPushButton { background-color: #ff5050; color: white; }"));
    QCOMPARE(startStop->width(), width);
    QCOMPARE(settingsEnabled(), (std::array{false, false, false, false, false, false}));
    QVERIFY(fixture->button("buttonOpen")->isEnabled());
    QCOMPARE(fixture->labelText("labelStatus"), QStringLiteral("Recording to: %1").arg(path));
    QVERIFY(fixture->log.has(infoLevel,
                             fmt::format("{} logger recording started: {}", fixture->family(), path.toStdString())));

    fixture->click("buttonStartStop");
    QVERIFY(!fixture->window->isRecording());
    QCOMPARE(startStop->text(), QStringLiteral("Start Recording"));
    QCOMPARE(startStop->styleSheet(), startStyle);
    QCOMPARE(settingsEnabled(), (std::array{true, true, true, true, true, true}));
    QCOMPARE(fixture->labelText("labelStatus"), ready);
    QCOMPARE(fixture->log.count(infoLevel, fmt::format("{} logger recording stopped", fixture->family())),
             std::size_t{1});
    fixture->window->stopRecording(); // nothing is left to stop
    QCOMPARE(fixture->log.count(infoLevel, fmt::format("{} logger recording stopped", fixture->family())),
             std::size_t{1});
}

void TestLoggerRecording::framesAreTakenOnlyWhileRecording()
{
    QVERIFY(!fixture->add({fixture->frame(1)}));
    fixture->start(QStringLiteral("run.asc"));
    QVERIFY(fixture->add({fixture->frame(2), fixture->frame(3)}));
    fixture->click("buttonStartStop");
    QVERIFY(!fixture->add({fixture->frame(4)}));
    const QStringList first = LoggerWindowFixture::recordsOf(QStringLiteral("run.asc"));
    QCOMPARE(first.size(), 2);
    QVERIFY(first[0].contains(fixture->isLin ? "LIN Frame 02" : " 002 Rx"));
    QVERIFY(first[1].contains(fixture->isLin ? "LIN Frame 03" : " 003 Rx"));
    fixture->click("buttonStartStop"); // a new run begins an empty file
    QVERIFY(fixture->add({fixture->frame(5)}));
    fixture->click("buttonStartStop");
    QCOMPARE(LoggerWindowFixture::recordsOf(QStringLiteral("run.asc")).size(), 1);
}

void TestLoggerRecording::settingsReachTheFile()
{
    fixture->format()->setCurrentIndex(1);
    fixture->get<QCheckBox>("checkExtraInfo")->setChecked(true);
    fixture->sizeLimit()->setValue(0); // as small as can be: 1 MB
    fixture->start(QStringLiteral("run.csv"));
    QVERIFY(fixture->add({fixture->frame(1)}));
    fixture->click("buttonStartStop");
    const QStringList lines = LoggerWindowFixture::linesOf(QStringLiteral("run.csv"));
    QCOMPARE(lines.size(), 3);
    QVERIFY(lines[0].startsWith(QLatin1String("Timestamp,Channel,ID,")));
    QVERIFY(lines[1].endsWith(QLatin1String(",Index:0")));
    QVERIFY(lines[2].isEmpty());
}

void TestLoggerRecording::sizeLimitZeroIsOneMebibyte()
{
    constexpr qint64 mebibyte = 1 << 20;
    fixture->format()->setCurrentIndex(1);
    fixture->sizeLimit()->setValue(0);
    fixture->start(QStringLiteral("run.csv"));
    const std::vector<TzVciMessage> frames(1000, fixture->frame(1));
    QTRY_VERIFY(fixture->add(frames) && QFile::exists(QStringLiteral("run.1.csv")));
    fixture->click("buttonStartStop");
    const qint64 size = QFileInfo(QStringLiteral("run.1.csv")).size();
    QVERIFY2(size >= mebibyte && size < 2 * mebibyte, qPrintable(QString::number(size))); // less than a batch more
}

void TestLoggerRecording::errorFramesMayBeLeftOut()
{
    if (fixture->isLin)
        return; // LIN has none
    const std::vector<TzVciMessage> frames{canMessage(1), canMessage(2, TzVciCanFrameType::error), canMessage(3)};
    fixture->start(QStringLiteral("with.asc"));
    QVERIFY(fixture->add(frames));
    fixture->click("buttonStartStop");
    fixture->get<QCheckBox>("checkErrorFrames")->setChecked(false);
    fixture->start(QStringLiteral("without.asc"));
    QVERIFY(fixture->add(frames));
    fixture->click("buttonStartStop");
    QCOMPARE(LoggerWindowFixture::recordsOf(QStringLiteral("with.asc")).size(), 3);
    QCOMPARE(LoggerWindowFixture::recordsOf(QStringLiteral("without.asc")).size(), 2);
    QVERIFY(LoggerWindowFixture::linesOf(QStringLiteral("with.asc")).contains("internal events logged"));
    QVERIFY(LoggerWindowFixture::linesOf(QStringLiteral("without.asc")).contains("no internal events logged"));
}

void TestLoggerRecording::relativeTimeGivesTheDeltas()
{
    if (!fixture->isLin)
        return; // CAN recordings are absolute
    const auto timesOf = [](const QString &file) {
        QStringList times;
        for (const QString &record : LoggerWindowFixture::recordsOf(file))
            times.append(record.section(QLatin1Char(' '), 0, 0));
        return times;
    };
    const std::vector<TzVciMessage> frames{fixture->frame(1, 10'000'000), fixture->frame(2, 20'000'000),
                                           fixture->frame(3, 25'000'000)};
    fixture->start(QStringLiteral("absolute.asc"));
    QVERIFY(fixture->add(frames));
    fixture->click("buttonStartStop");
    fixture->get<QRadioButton>("radioRelative")->setChecked(true);
    fixture->start(QStringLiteral("relative.asc"));
    QVERIFY(fixture->add(frames));
    fixture->click("buttonStartStop");
    QCOMPARE(timesOf(QStringLiteral("absolute.asc")), (QStringList{"0.000000", "1.000000", "1.500000"}));
    QCOMPARE(timesOf(QStringLiteral("relative.asc")), (QStringList{"0.000000", "1.000000", "0.500000"}));
    QVERIFY(LoggerWindowFixture::linesOf(QStringLiteral("relative.asc")).contains("base hex timestamps relative"));
}

void TestLoggerRecording::pathMayHoldAnyCharacters()
{
    const QString path = QStringLiteral("总线 记录/車門 测试 #1 100%.asc");
    if (QFile::decodeName(QFile::encodeName(path)) != path)
        QSKIP("the locale's encoding cannot express the path");
    fixture->start(path);
    QVERIFY(fixture->window->isRecording());
    QVERIFY(fixture->add({fixture->frame(1)}));
    QCOMPARE(fixture->labelText("labelStatus"), QStringLiteral("Recording to: ") + path);
    fixture->click("buttonStartStop");
    QCOMPARE(LoggerWindowFixture::recordsOf(path).size(), 1);
}

void TestLoggerRecording::closingWhileRecordingAsksAndGoesOnOnNo()
{
    fixture->start(QStringLiteral("run.asc"));
    fixture->driver.expectBox(QMessageBox::No);
    fixture->click("buttonClose");
    QTRY_COMPARE(fixture->driver.seen().size(), std::size_t{1});
    QCOMPARE(fixture->driver.seen()[0].title, QStringLiteral("Confirm Close"));
    QCOMPARE(fixture->driver.seen()[0].text,
             QStringLiteral("Recording is in progress. Are you sure you want to stop recording and close the window?"));
    QTRY_VERIFY(!QApplication::activeModalWidget());
    QVERIFY(fixture->window->isVisible());
    QVERIFY(fixture->window->isRecording());
    QVERIFY(fixture->add({fixture->frame(1)}));
    fixture->click("buttonStartStop");
    QCOMPARE(LoggerWindowFixture::recordsOf(QStringLiteral("run.asc")).size(), 1);
}

void TestLoggerRecording::closingWhileRecordingStopsAndHidesOnYes()
{
    fixture->start(QStringLiteral("run.asc"));
    QVERIFY(fixture->add({fixture->frame(1), fixture->frame(2)}));
    fixture->driver.expectBox(QMessageBox::Yes);
    QVERIFY(!fixture->window->close()); // by the title bar; it asks first
    fixture->window->close();           // and does so once
    QTRY_VERIFY(!fixture->window->isVisible());
    QVERIFY(!fixture->window->isRecording());
    QCOMPARE(fixture->driver.seen().size(), std::size_t{1});
    QCOMPARE(LoggerWindowFixture::recordsOf(QStringLiteral("run.asc")).size(), 2);
    fixture->window->showNormal(); // it was hidden, and can record again
    QCOMPARE(fixture->path()->text(), QStringLiteral("run.asc"));
    fixture->click("buttonStartStop");
    QVERIFY(fixture->window->isRecording());
}

void TestLoggerRecording::destroyedWindowEndsItsFile()
{
    fixture->start(QStringLiteral("run.asc"));
    QVERIFY(fixture->add({fixture->frame(1), fixture->frame(2)}));
    fixture->window->close(); // the question shows
    QVERIFY(QApplication::activeModalWidget());
    fixture->window.reset();
    QCOMPARE(LoggerWindowFixture::recordsOf(QStringLiteral("run.asc")).size(), 2);
    QVERIFY(fixture->log.has(infoLevel, fmt::format("{} logger recording stopped", fixture->family())));
}

// The delivering thread asks nobody: each frame that the window said it took is in a file.
void TestLoggerRecording::framesMayArriveWhileRecordingStartsAndStops()
{
    std::size_t taken = 0;
    std::jthread delivering([&](const std::stop_token &stop) {
        const std::vector<TzVciMessage> batch{fixture->frame(1), fixture->frame(2), fixture->frame(3)};
        while (!stop.stop_requested()) {
            taken += fixture->add(batch) ? batch.size() : 0;
            std::this_thread::yield();
        }
    });
    qsizetype written = 0;
    for (int run = 0; run < 10; ++run) {
        const QString path = QStringLiteral("run%1.asc").arg(run);
        fixture->start(path);
        QTest::qWait(5);
        fixture->click("buttonStartStop");
        written += LoggerWindowFixture::recordsOf(path).size();
        const auto kept = [run](int number) { return QStringLiteral("run%1.%2.asc").arg(run).arg(number); };
        for (int number = 1; QFile::exists(kept(number)); ++number) // full, where this thread was held up for long
            written += LoggerWindowFixture::recordsOf(kept(number)).size();
    }
    delivering.request_stop();
    delivering.join();
    QCOMPARE(static_cast<std::size_t>(written), taken);
}
