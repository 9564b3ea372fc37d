// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>

#include <cstdint>
#include <string>
#include <vector>

namespace tztest {

/// Bytes written as hexadecimal text, blanks allowed.
inline std::vector<std::uint8_t> bytesOf(const char *hex)
{
    const QByteArray bytes = QByteArray::fromHex(hex);
    return {bytes.begin(), bytes.end()};
}

/// Bytes of any container as upper-case hexadecimal text with blanks between.
template <typename Bytes> std::string hexOf(const Bytes &bytes)
{
    return QByteArray(reinterpret_cast<const char *>(bytes.data()), static_cast<int>(bytes.size()))
        .toHex(' ')
        .toUpper()
        .toStdString();
}

} // namespace tztest
