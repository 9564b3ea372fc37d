// SPDX-License-Identifier: GPL-3.0-or-later
// Any file in the place of an LDF file, and what users do with what it held.
#include "database/ldf/LdfConversions.h"
#include "database/ldf/LdfParser.h"
#include "fuzz/FuzzFile.h"
#include "fuzz/FuzzSupport.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace {

constexpr std::size_t bytesOfFrame = 255; // the most that a record's size can say

void checkSignal(const LdfSignal &signal)
{
    formatSignalValue(signal);
    const LdfSignalRange range = getSignalRange(signal);
    isSignalValueValid(range.minimum, signal);
    isSignalValueValid(range.maximum, signal);
    getSignalUnit(signal);
    rawInitialValue(signal.initialValue, signal.size);
}

// What is decoded from a payload and encoded again reads back the same.
void checkFrame(LdfFrame frame)
{
    for (const auto &[name, signal] : frame.signals) {
        require(name == signal.name);
        checkSignal(signal); // with its initial value
    }
    std::array<std::uint8_t, bytesOfFrame> data{};
    for (std::size_t index = 0; index < data.size(); ++index)
        data[index] = static_cast<std::uint8_t>(0xA5 + 37 * index);
    require(decodeFrame(data.data(), data.size(), frame) == 0);
    for (const auto &[name, signal] : frame.signals)
        checkSignal(signal);
    decodeFrame(data.data(), frame.size, frame);
    const QByteArray payload = encodeFrame(frame);
    require(payload.isEmpty() || payload.size() == frame.size);
    require(getFramePeriod(frame) >= 0.0);
    for (const auto order : {LdfSignalOrder::startBit, LdfSignalOrder::name, LdfSignalOrder::size})
        require(getSortedSignals(frame, order).size() == frame.signals.size());
    LdfFrame again = frame;
    if (payload.isEmpty())
        return;
    require(decodeFrame(reinterpret_cast<const std::uint8_t *>(payload.data()), frame.size, again) == 0);
    for (const auto &[name, signal] : frame.signals)
        require(again.signals.at(name).value == signal.value);
}

void checkConfig(const LdfConfig &config)
{
    require(config.protocolVersion != LdfProtocolVersion::unknown);
    for (const auto &[name, frame] : config.frames) {
        require(name == frame.name);
        checkFrame(frame);
    }
    for (const auto &[name, frame] : config.diagnosticFrames)
        checkFrame(frame);
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    makeLogLinesForNobody();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static FuzzFile input;
    input.write(data, size);
    LdfConfig config;
    if (Common::LdfParser::loadLdfConfig(config, input.path(), fuzzEncoding(size)))
        checkConfig(config);
    else
        require(config.frames.empty()); // a refused file leaves the record as it was
    return 0;
}
