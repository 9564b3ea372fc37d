// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QApplication>

/// The modal dialog that shows, where it is one of that class; else null.
template <typename Dialog> Dialog *openDialog()
{
    return qobject_cast<Dialog *>(QApplication::activeModalWidget());
}

// Conditions of steps.
template <typename Dialog> bool isOpen()
{
    return openDialog<Dialog>() != nullptr;
}
inline bool noDialogIsOpen()
{
    return QApplication::activeModalWidget() == nullptr;
}
