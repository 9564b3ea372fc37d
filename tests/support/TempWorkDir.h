// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDir>
#include <QTemporaryDir>

namespace tztest {

/// A temporary folder that is the working directory for its lifetime: config/, logs/ and doc/ are relative to it.
class TempWorkDir
{
public:
    TempWorkDir()
        : m_previous(QDir::currentPath())
    {
        QDir::setCurrent(m_dir.path());
    }
    ~TempWorkDir() { QDir::setCurrent(m_previous); }
    TempWorkDir(const TempWorkDir &) = delete;
    TempWorkDir &operator=(const TempWorkDir &) = delete;
    QString filePath(const QString &name) const { return m_dir.filePath(name); }

private:
    QTemporaryDir m_dir;
    QString m_previous;
};

} // namespace tztest
