// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/TzRawViewModel.h"

#include "common/Log.h"
#include "common/platform/RaceAnnotations.h"
#include "vci/TzVciDeviceManager.h"

#include <QBrush>

#include <algorithm>
#include <new>

namespace {

void trimFront(std::deque<TzVciMessage> &messages, std::size_t limit)
{
    if (messages.size() > limit)
        messages.erase(messages.begin(), messages.end() - static_cast<std::ptrdiff_t>(limit));
}

} // namespace

TzRawViewModel::TzRawViewModel(const TzRawViewFamily &family, TzVciDeviceManager *timeService, QObject *parent)
    : QAbstractTableModel(parent)
    , m_family(family)
    , m_timeService(timeService)
    , m_incoming(batchCapacity)
    , m_producer(m_incoming)
    , m_batch(batchCapacity)
{
    if (!m_producer.valid())
        throw std::bad_alloc(); // the one way in which a token fails
}

TzRawViewModel::~TzRawViewModel() = default;

int TzRawViewModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : m_rowCount;
}

int TzRawViewModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : m_family.columnCount;
}

QVariant TzRawViewModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || index.row() >= m_rowCount)
        return {};
    const TzVciMessage &message = m_rows[static_cast<std::size_t>(index.row())];
    if (role == Qt::ForegroundRole) {
        const auto color = m_family.rowColor(message);
        return color ? QVariant(QBrush(*color)) : QVariant();
    }
    if (role != Qt::DisplayRole)
        return {};
    switch (index.column()) {
    case TzRawViewFamily::NumberColumn: return numberValue(index.row());
    case TzRawViewFamily::TimeColumn: return timeText(index.row());
    default: return m_family.cellValue(message, index.column());
    }
}

QVariant TzRawViewModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    const bool known = section >= 0 && static_cast<std::size_t>(section) < m_family.headers.size();
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole || !known)
        return {};
    return tr(m_family.headers[static_cast<std::size_t>(section)]);
}

void TzRawViewModel::addMessages(std::span<const TzVciMessage> messages)
{
    if (enqueue(messages) < messages.size())
        reportOverflow();
}

// Block by block: the queue takes a bulk as a whole or not at all, and one that is refused after it asked for several
// blocks leaves those uncounted in the producer, whose index of blocks then overflows.
std::size_t TzRawViewModel::enqueue(std::span<const TzVciMessage> messages)
{
    const Common::RaceAnnotations::UncheckedAccess unchecked; // the queue takes its emptied blocks again behind a fence
    std::size_t entered = 0;
    while (entered < messages.size()) {
        const auto part = messages.subspan(entered, std::min(messages.size() - entered, QueueTraits::BLOCK_SIZE));
        if (!m_incoming.enqueue_bulk(m_producer, part.data(), part.size()))
            break;
        entered += part.size();
    }
    while (entered < messages.size() &&
           m_incoming.enqueue(m_producer, messages[entered])) // the block begun may have room
        ++entered;
    return entered;
}

// At most once a second: under overload the line would come with every batch.
void TzRawViewModel::reportOverflow()
{
    const auto now = std::chrono::steady_clock::now();
    if (m_lastOverflow != std::chrono::steady_clock::time_point{} && now - m_lastOverflow < std::chrono::seconds(1))
        return;
    m_lastOverflow = now;
    Common::logError("{}", m_family.overflowText);
}

void TzRawViewModel::updateData()
{
    const std::span batch(m_batch.data(), m_incoming.try_dequeue_bulk(m_batch.begin(), m_batch.size()));
    if (batch.empty())
        return;
    m_allMessages.insert(m_allMessages.end(), batch.begin(), batch.end());
    trimFront(m_allMessages, maxRows);
    announce(m_fold ? foldBatch(batch) : appendBatch(batch));
}

// Returns whether rows that were shown before may have changed.
bool TzRawViewModel::appendBatch(std::span<const TzVciMessage> batch)
{
    const bool filtered = m_filter && m_filter->isActive();
    if (filtered)
        std::copy_if(batch.begin(), batch.end(), std::back_inserter(m_rows),
                     [this](const TzVciMessage &message) { return passes(message); });
    else
        m_rows.insert(m_rows.end(), batch.begin(), batch.end());
    const bool shifts = m_rows.size() > maxRows;
    trimFront(m_rows, maxRows);
    return shifts;
}

// Returns the same. Rows that this batch appends are announced as new ones, however often it overwrites them.
bool TzRawViewModel::foldBatch(std::span<const TzVciMessage> batch)
{
    const auto shown = static_cast<std::uint64_t>(m_rowCount);
    bool overwrites = false;
    for (const TzVciMessage &message : batch) {
        TzViewFoldEntry &entry = m_foldTable.fold(m_family.foldKey(message), message);
        if (!passes(message))
            continue;
        if (entry.row < m_rows.size()) {
            m_rows[entry.row] = message;
            overwrites = overwrites || entry.row < shown;
        } else {
            entry.row = m_rows.size();
            m_rows.push_back(message);
        }
    }
    return overwrites;
}

