// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/TzYieldingSharedMutex.h"
#include "vci/TzVciMessage.h"

#include <QString>

#include <cstdint>
#include <vector>

class QObject;
class TzVciBaseViewWindow;

/// The open traffic views in the order of their numbers.
///
/// Threads: the UI thread alone changes the list, creates views and destroys them, and takes a view out before it dies.
/// The drain threads read it. The lock covers the container; it is held while a batch is delivered, so that no view
/// goes away under a delivery, and at no other time while foreign code runs.
class TzViewList
{
public:
    void append(TzVciBaseViewWindow *view);
    /// Takes a view out; @p view may be half destroyed, only its address is looked at.
    /// @return false if it is not in the list
    bool remove(const QObject *view);
    /// A copy of the list, for the UI thread.
    std::vector<TzVciBaseViewWindow *> views() const;
    /// Whether a view takes the family with that protocol id, 1 for CAN and 5 for LIN.
    bool hasFamily(std::uint8_t protocol) const;
    /// Gives the batch to every view of the family, in list order. Any thread; views copy what they keep.
    void deliver(std::uint8_t protocol, const std::vector<TzVciMessage> &batch) const;
    /// Numbers the views' titles from 1 without gaps. UI thread.
    void renumber() const;

    /// "View%1 For CAN" and its like, "View%1" for an unknown kind.
    static QString title(int number, std::uint8_t kind);

private:
    mutable TzYieldingSharedMutex m_mutex; // protects m_views
    std::vector<TzVciBaseViewWindow *> m_views;
};
