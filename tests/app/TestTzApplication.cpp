// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/app/TestTzApplication.h"

#include "app/TzApplication.h"
#include "tests/support/LogCapture.h"
#include "tests/support/MessageBoxDriver.h"

#include <QAbstractButton>
#include <QDialog>
#include <QMessageBox>
#include <QTimer>
#include <QtTest>

#include <stdexcept>
#include <string>
#include <thread>

namespace {

TzApplication &application()
{
    return *static_cast<TzApplication *>(QCoreApplication::instance());
}

/// Runs the application; the text of the exception that comes out of it.
std::string runForFailure()
{
    try {
        application().run();
    } catch (const std::exception &failure) {
        return failure.what();
    } catch (int number) {
        return std::to_string(number);
    }
    return {};
}

class ThrowingObject : public QObject
{
public:
    bool event(QEvent *) override { throw std::runtime_error("elsewhere"); }
};

void throwLater(const char *text)
{
    QTimer::singleShot(0, qApp, [text] { throw std::runtime_error(text); });
}

} // namespace

void TestTzApplication::init()
{
    application().end();
    application().run(); // a run that fails keeps nothing more until the next: begin behind one that does not
}

void TestTzApplication::anExceptionOutOfASlotEndsTheLoopAndComesOutOfRun()
{
    throwLater("in the loop");
    QCOMPARE(runForFailure(), std::string("in the loop"));
    QVERIFY(!application().hasFailed()); // handed over
}

void TestTzApplication::anExceptionInADialogBeforeTheLoopComesOutOfRun()
{
    throwLater("in the dialog");
    QDialog dialog;
    dialog.exec(); // ends because of the exception
    QVERIFY(application().hasFailed());
    QCOMPARE(runForFailure(), std::string("in the dialog"));
}

void TestTzApplication::theFirstOfSeveralExceptionsIsKept()
{
    throwLater("cause");
    throwLater("consequence");
    QCOMPARE(runForFailure(), std::string("cause"));
}

void TestTzApplication::anythingThrownIsKept()
{
    QTimer::singleShot(0, qApp, [] { throw 42; });
    QCOMPARE(runForFailure(), std::string("42"));
}

void TestTzApplication::anExceptionOnAnotherThreadComesOutOfRun()
{
    std::thread thread([] {
        ThrowingObject receiver;
        QEvent event(QEvent::User);
        application().notify(&receiver, &event);
    });
    QCOMPARE(runForFailure(), std::string("elsewhere"));
    thread.join();
}

void TestTzApplication::anEndRequestedOnAnotherThreadIsAnnouncedAndEndsTheLoop()
{
    int announced = 0;
    const auto connection = connect(&application(), &TzApplication::endRequested, this, [&] { ++announced; });
    std::thread thread([] { application().requestEnd(); });
    QCOMPARE(application().run(), 0);
    thread.join();
    disconnect(connection);
    QCOMPARE(announced, 1);
}

void TestTzApplication::aMessageBoxShowsAfterAnException()
{
    throwLater("early");
    QDialog dialog;
    dialog.exec();
    QCOMPARE(runForFailure(), std::string("early"));
    tztest::MessageBoxDriver driver;
    driver.expectBox(QMessageBox::Ok);
    QMessageBox::critical(nullptr, QStringLiteral("title"), QStringLiteral("text"));
    QVERIFY(driver.allMet());
}

void TestTzApplication::aThrowerThatRepeatsLeavesTheMessageBoxAlone()
{
    constexpr int throwsUnderTheBox = 5;
    const tztest::LogCapture log;
    int thrown = 0;
    QTimer thrower;
    connect(&thrower, &QTimer::timeout, this, [&] {
        ++thrown;
        throw std::runtime_error("again");
    });
    thrower.start(1);
    QCOMPARE(runForFailure(), std::string("again"));
    thrown = 0;
    QMessageBox box(QMessageBox::Critical, QStringLiteral("title"), QStringLiteral("text"), QMessageBox::Ok);
    QTimer answer;
    connect(&answer, &QTimer::timeout, &box, [&] {
        if (thrown >= throwsUnderTheBox)
            box.button(QMessageBox::Ok)->click();
    });
    answer.start(1);
    QCOMPARE(box.exec(), static_cast<int>(QMessageBox::Ok)); // it ended by its button
    QVERIFY(thrown >= throwsUnderTheBox);
    QVERIFY(!application().hasFailed());
    QCOMPARE(log.count(3, "Further exceptions after the one that ended the program are left out"), std::size_t{1});
    QCOMPARE(runForFailure(), std::string("again")); // a new run keeps the first again
}

void TestTzApplication::anEndOrderedBeforeTheLoopEndsItAtOnce()
{
    QTimer::singleShot(0, qApp, [] { application().end(); });
    QDialog dialog;
    dialog.exec(); // ends because of the order
    QCOMPARE(application().run(), 0);
}
