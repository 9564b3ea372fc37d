// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/views/RawViewDialogsTest.h"

#include "tests/support/MessageBoxDriver.h"
#include "tests/views/RawViewWindowFixture.h"

#include <QMenu>
#include <QPushButton>

using namespace tztest;

namespace {

void showOneFrame()
{
    fixture->deliver({fixture->rx(1)});
    fixture->tickData();
}

int shownRows()
{
    return fixture->table()->model()->rowCount();
}

std::uint64_t counted()
{
    return fixture->view->intake().counters().total;
}

bool nothingShows()
{
    return QApplication::activeModalWidget() == nullptr;
}

/// Destroys the view as soon as a dialog shows, as the end of the program does.
class ViewEnder : public QTimer
{
public:
    ViewEnder()
    {
        connect(this, &QTimer::timeout, this, [this] {
            if (nothingShows())
                return;
            stop();
            fixture->view.reset();
        });
        start(5);
    }
};

} // namespace

void TestRawViewDialogs::clearOfAnEmptyViewDoesNotAsk()
{
    const MessageBoxDriver driver;
    fixture->deliver({fixture->rx(1)}); // waits for the tick: counted, but not in the history
    QTest::mouseClick(fixture->button("buttonClear"), Qt::LeftButton);
    QCOMPARE(counted(), std::uint64_t{0});
    fixture->tickData();
    QCOMPARE(shownRows(), 1);
    QCoreApplication::processEvents();
    QVERIFY(driver.seen().empty());
}

void TestRawViewDialogs::clearAsksAndKeepsOnNo()
{
    MessageBoxDriver driver;
    showOneFrame();
    driver.expectBox(QMessageBox::No);
    QTest::mouseClick(fixture->button("buttonClear"), Qt::LeftButton);
    QTRY_COMPARE(driver.seen().size(), std::size_t{1});
    QCOMPARE(driver.seen()[0].title, QStringLiteral("Tips"));
    QCOMPARE(driver.seen()[0].text, QStringLiteral("Do you want to clear all data?"));
    QCOMPARE(shownRows(), 1);
    QCOMPARE(counted(), std::uint64_t{1});
    driver.expectBox(QMessageBox::No); // it asks again
    QTest::mouseClick(fixture->button("buttonClear"), Qt::LeftButton);
    QTRY_COMPARE(driver.seen().size(), std::size_t{2});
}

void TestRawViewDialogs::clearAsksAndEmptiesOnYes()
{
    MessageBoxDriver driver;
    showOneFrame();
    driver.expectBox(QMessageBox::Yes);
    QTest::mouseClick(fixture->button("buttonClear"), Qt::LeftButton);
    QTRY_VERIFY(driver.allMet());
    QCOMPARE(shownRows(), 0);
    QCOMPARE(counted(), std::uint64_t{0});
}

void TestRawViewDialogs::devicesDialogChangesTheChannels()
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
    QTRY_VERIFY(driver.allMet());
    QVERIFY(pausedMeanwhile);
    QCOMPARE(buttonMeanwhile, QStringLiteral("Resume"));
    QVERIFY(!fixture->view->isPaused());
    QCOMPARE(fixture->button("buttonPause")->text(), QStringLiteral("Pause"));
    QVERIFY(fixture->view->intake().devices().empty());
    showOneFrame();
    QCOMPARE(shownRows(), 0); // an empty choice shows nothing
    QCOMPARE(counted(), std::uint64_t{0});
}

void TestRawViewDialogs::cancelledDevicesDialogEndsAnEarlierPause()
{
    MessageBoxDriver driver;
    QTest::mouseClick(fixture->button("buttonPause"), Qt::LeftButton);
    driver.expectDialog([](QDialog *dialog) { dialog->reject(); });
    QTest::mouseClick(fixture->button("buttonDevices"), Qt::LeftButton);
    QTRY_VERIFY(driver.allMet());
    QVERIFY(!fixture->view->isPaused());
    QCOMPARE(fixture->button("buttonPause")->text(), QStringLiteral("Pause"));
    QCOMPARE(fixture->view->intake().devices().size(), std::size_t{16});
}

void TestRawViewDialogs::secondClickBeforeTheDialogShowsAsksNothing()
{
    MessageBoxDriver driver;
    showOneFrame();
    driver.expectDialog([](QDialog *dialog) { dialog->reject(); });
    QTest::mouseClick(fixture->button("buttonDevices"), Qt::LeftButton);
    QTest::mouseClick(fixture->button("buttonDevices"), Qt::LeftButton);
    QTest::mouseClick(fixture->button("buttonClear"), Qt::LeftButton);
    QTRY_VERIFY(driver.allMet() && nothingShows());
    QCoreApplication::processEvents();
    QCOMPARE(driver.unexpected(), 0);
    QCOMPARE(shownRows(), 1);
}

// No handler of the button may be under way while a dialog shows, as the button goes with the view: the dialog comes
// after the click is through.
void TestRawViewDialogs::viewMayGoUnderADialogOfAButton()
{
    for (const char *button : {"buttonDevices", "buttonClear"}) {
        init();
        showOneFrame();
        const ViewEnder ender;
        QTest::mouseClick(fixture->button(button), Qt::LeftButton);
        QVERIFY2(fixture->view && nothingShows(), button);
        QTRY_VERIFY2(!fixture->view, button);
    }
}

void TestRawViewDialogs::viewMayGoUnderADialogOfTheContextMenu()
{
    for (const char *text : {"Devices&&Channels Filter", "Clear"}) {
        init();
        showOneFrame();
        const ViewEnder ender;
        QMenu *menu = fixture->openContextMenu();
        QAction *action = menu ? RawViewWindowFixture::entry(menu, QLatin1String(text)) : nullptr;
        QVERIFY2(action, text);
        QTest::mouseClick(menu, Qt::LeftButton, {}, menu->actionGeometry(action).center());
        QVERIFY2(fixture->view && nothingShows(), text);
        QTRY_VERIFY2(!fixture->view, text);
    }
}

void TestRawViewDialogs::viewMayGoBeforeItsDialogShows()
{
    const MessageBoxDriver driver;
    QTest::mouseClick(fixture->button("buttonDevices"), Qt::LeftButton);
    fixture->view.reset();
    QCoreApplication::processEvents();
    QVERIFY(nothingShows());
    QCOMPARE(driver.unexpected(), 0);
}

void TestRawViewDialogs::contextMenuActsLikeTheButtons()
{
    MessageBoxDriver driver;
    fixture->triggerEntry(QStringLiteral("Filter"));
    QVERIFY(fixture->filterBar()->isVisible());
    fixture->triggerEntry(QStringLiteral("Pause "));
    QVERIFY(fixture->view->isPaused());
    QCOMPARE(fixture->button("buttonPause")->text(), QStringLiteral("Resume"));
    fixture->triggerEntry(QStringLiteral("Resume"));
    QVERIFY(!fixture->view->isPaused());
    showOneFrame();
    driver.expectBox(QMessageBox::Yes);
    fixture->triggerEntry(QStringLiteral("Clear"));
    QTRY_COMPARE(shownRows(), 0);
    driver.expectDialog([](QDialog *dialog) { dialog->reject(); });
    fixture->triggerEntry(QStringLiteral("Devices&&Channels Filter"));
    QTRY_VERIFY(driver.allMet());
    QCOMPARE(driver.seen().size(), std::size_t{1});
}
