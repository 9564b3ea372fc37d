// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/TzApplication.h"

#include "common/Log.h"

#include <QThread>

#include <utility>

TzApplication::TzApplication(int &argc, char **argv)
    : QApplication(argc, argv)
{
    connect(&m_endNotifier, &QSocketNotifier::activated, this, &TzApplication::onEndOrdered);
}

bool TzApplication::notify(QObject *receiver, QEvent *event)
{
    std::exception_ptr exception;
    try {
        return QApplication::notify(receiver, event);
    } catch (...) {
        exception = std::current_exception();
    }
    keepException(std::move(exception)); // behind the handler, so that this thread lets go of it with the move
    return false;
}

void TzApplication::keepException(std::exception_ptr exception)
{
    if (!keep(std::move(exception))) {
        if (!m_swallowed.exchange(true))
            Common::logError("Further exceptions after the one that ended the program are left out");
        return;
    }
    if (QThread::currentThread() == thread())
        end();
    else
        requestEnd();
}

bool TzApplication::keep(std::exception_ptr exception)
{
    const std::lock_guard lock(m_mutex);
    if (m_handedOver)
        return false;
    if (!m_exception) // the first is the cause; what follows while the loops end is not
        m_exception = std::move(exception);
    m_failed.store(true);
    return true;
}

std::exception_ptr TzApplication::handOver()
{
    const std::lock_guard lock(m_mutex);
    m_failed.store(false);
    m_handedOver = m_exception != nullptr;
    return std::exchange(m_exception, nullptr);
}

void TzApplication::requestEnd()
{
    m_endOrder.set();
}

void TzApplication::onEndOrdered()
{
    m_endOrder.wait(std::chrono::milliseconds(0)); // takes it
    const bool failed = hasFailed();
    end(); // first, so that a question which a closing window asks returns at once
    if (!failed)
        Q_EMIT endRequested();
}

void TzApplication::end()
{
    m_ending.store(true);
    quit();
}

int TzApplication::run()
{
    {
        const std::lock_guard lock(m_mutex);
        m_handedOver = false;
    }
    m_swallowed.store(false);
    // An order to quit that came before the loop is lost on exec(), and it keeps message boxes from showing until a
    // loop has ended: so the loop runs in any case.
    if (m_ending.load() || m_failed.load())
        QMetaObject::invokeMethod(this, &QCoreApplication::quit, Qt::QueuedConnection);
    const int result = exec();
    m_ending.store(false);
    if (const std::exception_ptr failure = handOver())
        std::rethrow_exception(failure);
    return result;
}
