// SPDX-License-Identifier: GPL-3.0-or-later
#include "tools/simulator/ProgramOptions.h"

#include "tools/simulator/SpecText.h"

#include <fmt/format.h>

#include <array>
#include <functional>
#include <map>

namespace tzsim {

namespace {

constexpr std::uint64_t maxMilliseconds = 7ULL * 24 * 3600 * 1000;
constexpr std::uint64_t maxRate = 10'000'000; // frames per second and channel

/// Reads the arguments in two passes: what fixes the boxes first, so that the rest can be checked against them.
class ArgumentReader
{
public:
    ArgumentReader(ProgramOptions &options, std::string &error)
        : m_options(options)
        , m_error(error)
    {
    }
    bool read(std::span<const char *const> arguments);

private:
    struct Option
    {
        bool hasValue = false;
        bool firstPass = false;
        std::function<void(const std::string &)> apply;
    };

    std::map<std::string, Option> optionTable();
    void fail(const std::string &text)
    {
        if (m_error.empty())
            m_error = text;
    }
    int number(const std::string &text, int max);
    void makeBoxes();
    std::vector<int> takeBoxes(SpecText &spec);
    void finish(const SpecText &spec);
    void setNetwork(const std::string &text);
    void setFirmware(const std::string &text);
    void addLoad(const std::string &text);
    void addSignals(const std::string &text);
    void addReplay(const std::string &text);
    void addJoin(const std::string &text);
    void addFault(const std::string &text);
    std::optional<ChannelRef> channelRef(std::string_view text) const;

