// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/views/RawViewSnapshotTest.h"

#include "tests/support/MessageBoxDriver.h"
#include "tests/views/RawViewWindowFixture.h"
#include "tests/views/SnapshotFrames.h"

using namespace tztest;

namespace {

const QString csv = QStringLiteral("CSV Files (*.csv)");

void showFrames()
{
    fixture->deliver(fixture->isCan() ? snapshotCanFrames() : snapshotLinFrames());
    fixture->tickData();
}

QString pathOf(const char *name)
{
    return fixture->workDir.filePath(QLatin1String(name));
}

int linesOf(const char *name)
{
    QFile file(pathOf(name));
    return file.open(QIODevice::ReadOnly) ? file.readAll().count('\n') : -1;
}

QString pauseText()
{
    return fixture->button("buttonPause")->text();
}

void clickSave()
{
    QTest::mouseClick(fixture->button("buttonSave"), Qt::LeftButton);
}

QString rowText(int row)
{
    const QAbstractItemModel *model = fixture->table()->model();
    QStringList cells;
    for (int column = 0; column < model->columnCount(); ++column)
        cells << model->index(row, column).data().toString();
    return cells.join(QLatin1Char('\t')) + QLatin1Char('\n');
}

QString clipboardText()
{
    return QGuiApplication::clipboard()->text();
}

// Not by the table's selectRow(), which asks the keyboard whether to extend the selection.
void selectRow(int row)
{
    QTableView *table = fixture->table();
    table->selectionModel()->select(table->model()->index(row, 0),
                                    QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
}

QMenu *menuOnRow(int row)
{
    QTableView *table = fixture->table();
    const QPoint pos(5, table->rowViewportPosition(row) + table->rowHeight(row) / 2);
    Q_EMIT table->customContextMenuRequested(pos);
    return qobject_cast<QMenu *>(QApplication::activePopupWidget());
}

} // namespace

void TestRawViewSnapshot::init()
{
    RawViewTwinTest::init();
    QGuiApplication::clipboard()->setText(QStringLiteral("untouched"));
}

void TestRawViewSnapshot::saveOffersAscInACanViewAlone()
{
    MessageBoxDriver driver;
    driver.expectFileDialog(csv, {});
    fixture->triggerEntry(QStringLiteral("Save"));
    QTRY_VERIFY(driver.allMet() && !fixture->view->isPaused());
    QCOMPARE(driver.seen()[0].title, QStringLiteral("Save File"));
    const QString both = QStringLiteral("CSV Files (*.csv);;Text Files (*.txt)");
    QCOMPARE(driver.seen()[0].text, fixture->isCan() ? QStringLiteral("ASC Files (*.asc);;") + both : both);
}

void TestRawViewSnapshot::pausedViewHoldsStillWhileItIsSaved()
{
    MessageBoxDriver driver;
    showFrames();
    const int shown = fixture->table()->model()->rowCount();
    fixture->deliver({fixture->rx(1)}); // waits for the tick
    bool pausedMeanwhile = false;
    QString textMeanwhile;
    QTimer observer;
    connect(&observer, &QTimer::timeout, &observer, [&] {
        if (pausedMeanwhile || !QApplication::activeModalWidget())
            return;
        pausedMeanwhile = fixture->view->isPaused();
        textMeanwhile = pauseText();
        fixture->deliver({fixture->rx(2)});
        fixture->tickData();
    });
    observer.start(0); // ahead of the driver, which looks less often
    driver.expectFileDialog(csv, pathOf("view.csv"));
    clickSave();
    QTRY_VERIFY(driver.allMet() && !fixture->view->isPaused());
    QVERIFY(pausedMeanwhile);
    QCOMPARE(textMeanwhile, QStringLiteral("Resume"));
    QCOMPARE(pauseText(), QStringLiteral("Pause"));
    QVERIFY(fixture->button("buttonPause")->icon().pixmap(16).toImage() ==
            QIcon(QStringLiteral(":/resource/pause.png")).pixmap(16).toImage());
    QCOMPARE(linesOf("view.csv"), shown + 1);
    fixture->tickData();
    QCOMPARE(fixture->table()->model()->rowCount(), shown + 1); // the one that waited, and not the one of the pause
}

// The dialog comes a turn of the event loop after the click.
void TestRawViewSnapshot::savePausesFromTheClickOn()
{
    MessageBoxDriver driver;
    showFrames();
    const int shown = fixture->table()->model()->rowCount();
    driver.expectFileDialog(csv, pathOf("view.csv"));
    clickSave();
    QVERIFY(fixture->view->isPaused() && !QApplication::activeModalWidget());
    fixture->deliver({fixture->rx(1)});
    fixture->tickData();
    QTRY_VERIFY(driver.allMet() && !fixture->view->isPaused());
    QCOMPARE(linesOf("view.csv"), shown + 1);
}

void TestRawViewSnapshot::saveKeepsAnEarlierPause()
{
    MessageBoxDriver driver;
    showFrames();
    QTest::mouseClick(fixture->button("buttonPause"), Qt::LeftButton);
    driver.expectFileDialog(csv, pathOf("view"));
    clickSave();
    QTRY_VERIFY(linesOf("view.csv") > 0 && !QApplication::activeModalWidget());
    QVERIFY(fixture->view->isPaused());
    QCOMPARE(pauseText(), QStringLiteral("Resume"));
}

void TestRawViewSnapshot::failedSaveGoesOnAsBefore()
{
    MessageBoxDriver driver;
    driver.expectFileDialog(csv, pathOf("missing/view"));
    driver.expectBox(QMessageBox::Ok);
    clickSave();
    QTRY_VERIFY(driver.allMet() && !fixture->view->isPaused());
    QCOMPARE(driver.seen().back().title, QStringLiteral("Error"));
    QCOMPARE(pauseText(), QStringLiteral("Pause"));
    driver.expectFileDialog(csv, {}); // and it may be asked again
    clickSave();
    QTRY_VERIFY(driver.allMet() && !fixture->view->isPaused());
}

void TestRawViewSnapshot::secondClickAsksNothing()
{
    MessageBoxDriver driver;
    driver.expectFileDialog(csv, {});
    clickSave();
    clickSave();
    QTRY_VERIFY(driver.allMet() && !QApplication::activeModalWidget());
    QCoreApplication::processEvents();
    QCOMPARE(driver.unexpected(), 0);
    QCOMPARE(driver.seen().size(), std::size_t{1});
}

void TestRawViewSnapshot::viewMayGoUnderTheSaveDialog()
{
    MessageBoxDriver driver;
    driver.expectDialog([](QDialog *) { fixture->view.reset(); });
    clickSave();
    QTRY_VERIFY(!fixture->view);
    QCoreApplication::processEvents();
    QVERIFY(!QApplication::activeModalWidget());
}

void TestRawViewSnapshot::copyEntriesTakeTheClickedRow()
{
    showFrames();
    selectRow(0);
    const auto copied = [](const char *text) {
        QMenu *menu = menuOnRow(1);
        QAction *action = menu ? RawViewWindowFixture::entry(menu, QLatin1String(text)) : nullptr;
        if (!action || !action->isEnabled())
            return QStringLiteral("no entry");
        QTest::mouseClick(menu, Qt::LeftButton, {}, menu->actionGeometry(action).center());
        return clipboardText();
    };
    QCOMPARE(copied("Copy Data"), fixture->isCan() ? QStringLiteral("00 01 02 03 04 05 06 07") : QStringLiteral("FF"));
    QCOMPARE(QToolTip::text(), QStringLiteral("Data copied!"));
    QCOMPARE(copied("Copy Row"), rowText(1));
    QCOMPARE(QToolTip::text(), QStringLiteral("Row copied!"));
    QCOMPARE(copied("Copy Selected"), rowText(0));
    QCOMPARE(QToolTip::text(), QStringLiteral("Selected rows copied!"));
}

void TestRawViewSnapshot::copyEntriesNeedSomethingToCopy()
{
    const auto enabled = [](QMenu *menu) {
        QList<bool> states;
        for (const char *text : {"Copy Data", "Copy Row", "Copy Selected"})
            states << RawViewWindowFixture::entry(menu, QLatin1String(text))->isEnabled();
        menu->close();
        return states;
    };
    QCOMPARE(enabled(fixture->openContextMenu()), (QList<bool>{false, false, false}));
    showFrames();
    QCOMPARE(enabled(menuOnRow(0)), (QList<bool>{true, true, false}));
    selectRow(1);
    QCOMPARE(enabled(menuOnRow(0)), (QList<bool>{true, true, true}));
}

void TestRawViewSnapshot::clickedRowMayGoUnderTheMenu()
{
    showFrames();
    QMenu *menu = menuOnRow(1);
    const QString row = rowText(1);
    fixture->view->onClearViewWindow(fixture->view->viewKind());
    RawViewWindowFixture::entry(menu, QStringLiteral("Copy Selected"))->trigger();
    QCOMPARE(clipboardText(), QStringLiteral("untouched"));
    RawViewWindowFixture::entry(menu, QStringLiteral("Copy Row"))->trigger();
    QCOMPARE(clipboardText(), row);
    menu->close();
}

// In a full view the rows move up with every frame, while their numbers stay.
void TestRawViewSnapshot::copyEntriesTakeTheClickedFrameOfAMovingView()
{
    showFrames();
    fixture->deliver(std::vector<TzVciMessage>(TzRawViewModel::maxRows, fixture->rx(1)));
    while (fixture->view->model()->allMessages().size() < TzRawViewModel::maxRows)
        fixture->tickData();
    fixture->tickData();
    fixture->deliver(fixture->isCan() ? snapshotCanFrames() : snapshotLinFrames());
    fixture->tickData(); // these stand at the end now
    fixture->view->setTimersStopped(true);
    QTableView *table = fixture->table();
    QCOMPARE(table->model()->rowCount(), int{TzRawViewModel::maxRows});
    table->scrollToBottom();
    const int row = table->model()->rowCount() - 1;
    const QString text = rowText(row);
    const QString data = table->model()->index(row, fixture->isCan() ? 11 : 9).data().toString();
    QMenu *menu = menuOnRow(row);
    QVERIFY(menu);
    fixture->deliver({fixture->rx(7)});
    fixture->tickData();
    QVERIFY(rowText(row) != text);
    RawViewWindowFixture::entry(menu, QStringLiteral("Copy Row"))->trigger();
    QCOMPARE(clipboardText(), text);
    RawViewWindowFixture::entry(menu, QStringLiteral("Copy Data"))->trigger();
    QCOMPARE(clipboardText(), data);
    menu->close();
}

void TestRawViewSnapshot::everyCopyKeyTakesTheSelectedRows()
{
    showFrames();
    QTableView *table = fixture->table();
    table->activateWindow();
    table->setFocus();
    QTRY_VERIFY(table->hasFocus());
    table->setCurrentIndex(table->model()->index(0, 3));
    selectRow(0);
    const QList<QKeySequence> keys = QKeySequence::keyBindings(QKeySequence::Copy);
    QVERIFY(keys.contains(QKeySequence(int{Qt::CTRL} | int{Qt::Key_Insert})));
    for (const QKeySequence &key : keys) {
        QGuiApplication::clipboard()->setText(QStringLiteral("untouched"));
        QTest::keySequence(table, key);
        QCOMPARE(clipboardText(), rowText(0));
    }
    QTest::keySequence(table, QKeySequence::SelectAll);
    QTest::keySequence(table, QKeySequence::Copy);
    QString all;
    for (int row = 0; row < table->model()->rowCount(); ++row)
        all += rowText(row);
    QCOMPARE(clipboardText(), all);
}
