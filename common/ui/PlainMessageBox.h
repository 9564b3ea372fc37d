// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QMessageBox>

namespace Common {

/// A message box that shows its text letter by letter. For texts that hold something from outside, such as the name of
/// a file or what the system says of a failure: an ordinary box would take "<b>" in them for markup. UI thread.
class PlainMessageBox : public QMessageBox
{
    Q_OBJECT
public:
    PlainMessageBox(Icon icon, const QString &title, const QString &text, StandardButtons buttons,
                    QWidget *parent = nullptr);
};

} // namespace Common
