// SPDX-License-Identifier: GPL-3.0-or-later
// What may stand in the config file without being ours.
#include "tests/vci/DeviceStoreFileFixture.h"

using namespace tztest;

struct HostileFile
{
    const char *name;
    QByteArray bytes;
};

class HostileConfigFile : public DeviceStoreFile, public testing::WithParamInterface<HostileFile>
{
};

TEST_P(HostileConfigFile, LeavesTheDevicesAsTheyAre)
{
    writeFile(GetParam().bytes);
    EXPECT_TRUE(store.loadConfig());
    EXPECT_TRUE(log.has(logInfo, loadedLine));
    expectDefaults();
    EXPECT_EQ(store.currentDeviceIndex(), 0);
    EXPECT_TRUE(store.saveConfig());
}

INSTANTIATE_TEST_SUITE_P(
    Files, HostileConfigFile,
    testing::Values(
        HostileFile{"Empty", ""}, HostileFile{"SyntaxError", R"({"devices": [{"deviceIndex": 0, "localIP": "1.1.1.1")"},
        HostileFile{"NotAnObject", "[1, 2, 3]"}, HostileFile{"BinaryJunk", QByteArray(4096, '\xFE') + '\0'},
        HostileFile{"DeepNesting", QByteArray(200000, '[')},
        HostileFile{"DevicesNotAnArray", R"({"devices": {"deviceIndex": 0}, "currentDeviceIndex": "two"})"},
        HostileFile{"ElementsNotObjects", R"({"devices": [0, "x", null, [1], true]})"},
        HostileFile{"IndexNotANumber", R"({"devices": [{"deviceIndex": "0", "localIP": "1.1.1.1"}]})"},
        HostileFile{"IndexHuge",
                    R"({"currentDeviceIndex": 1e300, "devices": [{"deviceIndex": 1e300, "localIP": "x"}]})"},
        HostileFile{"IndexFraction", R"({"devices": [{"deviceIndex": 0.5, "localIP": "x"}]})"},
        HostileFile{"NoIndex", R"({"devices": [{"localIP": "x"}]})"},
        HostileFile{"WrongTypes", R"({"devices": [{"deviceIndex": 0, "localIP": 7, "canChannels": [{"baudRate": 125000,
            "fdBaudRate": true, "type": 5, "terminalResistorEnabled": "false"}],
            "linChannels": [{"baudRate": [], "type": {}, "ldfFile": 1}]}]})"},
        HostileFile{"BadRates", R"({"devices": [{"deviceIndex": 0, "canChannels": [{"baudRate": "0",
            "fdBaudRate": "4294967296"}], "linChannels": [{"baudRate": "-1"}]}]})"},
        HostileFile{"RatesNotDigits", R"({"devices": [{"deviceIndex": 0, "canChannels": [{"baudRate": "0x100",
            "fdBaudRate": "1e6"}], "linChannels": [{"baudRate": " 9600"}]}]})"},
        HostileFile{"UnknownTypes", R"({"devices": [{"deviceIndex": 0, "canChannels": [{"type": "canfd"}],
            "linChannels": [{"type": "Commander"}]}]})"},
        HostileFile{"LocalIpAText", R"({"devices": [{"deviceIndex": 0, "localIP": "eth0"}]})"},
        HostileFile{"LocalIpOfThreeParts", R"({"devices": [{"deviceIndex": 0, "localIP": "1.2.3"}]})"},
        HostileFile{"LocalIpOfFiveParts", R"({"devices": [{"deviceIndex": 0, "localIP": "1.2.3.4.5"}]})"},
        HostileFile{"LocalIpOutOfRange", R"({"devices": [{"deviceIndex": 0, "localIP": "1.2.3.256"}]})"},
        HostileFile{"LocalIpWithAGap", R"({"devices": [{"deviceIndex": 0, "localIP": "1..3.4"}]})"},
        HostileFile{"LocalIpWithASign", R"({"devices": [{"deviceIndex": 0, "localIP": "1.2.3.+4"}]})"},
        HostileFile{"LocalIpVersion6", R"({"devices": [{"deviceIndex": 0, "localIP": "::1"}]})"},
        HostileFile{"ChannelsNotArrays", R"({"devices": [{"deviceIndex": 0, "canChannels": {"baudRate": "1"},
            "linChannels": "none"}]})"},
        HostileFile{"TooLarge",
                    QByteArray(17 * 1024 * 1024, ' ') + R"({"devices": [{"deviceIndex": 0, "localIP": "x"}]})"}),
    [](const auto &test) { return std::string(test.param.name); });
