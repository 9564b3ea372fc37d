// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QIcon>
#include <QImage>

/// Whether @p icon draws the same as the resource @p path.
inline bool showsIcon(const QIcon &icon, const char *path)
{
    constexpr int pixels = 32;
    const QImage expected = QIcon(QString::fromLatin1(path)).pixmap(pixels).toImage();
    return !expected.isNull() && icon.pixmap(pixels).toImage() == expected;
}
