// SPDX-License-Identifier: GPL-3.0-or-later
#include "common/ui/UiUtils.h"

#include "tests/support/DocumentOpener.h"
#include "tests/support/LogCapture.h"
#include "tests/support/MessageBoxDriver.h"
#include "tests/support/QtTestMain.h"
#include "tests/support/TempWorkDir.h"

#include <QDialogButtonBox>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QTableWidget>
#include <QTextCodec>
#include <QTextDocument>
#include <QToolButton>

using Common::UiUtils;

namespace {

// Three rows "a", "b", "c", with a check cell, and a push button in the last column.
void fillTable(QTableWidget &table)
{
    table.setColumnCount(3);
    table.setSelectionBehavior(QAbstractItemView::SelectRows);
    for (const QString &name : {QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("c")}) {
        const int row = table.rowCount();
        table.insertRow(row);
        table.setItem(row, 0, new QTableWidgetItem(name));
        table.setCellWidget(row, 2, new QPushButton(name));
    }
}

QString order(const QTableWidget &table)
{
    QString names;
    for (int row = 0; row < table.rowCount(); ++row) {
        names += table.item(row, 0)->text();
        const auto *button = qobject_cast<QPushButton *>(table.cellWidget(row, 2));
        names += button ? button->text() : QStringLiteral("?");
    }
    return names;
}

bool writeFile(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly);
}

} // namespace

class TestUiUtils : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void rowsMove_data();
    void rowsMove();
    void movedCellWidgetsLive();
    void withoutASelectionNothingMoves();
    void removesTheSelectedRow();
    void clearsOnlyWhatHasRows();
    void setsTheCheckStateOfEveryRow();
    void tooltipEmphasisesKeywords();
    void tooltipOfATitleAndLines();
    void tooltipEscapesItsText();
    void encodingsAreKnownToTheToolkit();
    void toolButtonHasItsParts();
    void inputReturnsTheText();
    void inputCancelledIsEmpty();
    void inputNeedsMoreThanBlanks();
    void missingDocumentIsTold();
    void documentIsOpened();
    void documentIsFoundBesideTheProgram_data();
    void documentIsFoundBesideTheProgram();
    void thereIsNoUpdateService();
};

void TestUiUtils::rowsMove_data()
{
    QTest::addColumn<QString>("how");
    QTest::addColumn<int>("row");
    QTest::addColumn<QString>("expected");
    QTest::addColumn<int>("rowAfter");
    QTest::newRow("up") << "up" << 1 << "bbaacc" << 0;
    QTest::newRow("up at the top") << "up" << 0 << "aabbcc" << 0;
    QTest::newRow("down") << "down" << 1 << "aaccbb" << 2;
    QTest::newRow("down at the bottom") << "down" << 2 << "aabbcc" << 2;
    QTest::newRow("top") << "top" << 2 << "ccaabb" << 0;
    QTest::newRow("bottom") << "bottom" << 0 << "bbccaa" << 2;
}

void TestUiUtils::rowsMove()
{
    QFETCH(QString, how);
    QFETCH(int, row);
    QFETCH(QString, expected);
    QFETCH(int, rowAfter);
    QTableWidget table;
    fillTable(table);
    table.setCurrentCell(row, 0);
    if (how == QLatin1String("up"))
        UiUtils::moveTableRowUp(&table);
    else if (how == QLatin1String("down"))
        UiUtils::moveTableRowDown(&table);
    else if (how == QLatin1String("top"))
        UiUtils::moveTableRowToTop(&table);
    else
        UiUtils::moveTableRowToBottom(&table);
    QCOMPARE(order(table), expected);
    QCOMPARE(table.currentRow(), rowAfter);
    QVERIFY(table.selectionModel()->isRowSelected(rowAfter, QModelIndex()));
}

void TestUiUtils::movedCellWidgetsLive()
{
    QTableWidget table;
    fillTable(table);
    table.show();
    const QPointer<QWidget> button = table.cellWidget(0, 2);
    table.setCurrentCell(0, 0);
    UiUtils::moveTableRowToBottom(&table);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QCoreApplication::processEvents();
    QVERIFY(button);
    QCOMPARE(table.cellWidget(2, 2), button.data());
    QVERIFY(button->isVisible());
    table.removeRow(2);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(!button);
}

