// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "database/ldf/LdfConfig.h"

#include <QHash>
#include <QSet>
#include <QString>

#include <optional>

namespace Common {

/// What the standards' checks look up again and again in a configuration, gathered once at the first question, so that
/// checking stays linear in the file. Each question comes only after what it asks for has been read completely.
class LdfLookups
{
public:
    /// @p config must outlive this object.
    explicit LdfLookups(const LdfConfig &config)
        : m_config(config)
    {
    }
    void clear();

    /// The first signal of that name in the unconditional frames, or null.
    const LdfSignal *frameSignal(const QString &name);
    /// True when any slave lists the frame as configurable.
    bool isConfigurable(const QString &frameName);
    /// True when the node receives a signal of the frame.
    bool isSubscriber(const QString &node, const LdfFrame &frame);
    /// The longest delay of the first schedule table of that name; 0 when it is empty, nothing when there is none.
    std::optional<double> longestDelay(const QString &tableName);

private:
    const LdfConfig &m_config;
    std::optional<QHash<QString, const LdfSignal *>> m_frameSignals;
    std::optional<QSet<QString>> m_configurableFrames;
    std::optional<QHash<QString, QSet<QString>>> m_subscriptions; // node to its signals
    std::optional<QHash<QString, double>> m_longestDelays;
};

} // namespace Common
