// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/app/TestClosing.h"

#include "app/TzApplication.h"
#include "app/TzEndLimit.h"
#include "tests/app/AppFixture.h"
#include "tests/support/LogCapture.h"
#include "tests/support/MessageBoxDriver.h"

#include <QCloseEvent>
#include <QDialog>
#include <QMessageBox>
#include <QSignalSpy>
#include <QtTest>

#include <functional>

namespace {

constexpr std::uint8_t can = TzVciProtocolId::can;
constexpr std::uint8_t lin = TzVciProtocolId::lin;

/// A tool window as the main window owns them: a child that is a window of its own.
class ToolWindow : public QWidget
{
public:
    ToolWindow(QWidget *parent, bool agrees)
        : QWidget(parent, Qt::Window)
        , m_agrees(agrees)
    {
        show();
    }
    std::function<void()> onClose = [] {};

protected:
    void closeEvent(QCloseEvent *event) override
    {
        onClose();
        event->setAccepted(m_agrees);
    }

private:
    bool m_agrees;
};

} // namespace

void TestClosing::noKeepsTheProgramOpen()
{
    tztest::AppFixture fixture(1);
    QVERIFY(fixture.openAll(0, can, 0));
    tztest::MessageBoxDriver driver;
    driver.expectBox(QMessageBox::No);
    QVERIFY(!fixture.window->close());
    QCOMPARE(driver.seen().size(), std::size_t{1});
    QCOMPARE(driver.seen().front().title, QStringLiteral("Tips"));
    QCOMPARE(driver.seen().front().text, QStringLiteral("Are you sure to close the program?"));
    QVERIFY(fixture.window->isVisible());
    QVERIFY(fixture.helper().isDraining(can));
    QVERIFY(fixture.simulator.box(0).canChannel(0).open);
    QCOMPARE(fixture.titles().size(), std::size_t{1});
}

void TestClosing::yesClosesViewsAndDevicesAndStopsTheDrains()
{
    const tztest::LogCapture log;
    tztest::AppFixture fixture(2);
    QVERIFY(fixture.openAll(0, can, 0));
    QVERIFY(fixture.openAll(1, lin, 0));
    tztest::MessageBoxDriver driver;
    driver.expectBox(QMessageBox::Yes);
    QVERIFY(fixture.window->close());
    QVERIFY(!fixture.window->isVisible());
    QVERIFY(fixture.titles().empty());
    QVERIFY(fixture.area().subWindowList().isEmpty());
    QVERIFY(!fixture.helper().isDraining(can) && !fixture.helper().isDraining(lin));
    QVERIFY(!fixture.manager.getDevice(0) && !fixture.manager.getDevice(1));
    QCOMPARE(fixture.simulator.box(0).openChannels() + fixture.simulator.box(1).openChannels(), 0);
    QCOMPARE(log.count(1, "Closed all devices"), std::size_t{1});
}

void TestClosing::toolWindowsCloseBeforeTheDevices()
{
    tztest::AppFixture fixture(1);
    QVERIFY(fixture.openAll(0, can, 0));
    ToolWindow tool(fixture.window.get(), true);
    bool deviceWasOpen = false;
    tool.onClose = [&] { deviceWasOpen = fixture.simulator.box(0).canChannel(0).open && !fixture.titles().empty(); };
    tztest::MessageBoxDriver driver;
    driver.expectBox(QMessageBox::Yes);
    QVERIFY(fixture.window->close());
    QVERIFY(deviceWasOpen);
    QVERIFY(!tool.isVisible());
}

void TestClosing::aToolWindowThatRefusesKeepsTheProgramOpen()
{
    tztest::AppFixture fixture(1);
    QVERIFY(fixture.openAll(0, can, 0));
    ToolWindow tool(fixture.window.get(), false);
    tztest::MessageBoxDriver driver;
    driver.expectBox(QMessageBox::Yes);
    QVERIFY(!fixture.window->close());
    QVERIFY(fixture.window->isVisible() && tool.isVisible());
    QVERIFY(fixture.helper().isDraining(can));
    QVERIFY(fixture.simulator.box(0).canChannel(0).open);
}

void TestClosing::withoutQuestionARefusalDoesNotCount()
{
    tztest::AppFixture fixture(1);
    QVERIFY(fixture.openAll(0, can, 0));
    ToolWindow tool(fixture.window.get(), false);
    int asked = 0;
    tool.onClose = [&] { ++asked; };
    tztest::MessageBoxDriver driver;
    fixture.window->closeWithoutQuestion();
    fixture.window->closeWithoutQuestion(); // may be repeated
    QCOMPARE(asked, 1);
    QCOMPARE(driver.seen().size(), std::size_t{0});
    QVERIFY(!fixture.window->isVisible());
    QVERIFY(!fixture.simulator.box(0).canChannel(0).open);
}

void TestClosing::withoutQuestionAnOpenDialogEnds()
{
    tztest::AppFixture fixture;
    tztest::MessageBoxDriver driver;
    driver.expectDialog([&](QDialog *) { fixture.window->closeWithoutQuestion(); });
    fixture.window->openFirstWindows(); // returns because the dialog was closed
    QVERIFY(driver.allMet());
    QVERIFY(!fixture.window->isVisible());
    QVERIFY(fixture.titles().empty());
}

