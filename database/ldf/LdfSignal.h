// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "database/ldf/LdfEncoding.h"

#include <QString>
#include <QStringList>

#include <cstdint>
#include <memory>

/// One signal. A frame holds copies of its signals, each with its own place and value.
struct LdfSignal
{
    QString name;
    std::uint16_t startBit = 0; ///< offset in the frame; 0 until the signal is placed in one
    std::uint16_t size = 0;     ///< bits, as written in the file
    std::uint64_t value = 0;    ///< current raw value
    QString initialValue;       ///< as written; a byte array keeps its braces
    QString publisher;          ///< empty for diagnostic signals
    QStringList subscribers;
    /// Null for none. Never changed once it is made, so all signals of an encoding hold the same one, however many they
    /// are; to change a signal's encoding, give it a new one.
    std::shared_ptr<const LdfEncoding> encoding;
    QString comment;
};
