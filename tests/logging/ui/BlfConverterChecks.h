// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tests/logging/ui/BlfConverterFixture.h"

/// What the boxes of the converter say, and what it looks like when none shows.
namespace tztest {

inline void verifyBox(const MessageBoxDriver::Seen &box, QMessageBox::Icon icon, const char *title, const QString &text)
{
    QCOMPARE(box.title, QString::fromLatin1(title));
    QCOMPARE(box.text, text);
    QCOMPARE(box.icon, static_cast<int>(icon));
    QCOMPARE(box.textFormat, Qt::PlainText);
}

inline void verifySuccessBox(const MessageBoxDriver::Seen &box, const QString &path)
{
    verifyBox(box, QMessageBox::Information, "Conversion Successful",
              QStringLiteral("File has been successfully converted and saved to:\n%1").arg(path));
    QStringList buttons = box.buttons;
    buttons.sort();
    QCOMPARE(buttons, (QStringList{"Close", "Open File", "Open Folder"}));
    QCOMPARE(box.defaultButton, QStringLiteral("Open File"));
}

inline void verifyFailureBox(const MessageBoxDriver::Seen &box)
{
    verifyBox(box, QMessageBox::Critical, "Conversion Failed",
              QStringLiteral("An error occurred during file conversion. Please check the log for details."));
    QCOMPARE(box.buttons, QStringList{"OK"});
}

/// As after the construction, but for what the user entered.
inline void verifyIdle(const BlfConverterFixture &fixture)
{
    QVERIFY(!fixture.dialog.isProcessing());
    QVERIFY(!QGuiApplication::overrideCursor());
    QVERIFY(!fixture.progress()->isVisible());
    for (const char *name : {"lineEditInput", "buttonBrowseInput", "lineEditOutput", "buttonBrowseOutput", "radioCsv",
                             "radioAsc", "checkInternalEvents", "checkAdditionalInfo", "buttonReset"})
        QVERIFY2(fixture.get<QWidget>(name)->isEnabled(), name);
}

} // namespace tztest
