// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/TzQuickButtonState.h"

#include <QCoreApplication>
#include <QIcon>
#include <QToolButton>

TzQuickButtonState TzQuickButtonState::forChannels(bool anyChannelOpen)
{
    const auto translated = [](const char *text) { return QCoreApplication::translate("TzQuickButtonState", text); };
    const QString action = anyChannelOpen ? QStringLiteral("close") : QStringLiteral("open");
    return {.checkable = anyChannelOpen,
            .text = anyChannelOpen ? translated("Close") : translated(" Open "),
            .iconPath = QStringLiteral(":/resource/vci/vci_%1.png").arg(action),
            .toolTip = translated("Quickly %1 TZVCI device").arg(action)};
}

void TzQuickButtonState::applyTo(QToolButton &button) const
{
    button.setCheckable(checkable);
    button.setChecked(checkable);
    button.setText(text);
    button.setIcon(QIcon(iconPath));
    button.setToolTip(toolTip);
}
