// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDesktopServices>
#include <QFileInfo>
#include <QList>
#include <QObject>
#include <QUrl>

namespace tztest {

/// Stands in for the desktop while it lives: keeps the documents that would have been opened.
class DocumentOpener : public QObject
{
    Q_OBJECT
public:
    DocumentOpener() { QDesktopServices::setUrlHandler(QStringLiteral("file"), this, "open"); }
    ~DocumentOpener() override { QDesktopServices::unsetUrlHandler(QStringLiteral("file")); }
    int count() const { return m_opened.size(); }
    /// The last one; empty before the first.
    QString openedFile() const
    {
        return m_opened.isEmpty() ? QString() : QFileInfo(m_opened.last().toLocalFile()).canonicalFilePath();
    }

public Q_SLOTS:
    void open(const QUrl &url) { m_opened.append(url); }

private:
    QList<QUrl> m_opened;
};

} // namespace tztest
