// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/views/RawViewWindowTest.h"

#include "tests/support/MessageBoxDriver.h"
#include "tests/views/RawViewWindowFixture.h"

#include <QMenu>
#include <QPushButton>

using namespace tztest;

namespace {

std::unique_ptr<RawViewWindowFixture> fixture;

QMenu *openContextMenu()
{
    Q_EMIT fixture->table()->customContextMenuRequested(QPoint(10, 10));
    auto *menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
    return menu;
}

QAction *entry(QMenu *menu, const QString &text)
{
    const auto actions = menu->actions();
    const auto found = std::find_if(actions.begin(), actions.end(), [&](QAction *a) { return a->text() == text; });
    return found == actions.end() ? nullptr : *found;
}

void triggerEntry(const QString &text)
{
    QMenu *menu = openContextMenu();
    QAction *action = menu ? entry(menu, text) : nullptr;
    QVERIFY2(action, qPrintable(text));
    menu->close();
    action->trigger();
}

} // namespace

void TestRawViewWindow::twins()
{
    QTest::addColumn<int>("kind");
    QTest::newRow("CAN") << int{TzVciViewKind::can};
    QTest::newRow("LIN") << int{TzVciViewKind::lin};
}

void TestRawViewWindow::init()
{
    QFETCH(int, kind);
    fixture = std::make_unique<RawViewWindowFixture>(static_cast<std::uint8_t>(kind));
}

void TestRawViewWindow::cleanup()
{
    fixture.reset();
}

void TestRawViewWindow::toolRowHasItsTexts()
{
    struct Control
    {
        const char *name;
        const char *text;
        const char *toolTip;
    };
    const Control controls[] = {
        {"buttonDevices", "Dev&&Chn ", "Device/channel physical filtering (not displayed in the view interface)"},
        {"checkBoxFold", "Fold ", "Check to fold the data"},
        {"buttonPause", "Pause ", ""},
        {"buttonClear", "Clear ", ""},
        {"buttonRecord", "Recording ", "Message record, support ASC, CSV"},
        {"buttonSave", "Save ", "Save data, support ASC, CSV, TXT"},
        {"buttonFilter", "Filter ", "Data filtering, supports id, device, channel, time filtering"},
    };
    const auto *row = fixture->view->findChild<QWidget *>(QStringLiteral("widget"));
    QVERIFY(row);
    int right = -1;
    for (const Control &control : controls) {
        auto *widget = row->findChild<QAbstractButton *>(QLatin1String(control.name));
        QVERIFY2(widget, control.name);
        QCOMPARE(widget->text(), QLatin1String(control.text));
        QCOMPARE(widget->toolTip(), QLatin1String(control.toolTip));
        QVERIFY2(widget->x() > right, "the order of the row");
        QVERIFY2(widget->width() >= widget->sizeHint().width(), "no text is clipped");
        if (auto *button = qobject_cast<QToolButton *>(widget)) {
            QVERIFY2(!button->icon().pixmap(16, 16).isNull(), control.name);
            QCOMPARE(button->toolButtonStyle(), Qt::ToolButtonTextBesideIcon);
        }
        right = widget->geometry().right();
    }
}

void TestRawViewWindow::tableIsSetUp()
{
    const QTableView *table = fixture->table();
    QCOMPARE(table->font().pointSize(), 9);
    QCOMPARE(table->verticalHeader()->defaultSectionSize(), 16);
    QCOMPARE(table->verticalHeader()->minimumSectionSize(), 12);
    QCOMPARE(table->verticalHeader()->sectionResizeMode(0), QHeaderView::Fixed);
    QCOMPARE(table->contextMenuPolicy(), Qt::CustomContextMenu);
    QVERIFY(table->horizontalHeader()->stretchLastSection());
    QVERIFY(table->isColumnHidden(5));
    const QMap<int, int> can{{0, 90}, {1, 120}, {2, 50}, {3, 60}, {4, 80},
                             {6, 50}, {7, 80},  {8, 80}, {9, 80}, {10, 60}};
    const QMap<int, int> lin{{0, 90}, {1, 120}, {2, 50}, {3, 60}, {4, 80}, {6, 80}, {7, 100}, {8, 60}};
    const QMap<int, int> &widths = fixture->isCan() ? can : lin;
    for (auto width = widths.begin(); width != widths.end(); ++width)
        QCOMPARE(table->columnWidth(width.key()), width.value());
    fixture->deliver({fixture->rx(1)});
    fixture->tickData();
    QCOMPARE(table->rowHeight(0), 16);
    QVERIFY(fixture->label()->font().bold());
    QVERIFY(fixture->filterBar()->isHidden());
    QVERIFY(fixture->view->testAttribute(Qt::WA_DeleteOnClose));
    QVERIFY(fixture->view->findChild<QWidget *>(QStringLiteral("widget_3"))->isAncestorOf(fixture->label()));
}

