// SPDX-License-Identifier: GPL-3.0-or-later
// Any datagram that a device, or somebody who claims to be one, may send.
#include "fuzz/FuzzSupport.h"
#include "vci/TzVciDatagramParser.h"
#include "vci/TzVciDeviceBusLoad.h"
#include "vci/TzVciProtocol.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

namespace {

// What was delivered and what was left over never exceed the datagram, and every record reads back as it stood there.
void checkParser(std::span<const std::uint8_t> datagram)
{
    static TzVciDatagramParser parser; // reused, as the receive thread does
    std::size_t records = 0;
    std::size_t bytes = 0;
    const auto outcome = parser.parse(datagram, [&](const std::vector<TzVciProtocolData> &batch) {
        require(!batch.empty() && batch.size() <= TzVciDatagramParser::batchSize);
        records += batch.size();
        for (const TzVciProtocolData &record : batch) {
            bytes += TzVciWire::overheadBytes + record.length;
            require(record.payloadLength() <= TzVciProtocolData::maxPayload);
            require(encodeProtocolData(record).size() ==
                    static_cast<int>(TzVciWire::overheadBytes + record.payloadLength()));
        }
    });
    require(outcome.records == records);
    require(bytes + outcome.leftoverBytes <= datagram.size());
    require(outcome.expectedBytes == 0 ? outcome.leftoverBytes < TzVciWire::overheadBytes
                                       : outcome.expectedBytes > outcome.leftoverBytes);
}

void checkBusLoad(std::span<const std::uint8_t> datagram)
{
    static TzVciDatagramParser parser;
    TzVciDeviceBusLoad busLoad(datagram.empty() ? 0 : datagram[0] % 20);
    parser.parse(datagram, [&](const std::vector<TzVciProtocolData> &batch) {
        for (const TzVciProtocolData &record : batch) {
            busLoad.storeReport(record);
            busLoad.process();
        }
    });
    for (const auto &channel : busLoad.channels())
        require(channel.loadPercent >= 0.0);
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    silenceLog();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    // An exact copy, so that the sanitizer sees one byte too many.
    const std::vector<std::uint8_t> datagram(data, data + size);
    checkParser(datagram);
    checkBusLoad(datagram);
    return 0;
}