void TestClosing::withoutQuestionAnOpenQuestionEnds()
{
    tztest::AppFixture fixture(1);
    QVERIFY(fixture.openAll(0, can, 0));
    QTimer::singleShot(0, fixture.window.get(), [&] { fixture.window->closeWithoutQuestion(); });
    QVERIFY(fixture.window->close()); // the question is taken back, and the answer no longer counts
    QVERIFY(!fixture.simulator.box(0).canChannel(0).open);
}

void TestClosing::anOrderToEndWhileAToolWindowClosesIsTheEnd()
{
    tztest::AppFixture fixture(1);
    QVERIFY(fixture.openAll(0, can, 0));
    ToolWindow tool(fixture.window.get(), false);
    tool.onClose = [&] {
        fixture.window->closeWithoutQuestion(); // as a signal under a question of the tool window does
    };
    tztest::MessageBoxDriver driver;
    driver.expectBox(QMessageBox::Yes);
    QVERIFY(fixture.window->close()); // the refusal does not count any more
    QVERIFY(!fixture.simulator.box(0).canChannel(0).open);
}

void TestClosing::toldToEndAQuestionOfAToolWindowReturnsAtOnce()
{
    auto &application = *static_cast<TzApplication *>(QCoreApplication::instance());
    tztest::AppFixture fixture(1);
    QVERIFY(fixture.openAll(0, can, 0));
    connect(&application, &TzApplication::endRequested, fixture.window.get(), &TZBenchWindow::closeWithoutQuestion);
    ToolWindow tool(fixture.window.get(), true);
    int asked = 0;
    auto answer = QMessageBox::Yes;
    tool.onClose = [&] {
        ++asked;
        answer = QMessageBox::question(&tool, QStringLiteral("title"), QStringLiteral("Save?"));
    };
    tztest::MessageBoxDriver driver; // would answer if the question waited
    application.requestEnd();
    QCOMPARE(application.run(), 0);
    QCOMPARE(asked, 1);
    QVERIFY(answer != QMessageBox::Yes);
    QCOMPARE(driver.seen().size(), std::size_t{0});
    QVERIFY(!fixture.window->isVisible());
    QVERIFY(!fixture.simulator.box(0).canChannel(0).open);
}

void TestClosing::afterClosingCallbacksAndQueuedStatusCallsDoNothing()
{
    tztest::AppFixture fixture(1);
    QVERIFY(fixture.openDevice(0));
    const auto device = fixture.manager.getDevice(0);
    QCoreApplication::processEvents();
    QSignalSpy status(&fixture.helper(), &TzBenchWindowHelper::sigVciStatusChanged);
    QVERIFY(fixture.openChannel(0, can, 0)); // its status call is queued behind the shutdown
    fixture.helper().shutdown();
    QCoreApplication::processEvents();
    QCOMPARE(status.count(), 0);
    QVERIFY(fixture.titles().empty());
    QVERIFY(!fixture.helper().isDraining(can));
    fixture.helper().shutdown(); // may be repeated
}

void TestClosing::aDeviceMayOutliveTheWindow()
{
    tztest::AppFixture fixture(1);
    QVERIFY(fixture.openAll(0, can, 0));
    fixture.startLoad(0, 5000);
    QVERIFY(tztest::waitFor([&] { return fixture.countersOf(0).total > 100; }));
    fixture.window.reset(); // destroyed without being closed, as after an exception
    const auto sent = [&] { return fixture.simulator.box(0).counters(tzsim::Family::can, 0).framesSent; };
    const auto before = sent();
    QVERIFY(tztest::waitFor([&] { return sent() > before + 100; })); // the box still delivers
    QCOMPARE(fixture.manager.closeDevice(0), TzVciResult::ok);
    fixture.window = std::make_unique<TZBenchWindow>(&fixture.manager, &fixture.store, &fixture.scanner);
}

void TestClosing::windowDestroyedWithoutClosingLeavesTheDevicesAlone()
{
    tztest::AppFixture fixture(1);
    fixture.helper().newView(TzVciViewKind::can, TzBenchWindowHelper::Request::ByUser);
    fixture.helper().newView(TzVciViewKind::lin, TzBenchWindowHelper::Request::ByUser);
    QVERIFY(fixture.openAll(0, can, 0));
    tztest::MessageBoxDriver driver;
    fixture.window.reset();
    QCoreApplication::processEvents();
    QCOMPARE(driver.seen().size(), std::size_t{0});
    QVERIFY(fixture.simulator.box(0).canChannel(0).open);
    QCOMPARE(fixture.manager.closeAllDevices(), TzVciResult::ok);
    fixture.window = std::make_unique<TZBenchWindow>(&fixture.manager, &fixture.store, &fixture.scanner);
}

void TestClosing::anEndLimitThatPassesCallsItsFunction()
{
    std::atomic<bool> expired{false};
    const TzEndLimit limit(std::chrono::milliseconds(5), [&] { expired.store(true); });
    QVERIFY(tztest::waitFor([&] { return expired.load(); }));
}

void TestClosing::anEndLimitKeptCallsNothing()
{
    std::atomic<bool> expired{false};
    {
        const TzEndLimit limit(std::chrono::hours(1), [&] { expired.store(true); });
    }
    QVERIFY(!expired.load());
}
