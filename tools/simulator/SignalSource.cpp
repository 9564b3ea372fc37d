// SPDX-License-Identifier: GPL-3.0-or-later
#include "tools/simulator/SignalSource.h"

#include "tools/simulator/BoxEngine.h"
#include "tools/simulator/Delivery.h"

#include <algorithm>

namespace tzsim {

namespace {

constexpr auto errorCycle = std::chrono::milliseconds(2000);
constexpr std::uint32_t protocolError = 0x8000000; // in the arbitration phase
constexpr auto maxLag = std::chrono::seconds(1);
constexpr auto spread = std::chrono::microseconds(700); // so that messages of one cycle time do not all go at once

bool isLater(const auto &a, const auto &b)
{
    return a.due > b.due;
}

} // namespace

SignalSource::SignalSource(BoxEngine &box, const SignalSpec &spec, Clock::time_point start)
    : m_box(box)
    , m_start(start)
{
    for (const int channel : spec.canChannels)
        addChannel({box.config().index, Family::can, channel}, spec);
    for (const int channel : spec.linChannels)
        addChannel({box.config().index, Family::lin, channel}, spec);
    std::make_heap(m_slots.begin(), m_slots.end(), isLater<Slot, Slot>);
}

void SignalSource::addChannel(const ChannelRef &ref, const SignalSpec &spec)
{
    for (const SignalMessage &message : signalMessages()) {
        if (message.family != ref.family ||
            (ref.family == Family::can && (message.flags & CanFlag::fd) != 0 && !spec.fd))
            continue;
        const auto phase = spread * static_cast<int>(m_slots.size() % 16);
        m_slots.push_back({&message, ref, m_start + phase, message.cycle});
    }
    if (spec.errors && ref.family == Family::can)
        m_slots.push_back({nullptr, ref, m_start + errorCycle, errorCycle});
}

std::optional<SignalSource::Clock::time_point> SignalSource::nextDue() const
{
    if (m_slots.empty())
        return std::nullopt;
    return m_slots.front().due;
}

void SignalSource::run(Clock::time_point now, Delivery &delivery)
{
    while (m_slots.front().due <= now) {
        std::pop_heap(m_slots.begin(), m_slots.end(), isLater<Slot, Slot>);
        Slot &slot = m_slots.back();
        if (delivery.anyoneListens(slot.ref)) {
            deliver(slot, delivery);
            ++slot.count;
        }
        slot.due += slot.cycle;
        if (now - slot.due > maxLag) // a stopped process does not make up for what it missed
            slot.due = now + slot.cycle;
        std::push_heap(m_slots.begin(), m_slots.end(), isLater<Slot, Slot>);
    }
}

bool SignalSource::switchesRate(const ChannelRef &ref) const
{
    return m_box.access(
        [&](const BoxState &s) { return s.protocol.can[static_cast<std::size_t>(ref.channel)].dataRate != 0; });
}

void SignalSource::deliver(const Slot &slot, Delivery &delivery)
{
    if (!slot.message) {
        delivery.canFromNode(slot.ref, CanFrame::makeError(protocolError), slot.due);
        return;
    }
    const SignalMessage &message = *slot.message;
    const double seconds = std::chrono::duration<double>(slot.due - m_start).count();
    if (slot.ref.family == Family::lin) {
        LinFrame frame;
        frame.id = static_cast<std::uint8_t>(message.id);
        frame.length = message.length;
        frame.checksumType = message.flags;
        fillSignals(message, slot.count, seconds, std::span(frame.data).first(frame.length));
        delivery.linFromNode(slot.ref, frame, slot.due);
        return;
    }
    if ((message.flags & CanFlag::fd) != 0 && !switchesRate(slot.ref))
        return;
    CanFrame frame;
    frame.id = message.id;
    frame.flags = message.flags;
    frame.length = message.length;
    fillSignals(message, slot.count, seconds, std::span(frame.data).first(frame.length));
    delivery.canFromNode(slot.ref, frame, slot.due);
}

} // namespace tzsim
