// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringView>

#include <array>
#include <cstddef>

namespace Common {

/// What a statement's pattern has found: captures by their number in the pattern, the views into the text.
struct LdfMatch
{
    qsizetype end = -1; ///< behind the match; -1: none
    std::array<QStringView, 7> captures{};

    explicit operator bool() const noexcept { return end >= 0; }
    QStringView operator[](std::size_t number) const { return captures[number]; }
    QStringView &operator[](std::size_t number) { return captures[number]; }
    QString text(std::size_t number) const { return captures[number].toString(); }
};

// The statements of a description file. Each function finds the first place from @p from on where the pattern above it
// matches, as a pattern engine would, but in time linear in the text whatever the text is.

/// ([\w_]+)\s*\{
LdfMatch matchLdfBlockStart(QStringView text, qsizetype from = 0);
/// LIN_protocol\s*=\s*"?([^;"\s]+)"?\s*;
LdfMatch matchLdfNodeProtocol(QStringView text);
/// Slaves\s*:\s*([\w_,\s]+)\s*;
LdfMatch matchLdfSlaves(QStringView text);
/// fault_state_signals\s*=\s*([\w_,\s]+)\s*;
LdfMatch matchLdfFaultStateSignals(QStringView text);
/// ([\w_]+)\s*(?:=\s*(?:0x[0-9A-Fa-f]+|\d+)\s*)?;
LdfMatch matchLdfConfigurableFrame(QStringView text, qsizetype from = 0);

/// physical_value\s*,\s*(RAW)\s*,\s*(RAW)\s*,\s*(REAL)\s*,\s*(REAL)\s*(?:,\s*"([^"]*)")? where RAW is
/// 0x[0-9A-Fa-f]+|REAL and REAL is [-+]?[0-9]*\.?[0-9]+(?:[eE][-+]?[0-9]+)?
LdfMatch matchLdfPhysicalValue(QStringView text);
/// logical_value\s*,\s*(0x[0-9A-Fa-f]+|\d+)\s*,\s*"([^"]*)"
LdfMatch matchLdfLogicalValue(QStringView text);

/// (\w+)\s*:\s*(\d+)\s*,\s*\{([^}]+)\}\s*,\s*(\w+)\s*,\s*([\w\s,]+)(?:\s*;?\s*//\s*(.+))? on one line
LdfMatch matchLdfArraySignal(QStringView line);
/// (\w+)\s*:\s*(\d+)\s*,\s*([^,]+?)\s*,\s*(\w+)\s*,\s*([\w\s,]+?)(?:\s*;?\s*//\s*(.+))?\s*;?\s*$ on one line
LdfMatch matchLdfScalarSignal(QStringView line);
/// ([\w_]+)\s*:\s*(\d+)\s*,\s*(\d+|\{[^}]+\})
LdfMatch matchLdfDiagnosticSignal(QStringView text);
/// (\w+)\s*:\s*([\w\s,]+): signal representations and sporadic frames
LdfMatch matchLdfNamedList(QStringView text);

/// ([\w_]+)\s*:\s*(0x[0-9A-Fa-f]+|\d+)\s*,\s*([\w_]+)\s*,\s*(\d+)\s*\{([^}]+)\}
LdfMatch matchLdfFrame(QStringView text);
/// ([\w_]+)\s*,\s*(\d+)
LdfMatch matchLdfPlacement(QStringView text);
/// (\w+)\s*:\s*(0x[0-9A-Fa-f]+|[0-9]+)\s*\{([^}]+)\}
LdfMatch matchLdfDiagnosticFrame(QStringView text, qsizetype from = 0);
/// ([\w_]+)\s*:\s*([\w_]+)\s*,\s*(0x[0-9A-Fa-f]+|\d+)\s*,\s*([\w_,\s]+)
LdfMatch matchLdfEventTriggeredFrame(QStringView text);

/// ([\w_]+)\s+delay\s+(\d+(?:\.\d+)?)\s*ms
LdfMatch matchLdfFrameSlot(QStringView text);
/// ([\w_]+)\s*\{([^}]+)\}\s*delay\s+(\d+(?:\.\d+)?)\s*ms
LdfMatch matchLdfCommandSlot(QStringView text);

} // namespace Common
