// SPDX-License-Identifier: GPL-3.0-or-later
// Signals out of frames and into them: what one costs, wherever it lies.
#include "bench/BenchReport.h"
#include "database/dbc/DbcConversions.h"
#include "database/dbc/DbcMessage.h"
#include "tests/support/AllocationCounter.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;
using tzbench_report::median;
using tzbench_report::report;
using tzbench_report::Want;

constexpr double decodeTargetNs = 8.0;
constexpr double encodeTargetNs = 10.0;
constexpr int runs = 9;
constexpr int framesPerRun = 4'096;
constexpr std::size_t layouts = 64; // signals of a decoded message: as many places and sizes

struct Case
{
    const char *decodeName;
    const char *encodeName;
    std::uint8_t frameSize;
    bool isBigEndian;
};
constexpr std::array<Case, 4> cases{{
    {"signal.decode_intel_8", "signal.encode_intel_8", 8, false},
    {"signal.decode_motorola_8", "signal.encode_motorola_8", 8, true},
    {"signal.decode_intel_64", "signal.encode_intel_64", 64, false},
    {"signal.decode_motorola_64", "signal.encode_motorola_64", 64, true},
}};

/// From the place in transmission order, counted from the highest bit of byte 0, to the number in a file.
std::uint16_t startBitAt(unsigned place, bool isBigEndian)
{
    return static_cast<std::uint16_t>(isBigEndian ? place ^ 7U : place);
}

/// A signal anywhere within the frame, of any size that fits there; every second one is signed.
DbcSignal anySignal(const Case &layout, std::mt19937 &random)
{
    const unsigned frameBits = layout.frameSize * 8U;
    const unsigned place = static_cast<unsigned>(random()) % frameBits;
    const unsigned room = std::min(frameBits - place, 64U);
    DbcSignal signal;
    signal.startBit = startBitAt(place, layout.isBigEndian);
    signal.size = static_cast<std::uint16_t>(1 + random() % room);
    signal.isBigEndian = layout.isBigEndian;
    signal.isSigned = random() % 2 == 0;
    signal.factor = 0.125;
    signal.offset = -40.0;
    return signal;
}

/// Eight signals a message, as is usual, which together fill the frame or its first 64 bytes.
DbcMessage usualMessage(const Case &layout)
{
    constexpr unsigned signalsPerMessage = 8;
    const unsigned size = layout.frameSize * 8U / signalsPerMessage;
    DbcMessage message;
    message.size = layout.frameSize;
    for (unsigned n = 0; n < signalsPerMessage; ++n) {
        DbcSignal signal;
        signal.startBit = startBitAt(n * size, layout.isBigEndian);
        signal.size = static_cast<std::uint16_t>(size);
        signal.isBigEndian = layout.isBigEndian;
        signal.value = 0x0123'4567'89AB'CDEF * (n + 1);
        message.signals.push_back(signal);
    }
    return message;
}

std::vector<std::array<std::uint8_t, 64>> anyFrames(std::mt19937 &random)
{
    std::vector<std::array<std::uint8_t, 64>> frames(64);
    for (auto &frame : frames) {
        for (auto &byte : frame)
            byte = static_cast<std::uint8_t>(random());
    }
    return frames;
}

/// Nanoseconds a piece, the middle of the runs.
template <typename Work> double costOf(double pieces, const Work &work)
{
    std::vector<double> costs;
    for (int run = 0; run < runs; ++run) {
        const auto start = Clock::now();
        work();
        costs.push_back(std::chrono::duration<double, std::nano>(Clock::now() - start).count() / pieces);
    }
    return median(costs);
}

volatile double physicalSink = 0.0;
volatile char byteSink = 0;

bool benchDecoding(const Case &layout, std::size_t &allocations)
{
    std::mt19937 random(20250507);
    const auto frames = anyFrames(random);
    std::vector<DbcSignal> someSignals;
    while (someSignals.size() < layouts)
        someSignals.push_back(anySignal(layout, random));
    const std::size_t allocationsBefore = tztest::allocationsOfThisThread();
    const auto decodeAll = [&] {
        double sum = 0.0;
        for (std::size_t n = 0; n < framesPerRun; ++n) {
            const auto &frame = frames[n % frames.size()];
            for (DbcSignal &signal : someSignals) {
                decodeSignal(frame.data(), layout.frameSize, signal);
                sum += getSignalPhysicalValue(signal);
            }
        }
        physicalSink = sum;
    };
    decodeAll();
    allocations += tztest::allocationsOfThisThread() - allocationsBefore;
    const double cost = costOf(static_cast<double>(framesPerRun * layouts), decodeAll);
    return report(layout.decodeName, cost, "ns/signal", Want::AtMost, decodeTargetNs);
}

bool benchEncoding(const Case &layout)
{
    DbcMessage message = usualMessage(layout);
    const double cost = costOf(static_cast<double>(framesPerRun) * static_cast<double>(message.signals.size()), [&] {
        char sum = 0;
        for (int n = 0; n < framesPerRun; ++n) {
            message.signals.front().value = static_cast<std::uint64_t>(n);
            const QByteArray payload = encodeMessage(message);
            sum = static_cast<char>(sum + (payload.isEmpty() ? 0 : payload.at(0)));
        }
        byteSink = sum;
    });
    return report(layout.encodeName, cost, "ns/signal", Want::AtMost, encodeTargetNs);
}

} // namespace

int main()
{
    bool ok = true;
    std::size_t allocations = 0;
    for (const Case &layout : cases) {
        ok &= benchDecoding(layout, allocations);
        ok &= benchEncoding(layout);
    }
    ok &= report("signal.decode_allocations", static_cast<double>(allocations), "for all signals", Want::AtMost, 0.0);
    return ok ? 0 : 1;
}
