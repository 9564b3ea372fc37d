// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/TzApplication.h"

#include <QThread>

#include <utility>

TzApplication::TzApplication(int &argc, char **argv)
    : QApplication(argc, argv)
{
    connect(&m_endNotifier, &QSocketNotifier::activated, this, &TzApplication::onEndOrdered);
}

bool TzApplication::notify(QObject *receiver, QEvent *event)
{
    try {
        return QApplication::notify(receiver, event);
    } catch (...) {
        keepException();
        return false;
    }
}

void TzApplication::keepException()
{
    {
        const std::lock_guard lock(m_mutex);
        if (!m_exception) // the first is the cause; what follows while the loops end is not
            m_exception = std::current_exception();
    }
    m_failed.store(true);
    if (QThread::currentThread() == thread())
        end();
    else
        requestEnd();
}

void TzApplication::requestEnd()
{
    m_endOrder.set();
}

void TzApplication::onEndOrdered()
{
    m_endOrder.wait(std::chrono::milliseconds(0)); // takes it
    if (!hasFailed())
        Q_EMIT endRequested();
    end();
}

void TzApplication::end()
{
    m_ending.store(true);
    quit();
}

int TzApplication::run()
{
    // An order to quit that came before the loop is lost on exec(), and it keeps message boxes from showing until a
    // loop has ended: so the loop runs in any case.
    if (m_ending.load() || m_failed.load())
        QMetaObject::invokeMethod(this, &QCoreApplication::quit, Qt::QueuedConnection);
    const int result = exec();
    m_ending.store(false);
    m_failed.store(false);
    std::exception_ptr failure;
    {
        const std::lock_guard lock(m_mutex);
        failure = std::exchange(m_exception, nullptr);
    }
    if (failure)
        std::rethrow_exception(failure);
    return result;
}
