// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/logging/ui/TestBlfConverterRun.h"

#include "logging/blf/BlfAscWriter.h"
#include "logging/blf/BlfCsvWriter.h"
#include "tests/logging/ui/BlfConverterFixture.h"
#include "tests/support/DocumentOpener.h"
#include "tests/support/FileSizeLimit.h"

#include <new>

using namespace tztest;
using Box = QMessageBox;

namespace {

std::unique_ptr<BlfConverterFixture> fixture;

constexpr int frames = 20;

const MessageBoxDriver::Seen &lastBox()
{
    return fixture->driver.seen().back();
}

void verifyBox(const MessageBoxDriver::Seen &box, Box::Icon icon, const char *title, const QString &text)
{
    QCOMPARE(box.title, QString::fromLatin1(title));
    QCOMPARE(box.text, text);
    QCOMPARE(box.icon, static_cast<int>(icon));
    QCOMPARE(box.textFormat, Qt::PlainText);
}

void verifySuccessBox(const QString &path)
{
    verifyBox(lastBox(), Box::Information, "Conversion Successful",
              QStringLiteral("File has been successfully converted and saved to:\n%1").arg(path));
    QStringList buttons = lastBox().buttons;
    buttons.sort();
    QCOMPARE(buttons, (QStringList{"Close", "Open File", "Open Folder"}));
    QCOMPARE(lastBox().defaultButton, QStringLiteral("Open File"));
}

void verifyFailureBox()
{
    verifyBox(lastBox(), Box::Critical, "Conversion Failed",
              QStringLiteral("An error occurred during file conversion. Please check the log for details."));
    QCOMPARE(lastBox().buttons, QStringList{"OK"});
}

/// As after the construction, but for what the user entered.
void verifyIdle()
{
    QVERIFY(!fixture->dialog.isProcessing());
    QVERIFY(!QGuiApplication::overrideCursor());
    QVERIFY(!fixture->progress()->isVisible());
    for (const char *name : {"lineEditInput", "buttonBrowseInput", "lineEditOutput", "buttonBrowseOutput", "radioCsv",
                             "radioAsc", "checkInternalEvents", "checkAdditionalInfo", "buttonReset"})
        QVERIFY2(fixture->get<QWidget>(name)->isEnabled(), name);
}

QString inFolder(const char *name)
{
    return fixture->workDir.filePath(QString::fromUtf8(name));
}

/// Converts a log that lasts half a second, or longer, and does @p action amid it; the success box is closed.
void convertWith(std::function<void()> action, int halfSeconds = 1)
{
    fixture->slowDown();
    fixture->duringRun(std::move(action));
    fixture->driver.expectBox(Box::Close);
    fixture->convert(
        fixture->makeLog(QStringLiteral("long.blf"), halfSeconds * BlfConverterFixture::framesOfHalfASecond),
        inFolder("long.csv"));
}

} // namespace

void TestBlfConverterRun::init()
{
    fixture = std::make_unique<BlfConverterFixture>();
}

void TestBlfConverterRun::cleanup()
{
    QVERIFY(fixture->driver.allMet());
    QCOMPARE(fixture->driver.unexpected(), 0);
    verifyIdle();
    fixture.reset();
}

void TestBlfConverterRun::convertsToCsv()
{
    const QString log = fixture->makeLog(QStringLiteral("a.blf"), frames);
    fixture->driver.expectBox(Box::Close);
    fixture->convert(log, inFolder("a.csv"));
    verifySuccessBox(inFolder("a.csv"));
    QCOMPARE(fixture->logLines(), (QStringList{"Starting to parse BLF file: " + log, "Parsing complete, read 21 frames",
                                               "Starting conversion to CSV format...",
                                               "Successfully saved CSV file: " + inFolder("a.csv")}));
    const QStringList lines = fixture->textOf(inFolder("a.csv")).split(QLatin1Char('\n'));
    QCOMPARE(lines.size(), frames + 3); // with the header, the error frame and nothing behind the last line end
    QCOMPARE(lines[0], QStringLiteral("Time,Channel,ID,Dir,FrameType,DLC,Data,Ext,RTR,Description"));
    QCOMPARE(lines[2], QStringLiteral("0.001000,1,0X123,Rx,Data,8,00 00 00 00 00 00 00 00,0,0,"));
    QVERIFY(lines[frames + 1].endsWith(QStringLiteral("ErrorFrame")));
    QCOMPARE(fixture->dialog.focusWidget(), fixture->button("buttonStart"));
}

