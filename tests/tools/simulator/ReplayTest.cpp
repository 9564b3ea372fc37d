// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/support/TempWorkDir.h"
#include "tests/tools/simulator/SimulatorFixture.h"

#include "tools/simulator/ReplayLog.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>

using namespace tzsimtest;
using namespace std::chrono_literals;
using tzsim::CanFrame;
using tzsim::LinFrame;
using tzsim::ReplayLog;

namespace {

const CanFrame &can(const ReplayLog::Entry &entry)
{
    return std::get<CanFrame>(entry.frame);
}

class SimulatorReplay : public OneBoxFixture<2, 1>
{
protected:
    std::filesystem::path writeLog(const std::string &text) const
    {
        const auto path = std::filesystem::path(dir.filePath("log.txt").toStdString());
        std::ofstream(path) << text;
        return path;
    }

    tztest::TempWorkDir dir;
};

} // namespace

TEST(SimulatorCandump, EveryKindOfLine)
{
    const ReplayLog log = ReplayLog::parse("(1436509052.249713) vcan0 123#DEADBEEF\n"
                                           "(1436509052.249714) can1 18FEF100#00.11.22 R\r\n"
                                           "\n"
                                           "(1436509052.350000) can0 7FF#\n"
                                           "(1436509053) can0 123#R\n"
                                           "(1436509053.1) can0 123#R5\n"
                                           "(1436509053.2) can0 100##0AABB T\n"
                                           "(1436509053.3) can0 100##30102030405060708090A0B0C\n"
                                           "(1436509053.4) can0 20000080#0000000000000000\n"
                                           "(1436509053.5) can0 20000001#0000000000000000\n"
                                           "(1436509053.6) can0 123#1122334455667788_9\n");
    EXPECT_EQ(log.skippedLines, 0U);
    ASSERT_EQ(log.entries.size(), 10U);
    EXPECT_EQ(log.entries[0].timeNs, 0);
    EXPECT_EQ(log.entries[0].channel, 0);
    EXPECT_EQ(can(log.entries[0]), CanFrame::make(0x123, hex("DE AD BE EF")));
    EXPECT_EQ(log.entries[1].timeNs, 1000);
    EXPECT_EQ(log.entries[1].channel, 1);
    EXPECT_EQ(can(log.entries[1]), CanFrame::make(0x18FEF100, hex("00 11 22"), 0x01));
    EXPECT_EQ(log.entries[2].timeNs, 100'287'000);
    EXPECT_EQ(can(log.entries[2]), CanFrame::make(0x7FF, {}));
    EXPECT_EQ(can(log.entries[3]), CanFrame::make(0x123, {}, 0x02));
    CanFrame remote = CanFrame::make(0x123, {}, 0x02);
    remote.length = 5;
    EXPECT_EQ(can(log.entries[4]), remote);
    EXPECT_EQ(can(log.entries[5]), CanFrame::make(0x100, hex("AA BB"), 0x40));
    EXPECT_EQ(can(log.entries[6]), CanFrame::make(0x100, hex("01 02 03 04 05 06 07 08 09 0A 0B 0C"), 0x48));
    EXPECT_EQ(can(log.entries[7]), CanFrame::makeError(0x8000000));
    EXPECT_EQ(can(log.entries[8]), CanFrame::makeError(1));
    EXPECT_EQ(can(log.entries[9]).length, 8);
}

TEST(SimulatorCandump, BrokenLinesAreSkipped)
{
    const ReplayLog log = ReplayLog::parse("(1.0) can0 100#00\n"
                                           "(1.0 can0 100#00\n"
                                           "(x) can0 100#00\n"
                                           "(1.0) can0\n"
                                           "(1.0) can0 100\n"
                                           "(1.0) can0 #00\n"
                                           "(1.0) can0 800#00\n"
                                           "(1.0) can0 G00#00\n"
                                           "(1.0) can0 100#0\n"
                                           "(1.0) can0 100#001122334455667788\n"
                                           "(1.0) can0 100##\n"
                                           "(1.0) can0 100#Rx\n"
                                           "(99999999999999999999.0) can0 100#00\n"
                                           "(-1.0) can0 100#00\n"
                                           "()\n"
                                           "(1.0) can99999999999 100#00\n");
    EXPECT_EQ(log.entries.size(), 2U) << "the last has a channel that does not fit, and reads as 0";
    EXPECT_EQ(log.skippedLines, 14U);
}

