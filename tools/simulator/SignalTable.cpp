// SPDX-License-Identifier: GPL-3.0-or-later
#include "tools/simulator/SignalTable.h"

#include <array>
#include <cmath>
#include <numbers>

namespace tzsim {

namespace {

using Kind = SignalShape::Kind;
using std::chrono::milliseconds;

constexpr std::array engine = {
    SignalShape{Kind::sine, 0, 2, 3200, 14000, 8}, // speed, 0.25 rpm
    SignalShape{Kind::sine, 2, 1, 10, 230, 8},     // throttle
    SignalShape{Kind::ramp, 3, 2, 0, 5000, 20},    // torque
    SignalShape{Kind::counter, 6, 1},
    SignalShape{Kind::checksum, 7, 1},
};
constexpr std::array steering = {
    SignalShape{Kind::sine, 0, 2, -7800, 7800, 12}, // angle, 0.1 degree, signed
    SignalShape{Kind::sine, 2, 2, -400, 400, 3},    // rate
    SignalShape{Kind::counter, 4, 1},
};
constexpr std::array wheels = {
    SignalShape{Kind::sine, 0, 2, 0, 20000, 30}, // 0.01 km/h
    SignalShape{Kind::sine, 2, 2, 40, 20040, 30},
    SignalShape{Kind::sine, 4, 2, 20, 20020, 30},
    SignalShape{Kind::sine, 6, 2, 60, 20060, 30},
};
constexpr std::array gearbox = {
    SignalShape{Kind::ramp, 0, 1, 1, 8, 16}, // gear
    SignalShape{Kind::toggle, 1, 1, 0, 1, 2},
    SignalShape{Kind::counter, 3, 1},
};
constexpr std::array temperatures = {
    SignalShape{Kind::ramp, 0, 1, 60, 135, 300},                                                 // degrees above -40
    SignalShape{Kind::sine, 1, 1, 58, 66, 120}, SignalShape{Kind::sine, 2, 2, 11800, 14400, 60}, // battery, mV
};
constexpr std::array distance = {
    SignalShape{Kind::ramp, 0, 4, 100000, 200000, 3600},
    SignalShape{Kind::counter, 4, 4},
};
constexpr std::array camera = {
    SignalShape{Kind::counter, 0, 4},
    SignalShape{Kind::sine, 4, 2, -3000, 3000, 5},
    SignalShape{Kind::ramp, 8, 4, 0, 1000000, 10},
    SignalShape{Kind::sine, 32, 4, -100000, 100000, 7},
    SignalShape{Kind::toggle, 62, 1, 0, 255, 1},
    SignalShape{Kind::checksum, 63, 1},
};
constexpr std::array radar = {
    SignalShape{Kind::ramp, 0, 2, 0, 25000, 10},
    SignalShape{Kind::sine, 2, 2, -6000, 6000, 10},
    SignalShape{Kind::counter, 22, 1},
    SignalShape{Kind::checksum, 23, 1},
};
constexpr std::array switches = {
    SignalShape{Kind::toggle, 0, 1, 0, 3, 4},
    SignalShape{Kind::counter, 1, 1},
};
constexpr std::array motor = {
    SignalShape{Kind::ramp, 0, 2, 0, 1000, 6}, // position
    SignalShape{Kind::sine, 2, 1, 0, 200, 6},  // current
    SignalShape{Kind::counter, 3, 1},
};
constexpr std::array rain = {
    SignalShape{Kind::sine, 0, 1, 0, 100, 20},
    SignalShape{Kind::sine, 1, 2, 100, 60000, 20}, // light
    SignalShape{Kind::counter, 7, 1},
};

constexpr std::uint8_t fd = CanFlag::fd;
constexpr std::uint8_t fdBrs = CanFlag::fd | CanFlag::bitRateSwitch;

constexpr std::array messages = {
    SignalMessage{Family::can, 0x0C9, 0, 8, milliseconds(10), engine},
    SignalMessage{Family::can, 0x1E5, 0, 5, milliseconds(10), steering},
    SignalMessage{Family::can, 0x1A1, 0, 8, milliseconds(20), wheels},
    SignalMessage{Family::can, 0x1F5, 0, 4, milliseconds(20), gearbox},
    SignalMessage{Family::can, 0x4C1, 0, 4, milliseconds(500), temperatures},
    SignalMessage{Family::can, 0x18FEF100, CanFlag::extended, 8, milliseconds(100), wheels},
    SignalMessage{Family::can, 0x18FEE000, CanFlag::extended, 8, milliseconds(1000), distance},
    SignalMessage{Family::can, 0x5A0, CanFlag::remote, 8, milliseconds(1000), {}},
    SignalMessage{Family::can, 0x320, fdBrs, 64, milliseconds(20), camera},
    SignalMessage{Family::can, 0x18DA4010, fdBrs | CanFlag::extended, 24, milliseconds(40), radar},
    SignalMessage{Family::can, 0x330, fd, 12, milliseconds(50), steering},
    SignalMessage{Family::lin, 0x10, LinChecksum::enhanced, 2, milliseconds(20), switches},
    SignalMessage{Family::lin, 0x21, LinChecksum::enhanced, 4, milliseconds(40), motor},
    SignalMessage{Family::lin, 0x2A, LinChecksum::classic, 8, milliseconds(100), rain},
};

double value(const SignalShape &shape, std::uint64_t count, double seconds)
{
    const double phase = seconds / shape.periodSeconds - std::floor(seconds / shape.periodSeconds);
    switch (shape.kind) {
    case Kind::counter: return static_cast<double>(count % (std::uint64_t{1} << (8 * shape.bytes)));
    case Kind::ramp: return shape.low + (shape.high - shape.low) * phase;
    case Kind::sine:
        return (shape.low + shape.high) / 2 + (shape.high - shape.low) / 2 * std::sin(2 * std::numbers::pi * phase);
    case Kind::toggle: return phase < 0.5 ? shape.low : shape.high;
    case Kind::checksum: break; // made of the bytes, not of the time
    }
    return 0;
}

} // namespace

std::span<const SignalMessage> signalMessages()
{
    return messages;
}

void fillSignals(const SignalMessage &message, std::uint64_t count, double seconds, std::span<std::uint8_t> data)
{
    std::fill(data.begin(), data.end(), std::uint8_t{0});
    for (const SignalShape &shape : message.shapes) {
        if (shape.kind == Kind::checksum) {
            for (std::size_t i = 0; i < shape.firstByte; ++i)
                data[shape.firstByte] ^= data[i];
            continue;
        }
        const auto raw = static_cast<std::uint64_t>(std::llround(value(shape, count, seconds)));
        for (std::size_t i = 0; i < shape.bytes; ++i)
            data[shape.firstByte + i] = static_cast<std::uint8_t>(raw >> (8 * i));
    }
}

} // namespace tzsim
