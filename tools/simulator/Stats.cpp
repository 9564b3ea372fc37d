// SPDX-License-Identifier: GPL-3.0-or-later
#include "tools/simulator/Stats.h"

#include "tools/simulator/Box.h"

#include <fmt/format.h>

namespace tzsim {

namespace {

std::string countersJson(const ChannelCounters &c)
{
    return fmt::format(R"("framesSent": {}, "framesReceived": {}, "framesRejected": {})", c.framesSent,
                       c.framesReceived, c.framesRejected);
}

std::string canJson(const Box &box, int channel)
{
    const CanChannelState s = box.canChannel(channel);
    return fmt::format(R"({{"channel": {}, "open": {}, "nominalRate": {}, "dataRate": {}, "timing": [{}, {}, {}, {}], )"
                       R"("applied": {}, "resistor": {}, {}}})",
                       channel, s.open, s.nominalRate, s.dataRate, s.timing[0], s.timing[1], s.timing[2], s.timing[3],
                       s.applied, s.resistor, countersJson(box.counters(Family::can, channel)));
}

std::string linJson(const Box &box, int channel)
{
    const LinChannelState s = box.linChannel(channel);
    return fmt::format(R"({{"channel": {}, "open": {}, "master": {}, "rate": {}, "responses": {}, {}}})", channel,
                       s.open, s.master, s.rate, s.responses.size(), countersJson(box.counters(Family::lin, channel)));
}

std::string channelsJson(const Box &box, int count, std::string (*format)(const Box &, int))
{
    std::string text;
    for (int channel = 0; channel < count; ++channel)
        text += (channel == 0 ? "" : ",\n    ") + format(box, channel);
    return text;
}

std::string requestsJson(const Box &box)
{
    std::string text;
    for (const Request &request : box.requests()) {
        std::string payload;
        for (const std::uint8_t byte : request.payload)
            payload += fmt::format("{:02x}", byte);
        text += fmt::format(R"({}{{"protocol": {}, "command": {}, "channel": {}, "param": {}, "payload": "{}"}})",
                            text.empty() ? "" : ",\n    ", request.protocol, request.command, request.channel,
                            request.param, payload);
    }
    return text;
}

std::string boxJson(const Box &box)
{
    const BoxCounters c = box.counters();
    return fmt::format(R"({{"index": {}, "address": "{}", "hasHost": {}, "vanished": {}, "openChannels": {},
   "datagramsIn": {}, "datagramsOut": {}, "bytesIn": {}, "bytesOut": {}, "framesIn": {}, "heartbeats": {},
   "malformed": {}, "discoveryReplies": {}, "busLoadReports": {}, "sendErrors": {}, "heartbeatLosses": {},
   "can": [{}],
   "lin": [{}],
   "requests": [{}]}})",
                       box.index(), box.address(), box.hasHost(), box.vanished(), box.openChannels(), c.datagramsIn,
                       c.datagramsOut, c.bytesIn, c.bytesOut, c.framesIn, c.heartbeats, c.malformed, c.discoveryReplies,
                       c.busLoadReports, c.sendErrors, c.heartbeatLosses,
                       channelsJson(box, box.config().canChannels, canJson),
                       channelsJson(box, box.config().linChannels, linJson), requestsJson(box));
}

std::string channelText(const Box &box, Family family, int channel, bool open)
{
    const ChannelCounters c = box.counters(family, channel);
    return fmt::format("box {} {}{} {}: {} frames sent, {} received, {} rejected\n", box.index(),
                       family == Family::can ? "CAN" : "LIN", channel + 1, open ? "open" : "closed", c.framesSent,
                       c.framesReceived, c.framesRejected);
}

} // namespace

std::string formatStatsJson(std::span<const Box *const> boxes)
{
    std::string text;
    for (const Box *box : boxes)
        text += (text.empty() ? "" : ",\n  ") + boxJson(*box);
    return fmt::format("{{\"boxes\": [\n  {}\n]}}\n", text);
}

std::string formatStatsText(std::span<const Box *const> boxes)
{
    std::string text;
    for (const Box *box : boxes) {
        const BoxCounters c = box->counters();
        text += fmt::format("box {} {}: {} datagrams in, {} out, {} requests and frames, {} heartbeats, {} malformed, "
                            "{} discovery replies, {} bus load reports, {} send errors\n",
                            box->index(), box->address(), c.datagramsIn, c.datagramsOut, c.framesIn, c.heartbeats,
                            c.malformed, c.discoveryReplies, c.busLoadReports, c.sendErrors);
        for (int channel = 0; channel < box->config().canChannels; ++channel)
            text += channelText(*box, Family::can, channel, box->canChannel(channel).open);
        for (int channel = 0; channel < box->config().linChannels; ++channel)
            text += channelText(*box, Family::lin, channel, box->linChannel(channel).open);
    }
    return text;
}

} // namespace tzsim
