// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tests/views/RawViewTwins.h"
#include "vci/TzVciDeviceManager.h"
#include "vci/TzVciDeviceStore.h"

#include <QCoreApplication>

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace tztest {

/// One of the two raw models with a filter and what tests ask of them.
class RawViewModelFixture : public testing::TestWithParam<RawViewTwin>
{
protected:
    TzVciMessage rx(std::uint8_t id, std::uint64_t ticks = 0) const { return at(ticks, GetParam().received(id)); }
    TzVciMessage tx(std::uint8_t id, std::uint64_t ticks = 0) const { return at(ticks, GetParam().transmitted(id)); }

    void show(std::initializer_list<TzVciMessage> messages)
    {
        for (const TzVciMessage &message : messages)
            m_model->addMessage(message);
        m_model->updateData();
    }
    void show(const std::vector<TzVciMessage> &messages)
    {
        m_model->addMessages(messages);
        m_model->updateData();
    }
    void fold(bool on = true)
    {
        m_model->setFold(on);
        QCoreApplication::processEvents();
    }
    std::string text(int row, int column) const { return m_model->index(row, column).data().toString().toStdString(); }
    std::string numberText(int row) const { return text(row, TzRawViewFamily::NumberColumn); }
    std::string timeText(int row) const { return text(row, TzRawViewFamily::TimeColumn); }
    std::uint32_t id(int row) const
    {
        return text(row, TzRawViewFamily::IdColumn).empty()
                   ? 0xFFFF
                   : m_model->index(row, TzRawViewFamily::IdColumn).data().toString().toUInt(nullptr, 16);
    }
    void filterIds(const char *ids)
    {
        m_filter->enabled = true;
        m_filter->ids.setText(QString::fromLatin1(ids));
        m_model->onFilter();
    }

    TzVciDeviceStore m_store;
    TzVciDeviceManager m_manager{&m_store};
    std::shared_ptr<TzRawFrameFilter> m_filter = std::make_shared<TzRawFrameFilter>();
    std::unique_ptr<TzRawViewModel> m_model = [this] {
        auto model = GetParam().makeModel(&m_manager);
        model->setFilter(m_filter);
        return model;
    }();
};

} // namespace tztest
