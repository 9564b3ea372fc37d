// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <map>
#include <vector>

/// What a file manager remembers across runs.
struct FileHistory
{
    struct File
    {
        QString filePath; ///< as it was loaded
        QString encoding; ///< name of a codec
    };

    std::vector<File> files;
    std::map<QString, QString> customFileMap;
};
