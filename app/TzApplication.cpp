// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/TzApplication.h"

#include <QEvent>
#include <QThread>

#include <memory>
#include <utility>

namespace {

QEvent::Type endEventType()
{
    static const auto type = static_cast<QEvent::Type>(QEvent::registerEventType());
    return type;
}

} // namespace

bool TzApplication::notify(QObject *receiver, QEvent *event)
{
    // Pairs with postEnd(). The toolkit's own lock orders the two already, but thread sanitizers cannot see into it.
    m_endsPosted.load(std::memory_order_acquire);
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
        postEnd();
}

void TzApplication::requestEnd()
{
    postEnd();
}

void TzApplication::postEnd()
{
    auto order = std::make_unique<QEvent>(endEventType());
    m_endsPosted.fetch_add(1, std::memory_order_release);
    postEvent(this, order.release());
}

bool TzApplication::event(QEvent *event)
{
    if (event->type() != endEventType())
        return QApplication::event(event);
    if (!hasFailed())
        Q_EMIT endRequested();
    end();
    return true;
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