void TestBlfConverterRun::convertsToAsc()
{
    const QString log = fixture->makeLog(QStringLiteral("a.blf"), frames);
    fixture->asc()->click();
    fixture->driver.expectBox(Box::Close);
    fixture->convert(log, inFolder("a.asc"));
    verifySuccessBox(inFolder("a.asc"));
    QCOMPARE(fixture->logLines(), (QStringList{"Starting to parse BLF file: " + log, "Parsing complete, read 21 frames",
                                               "Starting conversion to ASC format...",
                                               "Successfully saved ASC file: " + inFolder("a.asc")}));
    const QString text = fixture->textOf(inFolder("a.asc"));
    QVERIFY(text.contains(QStringLiteral("Begin TriggerBlock\n0.000000 1 123 Rx d 8 00 ")));
    QVERIFY(text.endsWith(QStringLiteral("End TriggerBlock\n")));
}

void TestBlfConverterRun::optionsReachTheFile()
{
    const QString log = fixture->makeLog(QStringLiteral("a.blf"), frames);
    fixture->internalEvents()->click();
    fixture->driver.expectBox(Box::Close);
    fixture->convert(log, inFolder("a.csv"));
    QVERIFY(fixture->logLines().contains(QStringLiteral("Parsing complete, read 21 frames")));
    QCOMPARE(fixture->textOf(inFolder("a.csv")).count(QLatin1Char('\n')), frames + 1); // without the error frame
}

void TestBlfConverterRun::optionsReachBothWriters()
{
    BLF::BlfCsvWriter::options = {};
    BLF::BlfAscWriter::options = {};
    fixture->internalEvents()->click();
    fixture->additionalInfo()->click();
    QVERIFY(BLF::BlfCsvWriter::options.exportInternalEvents); // not before a run
    fixture->driver.expectBox(Box::Close);
    fixture->convert(fixture->makeLog(QStringLiteral("a.blf"), frames), inFolder("a.csv"));
    QVERIFY(!BLF::BlfCsvWriter::options.exportInternalEvents && !BLF::BlfCsvWriter::options.exportAdditionalInfo);
    QVERIFY(!BLF::BlfAscWriter::options.exportInternalEvents && !BLF::BlfAscWriter::options.exportAdditionalInfo);
}

void TestBlfConverterRun::pathsWithBlanksAndChineseCharacters()
{
    QVERIFY(QDir().mkdir(QStringLiteral("行车 记录")));
    const QString log = fixture->makeLog(QStringLiteral("行车 记录/日 志.blf"), frames);
    fixture->input()->setText(log);
    const QString output = inFolder("行车 记录/日 志_processed.csv");
    QCOMPARE(fixture->output()->text(), output);
    fixture->driver.expectBox(Box::Close);
    fixture->click("buttonStart");
    verifySuccessBox(output);
    QCOMPARE(fixture->textOf(output).count(QLatin1Char('\n')), frames + 2);
}

void TestBlfConverterRun::openFileAndOpenFolderGoToTheDesktop()
{
    const DocumentOpener opener;
    const QString log = fixture->makeLog(QStringLiteral("a.blf"), frames);
    const QString folder = inFolder("导 出");
    QVERIFY(QDir().mkdir(folder));
    const QString text = folder + QStringLiteral("/a.csv");
    fixture->driver.expectBox(Box::Open);
    fixture->convert(log, text);
    QCOMPARE(opener.openedFile(), QFileInfo(text).canonicalFilePath());
    fixture->driver.expectBox(Box::Yes); // it is there now
    fixture->driver.expectBox(QStringLiteral("Open Folder"));
    fixture->click("buttonStart");
    QCOMPARE(opener.openedFile(), QFileInfo(folder).canonicalFilePath());
}

void TestBlfConverterRun::withoutAProgramToOpenWithItTellsSo()
{
    fixture->driver.expectBox(Box::Open);
    fixture->driver.expectBox(Box::Ok);
    fixture->convert(fixture->makeLog(QStringLiteral("a.blf"), frames), inFolder("a.csv"));
    verifyBox(lastBox(), Box::Warning, "Error",
              QStringLiteral("No program was found that shows %1.").arg(inFolder("a.csv")));
}

void TestBlfConverterRun::checksInTheirOrder_data()
{
    QTest::addColumn<QString>("input");
    QTest::addColumn<QString>("output");
    QTest::addColumn<QString>("text");
    QTest::newRow("no input") << ""
                              << ""
                              << "Please select an input file";
    QTest::newRow("missing input") << "none.blf"
                                   << ""
                                   << "Input file does not exist";
    QTest::newRow("no output") << "a.blf"
                               << ""
                               << "Please select an output file";
}

// The button is disabled then: the file may have gone since.
void TestBlfConverterRun::checksInTheirOrder()
{
    QFETCH(QString, input);
    QFETCH(QString, output);
    QFETCH(QString, text);
    fixture->makeLog(QStringLiteral("a.blf"), frames);
    fixture->input()->setText(input);
    fixture->output()->setText(output);
    fixture->driver.expectBox(Box::Ok);
    fixture->dialog.onProcessFile();
    verifyBox(lastBox(), Box::Warning, "Error", text);
    QVERIFY(fixture->log()->toPlainText().isEmpty());
}

