// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tests/support/LogCapture.h"
#include "tests/support/WaitFor.h"
#include "tests/vci/PlainPeer.h"
#include "vci/TzVciCommunication.h"

#include <gtest/gtest.h>

#include <atomic>
#include <mutex>
#include <vector>

namespace tztest {

/// A link and the bare socket that it is to speak with. What the link delivers is kept batch by batch.
class LinkFixture : public testing::Test
{
protected:
    LinkFixture()
    {
        m_link.setDataCallback([this](const std::vector<TzVciProtocolData> &batch) {
            const std::lock_guard lock(m_mutex);
            m_batches.push_back(batch);
        });
        m_link.setDisconnectCallback([this] { ++m_disconnects; });
    }

    TzVciCommunication::ConnectConfig config() const
    {
        TzVciCommunication::ConnectConfig config;
        config.serverIp = m_peer.ip();
        config.serverPort = m_peer.port();
        return config;
    }

    /// Connects, and lets the peer learn where the link's socket is.
    void connectLink() { connectLink(config()); }
    void connectLink(const TzVciCommunication::ConnectConfig &config)
    {
        ASSERT_TRUE(m_link.connect(config));
        greet();
    }
    void greet()
    {
        ASSERT_EQ(m_link.send(QByteArrayLiteral("hello")), 0);
        ASSERT_TRUE(m_peer.receive().has_value());
    }

    std::vector<std::vector<TzVciProtocolData>> batches() const
    {
        const std::lock_guard lock(m_mutex);
        return m_batches;
    }
    /// Waits until the link has taken this many bytes.
    bool waitForBytes(std::uint64_t bytes)
    {
        return waitFor([&] { return m_link.bytesReceived() >= bytes; });
    }
    bool waitForLine(int level, const std::string &text)
    {
        return waitFor([&] { return m_log.has(level, text); });
    }
    bool waitForDisconnects(int count)
    {
        return waitFor([&] { return m_disconnects == count; });
    }

    LogCapture m_log;
    PlainPeer m_peer;
    mutable std::mutex m_mutex; // protects m_batches
    std::vector<std::vector<TzVciProtocolData>> m_batches;
    std::atomic<int> m_disconnects{0};
    TzVciCommunication m_link{0}; // last: its thread uses all the above
};

} // namespace tztest
