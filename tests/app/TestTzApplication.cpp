// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/app/TestTzApplication.h"

#include "app/TzApplication.h"
#include "tests/support/MessageBoxDriver.h"

#include <QDialog>
#include <QMessageBox>
#include <QThread>
#include <QTimer>
#include <QtTest>

#include <stdexcept>
#include <string>

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

void throwLater(const char *text)
{
    QTimer::singleShot(0, qApp, [text] { throw std::runtime_error(text); });
}

} // namespace

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
    QThread thread;
    QObject worker;
    worker.moveToThread(&thread);
    thread.start();
    QMetaObject::invokeMethod(
        &worker, [] { throw std::runtime_error("elsewhere"); }, Qt::QueuedConnection);
    QCOMPARE(runForFailure(), std::string("elsewhere"));
    thread.quit();
    thread.wait();
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

void TestTzApplication::anEndOrderedBeforeTheLoopEndsItAtOnce()
{
    QTimer::singleShot(0, qApp, [] { application().end(); });
    QDialog dialog;
    dialog.exec(); // ends because of the order
    QCOMPARE(application().run(), 0);
}
