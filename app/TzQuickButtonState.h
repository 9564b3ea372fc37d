// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

class QToolButton;

/// How the quick button of the tool row looks: it closes everything while a channel is open, and opens a device
/// otherwise. That it is checkable is what tells the two apart.
struct TzQuickButtonState
{
    bool checkable = false;
    QString text;
    QString iconPath;
    QString toolTip;

    static TzQuickButtonState forChannels(bool anyChannelOpen);
    /// Also shows a checkable button as checked, whatever a click has made of it.
    void applyTo(QToolButton &button) const;
};
