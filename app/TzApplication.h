// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "common/platform/WakeEvent.h"

#include <QApplication>
#include <QSocketNotifier>

#include <atomic>
#include <exception>
#include <mutex>

/// The application object. An exception that escapes a slot must not travel through the toolkit's event loop: it is
/// kept here, all loops end, and run() throws it to the caller.
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
    /// Orders the end from any thread: endRequested(), then end(), on the UI thread.
    void requestEnd();
    /// Whether an exception has been kept that run() has not thrown yet.
    bool hasFailed() const { return m_failed.load(); }

Q_SIGNALS:
    /// The program is told to end, and does so when the receivers return. Emitted on the UI thread.
    void endRequested();

private:
    void keepException();
    void onEndOrdered();

    std::mutex m_mutex; // protects m_exception
    std::exception_ptr m_exception;
    std::atomic<bool> m_failed{false};
    std::atomic<bool> m_ending{false};
    Common::platform::WakeEvent m_endOrder;
    QSocketNotifier m_endNotifier{m_endOrder.descriptor(), QSocketNotifier::Read};
};
