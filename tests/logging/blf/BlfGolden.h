// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tests/database/corpus/Corpus.h"

#include <QByteArray>
#include <QJsonObject>
#include <QStringList>

#include <cstddef>
#include <cstdint>
#include <map>
#include <vector>

namespace tztest {

/// An object of a public BLF log as an independent reader found it, its fields under that reader's names.
struct GoldenBlfObject
{
    std::uint32_t type = 0;
    std::uint64_t timeNs = 0;
    QJsonObject fields{};

    /// A field in decimal or with "0x" in hexadecimal; 0 where there is none.
    std::uint64_t number(const char *name) const;
    /// A field of hexadecimal pairs.
    QByteArray bytes(const char *name) const;
    QString text(const char *name) const;
};

/// What that reader made of a whole file.
struct GoldenBlf
{
    bool hasMagic = false;
    std::map<std::uint32_t, std::size_t> counts; ///< objects by type, containers not counted
    QStringList warnings;
    std::vector<GoldenBlfObject> objects; ///< of the types that become records, in the file's order

    static GoldenBlf of(const tzcorpus::File &file);
    /// Whether the file ends before it should, so that something of it must be told as lost.
    bool isTruncated() const;
};

/// The BLF logs of the folder that TZ_CORPUS names, blf/ and blf/errors/, and their results in golden/blf/. One
/// nameless file where it is unset, so that each test is there and says that it is skipped.
std::vector<tzcorpus::File> blfCorpusFiles();

} // namespace tztest
