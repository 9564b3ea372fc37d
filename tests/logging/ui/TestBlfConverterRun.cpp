// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/logging/ui/TestBlfConverterRun.h"

#include "logging/blf/BlfAscWriter.h"
#include "logging/blf/BlfCsvWriter.h"
#include "tests/logging/ui/BlfConverterChecks.h"
#include "tests/support/DocumentOpener.h"
#include "tests/support/FileSizeLimit.h"

#include <new>

using namespace tztest;
using Box = QMessageBox;

namespace {

std::unique_ptr<BlfConverterFixture> fixture;

constexpr int frames = 20;

} // namespace

void TestBlfConverterRun::init()
{
    fixture = std::make_unique<BlfConverterFixture>();
}

void TestBlfConverterRun::cleanup()
{
    QVERIFY(fixture->driver.allMet());
    QCOMPARE(fixture->driver.unexpected(), 0);
    verifyIdle(*fixture);
    fixture.reset();
}

// Others may call them by their place.
void TestBlfConverterRun::slotsAreInTheirOrder()
{
    const QMetaObject *meta = fixture->dialog.metaObject();
    QStringList names;
    for (int i = meta->methodOffset(); i < meta->methodCount(); ++i) {
        QCOMPARE(meta->method(i).methodType(), QMetaMethod::Slot);
        names.append(QString::fromLatin1(meta->method(i).name()));
    }
    QCOMPARE(names, (QStringList{"onSelectInputFile", "onSelectOutputFile", "onProcessFile", "onProcessReport",
                                 "onProcessReport", "onProcessReport", "onResetClicked", "onInputFilePathChanged",
                                 "onOutputFormatChanged", "updateProcessButtonState", "onExportOptionChanged"}));
}

void TestBlfConverterRun::convertsToCsv()
{
    const QString log = fixture->makeLog(QStringLiteral("a.blf"), frames);
    fixture->driver.expectBox(Box::Close);
    fixture->convert(log, fixture->inFolder("a.csv"));
    verifySuccessBox(fixture->lastBox(), fixture->inFolder("a.csv"));
    QCOMPARE(fixture->logLines(), (QStringList{"Starting to parse BLF file: " + log, "Parsing complete, read 21 frames",
                                               "Starting conversion to CSV format...",
                                               "Successfully saved CSV file: " + fixture->inFolder("a.csv")}));
    const QStringList lines = fixture->textOf(fixture->inFolder("a.csv")).split(QLatin1Char('\n'));
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
    fixture->convert(log, fixture->inFolder("a.asc"));
    verifySuccessBox(fixture->lastBox(), fixture->inFolder("a.asc"));
    QCOMPARE(fixture->logLines(), (QStringList{"Starting to parse BLF file: " + log, "Parsing complete, read 21 frames",
                                               "Starting conversion to ASC format...",
                                               "Successfully saved ASC file: " + fixture->inFolder("a.asc")}));
    const QString text = fixture->textOf(fixture->inFolder("a.asc"));
    QVERIFY(text.contains(QStringLiteral("Begin TriggerBlock\n0.000000 1 123 Rx d 8 00 ")));
    QVERIFY(text.endsWith(QStringLiteral("End TriggerBlock\n")));
}

void TestBlfConverterRun::optionsReachTheFile()
{
    const QString log = fixture->makeLog(QStringLiteral("a.blf"), frames);
    fixture->internalEvents()->click();
    fixture->driver.expectBox(Box::Close);
    fixture->convert(log, fixture->inFolder("a.csv"));
    QVERIFY(fixture->logLines().contains(QStringLiteral("Parsing complete, read 21 frames")));
    QCOMPARE(fixture->textOf(fixture->inFolder("a.csv")).count(QLatin1Char('\n')),
             frames + 1); // without the error frame
}

