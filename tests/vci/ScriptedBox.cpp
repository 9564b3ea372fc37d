// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/vci/ScriptedBox.h"

#include "tests/vci/BoundSocket.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <cstring>
#include <sys/socket.h>
#include <unistd.h>

namespace tztest {

namespace {

void appendLittleEndian(std::vector<std::uint8_t> &bytes, std::uint64_t value, int count)
{
    for (int i = 0; i < count; ++i)
        bytes.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
}

} // namespace

std::string ScriptedBox::Request::text() const
{
    return fmt::format("{:x} {:x} {:x} {:x}: {:02x}", protocol, command, channel, param, fmt::join(payload, " "));
}

ScriptedBox::ScriptedBox(int deviceIndex, const TzVciNetwork &network)
    : m_rule([](ScriptedBox &box, const Request &request) { box.answer(request); })
{
    m_socket = openBoundSocket(network.deviceAddress(deviceIndex), network.devicePort);
    m_thread = std::thread([this] { run(); });
}

ScriptedBox::~ScriptedBox()
{
    vanish();
}

void ScriptedBox::vanish()
{
    m_stopping = true;
    if (m_thread.joinable())
        m_thread.join();
    if (const int handle = m_socket.exchange(-1); handle >= 0)
        ::close(handle);
}

void ScriptedBox::setRule(Rule rule)
{
    const std::lock_guard lock(m_mutex);
    m_rule = std::move(rule);
}

void ScriptedBox::run()
{
    std::array<std::uint8_t, 2048> buffer{};
    while (!m_stopping) {
        sockaddr_in sender{};
        const std::size_t size = receiveFrom(m_socket, buffer, sender);
        if (size == 0)
            continue;
        {
            const std::lock_guard lock(m_mutex);
            m_host = sender;
        }
        handleDatagram(buffer.data(), size);
    }
}

void ScriptedBox::handleDatagram(const std::uint8_t *bytes, std::size_t size)
{
    std::size_t position = 0;
    while (size - position >= 9 && bytes[position] == 0xAA && bytes[position + 1] == 0x55) {
        const std::uint8_t *start = bytes + position;
        const std::size_t length = start[6] | start[7] << 8;
        if (size - position < length + 9)
            return;
        const Request request{start[2], start[3], start[4], start[5], {start + 8, start + 8 + length}};
        position += length + 9;
        Rule rule;
        {
            const std::lock_guard lock(m_mutex);
            m_requests.push_back(request);
            rule = m_rule;
        }
        rule(*this, request);
    }
}

void ScriptedBox::answer(const Request &request)
{
    if (request.protocol == 15 && request.command == 0x60)
        reply(request, {1, 2, 3, 4});
    else if (request.protocol == 15 && request.command == 0x40)
        reply(request, {0x40, 0x42, 0x0F, 0, 0, 0, 0, 0});
    else if (request.protocol == 15 || request.command != 0x30) // frames for the bus are not answered
        replyStatus(request, 0);
}

void ScriptedBox::replyStatus(const Request &request, std::uint8_t status)
{
    reply(request, {status});
}

void ScriptedBox::reply(const Request &request, const std::vector<std::uint8_t> &payload)
{
    sendRaw(frame(request.protocol, request.command, request.channel, payload));
}

void ScriptedBox::sendRaw(const std::vector<std::uint8_t> &datagram)
{
    const std::lock_guard lock(m_mutex);
    ::sendto(m_socket, datagram.data(), datagram.size(), 0, reinterpret_cast<const sockaddr *>(&m_host),
             sizeof(m_host));
}

std::vector<std::uint8_t> ScriptedBox::frame(int protocol, int command, int channel,
                                             const std::vector<std::uint8_t> &payload)
{
    std::vector<std::uint8_t> bytes{0x55,
                                    0xAA,
                                    static_cast<std::uint8_t>(protocol),
                                    static_cast<std::uint8_t>(command),
                                    static_cast<std::uint8_t>(channel),
                                    0};
    appendLittleEndian(bytes, payload.size(), 2);
    bytes.insert(bytes.end(), payload.begin(), payload.end());
    bytes.push_back(0xEE); // a placeholder that the host ignores
    return bytes;
}

std::vector<std::uint8_t> ScriptedBox::canFrame(int channel, std::uint32_t id, std::uint64_t timestamp,
                                                const std::vector<std::uint8_t> &data)
{
    std::vector<std::uint8_t> payload;
    appendLittleEndian(payload, id, 4);
    payload.insert(payload.end(), {static_cast<std::uint8_t>(data.size()), 0, 0, 2});
    appendLittleEndian(payload, timestamp, 8);
    payload.insert(payload.end(), data.begin(), data.end());
    return frame(1, 0x40, channel, payload);
}

std::vector<ScriptedBox::Request> ScriptedBox::requests() const
{
    const std::lock_guard lock(m_mutex);
    return m_requests;
}

std::vector<std::string> ScriptedBox::requestTexts() const
{
    std::vector<std::string> texts;
    for (const Request &request : requests())
        texts.push_back(request.text());
    return texts;
}

std::size_t ScriptedBox::requestCount() const
{
    const std::lock_guard lock(m_mutex);
    return m_requests.size();
}

void ScriptedBox::clearRequests()
{
    const std::lock_guard lock(m_mutex);
    m_requests.clear();
}

} // namespace tztest