void TestUiUtils::withoutASelectionNothingMoves()
{
    QTableWidget table;
    fillTable(table);
    table.clearSelection();
    UiUtils::moveTableRowUp(&table);
    UiUtils::moveTableRowDown(&table);
    UiUtils::removeTableRow(&table);
    QCOMPARE(order(table), QStringLiteral("aabbcc"));
    UiUtils::removeTableRow(nullptr);
    UiUtils::moveTableRowToTop(nullptr);
}

void TestUiUtils::removesTheSelectedRow()
{
    QTableWidget table;
    fillTable(table);
    table.setCurrentCell(1, 0);
    UiUtils::removeTableRow(&table);
    QCOMPARE(order(table), QStringLiteral("aacc"));
}

void TestUiUtils::clearsOnlyWhatHasRows()
{
    QTableWidget table;
    fillTable(table);
    QVERIFY(UiUtils::clearTable(&table));
    QCOMPARE(table.rowCount(), 0);
    QVERIFY(!UiUtils::clearTable(&table));
    QVERIFY(!UiUtils::clearTable(nullptr));
}

void TestUiUtils::setsTheCheckStateOfEveryRow()
{
    QTableWidget table;
    fillTable(table);
    table.setItem(0, 1, new QTableWidgetItem);
    UiUtils::setTableItemCheckState(&table, 1, true);
    for (int row = 0; row < 3; ++row)
        QCOMPARE(table.item(row, 1)->checkState(), Qt::Checked);
    UiUtils::setTableItemCheckState(&table, 1, false);
    for (int row = 0; row < 3; ++row)
        QCOMPARE(table.item(row, 1)->checkState(), Qt::Unchecked);
    UiUtils::setTableItemCheckState(&table, 9, true);
    UiUtils::setTableItemCheckState(nullptr, 0, true);
}

void TestUiUtils::tooltipEmphasisesKeywords()
{
    const QString html =
        UiUtils::formatToHtml(QStringLiteral("A range, as a-b or b"), {QStringLiteral("range"), QStringLiteral("b")});
    QVERIFY2(html.contains(QStringLiteral("A <b>range</b>, as a-<b>b</b> or <b>b</b>")), qPrintable(html));
}

void TestUiUtils::tooltipOfATitleAndLines()
{
    const QString html = UiUtils::formatToHtml(QStringLiteral("EngineData"),
                                               {QStringLiteral("<span class='label'>Size:</span> 8 bits"), QString()});
    QVERIFY(html.contains(QStringLiteral("<b>EngineData</b>")));
    QVERIFY(html.contains(QStringLiteral("<div><span class='label'>Size:</span> 8 bits</div>")));
    QTextDocument document;
    document.setHtml(html);
    QCOMPARE(document.toPlainText(), QStringLiteral("EngineData\nSize: 8 bits"));
}

void TestUiUtils::tooltipEscapesItsText()
{
    QTextDocument document;
    document.setHtml(UiUtils::formatToHtml(QStringLiteral("a < b & c"), {QStringLiteral("< b")}));
    QCOMPARE(document.toPlainText(), QStringLiteral("a < b & c"));
}

void TestUiUtils::encodingsAreKnownToTheToolkit()
{
    const QStringList encodings = UiUtils::getFileEncodings();
    QCOMPARE(encodings.value(0), QStringLiteral("UTF-8"));
    QVERIFY(encodings.contains(QStringLiteral("GB18030")));
    for (const QString &name : encodings)
        QVERIFY2(QTextCodec::codecForName(name.toLatin1()), qPrintable(name));
}

void TestUiUtils::toolButtonHasItsParts()
{
    QWidget parent;
    const QToolButton *button =
        UiUtils::createToolButton(QString(), QStringLiteral("Add"), QStringLiteral("Adds a row"), 24, &parent);
    QCOMPARE(button->parent(), &parent);
    QCOMPARE(button->text(), QStringLiteral("Add"));
    QCOMPARE(button->toolTip(), QStringLiteral("Adds a row"));
    QCOMPARE(button->iconSize(), QSize(24, 24));
    QVERIFY(button->autoRaise());
    QCOMPARE(UiUtils::createToolButton(QString(), QString(), QString(), 0, &parent)->iconSize(), QSize(16, 16));
}

void TestUiUtils::inputReturnsTheText()
{
    tztest::MessageBoxDriver driver;
    driver.expectDialog([](QDialog *dialog) {
        QCOMPARE(dialog->windowTitle(), QStringLiteral("Rename"));
        auto *line = dialog->findChild<QLineEdit *>();
        QCOMPARE(line->text(), QStringLiteral("old"));
        line->setText(QStringLiteral("new"));
        dialog->accept();
    });
    QCOMPARE(
        UiUtils::getInputText(nullptr, QStringLiteral("Rename"), QStringLiteral("Name:"), QStringLiteral("old"), true),
        QStringLiteral("new"));
    QVERIFY(driver.allMet());
}