void TestBlfConverterRun::optionsReachTheAscFileToo()
{
    const QString log = fixture->makeLog(QStringLiteral("a.blf"), frames);
    fixture->asc()->click();
    fixture->driver.expectBox(Box::Close);
    fixture->convert(log, fixture->inFolder("with.asc"));
    const QString with = fixture->textOf(fixture->inFolder("with.asc"));
    QVERIFY(with.contains(QStringLiteral("\ninternal events logged\n")));
    QCOMPARE(with.count(QStringLiteral("ErrorFrame ")), 1);
    fixture->internalEvents()->click();
    fixture->driver.expectBox(Box::Close);
    fixture->convert(log, fixture->inFolder("without.asc"));
    const QString without = fixture->textOf(fixture->inFolder("without.asc"));
    QVERIFY(without.contains(QStringLiteral("\nno internal events logged\n")));
    QCOMPARE(without.count(QStringLiteral("ErrorFrame ")), 0);
    QCOMPARE(without.count(QLatin1Char('\n')), with.count(QLatin1Char('\n')) - 1);
}

void TestBlfConverterRun::optionsReachBothWriters()
{
    BLF::BlfCsvWriter::options = {};
    BLF::BlfAscWriter::options = {};
    fixture->internalEvents()->click();
    fixture->additionalInfo()->click();
    QVERIFY(BLF::BlfCsvWriter::options.exportInternalEvents); // not before a run
    fixture->driver.expectBox(Box::Close);
    fixture->convert(fixture->makeLog(QStringLiteral("a.blf"), frames), fixture->inFolder("a.csv"));
    QVERIFY(!BLF::BlfCsvWriter::options.exportInternalEvents && !BLF::BlfCsvWriter::options.exportAdditionalInfo);
    QVERIFY(!BLF::BlfAscWriter::options.exportInternalEvents && !BLF::BlfAscWriter::options.exportAdditionalInfo);
}

void TestBlfConverterRun::pathsWithBlanksAndChineseCharacters()
{
    QVERIFY(QDir().mkdir(QStringLiteral("行车 记录")));
    const QString log = fixture->makeLog(QStringLiteral("行车 记录/日 志.blf"), frames);
    fixture->input()->setText(log);
    const QString output = fixture->inFolder("行车 记录/日 志_processed.csv");
    QCOMPARE(fixture->output()->text(), output);
    fixture->driver.expectBox(Box::Close);
    fixture->click("buttonStart");
    verifySuccessBox(fixture->lastBox(), output);
    QCOMPARE(fixture->textOf(output).count(QLatin1Char('\n')), frames + 2);
}

