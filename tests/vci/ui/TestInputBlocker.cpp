// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/vci/ui/TestInputBlocker.h"

#include "vci/ui/TzVciInputBlocker.h"

#include <QInputMethodEvent>
#include <QLineEdit>
#include <QTabletEvent>
#include <QtTest>

namespace {

/// Counts the pen's events that reach it.
class PenTarget : public QWidget
{
public:
    int events = 0;

protected:
    void tabletEvent(QTabletEvent *event) override
    {
        ++events;
        event->accept();
    }
};

void sendPen(QWidget &target)
{
    for (const auto type : {QEvent::TabletPress, QEvent::TabletMove, QEvent::TabletRelease}) {
        QTabletEvent event(type, QPointF(1, 1), QPointF(1, 1), QTabletEvent::Stylus, QTabletEvent::Pen, 0.5, 0, 0, 0.0,
                           0.0, 0, Qt::NoModifier, 0, Qt::LeftButton, Qt::LeftButton);
        QCoreApplication::sendEvent(&target, &event);
    }
}

void sendComposedText(QWidget &target)
{
    QInputMethodEvent event;
    event.setCommitString(QStringLiteral("7"));
    QCoreApplication::sendEvent(&target, &event);
}

} // namespace

void TestInputBlocker::dropsWhatTheUserDoes()
{
    PenTarget pen;
    QLineEdit edit;
    {
        const TzVciInputBlocker blocker;
        QTest::keyClicks(&edit, QStringLiteral("1"));
        sendComposedText(edit);
        sendPen(pen);
    }
    QCOMPARE(edit.text(), QString());
    QCOMPARE(pen.events, 0);
    sendComposedText(edit);
    sendPen(pen);
    QCOMPARE(edit.text(), QStringLiteral("7"));
    QCOMPARE(pen.events, 3);
}