TEST(SimulatorAsc, EveryKindOfLineInHexadecimal)
{
    const ReplayLog log = ReplayLog::parse(
        "date Sam Sep 30 15:06:13.191 2017\n"
        "base hex  timestamps absolute\n"
        "internal events logged\n"
        "// version 9.0.0\n"
        "Begin Triggerblock Sam Sep 30 15:06:13.191 2017\n"
        "   0.000000 Start of measurement\n"
        "   0.016728 1  1F3             Rx   d 8 00 11 22 33 44 55 66 7f  Length = 240015 BitCount = 124 ID = 1785\n"
        "   0.016729 2  18FEF100x       Tx   d 2 01 02 // Index: 0\n"
        "   2.510001 2 100 Rx r\n"
        "   2.584921 4 300 Tx r 8 Length = 1704000 BitCount = 145 ID = 88888888x\n"
        "   3.000000 1 ErrorFrame\n"
        "   3.100000 2 ErrorFrame Flags = 0xe CodeExt = 0x20a2 Code = 0x82 ID = 0 DLC = 0 Position = 5\n"
        "  30.005021 CANFD   1 Rx        300                                   1 0 8  8 11 c2 03 04 05 06 07 08   "
        "102203\n"
        "  30.005071 CANFD   3 Tx        30ax  Generic_Name_12                  0 1 9 12 01 02 03 04 05 06 07 08 09 0a "
        "0b 0c 1\n"
        "  30.806898 CANFD   5 Tx ErrorFrame Not Acknowledge error, dominant error flag\n"
        "  31.0 1  3FF             Tx   d D 55 AA 01 02 03 04 05 06\n"
        "  31.5 Li 2a              Rx 2 01 02  checksum = 70   header time =  40  CSM = classic\n"
        "End TriggerBlock\n");
    EXPECT_EQ(log.skippedLines, 0U);
    ASSERT_EQ(log.entries.size(), 11U);
    const auto &e = log.entries;
    EXPECT_EQ(can(e[0]), CanFrame::make(0x1F3, hex("00 11 22 33 44 55 66 7F")));
    EXPECT_EQ(e[1].timeNs, 1000) << "times count from the first frame";
    EXPECT_EQ(e[1].channel, 1);
    EXPECT_EQ(can(e[1]), CanFrame::make(0x18FEF100, hex("01 02"), 0x01));
    EXPECT_EQ(can(e[2]), CanFrame::make(0x100, {}, 0x02));
    EXPECT_EQ(can(e[3]).length, 8);
    EXPECT_EQ(can(e[3]).flags, 0x02);
    EXPECT_EQ(can(e[4]), CanFrame::makeError(0x8000000));
    EXPECT_EQ(e[5].channel, 1);
    EXPECT_EQ(can(e[6]), CanFrame::make(0x300, hex("11 C2 03 04 05 06 07 08"), 0x48));
    EXPECT_EQ(e[7].channel, 2);
    EXPECT_EQ(can(e[7]), CanFrame::make(0x30A, hex("01 02 03 04 05 06 07 08 09 0A 0B 0C"), 0x41));
    EXPECT_EQ(e[8].channel, 4);
    EXPECT_TRUE(can(e[8]).isError());
    EXPECT_EQ(can(e[9]).length, 8) << "DLC codes above 8 stand for 8 bytes";
    LinFrame lin = LinFrame::make(0x2A, hex("01 02"), tzsim::LinChecksum::classic);
    lin.checksum = 0x70;
    EXPECT_EQ(std::get<LinFrame>(e[10].frame), lin);
}

