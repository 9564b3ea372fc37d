// SPDX-License-Identifier: GPL-3.0-or-later
#include "tools/demo/DemoScript.h"

#include <cstdio>

namespace {
constexpr int pollMs = 20;
constexpr qint64 stepLimitMs = 20000;
} // namespace

DemoScript::DemoScript(QObject *parent)
    : QObject(parent)
{
    m_timer.setInterval(pollMs);
    connect(&m_timer, &QTimer::timeout, this, &DemoScript::poll);
}

void DemoScript::add(const QString &name, Condition ready, Action action)
{
    m_steps.push_back({name, std::move(ready), std::move(action)});
}

void DemoScript::start()
{
    m_waiting.start();
    m_timer.start();
}

void DemoScript::poll()
{
    if (m_next == m_steps.size()) {
        m_timer.stop();
        Q_EMIT finished();
        return;
    }
    const Step &step = m_steps[m_next];
    if (!step.ready()) {
        if (m_waiting.elapsed() > stepLimitMs) {
            m_timer.stop();
            Q_EMIT failed(step.name);
        }
        return;
    }
    std::printf("demo: %s\n", qPrintable(step.name));
    std::fflush(stdout);
    ++m_next;
    m_waiting.restart();
    // Not from here: a timer does not fire while its own slot runs a modal dialog.
    QTimer::singleShot(0, this, step.action);
}
