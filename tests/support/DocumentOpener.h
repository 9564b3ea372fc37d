// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDesktopServices>
#include <QFileInfo>
#include <QObject>
#include <QUrl>

namespace tztest {

/// Stands in for the desktop while it lives: keeps the document that would have been opened.
class DocumentOpener : public QObject
{
    Q_OBJECT
public:
    DocumentOpener() { QDesktopServices::setUrlHandler(QStringLiteral("file"), this, "open"); }
    ~DocumentOpener() override { QDesktopServices::unsetUrlHandler(QStringLiteral("file")); }
    QString openedFile() const { return QFileInfo(m_opened.toLocalFile()).canonicalFilePath(); }

public Q_SLOTS:
    void open(const QUrl &url) { m_opened = url; }

private:
    QUrl m_opened;
};

} // namespace tztest