    ProgramOptions &m_options;
    std::string &m_error;
    BoxConfig m_box{.canChannels = 4, .linChannels = 2};
    int m_boxCount = 1;
    int m_firstBox = 0;
};

std::map<std::string, ArgumentReader::Option> ArgumentReader::optionTable()
{
    using Text = const std::string &;
    const auto ms = [this](Text text) {
        return std::chrono::milliseconds(number(text, static_cast<int>(maxMilliseconds)));
    };
    return {
        {"--help", {false, true, [this](Text) { m_options.help = true; }}},
        {"--quiet", {false, true, [this](Text) { m_options.quiet = true; }}},
        {"--network", {true, true, [this](Text text) { setNetwork(text); }}},
        {"--boxes", {true, true, [this](Text text) { m_boxCount = number(text, maxBoxes); }}},
        {"--first-box", {true, true, [this](Text text) { m_firstBox = number(text, maxBoxes - 1); }}},
        {"--can", {true, true, [this](Text text) { m_box.canChannels = number(text, maxChannels); }}},
        {"--lin", {true, true, [this](Text text) { m_box.linChannels = number(text, maxChannels); }}},
        {"--firmware", {true, true, [this](Text text) { setFirmware(text); }}},
        {"--clock",
         {true, true,
          [this](Text text) {
              const auto ticks = SpecText::number(text, UINT64_MAX);
              m_box.clockOffset = ticks.value_or(0);
              if (!ticks)
                  fail(fmt::format("{} is not a number", text));
          }}},
        {"--bus-load-period", {true, true, [this, ms](Text text) { m_box.busLoadPeriod = ms(text); }}},
        {"--heartbeat-timeout", {true, true, [this, ms](Text text) { m_box.heartbeatTimeout = ms(text); }}},
        {"--stats-file", {true, true, [this](Text text) { m_options.statsFile = text; }}},
        {"--duration", {true, true, [this, ms](Text text) { m_options.duration = ms(text); }}},
        {"--demo", {false, false, [this](Text) { addSignals("signals,errors"); }}},
        {"--signals", {false, false, [this](Text) { addSignals("signals"); }}},
        {"--traffic", {true, false, [this](Text text) { addSignals(text); }}},
        {"--load", {true, false, [this](Text text) { addLoad(text); }}},
        {"--replay", {true, false, [this](Text text) { addReplay(text); }}},
        {"--join", {true, false, [this](Text text) { addJoin(text); }}},
        {"--fault", {true, false, [this](Text text) { addFault(text); }}},
    };
}

bool ArgumentReader::read(std::span<const char *const> arguments)
{
    const auto table = optionTable();
    for (const bool firstPass : {true, false}) {
        for (std::size_t i = 0; i < arguments.size() && m_error.empty(); ++i) {
            const std::string name = arguments[i];
            const auto option = table.find(name);
            if (option == table.end()) {
                fail(fmt::format("{} is not an option", name));
                return false;
            }
            const bool hasValue = option->second.hasValue;
            if (hasValue && i + 1 == arguments.size()) {
                fail("a value is missing");
            } else if (option->second.firstPass == firstPass) {
                option->second.apply(hasValue ? arguments[i + 1] : "");
            }
            if (!m_error.empty())
                m_error = fmt::format("{}: {}", name, m_error);
            i += hasValue ? 1 : 0;
        }
        if (firstPass && m_error.empty())
            makeBoxes();
    }
    return m_error.empty();
}

int ArgumentReader::number(const std::string &text, int max)
{
    const auto value = SpecText::number(text, static_cast<std::uint64_t>(max));
    if (!value)
        fail(fmt::format("{} is not a number of 0 to {}", text, max));
    return static_cast<int>(value.value_or(0));
}

void ArgumentReader::makeBoxes()
{
    if (m_boxCount == 0 || m_firstBox + m_boxCount > maxBoxes) {
        fail(fmt::format("{} boxes from box {} on: there are boxes 0 to {}", m_boxCount, m_firstBox, maxBoxes - 1));
        return;
    }
    for (int i = 0; i < m_boxCount; ++i) {
        m_options.boxes.push_back(m_box);
        m_options.boxes.back().index = m_firstBox + i;
    }
}

std::vector<int> ArgumentReader::takeBoxes(SpecText &spec)
{
    std::vector<int> boxes;
    const auto text = spec.takeText("box").value_or("all");
    for (const BoxConfig &box : m_options.boxes) {
        if (text == "all" || SpecText::number(text, maxBoxes) == static_cast<std::uint64_t>(box.index))
            boxes.push_back(box.index);
    }
    if (boxes.empty())
        fail(fmt::format("there is no box {}", text));
    return boxes;
}

void ArgumentReader::finish(const SpecText &spec)
{
    if (const std::string error = spec.error(); !error.empty())
        fail(error);
}

void ArgumentReader::setNetwork(const std::string &text)
{
    if (!m_options.network.useLoopback(text))
        fail(fmt::format("{} is not of the form 127.x.y", text));
}

void ArgumentReader::setFirmware(const std::string &text)
{
    const auto parts = SpecText::split(text, '.');
    for (std::size_t i = 0; i < m_box.firmwareVersion.size(); ++i) {
        const auto part = i < parts.size() ? SpecText::number(parts[i], 255) : std::nullopt;
        if (!part || parts.size() != m_box.firmwareVersion.size()) {
            fail(fmt::format("{} is not of the form 1.2.3.4", text));
            return;
        }
        m_box.firmwareVersion[i] = static_cast<std::uint8_t>(*part);
    }
}

void ArgumentReader::addLoad(const std::string &text)
{
    SpecText spec(text);
    LoadSpec load;
    const auto rate = SpecText::number(spec.head(), maxRate);
    if (!rate || *rate == 0)
        fail(fmt::format("{} is not a number of frames per second up to {}", spec.head(), maxRate));
    load.framesPerSecond = static_cast<double>(rate.value_or(1));
    const auto boxes = takeBoxes(spec);
    load.canChannels = spec.takeChannels("can", m_box.canChannels);
    const bool withLin = spec.takeFlag("with-lin");
    load.linChannels = withLin ? spec.takeChannels("lin", m_box.linChannels) : std::vector<int>();
    if (spec.takeFlag("fd"))
        load.flags |= CanFlag::fd;
    if (spec.takeFlag("brs"))
        load.flags |= CanFlag::fd | CanFlag::bitRateSwitch;
    if (spec.takeFlag("extended"))
        load.flags |= CanFlag::extended;
    const bool fd = (load.flags & CanFlag::fd) != 0;
    load.length = static_cast<std::uint8_t>(spec.takeNumber("length", fd ? 64 : 8, 8));
    load.firstId = static_cast<std::uint32_t>(spec.takeNumber("id", 0x1FFFFFFF, load.firstId));
    load.idCount = static_cast<std::uint32_t>(spec.takeNumber("ids", 100'000, load.idCount));
    load.count = spec.takeNumber("count", UINT64_MAX, 0);
    finish(spec);
    m_options.loads.push_back({boxes, load});
}

void ArgumentReader::addSignals(const std::string &text)
{
    SpecText spec(text);
    SignalSpec signals;
    const auto boxes = takeBoxes(spec);
    signals.canChannels = spec.takeChannels("can", m_box.canChannels);
    signals.linChannels = spec.takeChannels("lin", m_box.linChannels);
    signals.fd = !spec.takeFlag("classic");
    signals.errors = spec.takeFlag("errors");
    if (spec.head() != "signals")
        fail(fmt::format("there is no traffic {}", spec.head()));
    finish(spec);
    m_options.signals.push_back({boxes, signals});
}

void ArgumentReader::addReplay(const std::string &text)
{
    SpecText spec(text);
    ReplaySpec replay;
    replay.file = spec.head();
    const auto boxes = takeBoxes(spec);
    replay.loop = spec.takeFlag("loop");
    replay.speed = spec.takeReal("speed", 1.0);
    const std::string map = spec.takeText("map").value_or("");
    for (const std::string_view pair : SpecText::split(map, '+')) {
        const auto sides = SpecText::split(pair, ':');
        const auto from = SpecText::number(sides[0], 255);
        const auto to = sides.size() == 2 ? SpecText::number(sides[1], 255) : std::nullopt;
        if (from && to)
            replay.channelMap[static_cast<int>(*from)] = static_cast<int>(*to);
        else if (!pair.empty())
            fail(fmt::format("map={} is not of the form 0:1", pair));
    }
    finish(spec);
    m_options.replays.push_back({boxes, replay});
}

std::optional<ChannelRef> ArgumentReader::channelRef(std::string_view text) const
{
    const auto sides = SpecText::split(text, ':');
    const auto box = SpecText::number(sides[0], maxBoxes - 1);
    const bool can = sides.size() == 2 && sides[1].starts_with("can");
    if (!box || sides.size() != 2 || (!can && !sides[1].starts_with("lin")))
        return std::nullopt;
    const auto channel = SpecText::number(sides[1].substr(3), maxChannels);
    if (!channel)
        return std::nullopt;
    return ChannelRef{static_cast<int>(*box), can ? Family::can : Family::lin, static_cast<int>(*channel)};
}

void ArgumentReader::addJoin(const std::string &text)
{
    std::vector<ChannelRef> bus;
    for (const std::string_view part : SpecText::split(text, '+')) {
        const auto ref = channelRef(part);
        if (!ref) {
            fail(fmt::format("{} is not of the form 0:can1", part));
            return;
        }
        bus.push_back(*ref);
    }
    m_options.joins.push_back(bus);
}

void ArgumentReader::addFault(const std::string &text)
{
    std::string error;
    if (const auto fault = FaultSpec::parse(text, error))
        m_options.faults.push_back(*fault);
    else
        fail(error);
}

} // namespace

std::optional<ProgramOptions> ProgramOptions::parse(std::span<const char *const> arguments, std::string &error)
{
    ProgramOptions options;
    error.clear();
    ArgumentReader reader(options, error);
    return reader.read(arguments) ? std::optional(std::move(options)) : std::nullopt;
}

const char *ProgramOptions::helpText()
{
    return R"(usage: tzvci-sim [option...]
Plays VCI boxes on UDP. TZVCI_NETWORK=127.x.y or --network keeps them on loopback; without, they take the addresses
192.168.201.130 and on, which this machine must own.

boxes
  --boxes N               number of boxes, 1 to 16 (1)
  --first-box I           index of the first box (0)
  --can N, --lin N        channels of each box (4, 2)
  --firmware A.B.C.D      firmware version (1.2.3.4)
  --clock TICKS           device time at the start, in 0.1 microsecond (0)
  --bus-load-period MS    distance of bus load reports, 0 for none (1000)
  --heartbeat-timeout MS  close all channels when the host is silent for so long, 0 for never (0)
  --network 127.x.y       loopback network of the boxes
  --join 0:can0+1:can0    put channels on one bus; may be repeated

traffic, each may be repeated; channels and boxes are counted from 0
  --demo                  signals of a vehicle on all channels, and an error frame now and then
  --signals               the same without error frames
  --traffic signals[,box=N][,can=0+1][,lin=0][,classic][,errors]
  --load RATE[,box=N][,can=0+1][,with-lin][,lin=0][,length=N][,fd][,brs][,extended][,id=N][,ids=N][,count=N]
                          RATE frames per second on each channel
  --replay FILE[,box=N][,loop][,speed=X][,map=0:1+2:0]
                          a candump or ASC log; speed 0 plays as fast as it goes; map leads channels of the log to others

faults, each may be repeated; times in milliseconds
  --fault silence[,box=N][,after=MS][,for=MS][,every=MS]
  --fault vanish[,box=N][,after=MS][,for=MS][,every=MS]
  --fault refuse[,MATCH][,code=N]     answer with an error code
  --fault late[,MATCH][,delay=MS]     answer late (1000)
  --fault drop[,MATCH]                do not answer
  --fault resize[,MATCH][,length=N]   answer with a payload of another length (2)
  --fault junk|cut[,box=N][,size=N][,after=MS][,every=MS]
  --fault empty[,box=N][,after=MS][,every=MS]
  --fault burst[,box=N][,channel=N][,count=N][,after=MS][,every=MS]
  MATCH: [box=N][,protocol=N][,command=N][,channel=N][,param=N][,id=N][,times=N][,after=MS]; id is the payload's first byte

control
  --stats-file FILE       write all counters as JSON each second and at the end
  --duration MS           end after that time
  --quiet                 print nothing but errors
  --help                  this text
SIGUSR1 prints the counters, SIGTERM and SIGINT end the program, which prints them once more.
)";
}

} // namespace tzsim