TEST(SimulatorAsc, DecimalBaseAndRelativeTimes)
{
    const ReplayLog log = ReplayLog::parse("base dec timestamps relative\n"
                                           "0.5 1 100 Rx d 3 1 20 255\n"
                                           "0.25 1 2000 Rx d 0\n"
                                           "0.25 1 419361024x Rx d 1 16\n");
    ASSERT_EQ(log.entries.size(), 3U);
    EXPECT_EQ(can(log.entries[0]), CanFrame::make(100, hex("01 14 FF")));
    EXPECT_EQ(log.entries[1].timeNs, 250'000'000);
    EXPECT_EQ(log.entries[2].timeNs, 500'000'000);
    EXPECT_EQ(can(log.entries[2]).id, 419361024U);
}

TEST(SimulatorAsc, OwnRecordings)
{
    const ReplayLog log =
        ReplayLog::parse("base hex  timestamps absolute\n"
                         "0.000000 1 123 Rx d 2 01 02 // Index: 0\n"
                         "0.000100 CANFD 2 18daf110x Tx 1 0 d 9 12 00 01 02 03 04 05 06 07 08 09 0a 0b\n"
                         "0.000200 ErrorFrame 3\n"
                         "0.000300 1 LIN Frame 2A 2 01 FF C3 // Index:0 PID:6A\n");
    EXPECT_EQ(log.skippedLines, 0U);
    ASSERT_EQ(log.entries.size(), 4U);
    EXPECT_EQ(can(log.entries[1]).flags, 0x49);
    EXPECT_EQ(can(log.entries[1]).length, 12);
    EXPECT_EQ(log.entries[2].channel, 2);
    const auto &lin = std::get<LinFrame>(log.entries[3].frame);
    EXPECT_EQ(lin.id, 0x2A);
    EXPECT_EQ(lin.length, 2);
    EXPECT_EQ(lin.checksum, 0xC3);
}

TEST(SimulatorAsc, BrokenLinesAreSkipped)
{
    const ReplayLog log = ReplayLog::parse("base hex timestamps absolute\n"
                                           "0.1 1 123 Rx d 8 00 11\n"
                                           "0.1 0 123 Rx d 0\n"
                                           "0.1 1 800 Rx d 0\n"
                                           "0.1 1 123 Qx d 0\n"
                                           "0.1 1 123 Rx q 0\n"
                                           "0.1 1 123 Rx d 1 100\n"
                                           "0.1 CANFD 1 Rx 123 1 0 f 65 00\n"
                                           "0.1 CANFD\n"
                                           "0.1 ErrorFrame\n"
                                           "0.1 Li 40 Rx 1 00\n"
                                           "0.1 Li 10 Rx 9 00 00 00 00 00 00 00 00 00\n"
                                           "0.1 Statistic: D 0 R 0 XD 0 XR 0 E 0 O 0 B 0.00%\n"
                                           "0.1\n");
    EXPECT_TRUE(log.entries.empty());
    EXPECT_EQ(log.skippedLines, 12U);
    EXPECT_TRUE(ReplayLog::parse("").entries.empty());
    EXPECT_TRUE(ReplayLog::parse(std::string_view("\0\xFF(\n(", 5)).entries.empty());
}