void TestBlfConverterRun::anExistingOutputIsKeptOnNo()
{
    const QString log = fixture->makeLog(QStringLiteral("a.blf"), frames);
    const QString there = fixture->makeLog(QStringLiteral("there.csv"), 1);
    const QString before = fixture->textOf(there);
    fixture->driver.expectBox(Box::No);
    fixture->convert(log, there);
    verifyBox(lastBox(), Box::Question, "Confirm",
              QStringLiteral("Output file already exists. Do you want to overwrite it?"));
    QCOMPARE(lastBox().buttons.size(), 2);
    QVERIFY(lastBox().defaultButton.contains(QStringLiteral("No")));
    QCOMPARE(fixture->textOf(there), before);
    QVERIFY(fixture->log()->toPlainText().isEmpty());
}

void TestBlfConverterRun::anExistingOutputIsReplacedOnYes()
{
    const QString log = fixture->makeLog(QStringLiteral("a.blf"), frames);
    const QString there = fixture->makeLog(QStringLiteral("there.csv"), 1000);
    fixture->driver.expectBox(Box::Yes);
    fixture->driver.expectBox(Box::Close);
    fixture->convert(log, there);
    verifySuccessBox(there);
    QCOMPARE(fixture->textOf(there).count(QLatin1Char('\n')), frames + 2);
}

void TestBlfConverterRun::theLogIsNeverReplaced()
{
    const QString log = fixture->makeLog(QStringLiteral("a.blf"), frames);
    const QString before = fixture->textOf(log);
    fixture->driver.expectBox(Box::Ok);
    fixture->convert(log, QStringLiteral("./a.blf"));
    verifyBox(lastBox(), Box::Warning, "Error",
              QStringLiteral("The output file is the input file. Please select another output file"));
    QCOMPARE(fixture->textOf(log), before);
}

void TestBlfConverterRun::aLogWithoutRecordsFails()
{
    BlfTestWriter writer;
    writer.add(65, BlfBytes(16)); // a text of the recording program, which is passed over
    QVERIFY(writer.save(inFolder("a.blf")));
    fixture->driver.expectBox(Box::Ok);
    fixture->convert(inFolder("a.blf"), inFolder("a.csv"));
    verifyFailureBox();
    QCOMPARE(fixture->logLines(),
             (QStringList{"Starting to parse BLF file: " + inFolder("a.blf"), "Failed to parse BLF file"}));
    QVERIFY(!QFileInfo::exists(inFolder("a.csv")));
}

void TestBlfConverterRun::aFileThatIsNoLogFails()
{
    QVERIFY(saveBytes(inFolder("a.blf"), BlfBytes(500, 'x')));
    fixture->driver.expectBox(Box::Ok);
    fixture->convert(inFolder("a.blf"), inFolder("a.csv"));
    verifyFailureBox();
    QCOMPARE(fixture->logLines().last(), QStringLiteral("Failed to parse BLF file"));
    const QTextBlock last = fixture->log()->document()->lastBlock();
    QCOMPARE(last.begin().fragment().charFormat().foreground().color(), QColor(Qt::red));
    QVERIFY(fixture->lines.has(3, "BLCreateFile failed: " + inFolder("a.blf").toStdString()));
}

void TestBlfConverterRun::anUnwritableFolderFails_data()
{
    QTest::addColumn<QString>("output");
    QTest::addColumn<bool>("asc");
    QTest::newRow("missing folder") << "none/a.csv" << false;
    QTest::newRow("folder in which nobody writes") << "/proc/a.csv" << false;
    QTest::newRow("the output is a folder") << "." << true;
}

void TestBlfConverterRun::anUnwritableFolderFails()
{
    QFETCH(QString, output);
    QFETCH(bool, asc);
    const QString log = fixture->makeLog(QStringLiteral("a.blf"), frames);
    (asc ? fixture->asc() : fixture->csv())->setChecked(true);
    fixture->driver.expectBox(Box::Ok);
    fixture->convert(log, output);
    verifyFailureBox();
    QCOMPARE(fixture->driver.seen().size(), std::size_t{1}); // no question about a folder
    QCOMPARE(fixture->logLines().last(),
             asc ? QStringLiteral("Failed to save ASC file") : QStringLiteral("Failed to save CSV file"));
}

