// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>

#include <cstdint>

/// Values of LdfNode::type.
namespace LdfNodeType {
inline constexpr std::uint32_t master = 1;
inline constexpr std::uint32_t slave = 2;
} // namespace LdfNodeType

/// What holds for a node of which the file says nothing else.
namespace LdfNodeDefault {
inline constexpr double timeBaseMs = 5.0;
inline constexpr double p2MinMs = 50.0;
inline constexpr double stMinMs = 0.0;
inline constexpr double nAsTimeoutMs = 1000.0;
inline constexpr double nCrTimeoutMs = 1000.0;
inline constexpr double responseTolerancePercent = 40.0;
} // namespace LdfNodeDefault

/// One node of a LIN cluster. Times are in milliseconds.
struct LdfNode
{
    QString name;
    std::uint32_t type = 0;                           ///< LdfNodeType
    double timeBase = LdfNodeDefault::timeBaseMs;     ///< ms, master only
    double jitter = 0.0;                              ///< ms, master only
    QStringList publishes;                            ///< left empty by the reader
    QStringList subscribes;                           ///< left empty by the reader
    QString protocol;                                 ///< LIN_protocol of the node, which may differ from the file's
    std::int32_t configuredNad = 0;                   ///< 0: not stated
    std::int32_t initialNad = 0;                      ///< the configured NAD when the file has none
    std::int32_t supplierId = 0;                      ///< product_id, first part
    std::int32_t functionId = 0;                      ///< product_id, second part
    std::int32_t variantId = 0;                       ///< product_id, third part
    QString responseError;                            ///< name of a signal
    QStringList faultStateSignals;                    ///< names of signals, ISO 17987 only
    double p2Min = LdfNodeDefault::p2MinMs;           ///< ms
    double stMin = LdfNodeDefault::stMinMs;           ///< ms
    double nAsTimeout = LdfNodeDefault::nAsTimeoutMs; ///< ms
    double nCrTimeout = LdfNodeDefault::nCrTimeoutMs; ///< ms
    QStringList configurableFrames;                   ///< names of frames
    double responseTolerance = LdfNodeDefault::responseTolerancePercent; ///< percent
};
