// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/soak/BoxesProcess.h"

#include "tests/soak/SoakPlan.h"
#include "tools/simulator/Simulator.h"

#include <fmt/format.h>

#include <array>
#include <functional>
#include <iostream>
#include <map>
#include <sstream>
#include <string>
#include <thread>

namespace tzsoak {

namespace {

constexpr std::uint8_t openCommand = 0x10;

using Arguments = std::vector<int>;

class Boxes
{
public:
    bool start(std::string &error)
    {
        for (int index = 0; index < boxCount; ++index)
            m_simulator.addBox({.index = index, .canChannels = canChannels, .linChannels = linChannels});
        if (!m_simulator.start(&error))
            return false;
        m_errorFrames = std::jthread([this](const std::stop_token &stop) { playErrorFrames(stop); });
        return true;
    }

    /// The answer to a command line.
    std::string obey(const std::string &line)
    {
        std::istringstream words(line);
        std::string name;
        words >> name;
        if (name == "sent")
            return "ok" + sentFrames();
        Arguments arguments;
        for (int number = 0; words >> number;)
            arguments.push_back(number);
        const auto command = commands().find(name);
        if (command == commands().end() || arguments.size() != command->second.arguments)
            return "error unknown command: " + line;
        tzsim::Box *box = m_simulator.findBox(arguments[0]);
        if (!box)
            return "error no such box: " + line;
        return command->second.act(*this, *box, arguments) ? "ok" : "error failed: " + line;
    }

private:
    struct Command
    {
        std::size_t arguments;
        std::function<bool(Boxes &, tzsim::Box &, const Arguments &)> act;
    };

    static const std::map<std::string, Command> &commands()
    {
        static const std::map<std::string, Command> table = {
            {"start", {1, [](Boxes &, tzsim::Box &box, const Arguments &) { return startTraffic(box); }}},
            {"stop", {1, [](Boxes &, tzsim::Box &box, const Arguments &) { return box.stopTraffic(), true; }}},
            {"silence",
             {2, [](Boxes &, tzsim::Box &box, const Arguments &a) { return box.setSilent(a[1] != 0), true; }}},
            {"late",
             {2, [](Boxes &, tzsim::Box &box,
                    const Arguments &a) { return box.setReplyDelay(std::chrono::milliseconds(a[1])), true; }}},
            {"junk",
             {2, [](Boxes &, tzsim::Box &box,
                    const Arguments &a) { return box.sendJunk(static_cast<std::size_t>(a[1])); }}},
            {"cut",
             {2, [](Boxes &, tzsim::Box &box,
                    const Arguments &a) { return box.sendCutDatagram(static_cast<std::size_t>(a[1])); }}},
            {"empty", {1, [](Boxes &, tzsim::Box &box, const Arguments &) { return box.sendEmptyDatagram(); }}},
            {"burst",
             {3, [](Boxes &boxes, tzsim::Box &box, const Arguments &a) { return boxes.burst(box, a[1], a[2]); }}},
            {"refuse", {3, [](Boxes &, tzsim::Box &box, const Arguments &a) { return refuse(box, a[1], a[2]); }}},
            {"vanish", {1, [](Boxes &, tzsim::Box &box, const Arguments &) { return box.vanish(), true; }}},
            {"return", {1, [](Boxes &, tzsim::Box &box, const Arguments &) { return box.comeBack(); }}},
        };
        return table;
    }

    static bool startTraffic(tzsim::Box &box)
    {
        using tzsim::CanFlag::bitRateSwitch;
        using tzsim::CanFlag::fd;
        box.stopTraffic();
        box.startLoad({.framesPerSecond = classicFramesPerSecond, .canChannels = {classicChannel}});
        box.startLoad({.framesPerSecond = fdFramesPerSecond,
                       .canChannels = {fdChannel},
                       .length = fdLength,
                       .flags = fd | bitRateSwitch,
                       .firstId = 0x300});
        box.startLoad({.framesPerSecond = linFramesPerSecond, .canChannels = {}, .linChannels = {0}});
        return true;
    }

    static bool refuse(tzsim::Box &box, int protocol, int channel)
    {
        tzsim::ReplyFault fault;
        fault.match.protocol = static_cast<std::uint8_t>(protocol);
        fault.match.command = openCommand;
        fault.match.channel = static_cast<std::uint8_t>(channel);
        fault.times = 1;
        box.addReplyFault(fault);
        return true;
    }

    // The frames of a burst go past the box's own counters.
    bool burst(tzsim::Box &box, int channel, int frames)
    {
        if (!box.sendBurst(channel, static_cast<std::size_t>(frames)))
            return false;
        m_burstFrames[static_cast<std::size_t>(box.index())] += static_cast<std::uint64_t>(frames);
        return true;
    }

    std::string sentFrames()
    {
        std::string text;
        for (tzsim::Box *box : m_simulator.boxes()) {
            std::uint64_t can = m_burstFrames[static_cast<std::size_t>(box->index())];
            for (int channel = 0; channel < canChannels; ++channel)
                can += box->counters(tzsim::Family::can, channel).framesSent;
            text += fmt::format(" {} {}", can, box->counters(tzsim::Family::lin, 0).framesSent);
        }
        return text;
    }

    // Stands still for a box whose traffic is stopped: then nothing at all may be on its way.
    void playErrorFrames(const std::stop_token &stop)
    {
        for (std::uint32_t code = 1; !stop.stop_requested(); ++code) {
            for (tzsim::Box *box : m_simulator.boxes()) {
                if (box->trafficRunning())
                    box->injectCanError(static_cast<int>(code % canChannels), code);
            }
            std::this_thread::sleep_for(errorFramePeriod);
        }
    }

    tzsim::Simulator m_simulator;
    std::array<std::uint64_t, boxCount> m_burstFrames{};
    std::jthread m_errorFrames; // last: it uses the simulator
};

} // namespace

int runBoxesProcess()
{
    Boxes boxes;
    std::string error;
    if (!boxes.start(error)) {
        std::cout << "error " << error << std::endl;
        return 1;
    }
    std::cout << "ok" << std::endl;
    for (std::string line; std::getline(std::cin, line);)
        std::cout << boxes.obey(line) << std::endl;
    return 0;
}

} // namespace tzsoak
