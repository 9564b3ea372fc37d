// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "database/ldf/LdfConfig.h"
#include "database/text/KeyedHash.h"

#include <QString>

#include <cstddef>
#include <optional>
#include <unordered_map>
#include <vector>

namespace Common {

/// What the standards' checks look up again and again in a configuration, gathered once at the first question, so that
/// checking stays linear in the file. Each question comes only after what it asks for has been read completely.
class LdfLookups
{
public:
    /// Signals by numbers of their own, ascending; names may be long, and would be compared again and again.
    using SignalNumbers = std::vector<std::size_t>;

    struct Publisher
    {
        bool isMaster = false;
        const LdfNode *slave = nullptr; ///< null where no slave has that name
    };

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
    /// The signals of the unconditional frames that a node subscribes to.
    const SignalNumbers &signalsReceivedBy(const QString &node);
    /// True when one of the signals is in the frame, which must be one of the configuration's unconditional ones.
    bool hasAnyOf(const LdfFrame &frame, const SignalNumbers &signalNumbers);
    /// The longest delay of the first schedule table of that name; 0 when it is empty, nothing when there is none. The
    /// same text object asked again costs the same however long it is.
    std::optional<double> longestDelay(const QString &tableName);
    /// Who publishes a frame. Asked again for the same frame, it costs the same however long the names of the nodes
    /// are.
    Publisher publisherOf(const LdfFrame &frame);

private:
    template <typename Answer> struct Asked
    {
        QString name; // kept, so that its buffer stays its own
        Answer answer;
    };
    template <typename Answer> using AskedNames = std::unordered_map<const QChar *, Asked<Answer>>; // by their buffers

    struct Subscriptions
    {
        TextMap<SignalNumbers> byNode;
        std::unordered_map<const LdfFrame *, SignalNumbers> byFrame; // those that are in it
    };

    const Subscriptions &subscriptions();
    Subscriptions gatherSubscriptions() const;
    void gatherDelays();

    const LdfConfig &m_config;
    std::optional<TextMap<const LdfSignal *>> m_frameSignals;
    std::optional<TextSet> m_configurableFrames;
    std::optional<Subscriptions> m_subscriptions;
    std::optional<TextMap<double>> m_longestDelays;
    AskedNames<std::optional<double>> m_askedTables;
    AskedNames<Publisher> m_askedPublishers;
};

} // namespace Common
