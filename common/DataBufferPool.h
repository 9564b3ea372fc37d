// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "common/UDPClient.h"

#include <concurrentqueue/concurrentqueue.h>

#include <cstddef>
#include <memory>
#include <vector>

namespace Common {

/// A fixed number of datagram buffers, handed out and taken back without a lock.
///
/// Threads: all functions may be called from any thread. The pool lives as long as its last buffer is out.
class DataBufferPool : public std::enable_shared_from_this<DataBufferPool>
{
public:
    using DataBuffer = UDPClient::DataBuffer;

    explicit DataBufferPool(std::size_t count);

    /// A free buffer, or null when all are out.
    DataBuffer *take();
    void giveBack(DataBuffer *buffer);
    /// Wraps a buffer that was taken, so that letting it go gives it back.
    UDPClient::DataBufferPtr wrap(DataBuffer *buffer);
    std::size_t size() const noexcept { return m_buffers.size(); }

private:
    std::vector<DataBuffer> m_buffers; // never changes its size
    moodycamel::ConcurrentQueue<DataBuffer *> m_free;
};

} // namespace Common
