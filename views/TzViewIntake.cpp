// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/TzViewIntake.h"

#include <algorithm>

namespace {

TzViewIntake::Channels allChannels()
{
    TzViewIntake::Channels devices;
    for (int device = 0; device < tzVciMaxDevices; ++device) {
        auto &channels = devices[static_cast<std::uint8_t>(device)];
        for (int channel = 0; channel < tzVciMaxChannels; ++channel)
            channels.insert(static_cast<std::uint8_t>(channel));
    }
    return devices;
}

void countCan(const TzVciMessage &message, TzViewIntake::Counters &counters) noexcept
{
    switch (message.frame.can.frameType) {
    case TzVciCanFrameType::transmitted: ++counters.tx; break;
    case TzVciCanFrameType::received: ++counters.rx; break;
    case TzVciCanFrameType::error: ++counters.err; break;
    }
}

void countLin(const TzVciMessage &message, TzViewIntake::Counters &counters) noexcept
{
    switch (message.frame.lin.linDirection) {
    case TzVciLinDirection::masterRead:
    case TzVciLinDirection::slaveRead: ++counters.rx; break;
    case TzVciLinDirection::masterWrite:
    case TzVciLinDirection::slaveWrite: ++counters.tx; break;
    default: ++counters.err; break;
    }
}

} // namespace

TzViewIntake::TzViewIntake(std::uint8_t viewKind)
    : m_isLin(TzVciViewKind::isLinFamily(viewKind))
{
    setDevices(allChannels());
}

void TzViewIntake::setDevices(const Channels &devices)
{
    m_devices = devices;
    for (std::size_t device = 0; device < m_chosen.size(); ++device) {
        std::array<std::uint64_t, std::tuple_size_v<ChannelBits>> bits{};
        const auto chosen = devices.find(static_cast<std::uint8_t>(device));
        if (chosen != devices.end()) {
            for (const std::uint8_t channel : chosen->second)
                bits[channel / wordBits] |= std::uint64_t{1} << (channel % wordBits);
        }
        for (std::size_t word = 0; word < bits.size(); ++word)
            m_chosen[device][word].store(bits[word], std::memory_order_relaxed);
    }
}

std::span<const TzVciMessage> TzViewIntake::accept(const std::vector<TzVciMessage> &batch)
{
    if (isPaused())
        return {};
    const auto chosen = [this](const TzVciMessage &message) { return isChosen(message); };
    std::span<const TzVciMessage> accepted = batch;
    const auto firstOut = std::find_if_not(batch.begin(), batch.end(), chosen);
    if (firstOut != batch.end()) { // only a batch that does not pass as a whole is copied
        m_accepted.assign(batch.begin(), firstOut);
        std::copy_if(firstOut + 1, batch.end(), std::back_inserter(m_accepted), chosen);
        accepted = m_accepted;
    }
    count(accepted);
    return accepted;
}

bool TzViewIntake::isChosen(const TzVciMessage &message) const noexcept
{
    if (message.deviceIndex >= m_chosen.size())
        return false;
    const std::uint8_t channel = message.channelIndex;
    const std::uint64_t bits = m_chosen[message.deviceIndex][channel / wordBits].load(std::memory_order_relaxed);
    return ((bits >> (channel % wordBits)) & 1) != 0;
}

void TzViewIntake::count(std::span<const TzVciMessage> messages) noexcept
{
    Counters counters;
    counters.total = messages.size();
    for (const TzVciMessage &message : messages) {
        if (m_isLin)
            countLin(message, counters);
        else
            countCan(message, counters);
    }
    m_total.fetch_add(counters.total, std::memory_order_relaxed);
    m_rx.fetch_add(counters.rx, std::memory_order_relaxed);
    m_tx.fetch_add(counters.tx, std::memory_order_relaxed);
    m_err.fetch_add(counters.err, std::memory_order_relaxed);
}

TzViewIntake::Counters TzViewIntake::counters() const noexcept
{
    return {m_total.load(std::memory_order_relaxed), m_rx.load(std::memory_order_relaxed),
            m_tx.load(std::memory_order_relaxed), m_err.load(std::memory_order_relaxed)};
}

void TzViewIntake::resetCounters() noexcept
{
    for (auto *counter : {&m_total, &m_rx, &m_tx, &m_err})
        counter->store(0, std::memory_order_relaxed);
}

QString TzViewIntake::statusText() const
{
    constexpr int digits = 12;
    const auto number = [](std::uint64_t value) { return QString::number(value).rightJustified(digits, u'0'); };
    const Counters now = counters();
    return QStringLiteral("Tl:%1 Rx:%2 Tx:%3 Err:%4")
        .arg(number(now.total), number(now.rx), number(now.tx), number(now.err));
}
