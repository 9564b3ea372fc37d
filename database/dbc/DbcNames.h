// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringView>

/// Names that mean something to the format.
namespace DbcNames {

inline constexpr QStringView pseudoNode = u"Vector__XXX";                         ///< "nobody in particular"
inline constexpr QStringView independentSignals = u"VECTOR__INDEPENDENT_SIG_MSG"; ///< holds signals without a message

/// True for the names of messages that are no frames on a bus.
bool isSpecialMessage(QStringView name);

/// A node named there need not be in the list of nodes.
inline bool isRealNode(QStringView name)
{
    return !name.isEmpty() && name != pseudoNode;
}

} // namespace DbcNames
