// SPDX-License-Identifier: GPL-3.0-or-later
#include "common/DataBufferPool.h"

namespace Common {

DataBufferPool::DataBufferPool(std::size_t count)
    : m_buffers(count)
    , m_free(count)
{
    for (DataBuffer &buffer : m_buffers)
        m_free.enqueue(&buffer);
}

UDPClient::DataBuffer *DataBufferPool::take()
{
    DataBuffer *buffer = nullptr;
    return m_free.try_dequeue(buffer) ? buffer : nullptr;
}

void DataBufferPool::giveBack(DataBuffer *buffer)
{
    if (buffer)
        m_free.enqueue(buffer);
}

UDPClient::DataBufferPtr DataBufferPool::wrap(DataBuffer *buffer)
{
    return {buffer, [pool = shared_from_this()](DataBuffer *released) { pool->giveBack(released); }};
}

} // namespace Common
