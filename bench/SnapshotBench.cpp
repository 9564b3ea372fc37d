// SPDX-License-Identifier: GPL-3.0-or-later
// Saving a full raw view in each format, and copying all its rows: what the user waits for.
#include "bench/BenchReport.h"

#include "vci/TzVciCanDataType.h"
#include "vci/TzVciDeviceManager.h"
#include "vci/TzVciDeviceStore.h"
#include "views/TzCanViewModel.h"
#include "views/TzViewSnapshot.h"
#include "views/ui/CommonCopyManager.h"

#include <QApplication>
#include <QClipboard>
#include <QTableView>
#include <QTemporaryDir>

#include <chrono>
#include <functional>

namespace {

using tzbench_report::median;
using tzbench_report::report;
using tzbench_report::Want;
using Format = TzViewSnapshot::Format;

constexpr double targetMs = 100.0;
constexpr int runs = 9;

/// A history of frames of all channels: of 8 bytes, or CAN FD frames of 64, of which a row is about 260 characters
/// long.
void fill(TzRawViewModel &model, bool fd)
{
    for (std::size_t n = 0; n < TzRawViewModel::maxRows; ++n) {
        TzVciMessage message;
        message.deviceIndex = static_cast<std::uint8_t>(n % 16);
        message.channelIndex = static_cast<std::uint8_t>(n / 16 % 8);
        message.timestamp = n * 500;
        message.frame.can.canId = static_cast<std::uint32_t>(0x18FF0000 + n);
        message.frame.can.frameType = TzVciCanFrameType::received;
        message.frame.can.flags = fd ? TzVciCanFlag::formatMask | TzVciCanFlag::extendedId : TzVciCanFlag::extendedId;
        message.frame.can.dataLength = fd ? 64 : 8;
        model.addMessage(message);
    }
    model.updateData();
    model.updateData(); // it moves half of them at a time
}

/// Milliseconds, the middle of the runs.
double costOf(const std::function<void()> &work)
{
    std::vector<double> costs;
    for (int run = 0; run < runs; ++run) {
        const auto start = std::chrono::steady_clock::now();
        work();
        costs.push_back(std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count());
    }
    return median(costs);
}

struct Names
{
    const char *asc;
    const char *csv;
    const char *txt;
    const char *copy;
};
constexpr Names classicNames{"view_save_asc", "view_save_csv", "view_save_txt", "view_copy_all"};
constexpr Names fdNames{"view_save_asc_fd", "view_save_csv_fd", "view_save_txt_fd", "view_copy_all_fd"};

bool benchView(QTableView &view, const Names &names)
{
    const QTemporaryDir folder;
    const auto benchSave = [&](const char *name, Format format) {
        const QString path = folder.filePath(QStringLiteral("view"));
        const double cost = costOf([&] { TzViewSnapshot::save(*view.model(), format, path); });
        return report(name, cost, "ms", Want::AtMost, targetMs);
    };
    bool ok = benchSave(names.asc, Format::Asc);
    ok &= benchSave(names.csv, Format::Csv);
    ok &= benchSave(names.txt, Format::Txt);
    view.selectAll();
    const double copyCost = costOf([&] { CommonCopyManager::copySelected(&view); });
    ok &= report(names.copy, copyCost, "ms", Want::AtMost, targetMs);
    return ok;
}

} // namespace

int main(int argc, char **argv)
{
    const QApplication application(argc, argv);
    TzVciDeviceStore store;
    TzVciDeviceManager manager(&store);
    bool ok = true;
    for (const bool fd : {false, true}) {
        TzCanViewModel model(&manager);
        fill(model, fd);
        QTableView view;
        view.setModel(&model);
        view.setSelectionBehavior(QAbstractItemView::SelectRows);
        if (model.rowCount() != static_cast<int>(TzRawViewModel::maxRows))
            return 2;
        ok &= benchView(view, fd ? fdNames : classicNames);
        const QString copied = QGuiApplication::clipboard()->text();
        if (copied.count(QLatin1Char('\n')) != model.rowCount())
            return 2;
    }
    return ok ? 0 : 1;
}
