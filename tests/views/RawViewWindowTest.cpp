// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/views/RawViewWindowTest.h"

#include "tests/views/RawViewWindowFixture.h"

#include <QMenu>

using namespace tztest;

namespace {

QImage imageOf(const QIcon &icon)
{
    return icon.pixmap(16, 16).toImage();
}

QImage resourceImage(const QString &name)
{
    const QIcon icon(QStringLiteral(":/resource/%1.png").arg(name));
    if (icon.pixmap(16, 16).isNull())
        qFatal("no icon %s", qPrintable(name));
    return imageOf(icon);
}

} // namespace

void TestRawViewWindow::toolRowHasItsTexts()
{
    struct Control
    {
        const char *name;
        const char *text;
        const char *toolTip;
        const char *icon;
    };
    const Control controls[] = {
        {"buttonDevices", "Dev&&Chn ", "Device/channel physical filtering (not displayed in the view interface)",
         "select"},
        {"checkBoxFold", "Fold ", "Check to fold the data", ""},
        {"buttonPause", "Pause ", "", "pause"},
        {"buttonClear", "Clear ", "", "clear"},
        {"buttonRecord", "Recording ", "Message record, support ASC, CSV", "record"},
        {"buttonSave", "Save ", "Save data, support ASC, CSV, TXT", "save"},
        {"buttonFilter", "Filter ", "Data filtering, supports id, device, channel, time filtering", "filter"},
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
            QCOMPARE(imageOf(button->icon()), resourceImage(QLatin1String(control.icon)));
            QCOMPARE(button->toolButtonStyle(), Qt::ToolButtonTextBesideIcon);
        }
        right = widget->geometry().right();
    }
}

void TestRawViewWindow::tableIsSetUp()
{
    QTableView *table = fixture->table();
    QCOMPARE(table->font().pointSize(), 9);
    QCOMPARE(table->verticalHeader()->defaultSectionSize(), 16);
    QCOMPARE(table->verticalHeader()->minimumSectionSize(), 12);
    QCOMPARE(table->verticalHeader()->sectionResizeMode(0), QHeaderView::Fixed);
    QCOMPARE(table->contextMenuPolicy(), Qt::CustomContextMenu);
    QVERIFY(table->horizontalHeader()->stretchLastSection());
    QVERIFY(table->isColumnHidden(5));
    const QMap<int, int> can{{0, 90}, {1, 120}, {2, 50}, {3, 60}, {4, 80},
                             {6, 50}, {7, 80},  {8, 80}, {9, 80}, {10, 60}};
    const QMap<int, int> lin{{0, 90}, {1, 120}, {2, 50}, {3, 60}, {4, 80}, {5, 50}, {6, 80}, {7, 100}, {8, 60}};
    const QMap<int, int> &widths = fixture->isCan() ? can : lin;
    table->setColumnHidden(5, false); // a hidden column tells no width
    for (auto width = widths.begin(); width != widths.end(); ++width)
        QCOMPARE(table->columnWidth(width.key()), width.value());
    table->setColumnHidden(5, true);
    fixture->deliver({fixture->rx(1)});
    fixture->tickData();
    QCOMPARE(table->rowHeight(0), 16);
    QVERIFY(fixture->label()->font().bold());
    QVERIFY(fixture->filterBar()->isHidden());
    QVERIFY(fixture->view->testAttribute(Qt::WA_DeleteOnClose));
    QVERIFY(fixture->view->findChild<QWidget *>(QStringLiteral("widget_3"))->isAncestorOf(fixture->label()));
}

void TestRawViewWindow::recordingAndSavingAreOffered()
{
    QVERIFY(fixture->button("buttonRecord")->isEnabled());
    QVERIFY(fixture->button("buttonSave")->isEnabled());
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
    QTest::mouseClick(button, Qt::LeftButton);
    QCOMPARE(button->text(), QStringLiteral("Resume"));
    QCOMPARE(imageOf(button->icon()), resourceImage(QStringLiteral("resume")));
    QVERIFY(fixture->view->isPaused());
    QTest::mouseClick(button, Qt::LeftButton);
    QCOMPARE(button->text(), QStringLiteral("Pause"));
    QCOMPARE(imageOf(button->icon()), resourceImage(QStringLiteral("pause")));
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

void TestRawViewWindow::contextMenuHasItsEntries()
{
    QMenu *menu = fixture->openContextMenu();
    QVERIFY(menu);
    const auto texts = [](const QMenu *from) {
        QStringList list;
        for (const QAction *action : from->actions())
            list << (action->isSeparator() ? QStringLiteral("-") : action->text());
        return list;
    };
    QCOMPARE(texts(menu), (QStringList{"Copy Data", "Copy Row", "Copy Selected", "-", "Filter", "Clear", "Pause ",
                                       "Save", "Devices&&Channels Filter"}));
    const QStringList icons{"copy", "copy", "copy", "", "filter", "clear", "pause", "save", "select"};
    for (int n = 0; n < icons.size(); ++n) {
        if (!icons[n].isEmpty())
            QCOMPARE(imageOf(menu->actions().at(n)->icon()), resourceImage(icons[n]));
    }
    menu->close();
    fixture->triggerEntry(QStringLiteral("Pause "));
    menu = fixture->openContextMenu();
    const QAction *resume = menu ? RawViewWindowFixture::entry(menu, QStringLiteral("Resume")) : nullptr;
    QVERIFY(resume);
    QCOMPARE(imageOf(resume->icon()), resourceImage(QStringLiteral("resume")));
    menu->close();
}