void TestUiUtils::inputCancelledIsEmpty()
{
    tztest::MessageBoxDriver driver;
    driver.expectDialog([](QDialog *dialog) { dialog->reject(); });
    QVERIFY(
        UiUtils::getInputText(nullptr, QStringLiteral("Rename"), QStringLiteral("Name:"), QStringLiteral("old"), true)
            .isEmpty());
}

void TestUiUtils::inputNeedsMoreThanBlanks()
{
    tztest::MessageBoxDriver driver;
    QVector<bool> enabled;
    driver.expectDialog([&enabled](QDialog *dialog) {
        auto *line = dialog->findChild<QLineEdit *>();
        auto *ok = dialog->findChild<QDialogButtonBox *>()->button(QDialogButtonBox::Ok);
        for (const QString &text : {QString(), QStringLiteral("  "), QStringLiteral("x")}) {
            line->setText(text);
            enabled.append(ok->isEnabled());
        }
        dialog->accept();
    });
    QCOMPARE(UiUtils::getInputText(nullptr, QStringLiteral("Rename"), QStringLiteral("Name:"), QString(), false),
             QStringLiteral("x"));
    QCOMPARE(enabled, (QVector<bool>{false, false, true}));
}

void TestUiUtils::missingDocumentIsTold()
{
    const tztest::TempWorkDir workDir;
    const tztest::LogCapture log;
    QString error;
    QVERIFY(!UiUtils::openHelpFile(QStringLiteral("doc/Missing.pdf"), &error));
    QCOMPARE(error, QStringLiteral("The document doc/Missing.pdf does not exist."));
    QVERIFY(!UiUtils::openHelpFile(QStringLiteral("doc/Missing.pdf"), nullptr));
    QCOMPARE(log.countContaining(2, "Failed to open the document doc/Missing.pdf"), std::size_t(2));
}

void TestUiUtils::documentIsOpened()
{
    const tztest::TempWorkDir workDir;
    QVERIFY(writeFile(QStringLiteral("manual.pdf")));
    const tztest::DocumentOpener opener;
    QString error;
    QVERIFY(UiUtils::openHelpFile(QStringLiteral("manual.pdf"), &error));
    QVERIFY(error.isEmpty());
    QCOMPARE(opener.openedFile(), QFileInfo(QStringLiteral("manual.pdf")).canonicalFilePath());
    QVERIFY(UiUtils::openHelpFile(QFileInfo(QStringLiteral("manual.pdf")).absoluteFilePath(), nullptr));
}

void TestUiUtils::documentIsFoundBesideTheProgram_data()
{
    QTest::addColumn<QString>("root");
    QTest::newRow("build tree") << QStringLiteral("/../");
    QTest::newRow("installed") << QStringLiteral("/../share/tzbench/");
}

void TestUiUtils::documentIsFoundBesideTheProgram()
{
    QFETCH(QString, root);
    const tztest::TempWorkDir workDir;
    // A folder of this process alone, since test programs share the tree.
    const QString folder = QStringLiteral("test-doc-%1").arg(QCoreApplication::applicationPid());
    const QString place = QDir::cleanPath(QCoreApplication::applicationDirPath() + root + folder);
    QVERIFY(QDir().mkpath(place));
    const auto removePlace = qScopeGuard([&] { QDir(place).removeRecursively(); });
    QVERIFY(writeFile(place + QStringLiteral("/manual.pdf")));
    const tztest::DocumentOpener opener;
    const QString path = folder + QStringLiteral("/manual.pdf");
    QVERIFY(UiUtils::openHelpFile(path, nullptr));
    QCOMPARE(opener.openedFile(), QFileInfo(place + QStringLiteral("/manual.pdf")).canonicalFilePath());

    QVERIFY(QDir().mkpath(folder)); // the working directory comes first
    QVERIFY(writeFile(path));
    QVERIFY(UiUtils::openHelpFile(path, nullptr));
    QCOMPARE(opener.openedFile(), QFileInfo(path).canonicalFilePath());
}

void TestUiUtils::thereIsNoUpdateService()
{
    const tztest::LogCapture log;
    QVERIFY(!UiUtils::checkForUpdates(true));
    QVERIFY(log.countContaining(0, "update") > 0);
}

TZ_QTEST_MAIN(TestUiUtils)
#include "UiUtilsTest.moc"
