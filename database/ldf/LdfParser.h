// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "database/ldf/LdfConfig.h"
#include "database/ldf/LdfLookups.h"
#include "database/text/KeyedHash.h"

#include <QObject>
#include <QString>

#include <cstddef>
#include <memory>

namespace Common {

/// Reads one LIN description file into an LdfConfig. Classes derived from it add the rules of a standard.
///
/// Threads: parsers share nothing, so any number of files may be read at once, each by one thread.
/// Errors: reported by the result and in the log; nothing throws but where memory ends.
class LdfParser : public QObject
{
    Q_OBJECT

public:
    explicit LdfParser(QObject *parent = nullptr);
    ~LdfParser() override;

    /// Makes the parser for the protocol that the file states; null when the file cannot be opened or states none.
    /// @param encoding  name of a text codec; empty, or unknown: the system's. A byte order mark in the file wins.
    /// @return owned by @p parent, without one by the caller
    [[nodiscard]] static LdfParser *createParser(const QString &path, const QString &encoding,
                                                 QObject *parent = nullptr);
    /// Reads a file into @p outConfig, with the parser that fits. What users of the database call.
    /// @return false: the file was refused, and @p outConfig is as it was
    [[nodiscard]] static bool loadLdfConfig(LdfConfig &outConfig, const QString &path, const QString &encoding);

    /// Reads a file anew, forgetting all that was read before.
    /// @return false: config() holds what had been read so far and must not be used
    bool parseFile(const QString &path, const QString &encoding);

    const LdfConfig &config() const noexcept { return m_config; }
    const QString &filePath() const noexcept { return m_filePath; }

    // The rules that standards add. Where one returns false, the file is refused, but for updateFrameTiming().

    /// Node attributes of the protocol, from the node's block of attributes.
    virtual bool parseProtocolConfig(const QString &attributesText, LdfNode &node);
    /// Additions to a frame that has just been read from @p frameText.
    virtual bool parseFrameConfig(const QString &frameText, LdfFrame &frame);
    virtual bool validateNodeConfig(const LdfNode &node);
    virtual bool validateFrame(const LdfFrame &frame);
    virtual bool validateScheduleTable(const LdfScheduleTable &table);
    /// Called after each slot that has set the frame's periods. False, for a frame whose publisher is not known, leaves
    /// the periods as they are and the file as good as it was.
    virtual bool updateFrameTiming(LdfFrame &frame);
    /// Called for each member of an event-triggered frame that has a slot.
    virtual void updateEventTriggeredFrame(LdfFrame &frame, const LdfEventTriggeredFrame &eventFrame);
    virtual void printProtocolSummary();
    virtual void printNodeSummary();

    /// How often takeCollisionDelay() has been called for this file. A reader gives up a file with far too many slots
    /// of event-triggered frames with far too many members.
    std::size_t eventUpdates() const noexcept { return m_eventUpdates; }

protected:
    /// Called before a file is read: drops what a standard's rules have noted of the file before.
    virtual void forgetFile();

    /// Warns of parts of the product identifier beyond what is recommended; always true.
    static bool checkProductId(const LdfNode &node, std::int32_t functionMaximum);

    bool isPublishedByMaster(const LdfFrame &frame) { return m_lookups.publisherOf(frame).isMaster; }
    /// The slave that publishes the frame, or null.
    const LdfNode *publishingSlave(const LdfFrame &frame) { return m_lookups.publisherOf(frame).slave; }
    LdfLookups &lookups() noexcept { return m_lookups; }
    /// Time of one bit on the bus, in ms; 0 for a bus without speed.
    double bitTimeMs() const noexcept;
    /// Sets the frame's longest period to the longest delay of the collision table, where one is named and exists. To
    /// be called once in each updateEventTriggeredFrame() that does something.
    void takeCollisionDelay(LdfFrame &frame, const LdfEventTriggeredFrame &eventFrame);

private:
    void clear();
    bool readHeader(const QString &text);
    bool readSections(const QString &text);

    LdfConfig m_config;
    LdfLookups m_lookups{m_config};
    QString m_filePath;
    std::size_t m_eventUpdates = 0;
    TextMap<LdfSignal> m_signals;                            // while reading
    TextMap<std::shared_ptr<const LdfEncoding>> m_encodings; // while reading
};

} // namespace Common
