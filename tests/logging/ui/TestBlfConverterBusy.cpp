// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/logging/ui/TestBlfConverterBusy.h"

#include "tests/logging/ui/BlfConverterChecks.h"

using namespace tztest;
using Box = QMessageBox;

namespace {

std::unique_ptr<BlfConverterFixture> fixture;

/// Converts a log that lasts half a second, or longer, and does @p action amid it; the success box is closed.
void convertWith(std::function<void()> action, int halfSeconds = 1)
{
    fixture->slowDown();
    fixture->duringRun(std::move(action));
    fixture->driver.expectBox(Box::Close);
    fixture->convert(
        fixture->makeLog(QStringLiteral("long.blf"), halfSeconds * BlfConverterFixture::framesOfHalfASecond),
        fixture->inFolder("long.csv"));
}

} // namespace

void TestBlfConverterBusy::init()
{
    fixture = std::make_unique<BlfConverterFixture>();
}

void TestBlfConverterBusy::cleanup()
{
    QVERIFY(fixture->driver.allMet());
    QCOMPARE(fixture->driver.unexpected(), 0);
    verifyIdle(*fixture);
    fixture.reset();
}

void TestBlfConverterBusy::duringARunControlsAreDisabled()
{
    bool looked = false;
    convertWith([&] {
        looked = true;
        QVERIFY(fixture->dialog.isProcessing());
        for (const char *name : {"lineEditInput", "buttonBrowseInput", "lineEditOutput", "buttonBrowseOutput",
                                 "radioCsv", "radioAsc", "checkInternalEvents", "checkAdditionalInfo", "buttonStart"})
            QVERIFY2(!fixture->get<QWidget>(name)->isEnabled(), name);
        QVERIFY(fixture->progress()->isVisible());
        QCOMPARE(fixture->progress()->value(), 0);
        QVERIFY(QGuiApplication::overrideCursor());
        QCOMPARE(QGuiApplication::overrideCursor()->shape(), Qt::WaitCursor);
        QCOMPARE(fixture->dialog.focusWidget(), fixture->log());
    });
    QVERIFY(looked);
}

void TestBlfConverterBusy::duringARunResetWarns()
{
    fixture->driver.expectBox(Box::Ok);
    convertWith([] {
        fixture->click("buttonReset");
        fixture->click("buttonReset"); // one box at a time
    });
    verifyBox(fixture->driver.seen().front(), Box::Warning, "Warning",
              QStringLiteral("Processing in progress, please wait for completion"));
    QCOMPARE(fixture->driver.seen().front().buttons, QStringList{"OK"});
    verifySuccessBox(fixture->lastBox(), fixture->inFolder("long.csv")); // the run went on
    QCOMPARE(fixture->driver.seen().size(), std::size_t{2});
    QCOMPARE(fixture->input()->text(), fixture->inFolder("long.blf"));
}

void TestBlfConverterBusy::duringARunClosingIsRefused_data()
{
    QTest::addColumn<int>("way");
    QTest::newRow("frame") << 0;
    QTest::newRow("Esc") << 1;
    QTest::newRow("reject") << 2;
    QTest::newRow("accept") << 3;
}

void TestBlfConverterBusy::duringARunClosingIsRefused()
{
    QFETCH(int, way);
    fixture->driver.expectBox(Box::Ok);
    convertWith([way] {
        switch (way) {
        case 0: QVERIFY(!fixture->dialog.close()); break;
        case 1: QTest::keyClick(&fixture->dialog, Qt::Key_Escape); break;
        case 2: fixture->dialog.reject(); break;
        case 3: fixture->dialog.accept(); break;
        }
        QVERIFY(fixture->dialog.isVisible());
    });
    verifyBox(fixture->driver.seen().front(), Box::Warning, "Warning",
              QStringLiteral("Processing in progress, please wait for completion"));
    verifySuccessBox(fixture->lastBox(), fixture->inFolder("long.csv"));
    QVERIFY(fixture->dialog.close());
}

// What it tells is no longer so.
void TestBlfConverterBusy::theWarningGoesWithTheRun()
{
    QPointer<QMessageBox> warning;
    fixture->driver.expectBoxToGo();
    convertWith([&] {
        fixture->dialog.reject();
        warning = fixture->dialog.findChild<QMessageBox *>();
        QVERIFY(warning && warning->isVisible());
    });
    QVERIFY(!warning || !warning->isVisible());
    QCOMPARE(fixture->driver.seen().size(), std::size_t{2});
    verifySuccessBox(fixture->lastBox(), fixture->inFolder("long.csv"));
}

void TestBlfConverterBusy::duringARunAStartDoesNothing()
{
    convertWith([] {
        fixture->click("buttonStart");
        fixture->dialog.onProcessFile();
        QTest::keyClick(&fixture->dialog, Qt::Key_Return);
    });
    QCOMPARE(fixture->logLines().size(), 4);
    QCOMPARE(fixture->driver.seen().size(), std::size_t{1});
}

void TestBlfConverterBusy::duringARunNothingCanBeDropped()
{
    convertWith([] {
        QMimeData data;
        data.setUrls({QUrl::fromLocalFile(fixture->inFolder("other.blf"))});
        QDragEnterEvent enter(QPoint(5, 5), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        enter.ignore();
        QApplication::sendEvent(&fixture->dialog, &enter);
        QVERIFY(!enter.isAccepted());
    });
    QCOMPARE(fixture->input()->text(), fixture->inFolder("long.blf"));
}

void TestBlfConverterBusy::windowsGoOnPaintingDuringARun()
{
    class PaintCounter : public QWidget
    {
    public:
        int paints = 0;

    protected:
        void paintEvent(QPaintEvent *) override { ++paints; }
    };
    PaintCounter other;
    other.show();
    QVERIFY(QTest::qWaitForWindowExposed(&other));
    QTimer ticks;
    connect(&ticks, &QTimer::timeout, &other, [&] { other.update(); });
    const int before = other.paints;
    int whileParsing = -1;
    connect(fixture->log(), &QPlainTextEdit::textChanged, &other, [&] {
        if (fixture->logLines().size() == 2)
            whileParsing = other.paints - before;
    });
    convertWith([&] { ticks.start(1); }, 3);
    QVERIFY2(whileParsing >= 3, qPrintable(QString::number(whileParsing)));
}

void TestBlfConverterBusy::toldToEndARunIsGivenUp()
{
    fixture->slowDown();
    fixture->duringRun([] { QCoreApplication::quit(); });
    fixture->convert(fixture->makeLog(QStringLiteral("long.blf"), BlfConverterFixture::framesOfHalfASecond),
                     fixture->inFolder("long.csv"));
    QCOMPARE(fixture->logLines().size(), 1); // not a word and no box after the first line
    QVERIFY(fixture->driver.seen().empty());
    QVERIFY(!QFileInfo::exists(fixture->inFolder("long.csv")));
    QMetaObject::invokeMethod(qApp, &QCoreApplication::quit, Qt::QueuedConnection);
    QCoreApplication::exec(); // lifts the order
}
