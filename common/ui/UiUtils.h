// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QCoreApplication>
#include <QString>
#include <QStringList>

class QTableWidget;
class QToolButton;
class QWidget;

namespace Common {

/// Small services of windows. All functions are static and belong to the UI thread.
class UiUtils
{
    Q_DECLARE_TR_FUNCTIONS(Common::UiUtils)
public:
    /// Rich text of a tool tip. A keyword that occurs in the text is emphasised there; every other entry is a line of
    /// HTML that follows the text, with the classes label, indent and comment, which keeps line ends, at its service.
    static QString formatToHtml(const QString &text, const QStringList &keywords);
    /// The encodings offered when a text file is imported, UTF-8 first; only those that the toolkit can decode.
    static QStringList getFileEncodings();

    // The selected row is the current one where it is selected, else the first selected one; without one nothing
    // happens. A row moves with its items and cell widgets and stays selected.
    static void removeTableRow(QTableWidget *table);
    static void moveTableRowToTop(QTableWidget *table);
    static void moveTableRowUp(QTableWidget *table);
    static void moveTableRowDown(QTableWidget *table);
    static void moveTableRowToBottom(QTableWidget *table);
    /// Removes all rows; false if there was none.
    static bool clearTable(QTableWidget *table);
    /// Sets the check state of that column in all rows; a cell that is empty gets an item.
    static void setTableItemCheckState(QTableWidget *table, int column, bool checked);

    /// A flat tool button with its text beside the icon, owned by @p parent. @param iconSize edge in pixels, 16 where
    /// it is not above zero
    static QToolButton *createToolButton(const QString &iconPath, const QString &text, const QString &toolTip,
                                         int iconSize, QWidget *parent);
    /// Modal input of one line. @return the text, empty when cancelled
    /// @param allowEmpty  false: OK is enabled only while the text holds more than blanks
    static QString getInputText(QWidget *parent, const QString &title, const QString &label, const QString &text,
                                bool allowEmpty);
    /// Opens a document with the system's viewer. A relative path is looked for below the working directory, then
    /// beside the program in its build tree (../) and where it is installed (../share/tzbench/). False, with a text for
    /// the user in @p error where given, if it is missing or nothing can show it.
    static bool openHelpFile(const QString &path, QString *error);
    /// There is no service to ask: notes the call at debug level and returns false.
    static bool checkForUpdates(bool silent);
};

} // namespace Common
