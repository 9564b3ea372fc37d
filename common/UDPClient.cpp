// SPDX-License-Identifier: GPL-3.0-or-later
#include "common/UDPClient.h"

#include "common/UDPClientSession.h"

#include <utility>

namespace Common {

UDPClient::UDPClient() = default;

UDPClient::~UDPClient()
{
    stop();
}

bool UDPClient::start(const ConnectConfig &config)
{
    if (session())
        return false;
    auto opened = std::make_shared<UDPClientSession>(config);
    if (!opened->open())
        return false;
    const std::lock_guard lock(m_mutex);
    m_session = std::move(opened);
    return true;
}

void UDPClient::stop()
{
    std::shared_ptr<UDPClientSession> closing;
    {
        const std::lock_guard lock(m_mutex);
        closing.swap(m_session);
    }
    if (closing)
        closing->close();
}

bool UDPClient::broadcast(const std::vector<char> &data, int port, const std::string &address)
{
    const auto current = session();
    return current && current->send(data, port, address);
}

bool UDPClient::receive(DataBufferPtr &buffer)
{
    const auto current = session();
    return current && current->receive(buffer);
}

std::shared_ptr<UDPClientSession> UDPClient::session() const
{
    const std::lock_guard lock(m_mutex);
    return m_session;
}

} // namespace Common
