// SPDX-License-Identifier: GPL-3.0-or-later
// Cost of a frame in a raw view: on the thread that delivers (channels, counters, queue) and on the UI thread (table).
#include "bench/BenchReport.h"

#include "vci/TzVciTypes.h"
#include "views/TzCanViewModel.h"
#include "views/TzLinViewModel.h"
#include "views/TzViewIntake.h"

#include <QCoreApplication>

#include <chrono>
#include <string>
#include <vector>

namespace {

using tzbench_report::median;
using tzbench_report::report;
using tzbench_report::Want;

constexpr double targetNs = 250.0;
constexpr int runs = 9;
constexpr int ticksPerRun = 100;
constexpr std::size_t drainBatch = 2'000; // frames that a drain worker hands on at a time

/// Frames of all 16 devices and 8 channels with that many distinct identifiers, 50 us apart.
std::vector<TzVciMessage> canTraffic(std::size_t count, std::uint32_t ids)
{
    std::vector<TzVciMessage> messages(count);
    for (std::size_t n = 0; n < count; ++n) {
        TzVciMessage &message = messages[n];
        message.deviceIndex = static_cast<std::uint8_t>(n % 16);
        message.channelIndex = static_cast<std::uint8_t>(n / 16 % 8);
        message.timestamp = n * 500;
        message.frame.can.canId = static_cast<std::uint32_t>(n / 128) % ids;
        message.frame.can.frameType = TzVciCanFrameType::received;
        message.frame.can.dataLength = 8;
    }
    return messages;
}

std::vector<TzVciMessage> linTraffic(std::size_t count)
{
    std::vector<TzVciMessage> messages(count);
    for (std::size_t n = 0; n < count; ++n) {
        TzVciMessage &message = messages[n];
        message.deviceIndex = static_cast<std::uint8_t>(n % 16);
        message.timestamp = n * 500;
        TzVciLinDataType lin;
        lin.linId = static_cast<std::uint8_t>(n % 0x40);
        lin.dataLength = 8;
        message.setLin(lin);
    }
    return messages;
}

template <typename Work> double nanosecondsOf(Work work)
{
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double, std::nano>(std::chrono::steady_clock::now() - start).count();
}

/// Median of the cost of updateData() for a frame, in a table that is filled to its bound.
double updateCost(TzRawViewModel &model, const std::vector<TzVciMessage> &traffic, bool fold)
{
    model.setFold(fold);
    QCoreApplication::processEvents();
    const std::size_t perTick = TzRawViewModel::batchCapacity;
    std::size_t next = 0;
    const auto tick = [&] {
        model.addMessages({&traffic[next], perTick});
        next = (next + perTick) % traffic.size();
        return nanosecondsOf([&] { model.updateData(); });
    };
    for (int n = 0; n < 10; ++n)
        tick();
    std::vector<double> costs;
    for (int run = 0; run < runs; ++run) {
        double sum = 0.0;
        for (int n = 0; n < ticksPerRun; ++n)
            sum += tick();
        costs.push_back(sum / (ticksPerRun * static_cast<double>(perTick)));
    }
    return median(costs);
}

/// Median of the cost of a frame for one view on the delivering thread.
double intakeCost(TzViewIntake &intake)
{
    TzCanViewModel model(nullptr);
    const std::vector<TzVciMessage> batch = canTraffic(drainBatch, 100);
    const int batches = 200;
    std::vector<double> costs;
    for (int run = 0; run < runs; ++run) {
        double sum = 0.0;
        for (int n = 0; n < batches; ++n) {
            sum += nanosecondsOf([&] { model.addMessages(intake.accept(batch)); });
            model.updateData(); // keeps the queue short, as the ticks of the UI thread do
        }
        costs.push_back(sum / (batches * static_cast<double>(batch.size())));
    }
    return median(costs);
}

bool reportCost(const std::string &name, double cost)
{
    return report(name, cost, "ns/frame", Want::AtMost, targetNs);
}

bool benchModels()
{
    const std::size_t count = 40 * TzRawViewModel::batchCapacity;
    const std::vector<TzVciMessage> can = canTraffic(count, 100);
    const std::vector<TzVciMessage> wide = canTraffic(count, 400);
    TzCanViewModel plain(nullptr);
    TzCanViewModel folded(nullptr);
    TzCanViewModel manyKeys(nullptr);
    TzCanViewModel filtered(nullptr);
    const auto filter = std::make_shared<TzRawFrameFilter>();
    filter->enabled = true;
    filter->ids.setText(QStringLiteral("0-1F,!10,28,30-40"));
    filtered.setFilter(filter);
    TzLinViewModel lin(nullptr);

    bool ok = reportCost("update_data_unfolded", updateCost(plain, can, false));
    ok &= reportCost("update_data_folded_12800_keys", updateCost(folded, can, true));
    ok &= reportCost("update_data_folded_51200_keys", updateCost(manyKeys, wide, true));
    ok &= reportCost("update_data_id_filter", updateCost(filtered, can, false));
    ok &= reportCost("update_data_lin_folded", updateCost(lin, linTraffic(count), true));
    return ok;
}

bool benchIntake()
{
    TzViewIntake all(TzVciViewKind::can);
    bool ok = reportCost("view_delivery_all_channels", intakeCost(all));
    TzViewIntake half(TzVciViewKind::can);
    TzViewIntake::Channels channels;
    for (std::uint8_t device = 0; device < tzVciMaxDevices; device += 2)
        channels[device] = {0, 1, 2, 3, 4, 5, 6, 7};
    half.setDevices(channels);
    ok &= reportCost("view_delivery_half_the_devices", intakeCost(half));
    return ok;
}

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const bool intakeOk = benchIntake();
    const bool modelsOk = benchModels();
    return intakeOk && modelsOk ? 0 : 1;
}