void TestBlfConverterRun::openFileAndOpenFolderGoToTheDesktop()
{
    const DocumentOpener opener;
    const QString log = fixture->makeLog(QStringLiteral("a.blf"), frames);
    const QString folder = fixture->inFolder("导 出");
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

void TestBlfConverterRun::escapeClosesTheBoxAndOpensNothing()
{
    const DocumentOpener opener;
    fixture->driver.expectBoxToGo();
    QTimer escape;
    QObject::connect(&escape, &QTimer::timeout, &fixture->dialog, [] {
        auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
        if (box && fixture->driver.allMet())
            QTest::keyClick(box, Qt::Key_Escape);
    });
    escape.start(5);
    fixture->convert(fixture->makeLog(QStringLiteral("a.blf"), frames), fixture->inFolder("a.csv"));
    verifySuccessBox(fixture->lastBox(), fixture->inFolder("a.csv"));
    QCOMPARE(opener.count(), 0);
}

void TestBlfConverterRun::withoutAProgramToOpenWithItTellsSo()
{
    fixture->driver.expectBox(Box::Open);
    fixture->driver.expectBox(Box::Ok);
    fixture->convert(fixture->makeLog(QStringLiteral("a.blf"), frames), fixture->inFolder("a.csv"));
    verifyBox(fixture->lastBox(), Box::Warning, "Error",
              QStringLiteral("No program was found that shows %1.").arg(fixture->inFolder("a.csv")));
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
    verifyBox(fixture->lastBox(), Box::Warning, "Error", text);
    QVERIFY(fixture->log()->toPlainText().isEmpty());
}

void TestBlfConverterRun::anExistingOutputIsKeptOnNo()
{
    const QString log = fixture->makeLog(QStringLiteral("a.blf"), frames);
    const QString there = fixture->makeLog(QStringLiteral("there.csv"), 1);
    const QString before = fixture->textOf(there);
    fixture->driver.expectBox(Box::No);
    fixture->convert(log, there);
    verifyBox(fixture->lastBox(), Box::Question, "Confirm",
              QStringLiteral("Output file already exists. Do you want to overwrite it?"));
    QCOMPARE(fixture->lastBox().buttons.size(), 2);
    QVERIFY(fixture->lastBox().defaultButton.contains(QStringLiteral("No")));
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
    verifySuccessBox(fixture->lastBox(), there);
    QCOMPARE(fixture->textOf(there).count(QLatin1Char('\n')), frames + 2);
}

void TestBlfConverterRun::theLogIsNeverReplaced()
{
    const QString log = fixture->makeLog(QStringLiteral("a.blf"), frames);
    const QString before = fixture->textOf(log);
    fixture->driver.expectBox(Box::Ok);
    fixture->convert(log, QStringLiteral("./a.blf"));
    verifyBox(fixture->lastBox(), Box::Warning, "Error",
              QStringLiteral("The output file is the input file. Please select another output file"));
    QCOMPARE(fixture->textOf(log), before);
}

void TestBlfConverterRun::aLogWithoutRecordsFails()
{
    BlfTestWriter writer;
    writer.add(65, BlfBytes(16)); // a text of the recording program, which is passed over
    QVERIFY(writer.save(fixture->inFolder("a.blf")));
    fixture->driver.expectBox(Box::Ok);
    fixture->convert(fixture->inFolder("a.blf"), fixture->inFolder("a.csv"));
    verifyFailureBox(fixture->lastBox());
    QCOMPARE(fixture->logLines(),
             (QStringList{"Starting to parse BLF file: " + fixture->inFolder("a.blf"), "Failed to parse BLF file"}));
    QVERIFY(!QFileInfo::exists(fixture->inFolder("a.csv")));
}

void TestBlfConverterRun::aFileThatIsNoLogFails()
{
    QVERIFY(saveBytes(fixture->inFolder("a.blf"), BlfBytes(500, 'x')));
    fixture->driver.expectBox(Box::Ok);
    fixture->convert(fixture->inFolder("a.blf"), fixture->inFolder("a.csv"));
    verifyFailureBox(fixture->lastBox());
    QCOMPARE(fixture->logLines().last(), QStringLiteral("Failed to parse BLF file"));
    const QTextBlock last = fixture->log()->document()->lastBlock();
    QCOMPARE(last.begin().fragment().charFormat().foreground().color(), QColor(Qt::red));
    QVERIFY(fixture->lines.has(3, "BLCreateFile failed: " + fixture->inFolder("a.blf").toStdString()));
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
    verifyFailureBox(fixture->lastBox());
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
        fixture->convert(log, fixture->inFolder("a.csv"));
    }
    verifyFailureBox(fixture->lastBox());
    QCOMPARE(fixture->logLines().last(), QStringLiteral("Failed to save CSV file"));
    QCOMPARE(QFileInfo(fixture->inFolder("a.csv")).size(), qint64{64 * 1024}); // what came stays
}

void TestBlfConverterRun::tooLittleMemoryFails()
{
    connect(fixture->parser(), qOverload<const QString &>(&BLF::BLFParser::sigProcessReport), &fixture->dialog,
            [] { throw std::bad_alloc(); });
    fixture->driver.expectBox(Box::Ok);
    fixture->convert(fixture->makeLog(QStringLiteral("a.blf"), frames), fixture->inFolder("a.csv"));
    verifyFailureBox(fixture->lastBox());
    QCOMPARE(fixture->logLines().last(), QStringLiteral("Not enough memory for the frames of this file"));
    QVERIFY(!QFileInfo::exists(fixture->inFolder("a.csv")));
}

void TestBlfConverterRun::aSecondRunBeginsWithAnEmptyLog()
{
    const QString log = fixture->makeLog(QStringLiteral("a.blf"), frames);
    fixture->driver.expectBox(Box::Close);
    fixture->convert(log, fixture->inFolder("a.csv"));
    fixture->driver.expectBox(Box::Close);
    fixture->convert(log, fixture->inFolder("b.csv"));
    QCOMPARE(fixture->logLines().size(), 4);
    QCOMPARE(fixture->logLines().last(), "Successfully saved CSV file: " + fixture->inFolder("b.csv"));
    QCOMPARE(fixture->textOf(fixture->inFolder("b.csv")), fixture->textOf(fixture->inFolder("a.csv")));
}