// The frames are in place already; only now does the row count grow, between the two signals.
void TzRawViewModel::announce(bool shownRowsChanged)
{
    const int count = static_cast<int>(m_rows.size());
    if (count > m_rowCount) {
        beginInsertRows({}, m_rowCount, count - 1);
        m_rowCount = count;
        endInsertRows();
        m_needsRefresh = m_needsRefresh || shownRowsChanged;
    } else {
        m_needsRefresh = true;
    }
}

void TzRawViewModel::refreshVisibleRows()
{
    if (!m_needsRefresh || m_rowCount == 0)
        return;
    const int last = m_rowCount - 1;
    const int first = std::clamp(m_firstVisibleRow, 0, last);
    const int end = std::min(m_lastVisibleRow, last);
    if (first <= end)
        Q_EMIT dataChanged(index(first, 0), index(end, m_family.columnCount - 1));
    m_needsRefresh = false;
}

void TzRawViewModel::setFold(bool on)
{
    if (on == m_fold)
        return;
    m_fold = on;
    QMetaObject::invokeMethod(this, &TzRawViewModel::onFilter, Qt::QueuedConnection);
}

void TzRawViewModel::setFilter(std::shared_ptr<const TzRawFrameFilter> filter)
{
    m_filter = std::move(filter);
}

void TzRawViewModel::onClear()
{
    m_needsRefresh = false;
    if (m_allMessages.empty())
        return;
    beginResetModel();
    m_rows.clear();
    m_allMessages.clear();
    m_foldTable.clear();
    m_rowCount = 0;
    endResetModel();
}

void TzRawViewModel::onFilter()
{
    if (m_allMessages.empty() && m_rows.empty())
        return;
    beginResetModel();
    m_rows.clear();
    if (m_fold) {
        rebuildFolded();
    } else {
        for (TzViewFoldEntry &entry : m_foldTable)
            entry.row = TzViewFoldEntry::noRow;
        std::copy_if(m_allMessages.begin(), m_allMessages.end(), std::back_inserter(m_rows),
                     [this](const TzVciMessage &message) { return passes(message); });
    }
    m_rowCount = static_cast<int>(m_rows.size());
    endResetModel();
}

// Counts and cycle times come from the frames still held; a filter tests the newest frame of each key.
void TzRawViewModel::rebuildFolded()
{
    m_foldTable.clear();
    for (const TzVciMessage &message : m_allMessages)
        m_foldTable.fold(m_family.foldKey(message), message);
    for (TzViewFoldEntry &entry : m_foldTable) {
        if (!passes(entry.message))
            continue;
        entry.row = m_rows.size();
        m_rows.push_back(entry.message);
    }
}

void TzRawViewModel::onTimesChanged()
{
    if (m_rowCount > 0)
        Q_EMIT dataChanged(index(0, TzRawViewFamily::TimeColumn), index(m_rowCount - 1, TzRawViewFamily::TimeColumn),
                           {Qt::DisplayRole});
}

void TzRawViewModel::onUpdateVisibleRow(int firstRow, int lastRow)
{
    m_firstVisibleRow = firstRow;
    m_lastVisibleRow = lastRow;
}

// Null unless the view is folded.
const TzViewFoldEntry *TzRawViewModel::foldEntry(const TzVciMessage &message) const
{
    return m_fold ? m_foldTable.find(m_family.foldKey(message)) : nullptr;
}

QVariant TzRawViewModel::numberValue(int row) const
{
    const TzViewFoldEntry *entry = foldEntry(m_rows[static_cast<std::size_t>(row)]);
    if (entry && entry->count > 1)
        return QStringLiteral("%1[%2]").arg(row + 1).arg(entry->count);
    return row + 1;
}

QString TzRawViewModel::timeText(int row) const
{
    const TzVciMessage &message = m_rows[static_cast<std::size_t>(row)];
    if (m_timeService->displayMode() == Common::TimestampDisplayMode::DeltaTime)
        prepareDelta(row);
    const QString time = formattedTime(message);
    const TzViewFoldEntry *entry = foldEntry(message);
    if (entry && entry->cycleMs > 0.0)
        return QStringLiteral("%1[%2]").arg(time).arg(entry->cycleMs, 0, 'f', 2);
    return time;
}

QString TzRawViewModel::formattedTime(const TzVciMessage &message) const
{
    return QString::fromStdString(m_timeService->formatTimestamp(message.deviceIndex, message.timestamp));
}

// A delta is told to the time formatted last for the device. Formatting the row above of that device first makes each
// row read its distance to that one, whatever was painted, copied or saved before; the first row of a device reads
// zero. The search ends after maxRows rows, or in a folded view after as many as there are distinct frames, and only a
// device that sends far less than the others makes it that long.
void TzRawViewModel::prepareDelta(int row) const
{
    const auto end = m_rows.begin() + row;
    const auto isSameDevice = [end](const TzVciMessage &other) { return other.deviceIndex == end->deviceIndex; };
    const auto above = std::find_if(std::make_reverse_iterator(end), m_rows.rend(), isSameDevice);
    formattedTime(above != m_rows.rend() ? *above : *end);
}
