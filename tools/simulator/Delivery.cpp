// SPDX-License-Identifier: GPL-3.0-or-later
#include "tools/simulator/Delivery.h"

#include "tools/simulator/BoxEngine.h"
#include "tools/simulator/Wire.h"

#include <algorithm>

namespace tzsim {

using namespace wire::LinDirection;

Delivery::Delivery(const BusSwitch &buses)
    : m_buses(buses)
    , m_topology(buses.topology())
{
}

Delivery::~Delivery()
{
    flush();
}

void Delivery::flush()
{
    for (BoxEngine *&box : m_touched) {
        if (box)
            box->flush();
        box = nullptr;
    }
}

void Delivery::touch(const BusPort &port)
{
    m_touched[static_cast<std::size_t>(port.ref.box)] = port.box;
}

void Delivery::canFromHost(const ChannelRef &sender, const CanFrame &frame, Time at)
{
    for (const BusPort &port : m_topology->members(sender)) {
        touch(port);
        port.box->deliverCan(port.ref.channel, frame, port.ref == sender ? CanType::transmitted : CanType::received,
                             at);
    }
}

void Delivery::canFromNode(const ChannelRef &ref, const CanFrame &frame, Time at)
{
    const std::uint8_t type = frame.isError() ? frame.type : CanType::received;
    for (const BusPort &port : m_topology->members(ref)) {
        touch(port);
        port.box->deliverCan(port.ref.channel, frame, type, at);
    }
}

void Delivery::linFromHost(const ChannelRef &sender, const LinFrame &frame, Time at)
{
    for (const BusPort &port : m_topology->members(sender)) {
        touch(port);
        port.box->deliverLin(port.ref.channel, frame, port.ref == sender ? masterWrite : slaveRead, at);
    }
}

void Delivery::linHeaderFromHost(const ChannelRef &sender, std::uint8_t id, std::uint8_t checksumType, Time at)
{
    answerHeader(sender, true, LinFrame::make(id, {}, checksumType), at);
}

void Delivery::linHeaderFromNode(const ChannelRef &ref, std::uint8_t id, Time at)
{
    answerHeader(ref, false, LinFrame::make(id, {}), at);
}

void Delivery::answerHeader(const ChannelRef &ref, bool fromHost, const LinFrame &unanswered, Time at)
{
    const BusMembers &bus = m_topology->members(ref);
    const auto response = findResponse(bus, fromHost ? &ref : nullptr, unanswered.id);
    const LinFrame &frame = response ? response->frame : unanswered;
    for (const BusPort &port : bus) {
        const bool isMaster = fromHost ? port.ref == ref : port.box->linIsMaster(port.ref.channel);
        const bool writes = response && response->writer == port.ref;
        touch(port);
        port.box->deliverLin(port.ref.channel, frame,
                             isMaster ? (writes ? masterWrite : masterRead) : (writes ? slaveWrite : slaveRead), at);
    }
}

std::optional<Delivery::Response> Delivery::findResponse(const BusMembers &bus, const ChannelRef *first,
                                                         std::uint8_t id) const
{
    const auto held = [id](const BusPort &port) { return port.box->linResponse(port.ref.channel, id); };
    // A master that keeps a response of its own answers its own header.
    for (const BusPort &port : bus) {
        if (!first || port.ref != *first)
            continue;
        if (const auto frame = held(port))
            return Response{*frame, port.ref};
    }
    for (const BusPort &port : bus) {
        if (const auto frame = held(port))
            return Response{*frame, port.ref};
    }
    if (const auto frame = m_buses.nodeResponse(bus, id))
        return Response{*frame, std::nullopt};
    return std::nullopt;
}

void Delivery::linFromNode(const ChannelRef &ref, const LinFrame &frame, Time at)
{
    for (const BusPort &port : m_topology->members(ref)) {
        touch(port);
        port.box->deliverLin(port.ref.channel, frame, port.box->linIsMaster(port.ref.channel) ? masterRead : slaveRead,
                             at);
    }
}

bool Delivery::anyoneListens(const ChannelRef &ref) const
{
    const BusMembers &bus = m_topology->members(ref);
    return std::any_of(bus.begin(), bus.end(),
                       [](const BusPort &port) { return port.box->listens(port.ref.family, port.ref.channel); });
}

} // namespace tzsim
