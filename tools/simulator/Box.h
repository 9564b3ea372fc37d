// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tools/simulator/BoxConfig.h"
#include "tools/simulator/BusFrame.h"
#include "tools/simulator/ChannelState.h"
#include "tools/simulator/Request.h"
#include "tools/simulator/TrafficSpec.h"

#include <chrono>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace tzsim {

class BoxEngine;

/// One simulated box: what a test or the program sees and does with it. Boxes are made by Simulator::addBox().
///
/// Threads: every call may come from any thread, also while the simulator runs. The box's own thread ("sim-box-N")
/// receives, answers and plays the box's traffic.
/// Traffic reaches a host only through channels that the host has opened, and only after it has sent a first frame, by
/// which the box knows its address.
class Box
{
public:
    explicit Box(BoxEngine &engine);

    // ---- what it is
    int index() const;
    std::string address() const;
    const BoxConfig &config() const;

    // ---- what the host has done to it
    CanChannelState canChannel(int channel) const; ///< a closed channel for an index out of range
    LinChannelState linChannel(int channel) const;
    int openChannels() const; ///< of both families
    ChannelCounters counters(Family family, int channel) const;
    BoxCounters counters() const;
    bool hasHost() const; ///< a host has sent a frame since the start
    /// All requests but transmit requests in the order of their arrival; the latest 10 000 are kept.
    std::vector<Request> requests() const;
    /// The transmit requests (command 0x30 of CAN and LIN); the latest 10 000 are kept.
    std::vector<Request> transmits() const;
    void clearRequests(); ///< empties both logs

    // ---- time
    std::uint64_t deviceTime() const;                        ///< the box's clock now, in 0.1 microsecond
    void setClockOffset(std::uint64_t ticks);                ///< the clock reads @p ticks now and runs on from there
    void setBusLoadPeriod(std::chrono::milliseconds period); ///< 0 for no reports
    void setHeartbeatTimeout(std::chrono::milliseconds timeout); ///< 0 for never

    // ---- frames put on the bus of a channel by a node that is not a box; every open channel on that bus receives them
    void injectCan(int channel, const CanFrame &frame);
    /// Several frames at once, packed into as few datagrams as hold them.
    void injectCan(int channel, std::span<const CanFrame> frames);
    void injectCanError(int channel, std::uint32_t code, std::uint8_t type = CanType::error);
    /// A whole LIN frame, header and response of other nodes.
    void injectLin(int channel, const LinFrame &frame);
    /// A header sent by a master that is not a box: whoever holds a response for it answers.
    void injectLinHeader(int channel, std::uint8_t id);
    /// A slave node on the channel's bus that answers headers of frame.id; replaces its earlier answer.
    void setLinNodeResponse(int channel, const LinFrame &frame);
    void clearLinNodeResponse(int channel, std::uint8_t id);

    // ---- traffic; several may run at once
    void startLoad(const LoadSpec &spec);
    void startSignals(const SignalSpec &spec);
    /// False, with a text for the user in @p error, when the file cannot be read or holds no frame.
    bool startReplay(const ReplaySpec &spec, std::string *error = nullptr);
    void stopTraffic();
    bool trafficRunning() const; ///< a load or replay that has reached its end does not count

    // ---- faults of replies
    void addReplyFault(const ReplyFault &fault);
    void refuse(std::uint8_t protocol, std::uint8_t command, std::uint8_t channel, std::uint8_t code = 1);
    void refuseParameter(std::uint8_t channel, std::uint8_t parameterId, std::uint8_t code = 1);
    void setReplyDelay(std::chrono::milliseconds delay); ///< of every reply; 0 ends it
    void setSilent(bool silent); ///< hears and acts, but sends nothing at all, also no discovery reply
    void clearFaults();          ///< ends all of the above; does not bring a vanished box back

    // ---- datagrams to the host, as they stand; false when there is no host or no socket
    bool sendDatagram(std::span<const std::uint8_t> bytes);
    /// One protocol frame with the sync order of a box.
    bool sendFrame(std::uint8_t protocol, std::uint8_t command, std::uint8_t channel, std::uint8_t param,
                   std::span<const std::uint8_t> payload);
    bool sendEmptyDatagram();
    /// @p size bytes that hold no sync word.
    bool sendJunk(std::size_t size);
    /// A valid traffic record of a classic CAN frame with 8 data bytes (33 bytes), cut to @p size bytes.
    bool sendCutDatagram(std::size_t size);
    /// @p count frames of 8 bytes back to back, whether or not the channel is open.
    bool sendBurst(int channel, std::size_t count);

    // ---- loss of the box
    /// Closes the sockets: the host's next datagrams are refused by the network stack. Returns when they are closed.
    void vanish();
    /// Comes back as after power-up: channels closed, host forgotten, the clock and the counters run on. False, with a
    /// text in @p error, when the address cannot be bound.
    bool comeBack(std::string *error = nullptr);
    bool vanished() const;

private:
    BoxEngine &m_engine; // owned by the simulator, as is this
};

} // namespace tzsim