TEST_F(SimulatorReplay, PlaysWithTheTimesOfTheLog)
{
    openCan(*host, 0);
    openCan(*host, 1);
    const auto path =
        writeLog("(10.000) can0 100#01\n(10.020) can1 101#02\n(10.050) can7 102#03\n(10.060) can0 103##1AABB\n");
    std::string error;
    ASSERT_TRUE(box->startReplay({.file = path}, &error)) << error;
    const auto frames = receiveFrames(*host, 3);
    ASSERT_EQ(frames.size(), 3U);
    EXPECT_EQ(frames[0].canId(), 0x100U);
    EXPECT_EQ(frames[1].channel, 1);
    EXPECT_EQ(frames[1].ticks() - frames[0].ticks(), 200'000U);
    EXPECT_EQ(frames[2].canId(), 0x103U) << "the box has no channel 7";
    EXPECT_EQ(frames[2].canFlags(), 0x48);
    EXPECT_EQ(frames[2].ticks() - frames[0].ticks(), 600'000U);
    EXPECT_TRUE(tztest::waitFor([&] { return !box->trafficRunning(); }));
}

TEST_F(SimulatorReplay, LoopsFasterOnAnotherChannel)
{
    openCan(*host, 1);
    const auto path = writeLog("(10.000) can0 100#01\n(10.100) can0 101#02\n");
    ASSERT_TRUE(box->startReplay({.file = path, .speed = 10, .loop = true, .channelMap = {{0, 1}}}));
    const auto frames = receiveFrames(*host, 6);
    for (std::size_t i = 0; i < 6; ++i) {
        EXPECT_EQ(frames[i].channel, 1);
        EXPECT_EQ(frames[i].canId(), i % 2 == 0 ? 0x100U : 0x101U);
    }
    EXPECT_EQ(frames[1].ticks() - frames[0].ticks(), 100'000U);
    EXPECT_EQ(frames[2].ticks() - frames[1].ticks(), 10'000U) << "a millisecond between the rounds";
    box->stopTraffic();
}

TEST_F(SimulatorReplay, BeginsWhenSomebodyListens)
{
    const auto path = writeLog("(10.000) can0 100#01\n(10.001) can0 101#02\n");
    ASSERT_TRUE(box->startReplay({.file = path, .speed = 0}));
    expectNothingWaits(*host);
    openCan(*host, 0);
    EXPECT_EQ(receiveFrames(*host, 2).size(), 2U);
}

TEST_F(SimulatorReplay, LinOfAnAscLog)
{
    openLin(*host, 0, false);
    const auto path = writeLog("base hex timestamps absolute\n0.1 L1 2a Rx 2 01 02 checksum = 70\n");
    ASSERT_TRUE(box->startReplay({.file = path}));
    const auto frames = receiveFrames(*host, 1);
    EXPECT_EQ(frames[0].protocol, 5);
    EXPECT_EQ(frames[0].linDirection(), 1);
    EXPECT_EQ(frames[0].payload[5], 0x70);
}

TEST_F(SimulatorReplay, UnusableFilesAreReported)
{
    std::string error;
    EXPECT_FALSE(box->startReplay({.file = "missing.log"}, &error));
    EXPECT_EQ(error, "cannot read missing.log");
    EXPECT_FALSE(box->startReplay({.file = "."}, &error));
    EXPECT_EQ(error, "cannot read .");
    writeLog("");
    EXPECT_FALSE(box->startReplay({.file = "log.txt"}, &error));
    EXPECT_EQ(error, "log.txt holds no frame of a candump or ASC log");
    const auto path = writeLog("no log\n");
    EXPECT_FALSE(box->startReplay({.file = path}, &error));
    EXPECT_EQ(error, path.string() + " holds no frame of a candump or ASC log");
    EXPECT_FALSE(box->trafficRunning());
}

TEST(SimulatorLogsCorpus, EveryCorpusFileIsRead)
{
    const char *corpus = std::getenv("TZ_CORPUS");
    if (!corpus)
        GTEST_SKIP() << "TZ_CORPUS names no folder with public logs";
    for (const auto &file : std::filesystem::directory_iterator(std::filesystem::path(corpus) / "logs")) {
        if (file.path().extension() != ".asc" && file.path().extension() != ".log")
            continue;
        std::string error;
        const auto log = ReplayLog::load(file.path(), error);
        EXPECT_TRUE(log) << error;
        EXPECT_TRUE(!log || log->skippedLines == 0) << file.path() << " skipped " << log->skippedLines;
    }
}
