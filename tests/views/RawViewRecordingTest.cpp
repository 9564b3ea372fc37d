// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/views/RawViewRecordingTest.h"

#include "logging/ui/LoggerWindow.h"
#include "tests/support/LogCapture.h"
#include "tests/support/MessageBoxDriver.h"
#include "tests/support/QtTestMain.h"
#include "tests/views/RawViewWindowFixture.h"

using namespace tztest;

namespace {

const QString path = QStringLiteral("run.asc");

Common::LoggerWindow *recorder()
{
    return fixture->view->logger();
}

void startRecording()
{
    recorder()->findChild<QLineEdit *>(QStringLiteral("lineEditPath"))->setText(path);
    recorder()->startRecording();
    QVERIFY(recorder()->isRecording());
}

/// The identifiers in the file, in its order; a lonely -1 where the file is not whole.
QList<int> recordedIds()
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {-1};
    QStringList lines = QString::fromLatin1(file.readAll()).split(QLatin1Char('\n'));
    const int begin = lines.indexOf(QStringLiteral("Begin TriggerBlock"));
    if (begin < 0 || lines.takeLast() != QString() || lines.takeLast() != QLatin1String("End TriggerBlock"))
        return {-1};
    QList<int> ids;
    for (const QString &line : lines.mid(begin + 1)) // "T ch ID ..." or "T ch LIN Frame ID ..."
        ids.append(
            line.section(QLatin1Char(' '), fixture->isCan() ? 2 : 4).section(QLatin1Char(' '), 0, 0).toInt({}, 16));
    return ids;
}

} // namespace

void TestRawViewRecording::buttonShowsTheHiddenWindow()
{
    QVERIFY(recorder()->isWindow());
    QVERIFY(!recorder()->isVisible());
    QCOMPARE(recorder()->windowTitle(), fixture->isCan() ? QStringLiteral("CAN Logger") : QStringLiteral("LIN Logger"));
    QTest::mouseClick(fixture->button("buttonRecord"), Qt::LeftButton);
    QTRY_VERIFY(recorder()->isVisible());
    QVERIFY(!recorder()->isRecording());
    const QPointer<Common::LoggerWindow> window = recorder();
    QVERIFY(window->close());
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(window && !window->isVisible());
    QTest::mouseClick(fixture->button("buttonRecord"), Qt::LeftButton);
    QTRY_VERIFY(window->isVisible());
}

void TestRawViewRecording::buttonRestoresAMinimisedWindow()
{
    recorder()->showMinimized();
    QVERIFY(recorder()->isMinimized());
    QTest::mouseClick(fixture->button("buttonRecord"), Qt::LeftButton);
    QVERIFY(!recorder()->isMinimized());
    QVERIFY(recorder()->isVisible());
}

void TestRawViewRecording::framesThatEnterAreRecorded()
{
    fixture->deliver({fixture->rx(1)}); // before the start
    startRecording();
    fixture->deliver({fixture->rx(2), fixture->tx(3)});
    fixture->deliver({fixture->rx(4)});
    recorder()->stopRecording();
    fixture->deliver({fixture->rx(5)});
    QCOMPARE(recordedIds(), (QList<int>{2, 3, 4}));
    QCOMPARE(fixture->view->intake().counters().total, std::uint64_t{5});
}

void TestRawViewRecording::channelsNotChosenAreNotRecorded()
{
    startRecording();
    fixture->view->onUpdateFilters({{0, {1}}});
    fixture->deliver({from(0, 0, fixture->rx(1)), from(0, 1, fixture->rx(2)), from(1, 1, fixture->rx(3)),
                      from(0, 1, fixture->rx(4))});
    recorder()->stopRecording();
    QCOMPARE(recordedIds(), (QList<int>{2, 4}));
}

void TestRawViewRecording::displayFilterDoesNotTouchTheRecording()
{
    fixture->view->filterWidget()->setEnabled(true);
    fixture->filterBar()->findChild<QLineEdit *>()->setText(QStringLiteral("2"));
    startRecording();
    fixture->deliver({fixture->rx(1), fixture->rx(2)});
    recorder()->stopRecording();
    QCOMPARE(recordedIds(), (QList<int>{1, 2}));
}

void TestRawViewRecording::pausingLosesFramesForTheRecording()
{
    startRecording();
    fixture->deliver({fixture->rx(1)});
    QTest::mouseClick(fixture->button("buttonPause"), Qt::LeftButton);
    fixture->deliver({fixture->rx(2)});
    QTest::mouseClick(fixture->button("buttonPause"), Qt::LeftButton);
    fixture->deliver({fixture->rx(3)});
    recorder()->stopRecording();
    QCOMPARE(recordedIds(), (QList<int>{1, 3}));
}

void TestRawViewRecording::clearingTheViewDoesNotTouchTheRecording()
{
    startRecording();
    fixture->deliver({fixture->rx(1)});
    fixture->view->onClearViewWindow(fixture->view->viewKind());
    fixture->deliver({fixture->rx(2)});
    recorder()->stopRecording();
    QCOMPARE(recordedIds(), (QList<int>{1, 2}));
}

void TestRawViewRecording::closingTheRecorderWindowEndsTheRecordingOnly()
{
    MessageBoxDriver driver;
    QTest::mouseClick(fixture->button("buttonRecord"), Qt::LeftButton);
    startRecording();
    fixture->deliver({fixture->rx(1)});
    driver.expectBox(QMessageBox::Yes);
    recorder()->close();
    QTRY_VERIFY(!recorder()->isVisible());
    QVERIFY(driver.allMet());
    QCOMPARE(recordedIds(), (QList<int>{1}));
    fixture->deliver({fixture->rx(2)});
    QTRY_COMPARE(fixture->table()->model()->rowCount(), 2); // the view goes on
    QCOMPARE(recordedIds(), (QList<int>{1}));
}

void TestRawViewRecording::closingTheViewEndsItsFile()
{
    const LogCapture log;
    QTest::mouseClick(fixture->button("buttonRecord"), Qt::LeftButton);
    startRecording();
    fixture->deliver({fixture->rx(1), fixture->rx(2)});
    const QPointer<TzRawViewWindow> view(fixture->view.release());
    QVERIFY(view->close());
    QVERIFY(!view->logger()->isRecording());
    QCOMPARE(recordedIds(), (QList<int>{1, 2}));
    view->onReceivedMessages({fixture->rx(3)}); // until the event loop turns it may still be called
    QVERIFY(log.has(1, fixture->isCan() ? "CAN logger recording stopped" : "LIN logger recording stopped"));
    QTRY_VERIFY(view.isNull());
    QCOMPARE(recordedIds(), (QList<int>{1, 2}));
}

void TestRawViewRecording::destroyingTheViewEndsItsFile()
{
    startRecording();
    fixture->deliver({fixture->rx(1), fixture->rx(2)});
    fixture->view.reset();
    QCOMPARE(recordedIds(), (QList<int>{1, 2}));
}

void TestRawViewRecording::viewMayGoUnderTheRecordersQuestion()
{
    QTest::mouseClick(fixture->button("buttonRecord"), Qt::LeftButton);
    startRecording();
    fixture->deliver({fixture->rx(1)});
    QTest::mouseClick(recorder()->findChild<QPushButton *>(QStringLiteral("buttonClose")), Qt::LeftButton);
    QTRY_VERIFY(QApplication::activeModalWidget());
    fixture->view.reset();
    QVERIFY(!QApplication::activeModalWidget());
    QCOMPARE(recordedIds(), (QList<int>{1}));
}

TZ_QTEST_MAIN(TestRawViewRecording)
