// SPDX-License-Identifier: GPL-3.0-or-later
#include "bench/BlfTraffic.h"

#include "tests/logging/blf/BlfTestWriter.h"

#include <algorithm>
#include <random>
#include <stdexcept>

namespace tzbench_blf {

namespace {

using namespace tztest;

constexpr int zlibLevel = 6;
constexpr std::uint32_t cycle = 200; // objects, after which the kinds come again
constexpr std::uint64_t meanGapNs = 60'000;

/// Objects one after the other into a log.
class Traffic
{
public:
    explicit Traffic(BlfTestWriter &log)
        : m_log(log)
    {
        m_fd64.extension = FdExtension{0x20011736, 0x2000091C};
        m_fd64.flags = BlfFlags::fd64Edl | BlfFlags::fd64Brs;
        m_fd64.btrCfgArb = 0x46500250;
        m_fd64.btrCfgData = 0x4B280150;
        m_fd64.data.resize(64);
    }

    void addNext()
    {
        m_header.timeStamp += meanGapNs + m_random() % 1024;
        const std::uint32_t place = m_count++ % cycle;
        if (place == 0)
            addEvents();
        else if (place % 8 == 1)
            addFd64();
        else if (place % 50 == 2)
            addFd();
        else
            addClassic(place);
    }

private:
    std::uint8_t channel() const { return static_cast<std::uint8_t>(1 + m_count % 4); }
    std::uint8_t direction() const { return m_count % 16 == 0 ? BlfFlags::canTx : std::uint8_t{0}; }
    std::uint32_t id() const
    {
        const std::uint32_t number = m_count % 97;
        return number % 5 == 0 ? BlfFlags::extendedId | (0x18DA0000 + number) : 0x100 + 7 * number;
    }

    // Some signals change with each frame, others never.
    template <typename Data> void fill(Data &data)
    {
        const std::uint32_t noise = m_random();
        for (std::size_t at = 0; at < data.size(); ++at) {
            const bool isChanging = at % 8 < 3;
            data[at] = static_cast<std::uint8_t>(isChanging ? noise >> (at % 4 * 8) : 17 * at + m_count % 97);
        }
        data[0] = static_cast<std::uint8_t>(m_count);
    }

    void addClassic(std::uint32_t place)
    {
        CanMessage2Body body{.channel = channel(),
                             .flags = direction(),
                             .dlc = static_cast<std::uint8_t>(place % 10 == 9 ? 4 : 8),
                             .id = id(),
                             .frameLength = 230'000,
                             .bitCount = 117};
        fill(body.data);
        m_log.add(body, m_header);
    }

    void addFd()
    {
        CanFdMessageBody body{.channel = channel(), .flags = direction(), .id = id(), .frameLength = 180'000};
        body.canFdFlags = BlfFlags::fdEdl | BlfFlags::fdBrs;
        fill(body.data);
        m_log.add(body, m_header);
    }

    void addFd64()
    {
        m_fd64.channel = channel();
        m_fd64.id = id();
        m_fd64.dir = direction();
        m_fd64.frameLength = 180'000;
        m_fd64.bitCount = 640;
        m_fd64.crc = m_random();
        fill(m_fd64.data);
        m_log.add(m_fd64, m_header);
    }

    void addEvents()
    {
        m_log.add(CanStatisticBody{.channel = channel(), .busLoad = 4211, .standardDataFrames = m_count}, m_header);
        m_log.add(CanErrorFrameExtBody{.channel = channel(), .flags = 1, .ecc = 0xA2, .flagsExt = 0x20A2}, m_header);
        m_log.add(SystemVariableBody{.name = "::Bench::Load", .value = blfValue(42.11)}, m_header);
    }

    BlfTestWriter &m_log;
    BlfHeader m_header;
    CanFdMessage64Body m_fd64;
    std::mt19937 m_random{20261121};
    std::uint32_t m_count = 0;
};

} // namespace

void writeTraffic(const QString &path, std::size_t fileSize)
{
    BlfTestWriter log({.level = zlibLevel});
    Traffic traffic(log);
    while (log.fileSize() < fileSize)
        traffic.addNext();
    if (!log.save(path))
        throw std::runtime_error("cannot write " + path.toStdString());
}

} // namespace tzbench_blf