void TestBlfConverterRun::aFullDiskFails()
{
    const QString log = fixture->makeLog(QStringLiteral("a.blf"), 5000);
    {
        const FileSizeLimit limit(64 * 1024);
        fixture->driver.expectBox(Box::Ok);
        fixture->convert(log, inFolder("a.csv"));
    }
    verifyFailureBox();
    QCOMPARE(fixture->logLines().last(), QStringLiteral("Failed to save CSV file"));
    QCOMPARE(QFileInfo(inFolder("a.csv")).size(), qint64{64 * 1024}); // what came stays
}

void TestBlfConverterRun::tooLittleMemoryFails()
{
    connect(fixture->parser(), qOverload<const QString &>(&BLF::BLFParser::sigProcessReport), &fixture->dialog,
            [] { throw std::bad_alloc(); });
    fixture->driver.expectBox(Box::Ok);
    fixture->convert(fixture->makeLog(QStringLiteral("a.blf"), frames), inFolder("a.csv"));
    verifyFailureBox();
    QCOMPARE(fixture->logLines().last(), QStringLiteral("Not enough memory for the frames of this file"));
    QVERIFY(!QFileInfo::exists(inFolder("a.csv")));
}

void TestBlfConverterRun::duringARunControlsAreDisabled()
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

void TestBlfConverterRun::duringARunResetWarns()
{
    fixture->driver.expectBox(Box::Ok);
    convertWith([] {
        fixture->click("buttonReset");
        fixture->click("buttonReset"); // one box at a time
    });
    verifyBox(fixture->driver.seen().front(), Box::Warning, "Warning",
              QStringLiteral("Processing in progress, please wait for completion"));
    QCOMPARE(fixture->driver.seen().front().buttons, QStringList{"OK"});
    verifySuccessBox(inFolder("long.csv")); // the run went on
    QCOMPARE(fixture->driver.seen().size(), std::size_t{2});
    QCOMPARE(fixture->input()->text(), inFolder("long.blf"));
}

void TestBlfConverterRun::duringARunClosingIsRefused_data()
{
    QTest::addColumn<int>("way");
    QTest::newRow("frame") << 0;
    QTest::newRow("Esc") << 1;
    QTest::newRow("reject") << 2;
    QTest::newRow("accept") << 3;
}

void TestBlfConverterRun::duringARunClosingIsRefused()
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
    verifySuccessBox(inFolder("long.csv"));
    QVERIFY(fixture->dialog.close());
}

// What it tells is no longer so.
void TestBlfConverterRun::theWarningGoesWithTheRun()
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
    verifySuccessBox(inFolder("long.csv"));
}

void TestBlfConverterRun::duringARunAStartDoesNothing()
{
    convertWith([] {
        fixture->click("buttonStart");
        fixture->dialog.onProcessFile();
        QTest::keyClick(&fixture->dialog, Qt::Key_Return);
    });
    QCOMPARE(fixture->logLines().size(), 4);
    QCOMPARE(fixture->driver.seen().size(), std::size_t{1});
}

void TestBlfConverterRun::duringARunNothingCanBeDropped()
{
    convertWith([] {
        QMimeData data;
        data.setUrls({QUrl::fromLocalFile(inFolder("other.blf"))});
        QDragEnterEvent enter(QPoint(5, 5), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        enter.ignore();
        QApplication::sendEvent(&fixture->dialog, &enter);
        QVERIFY(!enter.isAccepted());
    });
    QCOMPARE(fixture->input()->text(), inFolder("long.blf"));
}

void TestBlfConverterRun::windowsGoOnPaintingDuringARun()
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

void TestBlfConverterRun::aSecondRunBeginsWithAnEmptyLog()
{
    const QString log = fixture->makeLog(QStringLiteral("a.blf"), frames);
    fixture->driver.expectBox(Box::Close);
    fixture->convert(log, inFolder("a.csv"));
    fixture->driver.expectBox(Box::Close);
    fixture->convert(log, inFolder("b.csv"));
    QCOMPARE(fixture->logLines().size(), 4);
    QCOMPARE(fixture->logLines().last(), "Successfully saved CSV file: " + inFolder("b.csv"));
    QCOMPARE(fixture->textOf(inFolder("b.csv")), fixture->textOf(inFolder("a.csv")));
}

void TestBlfConverterRun::toldToEndARunIsGivenUp()
{
    fixture->slowDown();
    fixture->duringRun([] { QCoreApplication::quit(); });
    fixture->convert(fixture->makeLog(QStringLiteral("long.blf"), BlfConverterFixture::framesOfHalfASecond),
                     inFolder("long.csv"));
    QCOMPARE(fixture->logLines().size(), 1); // not a word and no box after the first line
    QVERIFY(fixture->driver.seen().empty());
    QVERIFY(!QFileInfo::exists(inFolder("long.csv")));
    QMetaObject::invokeMethod(qApp, &QCoreApplication::quit, Qt::QueuedConnection);
    QCoreApplication::exec(); // lifts the order
}
