// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QString>
#include <QTimer>

#include <functional>
#include <vector>

/// Steps taken one after the other, each as soon as its condition holds. A step's action may run a modal dialog: the
/// following steps then go on inside that dialog's event loop. UI thread only.
class DemoScript : public QObject
{
    Q_OBJECT
public:
    using Condition = std::function<bool()>;
    using Action = std::function<void()>;

    explicit DemoScript(QObject *parent = nullptr);

    /// @param name  what to print, and to blame when @p ready does not hold within 20 s
    void add(const QString &name, Condition ready, Action action);
    void start();

Q_SIGNALS:
    void finished();
    /// A step's condition did not come true in time. The script has ended.
    void failed(const QString &step);

private:
    struct Step
    {
        QString name;
        Condition ready;
        Action action;
    };

    void poll();

    std::vector<Step> m_steps;
    std::size_t m_next = 0;
    QTimer m_timer;
    QElapsedTimer m_waiting;
};
