// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "views/TzRawFrameFilter.h"
#include "views/TzRawViewFamily.h"
#include "views/TzViewFoldTable.h"

#include "vci/TzVciMessage.h"

#include <concurrentqueue/concurrentqueue.h>

#include <QAbstractTableModel>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <span>
#include <vector>

class TzVciDeviceManager;

/// What a raw traffic view shows: the last 10000 frames, those of them that pass the filter, or, folded, one row for
/// each distinct frame with its count and cycle time. TzCanViewModel and TzLinViewModel are its two forms.
///
/// Threads: addMessage() and addMessages() belong to whoever delivers; they put the frames into a lock-free queue and
/// touch nothing else of the model. The deliverer may change, as from a drain thread to the thread that has joined it,
/// but there is one at a time, and each call happens before the next: all of them go through one producer of the queue,
/// so that the rows keep the order of the calls. All else belongs to the UI thread, which moves the frames into the
/// table in batches. Texts are made in data(), so only for rows that are on the screen.
class TzRawViewModel : public QAbstractTableModel
{
    Q_OBJECT
public:
    static constexpr std::size_t maxRows = 10'000;      ///< of the history and of the unfolded table
    static constexpr std::size_t batchCapacity = 5'000; ///< frames moved by one updateData()
    /// Frames that may wait for updateData(). It bounds the memory of a view whose user interface stands still or whose
    /// traffic stays above what 20 ms ticks can take; beyond it frames are dropped with an error in the log.
    static constexpr std::size_t maxWaiting = std::size_t{1} << 20;

    ~TzRawViewModel() override;

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

    void addMessage(const TzVciMessage &message) { addMessages({&message, 1}); }
    /// Queues the frames in their order. Those for which memory or maxWaiting leaves no room are dropped from the end,
    /// which is logged.
    void addMessages(std::span<const TzVciMessage> messages);

    /// Moves what waits into the table, at most batchCapacity frames. For a tick of 20 ms.
    void updateData();
    /// Announces the visible rows if they may have changed. For a tick of 500 ms.
    void refreshVisibleRows();
    /// Rebuilds the table on the next turn of the event loop if the value changes.
    void setFold(bool on);
    /// The filter that rows must pass; empty: all pass. A change of it takes effect with onFilter().
    void setFilter(std::shared_ptr<const TzRawFrameFilter> filter);
    /// Every frame that came, oldest first, at most maxRows; whatever the filter says.
    const std::deque<TzVciMessage> &allMessages() const { return m_allMessages; }
    const TzRawViewFamily &family() const { return m_family; }

public Q_SLOTS:
    void onClear();        ///< forgets all frames but those that still wait; sends no reset if there are none
    void onFilter();       ///< rebuilds the table from the history
    void onTimesChanged(); ///< the texts of the Time column are to be made anew
    void onUpdateVisibleRow(int firstRow, int lastRow);

protected:
    /// @param timeService  makes the texts of the Time column; must outlive the model
    TzRawViewModel(const TzRawViewFamily &family, TzVciDeviceManager *timeService, QObject *parent);

private:
    /// Memory bounded as maxWaiting tells; larger blocks than the default spare bookkeeping at this record size.
    struct QueueTraits : moodycamel::ConcurrentQueueDefaultTraits
    {
        static constexpr std::size_t BLOCK_SIZE = 256;
        static constexpr std::size_t MAX_SUBQUEUE_SIZE = maxWaiting;
    };

    bool passes(const TzVciMessage &message) const { return !m_filter || m_family.passes(*m_filter, message); }
    bool appendBatch(std::span<const TzVciMessage> batch);
    bool foldBatch(std::span<const TzVciMessage> batch);
    void rebuildFolded();
    void announce(bool shownRowsChanged);
    const TzViewFoldEntry *foldEntry(const TzVciMessage &message) const;
    QVariant numberValue(int row) const;
    QString timeText(int row) const;
    QString formattedTime(const TzVciMessage &message) const;
    void prepareDelta(int row) const;
    std::size_t enqueue(std::span<const TzVciMessage> messages);
    void reportOverflow();

    const TzRawViewFamily &m_family;
    TzVciDeviceManager *const m_timeService;
    moodycamel::ConcurrentQueue<TzVciMessage, QueueTraits> m_incoming;
    const moodycamel::ProducerToken m_producer;             // of whoever delivers; the queue orders within one only
    std::chrono::steady_clock::time_point m_lastOverflow{}; // of whoever delivers
    std::vector<TzVciMessage> m_batch;                      // scratch of updateData(), always batchCapacity long
    std::shared_ptr<const TzRawFrameFilter> m_filter;
    std::deque<TzVciMessage> m_allMessages;
    std::deque<TzVciMessage> m_rows; // row i of the table is element i
    TzViewFoldTable m_foldTable;
    int m_rowCount = 0; // rows that were announced; m_rows runs ahead within a call only
    int m_firstVisibleRow = 0;
    int m_lastVisibleRow = 1;
    bool m_needsRefresh = false; // visible rows may have changed without a row being inserted
    bool m_fold = false;
};
