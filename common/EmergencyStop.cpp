// SPDX-License-Identifier: GPL-3.0-or-later
#include "common/EmergencyStop.h"

#include "common/Log.h"
#include "common/platform/SocketOptions.h"

#include <array>
#include <atomic>
#include <cstring>
#include <optional>
#include <thread>

namespace Common::EmergencyStop {

namespace {

constexpr int freeSocket = -1;
constexpr int closingSocket = -2;
constexpr std::size_t wordSize = sizeof(std::uint64_t);
constexpr std::size_t wordCount = maxDatagramSize / wordSize;

using Words = std::array<std::uint64_t, wordCount>;

struct Datagram
{
    Words words{};
    std::uint32_t size = 0;
};

// One armed channel. The bytes are kept in atomic words with a version around them, odd while they are written: who
// reads a version that was odd or has changed has read nothing.
class Entry
{
public:
    bool isUsed() const { return m_size.load() > 0; }
    bool isFor(std::uint16_t channelKey) const { return isUsed() && m_channelKey.load() == channelKey; }

    void write(std::uint16_t channelKey, const Datagram &datagram)
    {
        m_version.fetch_add(1);
        m_channelKey.store(channelKey);
        for (std::size_t i = 0; i < wordCount; ++i)
            m_words[i].store(datagram.words[i]);
        m_size.store(datagram.size);
        m_version.fetch_add(1);
    }
    void clear() { write(0, {}); }

    std::optional<Datagram> read() const noexcept
    {
        const std::uint32_t before = m_version.load();
        Datagram datagram;
        for (std::size_t i = 0; i < wordCount; ++i)
            datagram.words[i] = m_words[i].load();
        datagram.size = m_size.load();
        if (before % 2 != 0 || m_version.load() != before || datagram.size == 0)
            return std::nullopt;
        return datagram;
    }

private:
    std::atomic<std::uint32_t> m_version{0};
    std::atomic<std::uint32_t> m_size{0}; // 0: not used
    std::atomic<std::uint16_t> m_channelKey{0};
    std::array<std::atomic<std::uint64_t>, wordCount> m_words{};
};

struct Slot
{
    std::atomic<int> socket{freeSocket};
    std::atomic<int> users{0}; // fire() calls that may be using the socket
    std::array<Entry, maxChannelsPerSlot> entries;
};

// Static storage, no destructor: it serves a process that dies at any moment.
std::array<Slot, maxSlots> slots;
std::atomic<bool> hasFired{false};

Slot *slotAt(int slot)
{
    return slot >= 0 && slot < maxSlots ? &slots[static_cast<std::size_t>(slot)] : nullptr;
}

std::uint16_t makeChannelKey(std::uint8_t protocol, std::uint8_t channel)
{
    return static_cast<std::uint16_t>(protocol << 8 | channel);
}

// The channel's own entry, else a free one, else null.
Entry *entryToArm(Slot &slot, std::uint16_t channelKey)
{
    Entry *unused = nullptr;
    for (Entry &entry : slot.entries) {
        if (entry.isFor(channelKey))
            return &entry;
        if (!unused && !entry.isUsed())
            unused = &entry;
    }
    return unused;
}

// After the socket was taken out: a fire() that is sending on it, and never waits itself, comes to its end.
void waitForUsers(const Slot &slot)
{
    while (slot.users.load() != 0)
        std::this_thread::yield();
}

void fireSlot(Slot &slot) noexcept
{
    slot.users.fetch_add(1); // before the socket is read: waitForUsers() follows the taking out
    const int socket = slot.socket.load();
    if (socket >= 0) {
        for (const Entry &entry : slot.entries) {
            const auto datagram = entry.read();
            if (!datagram)
                continue;
            std::array<char, maxDatagramSize> bytes;
            std::memcpy(bytes.data(), datagram->words.data(), bytes.size());
            platform::sendNoWait(socket, bytes.data(), datagram->size);
        }
    }
    slot.users.fetch_sub(1);
}

} // namespace

int acquireSlot(int socket)
{
    if (socket < 0)
        return -1;
    for (int index = 0; index < maxSlots; ++index) {
        int expected = freeSocket;
        if (slotAt(index)->socket.compare_exchange_strong(expected, socket))
            return index;
    }
    return -1;
}

bool replaceSocket(int slot, int oldSocket, int newSocket)
{
    Slot *const changed = slotAt(slot);
    if (!changed || oldSocket < 0 || newSocket < 0 || !changed->socket.compare_exchange_strong(oldSocket, newSocket))
        return false;
    waitForUsers(*changed);
    return true;
}

void releaseSlot(int slot)
{
    Slot *const released = slotAt(slot);
    if (!released)
        return;
    int socket = released->socket.load();
    if (socket < 0 || !released->socket.compare_exchange_strong(socket, closingSocket))
        return;
    waitForUsers(*released);
    for (Entry &entry : released->entries) {
        if (entry.isUsed())
            entry.clear();
    }
    released->socket.store(freeSocket);
}

void arm(int slot, std::uint8_t protocol, std::uint8_t channel, std::span<const char> closeDatagram)
{
    Slot *const armed = slotAt(slot);
    if (!armed || armed->socket.load() < 0)
        return;
    const std::uint16_t channelKey = makeChannelKey(protocol, channel);
    Entry *const entry = entryToArm(*armed, channelKey);
    if (!entry || closeDatagram.empty() || closeDatagram.size() > maxDatagramSize) {
        logWarning("No place to keep the {} byte close datagram of protocol {} channel {}", closeDatagram.size(),
                   protocol, channel);
        return;
    }
    Datagram datagram;
    std::memcpy(datagram.words.data(), closeDatagram.data(), closeDatagram.size());
    datagram.size = static_cast<std::uint32_t>(closeDatagram.size());
    entry->write(channelKey, datagram);
}

void disarm(int slot, std::uint8_t protocol, std::uint8_t channel)
{
    Slot *const disarmed = slotAt(slot);
    if (!disarmed)
        return;
    const std::uint16_t channelKey = makeChannelKey(protocol, channel);
    for (Entry &entry : disarmed->entries) {
        if (entry.isFor(channelKey))
            entry.clear();
    }
}

void fire() noexcept
{
    hasFired.store(true); // first: no sender may talk behind the close
    for (Slot &slot : slots)
        fireSlot(slot);
}

bool fired() noexcept
{
    return hasFired.load(std::memory_order_relaxed);
}

void reset()
{
    hasFired.store(false);
}

} // namespace Common::EmergencyStop