void TestRawViewWindow::recordingAndSavingAreNotOfferedYet()
{
    QVERIFY(!fixture->button("buttonRecord")->isEnabled());
    QVERIFY(!fixture->button("buttonSave")->isEnabled());
}

void TestRawViewWindow::framesAppearAndAreCounted()
{
    fixture->deliver({fixture->rx(1), fixture->tx(2), fixture->rx(3)});
    QTRY_COMPARE(fixture->table()->model()->rowCount(), 3); // by the view's own timers
    QTRY_COMPARE(fixture->label()->text(),
                 QStringLiteral("Tl:000000000003 Rx:000000000002 Tx:000000000001 Err:000000000000"));
}

void TestRawViewWindow::displayFilterTouchesNoCounter()
{
    fixture->view->filterWidget()->setEnabled(true);
    fixture->filterBar()->findChild<QLineEdit *>()->setText(QStringLiteral("2"));
    fixture->deliver({fixture->rx(1), fixture->rx(2)});
    fixture->tickData();
    QCOMPARE(fixture->table()->model()->rowCount(), 1);
    QCOMPARE(fixture->view->intake().counters().total, std::uint64_t{2});
}

void TestRawViewWindow::pausingLosesFramesAndStopsTheTicks()
{
    fixture->deliver({fixture->rx(1)});
    fixture->tickUi();
    const QString before = fixture->label()->text();
    fixture->deliver({fixture->rx(2)}); // waits for the tick when the pause begins
    QTest::mouseClick(fixture->button("buttonPause"), Qt::LeftButton);
    fixture->deliver({fixture->rx(3)});
    fixture->tickData();
    fixture->tickUi();
    QCOMPARE(fixture->label()->text(), before);
    QCOMPARE(fixture->table()->model()->rowCount(), 0);
    QTest::mouseClick(fixture->button("buttonPause"), Qt::LeftButton);
    fixture->tickData();
    fixture->tickUi();
    QCOMPARE(fixture->table()->model()->rowCount(), 2);
    QCOMPARE(fixture->view->intake().counters().total, std::uint64_t{2});
}

void TestRawViewWindow::pauseButtonFollowsTheState()
{
    QToolButton *button = fixture->button("buttonPause");
    const auto image = [](const QIcon &icon) { return icon.pixmap(16, 16).toImage(); };
    const auto resource = [&](const char *name) { return image(QIcon(QLatin1String(name))); };
    QTest::mouseClick(button, Qt::LeftButton);
    QCOMPARE(button->text(), QStringLiteral("Resume"));
    QCOMPARE(image(button->icon()), resource(":/resource/resume.png"));
    QVERIFY(fixture->view->isPaused());
    QTest::mouseClick(button, Qt::LeftButton);
    QCOMPARE(button->text(), QStringLiteral("Pause"));
    QCOMPARE(image(button->icon()), resource(":/resource/pause.png"));
    QVERIFY(!fixture->view->isPaused());
}

void TestRawViewWindow::pauseButtonKeepsItsWidth()
{
    const int width = fixture->button("buttonPause")->width();
    const int next = fixture->button("buttonClear")->x();
    QTest::mouseClick(fixture->button("buttonPause"), Qt::LeftButton);
    QTest::qWait(0);
    QCOMPARE(fixture->button("buttonPause")->width(), width);
    QCOMPARE(fixture->button("buttonClear")->x(), next);
}

void TestRawViewWindow::foldBoxFolds()
{
    fixture->deliver({fixture->rx(1), fixture->rx(1)});
    fixture->tickData();
    auto *box = fixture->view->findChild<QCheckBox *>(QStringLiteral("checkBoxFold"));
    box->click();
    QTRY_COMPARE(fixture->table()->model()->rowCount(), 1);
    QCOMPARE(fixture->table()->model()->index(0, 0).data().toString(), QStringLiteral("1[2]"));
    const QString time = QStringLiteral("9999.999999[9999.99]");
    QVERIFY2(fixture->table()->columnWidth(1) > fixture->table()->fontMetrics().horizontalAdvance(time),
             "the cycle time is not cut off");
    box->click();
    QTRY_COMPARE(fixture->table()->model()->rowCount(), 2);
}

