// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/logging/ui/TestBlfConverterDialog.h"

#include "tests/logging/ui/BlfConverterFixture.h"
#include "tests/support/IconCompare.h"

using namespace tztest;

namespace {

std::unique_ptr<BlfConverterFixture> fixture;

const QString inputFilter = QStringLiteral("BLF Files (*.blf)");

/// Drags a file over the middle of @p target and drops it there. @return whether the dialog took it
bool drop(QWidget *target, const QUrl &file, Qt::DropAction proposed = Qt::CopyAction)
{
    QMimeData data;
    data.setUrls({file});
    const QPoint place = target->rect().center();
    QDragEnterEvent enter(place, Qt::CopyAction | Qt::MoveAction, &data, Qt::LeftButton, Qt::NoModifier);
    enter.setDropAction(proposed);
    enter.ignore();
    QApplication::sendEvent(target, &enter);
    if (!enter.isAccepted())
        return false;
    QDropEvent dropped(place, Qt::CopyAction | Qt::MoveAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(target, &dropped);
    return dropped.isAccepted() && dropped.dropAction() == Qt::CopyAction;
}

QColor colourOfLine(int line)
{
    const QTextBlock block = fixture->log()->document()->findBlockByNumber(line);
    return block.begin().fragment().charFormat().foreground().color();
}

} // namespace

void TestBlfConverterDialog::init()
{
    fixture = std::make_unique<BlfConverterFixture>();
}

void TestBlfConverterDialog::cleanup()
{
    QVERIFY(fixture->driver.allMet());
    QCOMPARE(fixture->driver.unexpected(), 0);
    fixture.reset();
}

void TestBlfConverterDialog::textsAndFirstState()
{
    const QDialog &dialog = fixture->dialog;
    QCOMPARE(dialog.windowTitle(), QStringLiteral("BLF File Converter"));
    QVERIFY(showsIcon(dialog.windowIcon(), ":/resource/vci/blf.png"));
    QStringList labels;
    for (const auto *label : dialog.findChildren<QLabel *>())
        labels.append(label->text());
    QCOMPARE(labels, (QStringList{"Input File:", "Output File:", "Output Format:"}));
    QCOMPARE(dialog.findChild<QGroupBox *>()->title(), QStringLiteral("Processing Log"));
    QCOMPARE(fixture->button("buttonBrowseInput")->text(), QStringLiteral("Browse..."));
    QCOMPARE(fixture->button("buttonBrowseOutput")->text(), QStringLiteral("Browse..."));
    QCOMPARE(fixture->button("buttonReset")->text(), QStringLiteral("Reset"));
    QCOMPARE(fixture->button("buttonStart")->text(), QStringLiteral("Start Conversion"));
    QCOMPARE(fixture->csv()->text(), QStringLiteral("CSV File (*.csv)"));
    QCOMPARE(fixture->asc()->text(), QStringLiteral("ASC File (*.asc)"));
    QCOMPARE(fixture->internalEvents()->text(), QStringLiteral("Export Internal Events"));
    QCOMPARE(fixture->additionalInfo()->text(), QStringLiteral("Export Additional Info"));
    QVERIFY(fixture->csv()->isChecked() && !fixture->asc()->isChecked());
    QVERIFY(fixture->internalEvents()->isChecked() && fixture->additionalInfo()->isChecked());
    QVERIFY(fixture->input()->text().isEmpty() && fixture->output()->text().isEmpty());
    QVERIFY(!fixture->progress()->isVisible());
    QVERIFY(!fixture->button("buttonStart")->isEnabled());
    QVERIFY(fixture->button("buttonStart")->isDefault());
    QVERIFY(fixture->log()->isReadOnly());
    QVERIFY(!fixture->parser()->logFrames);
    QCOMPARE(dialog.focusWidget(), fixture->input());
}

void TestBlfConverterDialog::nothingIsClipped()
{
    BLFConverterDialog &dialog = fixture->dialog;
    dialog.resize(dialog.minimumSize());
    QCoreApplication::processEvents();
    for (const QWidget *widget : dialog.findChildren<QWidget *>()) {
        if (!widget->isVisible())
            continue;
        const QRect place(widget->mapTo(&dialog, QPoint(0, 0)), widget->size());
        QVERIFY2(dialog.rect().contains(place), qPrintable(widget->objectName()));
        if (qobject_cast<const QLabel *>(widget) || qobject_cast<const QAbstractButton *>(widget))
            QVERIFY2(widget->width() >= widget->sizeHint().width(), qPrintable(widget->property("text").toString()));
    }
    QVERIFY(fixture->log()->height() > 80); // some lines still show
}

void TestBlfConverterDialog::tabKeyFollowsTheLayout()
{
    fixture->input()->setText(fixture->makeLog(QStringLiteral("a.blf"), 1)); // enables Start
    fixture->input()->setFocus();
    QStringList names;
    do {
        names.append(fixture->dialog.focusWidget()->objectName());
        QTest::keyClick(fixture->dialog.focusWidget(), Qt::Key_Tab);
    } while (fixture->dialog.focusWidget() != fixture->input() && names.size() < 20);
    QCOMPARE(names,
             (QStringList{"lineEditInput", "buttonBrowseInput", "lineEditOutput", "buttonBrowseOutput", "radioCsv",
                          "checkInternalEvents", "checkAdditionalInfo", "textLog", "buttonReset", "buttonStart"}));
}

void TestBlfConverterDialog::everyControlHasAToolTip()
{
    for (const char *name : {"lineEditInput", "buttonBrowseInput", "lineEditOutput", "buttonBrowseOutput", "radioCsv",
                             "radioAsc", "checkInternalEvents", "checkAdditionalInfo", "buttonReset", "buttonStart"})
        QVERIFY2(!fixture->get<QWidget>(name)->toolTip().isEmpty(), name);
}

void TestBlfConverterDialog::browseChoosesTheLogAndRemembersItsFolder()
{
    QVERIFY(QDir().mkdir(QStringLiteral("行车 记录")));
    const QString log = fixture->makeLog(QStringLiteral("行车 记录/日志 1.blf"), 1);
    QStringList folders;
    const auto choose = [&](const QString &path) {
        fixture->driver.expectDialog([&folders, path](QDialog *dialog) {
            auto *files = qobject_cast<QFileDialog *>(dialog);
            QVERIFY(files);
            folders.append(files->directory().canonicalPath());
            QCOMPARE(files->windowTitle(), QStringLiteral("Select BLF File"));
            QCOMPARE(files->nameFilters(), (QStringList{inputFilter, "All Files (*)"}));
            QCOMPARE(files->fileMode(), QFileDialog::ExistingFile);
            if (path.isEmpty()) {
                dialog->reject();
                return;
            }
            dialog->findChild<QLineEdit *>(QStringLiteral("fileNameEdit"))->setText(path);
            dialog->findChild<QDialogButtonBox *>()->button(QDialogButtonBox::Open)->click();
        });
        fixture->click("buttonBrowseInput");
    };
    choose(log);
    QCOMPARE(fixture->input()->text(), log);
    QCOMPARE(fixture->output()->text(), fixture->workDir.filePath(QStringLiteral("行车 记录/日志 1_processed.csv")));
    fixture->click("buttonReset"); // the folder outlives it
    choose({});
    QCOMPARE(folders, (QStringList{QDir(QDir::homePath()).canonicalPath(), QFileInfo(log).canonicalPath()}));
    QVERIFY(fixture->input()->text().isEmpty());
}

void TestBlfConverterDialog::browseCancelledChangesNothing()
{
    fixture->input()->setText(QStringLiteral("/a.blf"));
    fixture->driver.expectFileDialog(inputFilter, QString());
    fixture->click("buttonBrowseInput");
    fixture->driver.expectFileDialog(QStringLiteral("CSV Files (*.csv)"), QString());
    fixture->click("buttonBrowseOutput");
    QCOMPARE(fixture->input()->text(), QStringLiteral("/a.blf"));
    QCOMPARE(fixture->output()->text(), QStringLiteral("/a_processed.csv"));
}

void TestBlfConverterDialog::browseChoosesTheOutputInTheFormat_data()
{
    QTest::addColumn<bool>("asc");
    QTest::addColumn<QString>("filter");
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("chosen");
    QTest::newRow("CSV") << false << "CSV Files (*.csv)"
                         << "b c.csv"
                         << "b c.csv";
    QTest::newRow("ASC") << true << "ASC Files (*.asc)"
                         << "b c.asc"
                         << "b c.asc";
    QTest::newRow("without extension") << true << "ASC Files (*.asc)"
                                       << "输出"
                                       << "输出.asc";
    QTest::newRow("another extension") << false << "All Files (*)"
                                       << "b.txt"
                                       << "b.txt";
}

void TestBlfConverterDialog::browseChoosesTheOutputInTheFormat()
{
    QFETCH(bool, asc);
    QFETCH(QString, filter);
    QFETCH(QString, typed);
    QFETCH(QString, chosen);
    (asc ? fixture->asc() : fixture->csv())->setChecked(true);
    fixture->driver.expectFileDialog(filter, fixture->workDir.filePath(typed));
    fixture->click("buttonBrowseOutput");
    QCOMPARE(fixture->output()->text(), fixture->workDir.filePath(chosen));
    QCOMPARE(fixture->driver.seen().front().title, QStringLiteral("Save File"));
    QCOMPARE(fixture->driver.seen().front().text, asc ? QStringLiteral("ASC Files (*.asc);;All Files (*)")
                                                      : QStringLiteral("CSV Files (*.csv);;All Files (*)"));
}

void TestBlfConverterDialog::anExistingOutputIsChosenWithoutAQuestion()
{
    const QString existing = fixture->makeLog(QStringLiteral("there.csv"), 1);
    fixture->driver.expectFileDialog(QStringLiteral("CSV Files (*.csv)"), existing);
    fixture->click("buttonBrowseOutput");
    QCOMPARE(fixture->output()->text(), existing);
    QCOMPARE(fixture->driver.seen().size(), std::size_t{1}); // the file dialog alone: the start asks
}

void TestBlfConverterDialog::outputIsProposedOnlyWhereItIsEmpty()
{
    fixture->input()->setText(QStringLiteral("/logs/a.blf"));
    QCOMPARE(fixture->output()->text(), QStringLiteral("/logs/a_processed.csv"));
    fixture->input()->setText(QStringLiteral("/logs/b.blf"));
    QCOMPARE(fixture->output()->text(), QStringLiteral("/logs/a_processed.csv"));
    fixture->input()->clear();
    fixture->output()->clear();
    fixture->asc()->click();
    QVERIFY(fixture->output()->text().isEmpty());
    fixture->input()->setText(QStringLiteral("/logs/b.blf"));
    QCOMPARE(fixture->output()->text(), QStringLiteral("/logs/b_processed.asc"));
}

void TestBlfConverterDialog::aTypedInputIsFollowedByItsProposal()
{
    QTest::keyClicks(fixture->input(), QStringLiteral("/logs/b"));
    QCOMPARE(fixture->output()->text(), QStringLiteral("/logs/b_processed.csv"));
    QTest::keyClicks(fixture->input(), QStringLiteral("cd.blf"));
    QCOMPARE(fixture->output()->text(), QStringLiteral("/logs/bcd_processed.csv"));
    fixture->output()->setFocus(); // the path is complete
    fixture->input()->setFocus();
    QTest::keyClick(fixture->input(), Qt::Key_Home);
    QTest::keyClicks(fixture->input(), QStringLiteral("/more"));
    QCOMPARE(fixture->output()->text(), QStringLiteral("/logs/bcd_processed.csv"));
}

void TestBlfConverterDialog::aTypedInputLeavesAnOutputOfTheUsersAlone()
{
    fixture->output()->setText(QStringLiteral("/mine.csv"));
    QTest::keyClicks(fixture->input(), QStringLiteral("/logs/b.blf"));
    QCOMPARE(fixture->output()->text(), QStringLiteral("/mine.csv"));
}

void TestBlfConverterDialog::theFormatReplacesTheOutputWhereThereIsAnInput()
{
    fixture->output()->setText(QStringLiteral("/mine.csv"));
    fixture->asc()->click();
    QCOMPARE(fixture->output()->text(), QStringLiteral("/mine.csv")); // no input
    fixture->input()->setText(QStringLiteral("/logs/a.blf"));
    fixture->csv()->click();
    QCOMPARE(fixture->output()->text(), QStringLiteral("/logs/a_processed.csv"));
    fixture->asc()->click();
    QCOMPARE(fixture->output()->text(), QStringLiteral("/logs/a_processed.asc"));
}

void TestBlfConverterDialog::startIsEnabledOnlyWithBothPaths()
{
    const QPushButton *start = fixture->button("buttonStart");
    fixture->input()->setText(QStringLiteral("none.blf"));
    QVERIFY(!start->isEnabled()); // proposed an output, but there is no such file
    const QString log = fixture->makeLog(QStringLiteral("a.blf"), 1);
    fixture->input()->setText(log);
    QVERIFY(start->isEnabled());
    fixture->output()->clear();
    QVERIFY(!start->isEnabled());
    fixture->output()->setText(QStringLiteral("a.csv"));
    QVERIFY(start->isEnabled());
    fixture->input()->setText(fixture->workDir.filePath(QString())); // a folder
    QVERIFY(!start->isEnabled());
    fixture->input()->clear();
    QVERIFY(!start->isEnabled());
}

void TestBlfConverterDialog::aFileThatComesWhileTheUserIsElsewhereEnablesStart()
{
    fixture->input()->setText(fixture->workDir.filePath(QStringLiteral("later.blf")));
    QVERIFY(!fixture->button("buttonStart")->isEnabled());
    fixture->makeLog(QStringLiteral("later.blf"), 1);
    QWidget other;
    other.show();
    other.activateWindow();
    QTRY_VERIFY(!fixture->dialog.isActiveWindow());
    fixture->dialog.activateWindow();
    QTRY_VERIFY(fixture->button("buttonStart")->isEnabled());
}

void TestBlfConverterDialog::pathsShowWholeInToolTips()
{
    fixture->input()->setText(QStringLiteral("a.blf"));
    QCOMPARE(fixture->input()->toolTip(), QDir::current().filePath(QStringLiteral("a.blf")));
    QCOMPARE(fixture->output()->toolTip(), QDir::current().filePath(QStringLiteral("a_processed.csv")));
}

void TestBlfConverterDialog::resetPutsEverythingBack()
{
    fixture->input()->setText(fixture->makeLog(QStringLiteral("a.blf"), 1));
    fixture->asc()->click();
    fixture->internalEvents()->click();
    fixture->additionalInfo()->click();
    fixture->dialog.onProcessReport(QStringLiteral("a line"), 40);
    QVERIFY(fixture->progress()->isVisible());
    fixture->click("buttonReset");
    QVERIFY(fixture->input()->text().isEmpty() && fixture->output()->text().isEmpty());
    QVERIFY(fixture->csv()->isChecked());
    QVERIFY(fixture->internalEvents()->isChecked() && fixture->additionalInfo()->isChecked());
    QVERIFY(fixture->log()->toPlainText().isEmpty());
    QVERIFY(!fixture->progress()->isVisible());
    QCOMPARE(fixture->progress()->value(), 0);
    QVERIFY(!fixture->button("buttonStart")->isEnabled());
}

void TestBlfConverterDialog::aDroppedLogBecomesTheInput()
{
    const QString log = fixture->makeLog(QStringLiteral("日志 1.BLF"), 1);
    QVERIFY(drop(&fixture->dialog, QUrl::fromLocalFile(log)));
    QCOMPARE(fixture->input()->text(), log);
    QCOMPARE(fixture->output()->text(), fixture->workDir.filePath(QStringLiteral("日志 1_processed.csv")));
    QVERIFY(fixture->button("buttonStart")->isEnabled());
    QVERIFY(drop(&fixture->dialog, QUrl::fromLocalFile(log), Qt::MoveAction)); // copied all the same
}

// As text its address would stand in the line.
void TestBlfConverterDialog::aDroppedFileOverAPathIsTheInputToo()
{
    const QString log = fixture->makeLog(QStringLiteral("a.blf"), 1);
    for (QWidget *target : {static_cast<QWidget *>(fixture->input()), static_cast<QWidget *>(fixture->output()),
                            fixture->log()->viewport()}) {
        fixture->input()->clear();
        QVERIFY(drop(target, QUrl::fromLocalFile(log)));
        QCOMPARE(fixture->input()->text(), log);
    }
}

void TestBlfConverterDialog::whatIsNoLogIsNotTaken()
{
    QVERIFY(!drop(&fixture->dialog, QUrl::fromLocalFile(QStringLiteral("/a.asc"))));
    QVERIFY(!drop(&fixture->dialog, QUrl(QStringLiteral("http://host/a.blf"))));
    QVERIFY(fixture->input()->text().isEmpty());
}

void TestBlfConverterDialog::reportsOfEachForm()
{
    fixture->dialog.onProcessReport(QStringLiteral("one"));
    QVERIFY(!fixture->progress()->isVisible());
    fixture->dialog.onProcessReport(QStringLiteral("two"), -1);
    QVERIFY(!fixture->progress()->isVisible());
    fixture->dialog.onProcessReport(QStringLiteral("three"), 0);
    QVERIFY(fixture->progress()->isVisible());
    QCOMPARE(fixture->progress()->value(), 0);
    fixture->dialog.onProcessReport(QStringLiteral("four"), 70, true);
    QCOMPARE(fixture->progress()->value(), 70);
    fixture->dialog.onProcessReport(QStringLiteral("five"), -1, false);
    QCOMPARE(fixture->progress()->value(), 70);
    QCOMPARE(fixture->logLines(), (QStringList{"one", "two", "three", "four", "five"}));
    for (const int line : {0, 1, 2, 4})
        QCOMPARE(colourOfLine(line), QColor(Qt::black));
    QCOMPARE(colourOfLine(3), QColor(Qt::red));
}

void TestBlfConverterDialog::reportsStayAtTheEndWhereverTheCursorIs()
{
    for (int i = 0; i < 200; ++i)
        fixture->dialog.onProcessReport(QString::number(i));
    fixture->log()->selectAll(); // as its user does, to copy it
    fixture->dialog.onProcessReport(QStringLiteral("last"), -1, true);
    QCOMPARE(fixture->logLines().last(), QStringLiteral("last"));
    QCOMPARE(colourOfLine(0), QColor(Qt::black));
    const QScrollBar *bar = fixture->log()->verticalScrollBar();
    QVERIFY(bar->maximum() > 0);
    QCOMPARE(bar->value(), bar->maximum());
}

void TestBlfConverterDialog::aReportIsNotTakenForMarkup()
{
    fixture->dialog.onProcessReport(QStringLiteral("<b>a</b> &amp; b"));
    QCOMPARE(fixture->logLines(), QStringList{"<b>a</b> &amp; b"});
}

void TestBlfConverterDialog::reportsAreBounded()
{
    constexpr int reports = 6000;
    for (int i = 0; i < reports; ++i)
        fixture->dialog.onProcessReport(QString::number(i));
    QCOMPARE(fixture->logLines().size(), 5000);
    QCOMPARE(fixture->logLines().first(), QString::number(reports - 5000));
    QCOMPARE(fixture->logLines().last(), QString::number(reports - 1));
}

void TestBlfConverterDialog::escapeClosesAnIdleDialog()
{
    QTest::keyClick(&fixture->dialog, Qt::Key_Escape);
    QVERIFY(!fixture->dialog.isVisible());
    fixture->dialog.show();
    QVERIFY(fixture->dialog.close());
}
