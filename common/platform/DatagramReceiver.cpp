// SPDX-License-Identifier: GPL-3.0-or-later
#include "common/platform/DatagramReceiver.h"

#include <linux/sock_diag.h>
#include <sys/socket.h>

#include <array>
#include <cerrno>
#include <cstring>

namespace Common::platform {

struct DatagramReceiver::Buffers
{
    struct alignas(cmsghdr) Control
    {
        std::array<char, CMSG_SPACE(sizeof(std::uint32_t))> bytes;
    };

    std::array<std::array<std::uint8_t, maxDatagramBytes>, batchSize> datagrams;
    std::array<Control, batchSize> controls;
    std::array<iovec, batchSize> vectors;
    std::array<mmsghdr, batchSize> messages;
};

DatagramReceiver::DatagramReceiver()
    : m_buffers(std::make_unique<Buffers>())
{
    for (std::size_t i = 0; i < batchSize; ++i) {
        m_buffers->vectors[i] = {m_buffers->datagrams[i].data(), maxDatagramBytes};
        msghdr &header = m_buffers->messages[i].msg_hdr;
        header.msg_iov = &m_buffers->vectors[i];
        header.msg_iovlen = 1;
        header.msg_control = m_buffers->controls[i].bytes.data();
    }
}

DatagramReceiver::~DatagramReceiver() = default;

int DatagramReceiver::receive(int descriptor) noexcept
{
    for (mmsghdr &message : m_buffers->messages)
        message.msg_hdr.msg_controllen = sizeof(Buffers::Control); // the system writes what it used
    const int count = ::recvmmsg(descriptor, m_buffers->messages.data(), batchSize, MSG_WAITFORONE, nullptr);
    if (count < 0)
        return -errno;
    noteDrops(count);
    return count;
}

std::span<const std::uint8_t> DatagramReceiver::datagram(int index) const noexcept
{
    const auto i = static_cast<std::size_t>(index);
    return {m_buffers->datagrams[i].data(), m_buffers->messages[i].msg_len};
}

void DatagramReceiver::noteDrops(int count) noexcept
{
    // Each datagram bears the counter as it was when it came in: the last one that bears it is the latest.
    for (int i = count - 1; i >= 0; --i) {
        msghdr &header = m_buffers->messages[static_cast<std::size_t>(i)].msg_hdr;
        const cmsghdr *control = CMSG_FIRSTHDR(&header);
        if (control && control->cmsg_level == SOL_SOCKET && control->cmsg_type == SO_RXQ_OVFL) {
            std::uint32_t dropped = 0;
            std::memcpy(&dropped, CMSG_DATA(control), sizeof(dropped));
            noteDropped(dropped);
            return;
        }
    }
}

void DatagramReceiver::updateDroppedDatagrams(int descriptor) noexcept
{
    std::array<std::uint32_t, SK_MEMINFO_VARS> info{};
    socklen_t size = sizeof(info);
    if (::getsockopt(descriptor, SOL_SOCKET, SO_MEMINFO, info.data(), &size) == 0 &&
        size > SK_MEMINFO_DROPS * sizeof(std::uint32_t))
        noteDropped(info[SK_MEMINFO_DROPS]);
}

// What was asked of the system directly is ahead of the datagrams that still waited then: the count never goes back.
void DatagramReceiver::noteDropped(std::uint32_t dropped) noexcept
{
    if (static_cast<std::int32_t>(dropped - m_dropped) > 0) // right across the wrap
        m_dropped = dropped;
}

} // namespace Common::platform