void TestRawViewWindow::filterButtonTogglesTheBar()
{
    QSignalSpy updated(fixture->view->filterWidget(), &TzVciViewFilterWidget::filterUpdated);
    QTest::mouseClick(fixture->button("buttonFilter"), Qt::LeftButton);
    QVERIFY(fixture->filterBar()->isVisible());
    QCOMPARE(updated.count(), 1);
    QTest::mouseClick(fixture->button("buttonFilter"), Qt::LeftButton);
    QVERIFY(fixture->filterBar()->isHidden());
    QCOMPARE(updated.count(), 2);
}

void TestRawViewWindow::hiddenBarKeepsItsContents()
{
    fixture->deliver({fixture->rx(1), fixture->rx(2)});
    fixture->tickData();
    QTest::mouseClick(fixture->button("buttonFilter"), Qt::LeftButton);
    auto *edit = fixture->filterBar()->findChild<QLineEdit *>();
    QTest::keyClicks(edit, QStringLiteral("2"));
    QCOMPARE(fixture->table()->model()->rowCount(), 1);
    QTest::mouseClick(fixture->button("buttonFilter"), Qt::LeftButton);
    QCOMPARE(fixture->table()->model()->rowCount(), 2);
    QTest::mouseClick(fixture->button("buttonFilter"), Qt::LeftButton);
    QCOMPARE(edit->text(), QStringLiteral("2"));
    QCOMPARE(fixture->table()->model()->rowCount(), 1);
}

void TestRawViewWindow::clearOfAnEmptyViewDoesNotAsk()
{
    const MessageBoxDriver driver;
    fixture->deliver({fixture->rx(1)}); // waits for the tick: counted, but not in the history
    QTest::mouseClick(fixture->button("buttonClear"), Qt::LeftButton);
    QVERIFY(driver.seen().empty());
    QCOMPARE(fixture->view->intake().counters().total, std::uint64_t{0});
    fixture->tickData();
    QCOMPARE(fixture->table()->model()->rowCount(), 1);
}

void TestRawViewWindow::clearAsksAndKeepsOnNo()
{
    MessageBoxDriver driver;
    fixture->deliver({fixture->rx(1)});
    fixture->tickData();
    driver.expectBox(QMessageBox::No);
    QTest::mouseClick(fixture->button("buttonClear"), Qt::LeftButton);
    QCOMPARE(driver.seen().size(), std::size_t{1});
    QCOMPARE(driver.seen()[0].title, QStringLiteral("Tips"));
    QCOMPARE(driver.seen()[0].text, QStringLiteral("Do you want to clear all data?"));
    QCOMPARE(fixture->table()->model()->rowCount(), 1);
    QCOMPARE(fixture->view->intake().counters().total, std::uint64_t{1});
}

void TestRawViewWindow::clearAsksAndEmptiesOnYes()
{
    MessageBoxDriver driver;
    fixture->deliver({fixture->rx(1)});
    fixture->tickData();
    driver.expectBox(QMessageBox::Yes);
    QTest::mouseClick(fixture->button("buttonClear"), Qt::LeftButton);
    QVERIFY(driver.allMet());
    QCOMPARE(fixture->table()->model()->rowCount(), 0);
    QCOMPARE(fixture->view->intake().counters().total, std::uint64_t{0});
}

void TestRawViewWindow::clearReachesTheFamilyAlone()
{
    const std::vector<std::uint8_t> own =
        fixture->isCan() ? std::vector<std::uint8_t>{1, 16} : std::vector<std::uint8_t>{5, 17};
    const std::vector<std::uint8_t> other =
        fixture->isCan() ? std::vector<std::uint8_t>{5, 17, 0, 3} : std::vector<std::uint8_t>{1, 16, 0, 3};
    fixture->deliver({fixture->rx(1)});
    fixture->tickData();
    for (const std::uint8_t kind : other)
        fixture->view->onClearViewWindow(kind);
    QCOMPARE(fixture->table()->model()->rowCount(), 1);
    QCOMPARE(fixture->view->intake().counters().total, std::uint64_t{1});
    for (const std::uint8_t kind : own) {
        fixture->deliver({fixture->rx(1)});
        fixture->tickData();
        fixture->view->onClearViewWindow(kind);
        QCOMPARE(fixture->table()->model()->rowCount(), 0);
        QCOMPARE(fixture->view->intake().counters().total, std::uint64_t{0});
    }
}

