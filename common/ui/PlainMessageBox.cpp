// SPDX-License-Identifier: GPL-3.0-or-later
#include "common/ui/PlainMessageBox.h"

namespace Common {

PlainMessageBox::PlainMessageBox(Icon icon, const QString &title, const QString &text, StandardButtons buttons,
                                 QWidget *parent)
    : QMessageBox(icon, title, text, buttons, parent)
{
    setTextFormat(Qt::PlainText);
}

} // namespace Common
