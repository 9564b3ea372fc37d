// SPDX-License-Identifier: GPL-3.0-or-later
#include "vci/ui/TzVciInputBlocker.h"

#include <QCoreApplication>
#include <QEvent>

TzVciInputBlocker::TzVciInputBlocker()
{
    QCoreApplication::instance()->installEventFilter(this);
}

TzVciInputBlocker::~TzVciInputBlocker()
{
    QCoreApplication::instance()->removeEventFilter(this);
}

bool TzVciInputBlocker::eventFilter(QObject *watched, QEvent *event)
{
    switch (event->type()) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseButtonDblClick:
    case QEvent::Wheel:
    case QEvent::KeyPress:
    case QEvent::KeyRelease:
    case QEvent::Shortcut:
    case QEvent::ShortcutOverride:
    case QEvent::InputMethod:
    case QEvent::ContextMenu:
    case QEvent::TabletPress:
    case QEvent::TabletMove:
    case QEvent::TabletRelease:
    case QEvent::TouchBegin:
    case QEvent::TouchUpdate:
    case QEvent::TouchEnd: return true;
    case QEvent::Close:
        if (!event->spontaneous()) // the program's own closing goes through
            break;
        event->ignore();
        return true;
    default: break;
    }
    return QObject::eventFilter(watched, event);
}
