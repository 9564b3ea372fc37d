// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "database/ldf/LdfEncoding.h"

#include <QString>
#include <QStringList>

#include <cstdint>
#include <optional>

/// One signal. A frame holds copies of its signals, each with its own place, value and encoding.
struct LdfSignal
{
    QString name;
    std::uint16_t startBit = 0; ///< offset in the frame; 0 until the signal is placed in one
    std::uint16_t size = 0;     ///< bits, as written in the file
    std::uint64_t value = 0;    ///< current raw value
    QString initialValue;       ///< as written; a byte array keeps its braces
    QString publisher;          ///< empty for diagnostic signals
    QStringList subscribers;
    std::optional<LdfEncoding> encoding; ///< the signal's own copy
    QString comment;
};