void TestRawViewWindow::devicesDialogChangesTheChannels()
{
    MessageBoxDriver driver;
    bool pausedMeanwhile = false;
    QString buttonMeanwhile;
    driver.expectDialog([&](QDialog *dialog) {
        pausedMeanwhile = fixture->view->isPaused();
        buttonMeanwhile = fixture->button("buttonPause")->text();
        QCOMPARE(dialog->windowTitle(), QStringLiteral("Select Device/Channel Filter"));
        const auto buttons = dialog->findChildren<QPushButton *>();
        const auto press = [&](const char *text) {
            for (QPushButton *button : buttons) {
                if (button->text() == QLatin1String(text))
                    button->click();
            }
        };
        press("Select None");
        press("Apply");
    });
    QTest::mouseClick(fixture->button("buttonDevices"), Qt::LeftButton);
    QVERIFY(driver.allMet());
    QVERIFY(pausedMeanwhile);
    QCOMPARE(buttonMeanwhile, QStringLiteral("Resume"));
    QVERIFY(!fixture->view->isPaused());
    QCOMPARE(fixture->button("buttonPause")->text(), QStringLiteral("Pause"));
    QVERIFY(fixture->view->intake().devices().empty());
    fixture->deliver({fixture->rx(1)});
    fixture->tickData();
    QCOMPARE(fixture->table()->model()->rowCount(), 0); // an empty choice shows nothing
    QCOMPARE(fixture->view->intake().counters().total, std::uint64_t{0});
}

void TestRawViewWindow::cancelledDevicesDialogEndsAnEarlierPause()
{
    MessageBoxDriver driver;
    QTest::mouseClick(fixture->button("buttonPause"), Qt::LeftButton);
    driver.expectDialog([](QDialog *dialog) { dialog->reject(); });
    QTest::mouseClick(fixture->button("buttonDevices"), Qt::LeftButton);
    QVERIFY(driver.allMet());
    QVERIFY(!fixture->view->isPaused());
    QCOMPARE(fixture->button("buttonPause")->text(), QStringLiteral("Pause"));
    QCOMPARE(fixture->view->intake().devices().size(), std::size_t{16});
}

void TestRawViewWindow::viewMayGoUnderItsOwnDialogs()
{
    MessageBoxDriver driver;
    driver.expectDialog([](QDialog *) { fixture->view.reset(); });
    fixture->button("buttonDevices")->click();
    QVERIFY(driver.allMet());
    QVERIFY(!fixture->view);
    QFETCH(int, kind);
    fixture = std::make_unique<RawViewWindowFixture>(static_cast<std::uint8_t>(kind));
    fixture->deliver({fixture->rx(1)});
    fixture->tickData();
    QTimer::singleShot(0, [] { fixture->view.reset(); });
    fixture->button("buttonClear")->click();
    QVERIFY(!fixture->view);
}

void TestRawViewWindow::contextMenuHasItsEntries()
{
    QMenu *menu = openContextMenu();
    QVERIFY(menu);
    const auto texts = [](const QMenu *from) {
        QStringList list;
        for (const QAction *action : from->actions())
            list << (action->isSeparator() ? QStringLiteral("-") : action->text());
        return list;
    };
    QCOMPARE(texts(menu), (QStringList{"Copy Data", "Copy Row", "Copy Selected", "-", "Filter", "Clear", "Pause ",
                                       "Save", "Devices&&Channels Filter"}));
    for (const QAction *action : menu->actions())
        QVERIFY(action->isSeparator() || !action->icon().pixmap(16, 16).isNull());
    for (const char *later : {"Copy Data", "Copy Row", "Copy Selected", "Save"})
        QVERIFY(!entry(menu, QLatin1String(later))->isEnabled());
    menu->close();
    triggerEntry(QStringLiteral("Pause "));
    menu = openContextMenu();
    QVERIFY(menu && entry(menu, QStringLiteral("Resume")));
    menu->close();
}

void TestRawViewWindow::contextMenuActsLikeTheButtons()
{
    MessageBoxDriver driver;
    triggerEntry(QStringLiteral("Filter"));
    QVERIFY(fixture->filterBar()->isVisible());
    triggerEntry(QStringLiteral("Pause "));
    QVERIFY(fixture->view->isPaused());
    QCOMPARE(fixture->button("buttonPause")->text(), QStringLiteral("Resume"));
    triggerEntry(QStringLiteral("Resume"));
    QVERIFY(!fixture->view->isPaused());
    fixture->deliver({fixture->rx(1)});
    fixture->tickData();
    driver.expectBox(QMessageBox::Yes);
    triggerEntry(QStringLiteral("Clear"));
    QCOMPARE(fixture->table()->model()->rowCount(), 0);
    driver.expectDialog([](QDialog *dialog) { dialog->reject(); });
    triggerEntry(QStringLiteral("Devices&&Channels Filter"));
    QVERIFY(driver.allMet());
}
