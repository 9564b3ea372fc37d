// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "common/platform/WakeEvent.h"

#include <QApplication>
#include <QSocketNotifier>

#include <atomic>
#include <exception>
#include <mutex>

/// The application object. An exception that escapes a slot must not travel through the toolkit's event loop: it is
/// kept here, all loops end, and run() throws it to the caller. What is thrown after that, while the caller tells the
/// user, ends nothing any more: the message box must stay.
class TzApplication : public QApplication
{
    Q_OBJECT
public:
    /// @param argc  must live as long as the application, as for the toolkit's own
    TzApplication(int &argc, char **argv);

    /// Catches what a handler of @p event throws. Any thread that has an event loop.
    bool notify(QObject *receiver, QEvent *event) override;

    /// Runs the event loop to its end. An exception kept, or an end ordered, before the call ends it at once.
    /// @return the exit code; throws the exception that was kept, if any
    int run();
    /// Ends all event loops, also for a run() that has not begun. UI thread only.
    void end();
    /// Orders the end from any thread: end(), then endRequested(), on the UI thread.
    void requestEnd();
    /// Whether an exception has been kept that run() has not thrown yet.
    bool hasFailed() const { return m_failed.load(); }

Q_SIGNALS:
    /// The program is told to end, and does so when the receivers return. No dialog waits for an answer any more, also
    /// none that a receiver shows. Emitted on the UI thread.
    void endRequested();

private:
    void keepException(std::exception_ptr exception);
    bool keep(std::exception_ptr exception); // false once one has been handed over
    std::exception_ptr handOver();
    void onEndOrdered();

    std::mutex m_mutex; // protects the next two
    std::exception_ptr m_exception;
    bool m_handedOver = false; // run() has thrown; until the next run() nothing is kept
    std::atomic<bool> m_failed{false};
    std::atomic<bool> m_ending{false};
    std::atomic<bool> m_swallowed{false}; // an exception came after one that run() threw
    Common::platform::WakeEvent m_endOrder;
    QSocketNotifier m_endNotifier{m_endOrder.descriptor(), QSocketNotifier::Read};
};
