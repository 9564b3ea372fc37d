// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tests/logging/blf/BlfLogFixture.h"

#include <QByteArray>

namespace tztest {

/// One stored container with two frames of 10 us stamps and a system variable of odd size between them.
inline constexpr const char *blfExampleHex = "4c4f474790000000d41a3e000000000074010000000000007201000000000000"
                                             "0300000000000000e8070300020005000e001e000f00fa00e807030002000500"
                                             "0e001e001100fa00000000000000000000000000000000000000000000000000"
                                             "0000000000000000000000000000000000000000000000000000000000000000"
                                             "000000000000000000000000000000004c4f424a10000100e20000000a000000"
                                             "0000000000000000c2000000000000004c4f424a200001003800000056000000"
                                             "010000000000000040e20100000000000200010310f1da981122330000000000"
                                             "e0160400860000004c4f424a2000010051000000480000000200000000000000"
                                             "002f68590000000002000000000000000000000000000000"
                                             "0d0000000400000000000000000000003a3a42656e63683a3a4d6f6465f9ffff"
                                             "ff004c4f424a2000010038000000560000000100000000000000400d03000000"
                                             "00000200010310f1da981122330000000000e0160400860000000000";

inline BlfBytes exampleFile()
{
    const QByteArray bytes = QByteArray::fromHex(blfExampleHex);
    return {bytes.begin(), bytes.end()};
}

/// The same stream of objects.
inline BlfBytes exampleStream()
{
    constexpr std::ptrdiff_t begin = 0xB0;
    constexpr std::ptrdiff_t length = 194;
    const BlfBytes file = exampleFile();
    return {file.begin() + begin, file.begin() + begin + length};
}

inline SeenObjects exampleObjects()
{
    const SeenObject frame{.type = 86, .id = 0x98DAF110, .data = {0x11, 0x22, 0x33}};
    SeenObjects objects{frame, {.type = 72, .name = "::Bench::Mode", .value = {0xF9, 0xFF, 0xFF, 0xFF}}, frame};
    objects[0].timeNs = 1'234'560'000;
    objects[1].timeNs = 1'500'000'000;
    objects[2].timeNs = 2'000'000'000;
    return objects;
}

} // namespace tztest
