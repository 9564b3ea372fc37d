// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>

class QTableView;
class QTreeView;
class QWidget;

/// Saves what a traffic view shows to a file that the user names. The format follows the filter chosen in the dialog,
/// and the name gets its extension; a file that is there is replaced only when the user agrees. A file that cannot be
/// opened is told in a warning. UI thread; waits for the user, while the view and @p parent may go.
///
/// The contents are read after the dialog: the caller holds the view still meanwhile if they are to be what it shows.
/// All return whether a file was written.
class CommonFileManager : public QObject
{
    Q_OBJECT
public:
    /// @param withAsc  offers ASC as well, first; for the table of a CAN view
    static bool saveTable(QTableView *view, QWidget *parent, bool withAsc);
    static bool saveTree(QTreeView *view, QWidget *parent); ///< child rows below their parents, expanded or not
};
