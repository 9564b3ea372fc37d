// SPDX-License-Identifier: GPL-3.0-or-later
#include "tools/simulator/LoadSource.h"

#include "tools/simulator/Delivery.h"
#include "tools/simulator/Wire.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace tzsim {

namespace {

constexpr double tickNs = 500'000;
constexpr std::uint64_t maxRoundsPerRun = 4096;
constexpr auto maxLag = std::chrono::seconds(1);
constexpr double minFramesPerSecond = 0.001;

void writeNumber(std::uint8_t *data, std::uint8_t length, std::uint64_t number)
{
    std::array<std::uint8_t, 4> bytes{};
    wire::writeU32(bytes.data(), static_cast<std::uint32_t>(number));
    std::copy_n(bytes.begin(), std::min<std::size_t>(length, bytes.size()), data);
}

template <std::size_t Size> void fillPattern(std::array<std::uint8_t, Size> &data, std::uint8_t length)
{
    for (std::size_t i = 4; i < length; ++i)
        data[i] = static_cast<std::uint8_t>(0xA0 + i);
}

} // namespace

LoadSource::LoadSource(int box, const LoadSpec &spec, Clock::time_point start)
    : m_spec(spec)
    , m_periodNs(1e9 / std::max(spec.framesPerSecond, minFramesPerSecond))
    , m_roundsAtOnce(static_cast<std::uint64_t>(std::max(1.0, std::floor(tickNs / m_periodNs))))
    , m_start(start)
{
    for (const int channel : spec.canChannels)
        m_channels.push_back({{box, Family::can, channel}});
    for (const int channel : spec.linChannels)
        m_channels.push_back({{box, Family::lin, channel}});
    m_canFrame.flags = spec.flags;
    m_canFrame.length = std::min<std::uint8_t>(spec.length, (spec.flags & CanFlag::fd) != 0 ? 64 : 8);
    m_linFrame.length = std::clamp<std::uint8_t>(spec.length, 1, 8);
    fillPattern(m_canFrame.data, m_canFrame.length);
    fillPattern(m_linFrame.data, m_linFrame.length);
}

LoadSource::Clock::time_point LoadSource::dueOf(std::uint64_t round) const
{
    return m_start + std::chrono::nanoseconds(std::llround(static_cast<double>(round) * m_periodNs));
}

bool LoadSource::finished() const
{
    return m_channels.empty() ||
           (m_spec.count > 0 && std::all_of(m_channels.begin(), m_channels.end(),
                                            [&](const Channel &c) { return c.sent >= m_spec.count; }));
}

std::optional<LoadSource::Clock::time_point> LoadSource::nextDue() const
{
    if (finished())
        return std::nullopt;
    return dueOf(m_round + m_roundsAtOnce - 1);
}

void LoadSource::run(Clock::time_point now, Delivery &delivery)
{
    if (now - dueOf(m_round) > maxLag) {
        m_start = now;
        m_round = 0;
    }
    std::vector<Channel *> listening;
    for (Channel &channel : m_channels) {
        if (delivery.anyoneListens(channel.ref))
            listening.push_back(&channel);
    }
    for (std::uint64_t i = 0; i < maxRoundsPerRun; ++i) {
        const auto due = dueOf(m_round);
        if (due > now)
            break;
        ++m_round;
        for (Channel *channel : listening)
            deliver(*channel, due, delivery);
    }
}

void LoadSource::deliver(Channel &channel, Clock::time_point at, Delivery &delivery)
{
    if (m_spec.count > 0 && channel.sent >= m_spec.count)
        return;
    const auto id = static_cast<std::uint32_t>(m_spec.firstId + channel.sent % std::max(m_spec.idCount, 1U));
    if (channel.ref.family == Family::can) {
        m_canFrame.id = id & ((m_spec.flags & CanFlag::extended) != 0 ? 0x1FFFFFFFU : 0x7FFU);
        writeNumber(m_canFrame.data.data(), m_canFrame.length, channel.sent);
        delivery.canFromNode(channel.ref, m_canFrame, at);
    } else {
        m_linFrame.id = static_cast<std::uint8_t>(id % 0x3C); // 0x3C and above are for diagnosis
        writeNumber(m_linFrame.data.data(), m_linFrame.length, channel.sent);
        delivery.linFromNode(channel.ref, m_linFrame, at);
    }
    ++channel.sent;
}

} // namespace tzsim
