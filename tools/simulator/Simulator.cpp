// SPDX-License-Identifier: GPL-3.0-or-later
#include "tools/simulator/Simulator.h"

#include "tools/simulator/BoxEngine.h"
#include "tools/simulator/BusSwitch.h"
#include "tools/simulator/DiscoveryResponder.h"
#include "tools/simulator/Stats.h"

#include <fmt/format.h>

#include <algorithm>
#include <atomic>
#include <cassert>
#include <system_error>

namespace tzsim {

struct Simulator::Private
{
    struct Member
    {
        std::unique_ptr<BoxEngine> engine;
        std::unique_ptr<Box> box;
    };

    explicit Private(const Options &given)
        : options(given)
    {
    }
    bool check(std::string &error) const;
    bool start(std::string &error);
    void stop();

    const Options options;
    BusSwitch buses;
    std::vector<Member> members;
    std::string problem; // with a box that was added
    std::atomic<bool> running{false};
    DiscoveryResponder discovery; // last: its thread calls the boxes
};

bool Simulator::Private::check(std::string &error) const
{
    error = !options.problem.empty() ? options.problem : problem;
    if (error.empty() && options.firstHost + maxBoxes > 256)
        error = fmt::format("the boxes do not fit behind {}.{}", options.prefix, options.firstHost);
    return error.empty();
}

bool Simulator::Private::start(std::string &error)
{
    for (const Member &member : members) {
        if (!member.engine->open(error))
            return false;
    }
    const auto answer = [this](const sockaddr_in &from) {
        for (const Member &member : members)
            member.engine->answerDiscovery(from);
    };
    try {
        for (const Member &member : members)
            member.engine->start();
        return discovery.start(options, answer, error);
    } catch (const std::system_error &failure) {
        error = fmt::format("cannot start a thread: {}", failure.what());
        return false;
    }
}

void Simulator::Private::stop()
{
    discovery.stop();
    for (const Member &member : members) {
        member.engine->traffic().clear();
        member.engine->stop();
    }
    running = false;
}

Simulator::Simulator(const Options &options)
    : d(std::make_unique<Private>(options))
{
}

Simulator::~Simulator()
{
    stop();
}

Box &Simulator::addBox(const BoxConfig &config)
{
    const auto countFits = [](int count) { return count >= 0 && count <= maxChannels; };
    const bool indexFits = config.index >= 0 && config.index < maxBoxes;
    if (!indexFits || !countFits(config.canChannels) || !countFits(config.linChannels))
        d->problem = fmt::format("box {} with {} CAN and {} LIN channels is out of range", config.index,
                                 config.canChannels, config.linChannels);
    else if (findBox(config.index))
        d->problem = fmt::format("there are two boxes {}", config.index);
    else if (d->running)
        d->problem = fmt::format("box {} was added while the simulator ran", config.index);
    auto engine = std::make_unique<BoxEngine>(d->options, config, d->buses);
    if (d->problem.empty())
        d->buses.addBox(*engine, config);
    auto box = std::make_unique<Box>(*engine);
    d->members.push_back({std::move(engine), std::move(box)});
    return *d->members.back().box;
}

bool Simulator::start(std::string *error)
{
    if (d->running)
        return true;
    std::string text;
    const bool ok = d->check(text) && d->start(text);
    if (!ok)
        d->stop();
    d->running = ok;
    if (error)
        *error = text;
    return ok;
}

void Simulator::stop()
{
    d->stop();
}
bool Simulator::isRunning() const
{
    return d->running;
}

bool Simulator::join(const std::vector<ChannelRef> &channels)
{
    return d->buses.join(channels);
}

Box *Simulator::findBox(int index)
{
    const auto found = std::find_if(d->members.begin(), d->members.end(),
                                    [index](const auto &member) { return member.box->index() == index; });
    return found == d->members.end() ? nullptr : found->box.get();
}

Box &Simulator::box(int index)
{
    Box *found = findBox(index);
    assert(found);
    return *found;
}

std::vector<Box *> Simulator::boxes()
{
    std::vector<Box *> result;
    for (const auto &member : d->members)
        result.push_back(member.box.get());
    return result;
}

const Options &Simulator::options() const
{
    return d->options;
}

std::string Simulator::statsJson() const
{
    std::vector<const Box *> all;
    for (const auto &member : d->members)
        all.push_back(member.box.get());
    return formatStatsJson(all);
}

} // namespace tzsim
