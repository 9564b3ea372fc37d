// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "views/ui/TzVciBaseViewWindow.h"

#include <atomic>

namespace tztest {

/// A view of any kind without a table.
class PlainView : public TzVciBaseViewWindow
{
public:
    explicit PlainView(std::uint8_t kind)
        : TzVciBaseViewWindow(nullptr, kind, nullptr)
    {
    }
    ~PlainView() override { leaveDelivery(); }
    void onReceivedMessages(const std::vector<TzVciMessage> &messages) override { m_received += messages.size(); }
    void onUpdateData() override {}
    void onUpdateUi() override {}
    std::size_t received() const { return m_received.load(); }

private:
    std::atomic<std::size_t> m_received{0};
};

} // namespace tztest
