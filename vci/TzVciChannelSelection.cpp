// SPDX-License-Identifier: GPL-3.0-or-later
#include "vci/TzVciChannelSelection.h"

#include "vci/TzVciDeviceStore.h"
#include "vci/TzVciTypes.h"

#include <algorithm>

namespace {

bool holds(const TzVciChannelFilter *filter, int deviceIndex, int channelIndex)
{
    if (!filter)
        return false;
    const auto device = filter->find(static_cast<std::uint8_t>(deviceIndex));
    return device != filter->end() && device->second.count(static_cast<std::uint8_t>(channelIndex)) > 0;
}

bool holdsDevice(const TzVciChannelFilter *filter, int deviceIndex)
{
    return filter && filter->count(static_cast<std::uint8_t>(deviceIndex)) > 0;
}

bool anyChecked(const TzVciChannelSelection::Device &device)
{
    return std::any_of(device.channels.begin(), device.channels.end(), [](const auto &c) { return c.checked; });
}

} // namespace

TzVciChannelSelection::TzVciChannelSelection(const TzVciDeviceStore &store, std::uint8_t kind, Form form,
                                             const TzVciChannelFilter *filter)
    : m_form(form)
    , m_protocol(TzVciViewKind::familyProtocol(kind))
    , m_familyName(m_protocol == TzVciProtocolId::lin ? QStringLiteral("LIN") : QStringLiteral("CAN"))
{
    for (const int deviceIndex : store.deviceIndices()) {
        if (form == Form::Single && !store.isDeviceOpen(deviceIndex))
            continue;
        Device device = makeDevice(store, deviceIndex, filter);
        if (form == Form::Filter || !device.channels.empty())
            m_devices.emplace(deviceIndex, std::move(device));
    }
    if (form == Form::Single)
        keepFirstCheckedOnly();
}

TzVciChannelSelection::Device TzVciChannelSelection::makeDevice(const TzVciDeviceStore &store, int deviceIndex,
                                                                const TzVciChannelFilter *filter) const
{
    Device device;
    device.text = QStringLiteral("Device %1").arg(deviceIndex);
    for (const std::uint32_t channel : store.channelIndices(deviceIndex, m_protocol, -1)) {
        const int channelIndex = static_cast<int>(channel);
        const bool open = store.isChannelOpen(deviceIndex, m_protocol, channelIndex);
        device.anyOpen |= open;
        if (m_form == Form::Single && !open)
            continue;
        device.channels.push_back({static_cast<std::uint8_t>(channelIndex),
                                   QStringLiteral("%1%2").arg(m_familyName).arg(channelIndex + 1),
                                   holds(filter, deviceIndex, channelIndex)});
    }
    device.checked = holdsDevice(filter, deviceIndex) || anyChecked(device);
    return device;
}

void TzVciChannelSelection::keepFirstCheckedOnly()
{
    if (const auto first = firstChecked())
        setChannelChecked(first->first, first->second, true);
}

void TzVciChannelSelection::setDeviceChecked(int deviceIndex, bool checked)
{
    const auto device = m_devices.find(deviceIndex);
    if (m_form == Form::Single || device == m_devices.end())
        return;
    device->second.checked = checked;
    for (Channel &channel : device->second.channels)
        channel.checked = checked;
}

void TzVciChannelSelection::setChannelChecked(int deviceIndex, int channelIndex, bool checked)
{
    if (m_form == Form::Single && checked)
        clearAll();
    const auto device = m_devices.find(deviceIndex);
    if (device == m_devices.end())
        return;
    for (Channel &channel : device->second.channels) {
        if (channel.index == channelIndex)
            channel.checked = checked;
    }
    device->second.checked = anyChecked(device->second);
}

void TzVciChannelSelection::clearAll()
{
    for (auto &[index, device] : m_devices) {
        device.checked = false;
        for (Channel &channel : device.channels)
            channel.checked = false;
    }
}

void TzVciChannelSelection::setAllChecked(bool checked)
{
    for (const auto &entry : std::as_const(m_devices))
        setDeviceChecked(entry.first, checked);
}

bool TzVciChannelSelection::isChannelChecked(int deviceIndex, int channelIndex) const
{
    const auto device = m_devices.find(deviceIndex);
    return device != m_devices.end() &&
           std::any_of(device->second.channels.begin(), device->second.channels.end(),
                       [channelIndex](const Channel &c) { return c.index == channelIndex && c.checked; });
}

TzVciChannelFilter TzVciChannelSelection::checkedChannels() const
{
    TzVciChannelFilter filter;
    for (const auto &[index, device] : m_devices) {
        for (const Channel &channel : device.channels) {
            if (channel.checked)
                filter[static_cast<std::uint8_t>(index)].insert(channel.index);
        }
    }
    return filter;
}

std::optional<std::pair<int, int>> TzVciChannelSelection::firstChecked() const
{
    for (const auto &[index, device] : m_devices) {
        for (const Channel &channel : device.channels) {
            if (channel.checked)
                return std::pair(index, static_cast<int>(channel.index));
        }
    }
    return std::nullopt;
}
