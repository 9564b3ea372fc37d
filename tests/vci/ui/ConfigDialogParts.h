// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "vci/ui/TzVciChannelTable.h"
#include "vci/ui/TzVciConfigDialog.h"

#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>

/// The controls of a device settings dialog, by the names that the dialog gives them.
struct ConfigDialogParts
{
    explicit ConfigDialogParts(const TzVciConfigDialog &dialog)
        : toggle(dialog.findChild<QPushButton *>(QStringLiteral("buttonToggleDevice")))
        , localIp(dialog.findChild<QLineEdit *>(QStringLiteral("lineEditLocalIp")))
        , devices(dialog.findChild<QListWidget *>(QStringLiteral("listDevices")))
        , can(dialog.findChild<TzVciChannelTable *>(QStringLiteral("tableCan")))
        , lin(dialog.findChild<TzVciChannelTable *>(QStringLiteral("tableLin")))
    {
    }

    QPushButton *toggle;
    QLineEdit *localIp;
    QListWidget *devices;
    TzVciChannelTable *can;
    TzVciChannelTable *lin;
};
