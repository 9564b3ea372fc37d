// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <cstdint>
#include <map>
#include <optional>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

class TzVciDeviceStore;

/// Device index to the indexes of its channels: what a view lets through.
using TzVciChannelFilter = std::unordered_map<std::uint8_t, std::unordered_set<std::uint8_t>>;

/// What a user can pick among the channels of one family, and what is picked. Two forms: the filter form offers every
/// channel of every device and takes any number of them; the single form offers the open channels and takes one.
///
/// Reads the store at construction and keeps no link to it. One thread.
class TzVciChannelSelection
{
public:
    struct Channel
    {
        std::uint8_t index = 0; ///< counted from 0
        QString text;           ///< "CAN1" for index 0
        bool checked = false;
    };

    struct Device
    {
        QString text;         ///< "Device 0"
        bool checked = false; ///< held by the filter, later: any channel is
        bool anyOpen = false; ///< a channel of the family is open
        std::vector<Channel> channels;
    };

    enum class Form
    {
        Filter,
        Single
    };

    /// @param kind    a view kind or protocol id; 16 and 17 count as their family
    /// @param filter  what is picked at first; null for nothing. The single form takes its first channel only
    TzVciChannelSelection(const TzVciDeviceStore &store, std::uint8_t kind, Form form,
                          const TzVciChannelFilter *filter);

    Form form() const { return m_form; }
    QString familyName() const { return m_familyName; } ///< "CAN" or "LIN"
    /// By device index, ascending. In the single form devices without an open channel are left out.
    const std::map<int, Device> &devices() const { return m_devices; }
    bool isEmpty() const { return m_devices.empty(); }

    /// Sets a device and all its channels; filter form only.
    void setDeviceChecked(int deviceIndex, bool checked);
    /// Sets one channel; a device counts as checked if any channel is. In the single form all others are cleared.
    void setChannelChecked(int deviceIndex, int channelIndex, bool checked);
    void setAllChecked(bool checked); ///< filter form only

    bool isChannelChecked(int deviceIndex, int channelIndex) const;
    TzVciChannelFilter checkedChannels() const; ///< devices without a checked channel are left out
    /// Device and channel index of the first checked channel.
    std::optional<std::pair<int, int>> firstChecked() const;

private:
    Device makeDevice(const TzVciDeviceStore &store, int deviceIndex, const TzVciChannelFilter *filter) const;
    void keepFirstCheckedOnly();
    void clearAll();

    const Form m_form;
    const std::uint8_t m_protocol;
    const QString m_familyName;
    std::map<int, Device> m_devices;
};
