// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/support/TempWorkDir.h"
#include "tests/tools/simulator/SimulatorFixture.h"

#include "tools/simulator/ProgramOptions.h"

#include <QCoreApplication>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>

#include <csignal>

using namespace tzsimtest;
using tzsim::Family;
using tzsim::ProgramOptions;

namespace {

std::optional<ProgramOptions> parse(std::vector<const char *> arguments, std::string &error)
{
    return ProgramOptions::parse(arguments, error);
}

ProgramOptions parsed(std::vector<const char *> arguments)
{
    std::string error;
    const auto options = parse(std::move(arguments), error);
    EXPECT_TRUE(options) << error;
    return options.value_or(ProgramOptions());
}

std::string errorOf(std::vector<const char *> arguments)
{
    std::string error;
    EXPECT_FALSE(parse(std::move(arguments), error));
    return error;
}

/// The program itself, in this process's network.
class SimulatorProgram : public testing::Test
{
protected:
    void start(const QStringList &arguments)
    {
        process.setProgram(QCoreApplication::applicationDirPath() + "/tzvci-sim");
        process.setArguments(arguments);
        process.start();
        ASSERT_TRUE(process.waitForStarted());
    }
    /// Waits until a text stands in the standard output.
    bool sees(const QByteArray &text)
    {
        return tztest::waitFor([&] {
            process.waitForReadyRead(5);
            output += process.readAllStandardOutput();
            return output.contains(text);
        });
    }
    bool end(int signal)
    {
        ::kill(static_cast<pid_t>(process.processId()), signal);
        const bool finished = process.waitForFinished();
        output += process.readAllStandardOutput();
        return finished && process.exitStatus() == QProcess::NormalExit;
    }
    static QJsonObject readStats(const QString &path)
    {
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        return QJsonDocument::fromJson(file.readAll()).object();
    }

    tztest::TempWorkDir dir;
    tzsim::Options network = tzsim::Options::fromEnvironment();
    QProcess process;
    QByteArray output;
};

} // namespace

TEST(SimulatorCommandLine, Defaults)
{
    const ProgramOptions options = parsed({});
    ASSERT_EQ(options.boxes.size(), 1U);
    EXPECT_EQ(options.boxes[0].index, 0);
    EXPECT_EQ(options.boxes[0].canChannels, 4);
    EXPECT_EQ(options.boxes[0].linChannels, 2);
    EXPECT_TRUE(options.network.isLoopback());
    EXPECT_TRUE(options.statsFile.empty());
    EXPECT_FALSE(options.duration);
}

TEST(SimulatorCommandLine, Boxes)
{
    const ProgramOptions options = parsed({"--boxes",
                                           "2",
                                           "--first-box",
                                           "14",
                                           "--can",
                                           "8",
                                           "--lin",
                                           "0",
                                           "--firmware",
                                           "9.8.7.255",
                                           "--clock",
                                           "0xFFFFFFFFFFFFFFFF",
                                           "--bus-load-period",
                                           "250",
                                           "--heartbeat-timeout",
                                           "3000",
                                           "--network",
                                           "127.9.8",
                                           "--stats-file",
                                           "a,b.json",
                                           "--duration",
                                           "10",
                                           "--quiet",
                                           "--help"});
    ASSERT_EQ(options.boxes.size(), 2U);
    EXPECT_EQ(options.boxes[1].index, 15);
    EXPECT_EQ(options.boxes[1].canChannels, 8);
    EXPECT_EQ(options.boxes[1].linChannels, 0);
    EXPECT_EQ(options.boxes[0].firmwareVersion, (std::array<std::uint8_t, 4>{9, 8, 7, 255}));
    EXPECT_EQ(options.boxes[0].clockOffset, UINT64_MAX);
    EXPECT_EQ(options.boxes[0].busLoadPeriod.count(), 250);
    EXPECT_EQ(options.boxes[0].heartbeatTimeout.count(), 3000);
    EXPECT_EQ(options.network.prefix, "127.9.8");
    EXPECT_EQ(options.statsFile, "a,b.json");
    EXPECT_EQ(options.duration.value().count(), 10);
    EXPECT_TRUE(options.quiet && options.help);
}

TEST(SimulatorCommandLine, Traffic)
{
    const ProgramOptions options =
        parsed({"--demo", "--boxes", "2", "--load", "1000,box=1,can=0+3,brs,extended,length=64,id=0x700,ids=2,count=9",
                "--load", "5,with-lin,lin=1", "--replay", "log.asc,loop,speed=2.5,map=0:1+2:3", "--traffic",
                "signals,can=1,classic"});
    ASSERT_EQ(options.signals.size(), 2U);
    EXPECT_EQ(options.signals[0].boxes, (std::vector<int>{0, 1}));
    EXPECT_TRUE(options.signals[0].spec.errors);
    EXPECT_EQ(options.signals[0].spec.canChannels.size(), 4U);
    EXPECT_EQ(options.signals[1].spec.canChannels, std::vector<int>{1});
    EXPECT_FALSE(options.signals[1].spec.fd || options.signals[1].spec.errors);
    ASSERT_EQ(options.loads.size(), 2U);
    EXPECT_EQ(options.loads[0].boxes, std::vector<int>{1});
    const tzsim::LoadSpec &load = options.loads[0].spec;
    EXPECT_EQ(load.framesPerSecond, 1000);
    EXPECT_EQ(load.canChannels, (std::vector<int>{0, 3}));
    EXPECT_TRUE(load.linChannels.empty());
    EXPECT_EQ(load.flags, 0x49);
    EXPECT_EQ(load.length, 64);
    EXPECT_EQ(load.firstId, 0x700U);
    EXPECT_EQ(load.idCount, 2U);
    EXPECT_EQ(load.count, 9U);
    EXPECT_EQ(options.loads[1].spec.linChannels, std::vector<int>{1});
    ASSERT_EQ(options.replays.size(), 1U);
    EXPECT_EQ(options.replays[0].spec.file, "log.asc");
    EXPECT_TRUE(options.replays[0].spec.loop);
    EXPECT_EQ(options.replays[0].spec.speed, 2.5);
    EXPECT_EQ(options.replays[0].spec.channelMap, (std::map<int, int>{{0, 1}, {2, 3}}));
}

TEST(SimulatorCommandLine, JoinsAndFaults)
{
    const ProgramOptions options = parsed({"--join", "0:can0+1:can2", "--join", "0:lin0+0:lin1", "--boxes", "2",
                                           "--fault", "refuse,box=1,protocol=1,channel=2,code=7"});
    ASSERT_EQ(options.joins.size(), 2U);
    EXPECT_EQ(options.joins[0], (std::vector<tzsim::ChannelRef>{{0, Family::can, 0}, {1, Family::can, 2}}));
    EXPECT_EQ(options.joins[1], (std::vector<tzsim::ChannelRef>{{0, Family::lin, 0}, {0, Family::lin, 1}}));
    ASSERT_EQ(options.faults.size(), 1U);
    EXPECT_EQ(options.faults[0].box, 1);
    EXPECT_EQ(options.faults[0].reply.code, 7);
}

TEST(SimulatorCommandLine, MistakesAreTold)
{
    EXPECT_EQ(errorOf({"--nonsense"}), "--nonsense is not an option");
    EXPECT_EQ(errorOf({"--boxes"}), "--boxes: a value is missing");
    EXPECT_EQ(errorOf({"--boxes", "17"}), "--boxes: 17 is not a number of 0 to 16");
    EXPECT_EQ(errorOf({"--boxes", "0"}), "0 boxes from box 0 on: there are boxes 0 to 15");
    EXPECT_EQ(errorOf({"--boxes", "2", "--first-box", "15"}), "2 boxes from box 15 on: there are boxes 0 to 15");
    EXPECT_EQ(errorOf({"--can", "61"}), "--can: 61 is not a number of 0 to 60");
    EXPECT_EQ(errorOf({"--firmware", "1.2.3"}), "--firmware: 1.2.3 is not of the form 1.2.3.4");
    EXPECT_EQ(errorOf({"--clock", "x"}), "--clock: x is not a number");
    EXPECT_EQ(errorOf({"--network", "10.0.0"}), "--network: 10.0.0 is not of the form 127.x.y");
    EXPECT_EQ(errorOf({"--load", "0"}), "--load: 0 is not a number of frames per second up to 10000000");
    EXPECT_EQ(errorOf({"--load", "5,box=1"}), "--load: there is no box 1");
    EXPECT_EQ(errorOf({"--load", "5,can=4"}), "--load: can=4: there are 4 such channels, counted from 0");
    EXPECT_EQ(errorOf({"--load", "5,fd=1"}), "--load: fd takes no value");
    EXPECT_EQ(errorOf({"--load", "5,lin=0"}), "--load: lin is not known here");
    EXPECT_EQ(errorOf({"--traffic", "noise"}), "--traffic: there is no traffic noise");
    EXPECT_EQ(errorOf({"--replay", "f,speed=fast"}), "--replay: speed=fast is not a number of 0 and above");
    EXPECT_EQ(errorOf({"--replay", "f,map=1"}), "--replay: map=1 is not of the form 0:1");
    EXPECT_EQ(errorOf({"--join", "0:can0+x"}), "--join: x is not of the form 0:can1");
    EXPECT_EQ(errorOf({"--fault", "explode"}), "--fault: there is no fault explode");
}

TEST_F(SimulatorProgram, AnswersPrintsItsCountersAndEndsOnSigterm)
{
    start({"--demo", "--stats-file", "stats.json"});
    ASSERT_TRUE(sees("box 0 at " + QByteArray::fromStdString(network.boxAddress(0)) + ":8000\n"));
    HostSocket host(network.prefix + ".1");
    host.connectTo(network.boxAddress(0), 8000);
    host.send(hostFrame(1, 0x10, 0, 0, hex("20 A1 07 00")));
    EXPECT_EQ(split(host.receiveBytes()).at(0).payload, Bytes{0});
    EXPECT_TRUE(host.receive()) << "the demo has traffic";
    ::kill(static_cast<pid_t>(process.processId()), SIGUSR1);
    EXPECT_TRUE(sees("box 0 CAN1 open: "));
    host.send(hostFrame(1, 0x20, 0, 0));
    for (bool closed = false; !closed;) { // behind the traffic that is on its way
        const Bytes datagram = host.receiveBytes();
        ASSERT_FALSE(datagram.empty());
        for (const BoxFrame &frame : split(datagram))
            closed |= frame.command == 0x20;
    }
    // The file is written each second, not only at the end.
    EXPECT_TRUE(tztest::waitFor([&] { return QFile::exists(dir.filePath("stats.json")); }));
    EXPECT_TRUE(end(SIGTERM));
    EXPECT_EQ(process.exitCode(), 0);
    EXPECT_TRUE(output.contains("box 0 CAN1 closed: "));

    const QJsonObject box = readStats(dir.filePath("stats.json"))["boxes"].toArray().at(0).toObject();
    EXPECT_EQ(box["index"].toInt(-1), 0);
    EXPECT_EQ(box["address"].toString().toStdString(), network.boxAddress(0));
    EXPECT_EQ(box["can"].toArray().size(), 4);
    EXPECT_EQ(box["lin"].toArray().size(), 2);
    const QJsonArray requests = box["requests"].toArray();
    ASSERT_EQ(requests.size(), 2);
    EXPECT_EQ(requests.at(0).toObject()["command"].toInt(), 0x10);
    EXPECT_EQ(requests.at(0).toObject()["payload"].toString(), QString("20a10700"));
    EXPECT_GT(box["can"].toArray().at(0).toObject()["framesSent"].toInt(), 0);
}

TEST_F(SimulatorProgram, EndsAfterItsDuration)
{
    start({"--duration", "50", "--quiet"});
    EXPECT_TRUE(process.waitForFinished());
    EXPECT_EQ(process.exitCode(), 0);
    EXPECT_EQ(process.readAllStandardOutput(), QByteArray());
}

TEST_F(SimulatorProgram, HelpAndMistakes)
{
    start({"--help"});
    EXPECT_TRUE(process.waitForFinished());
    EXPECT_EQ(process.exitCode(), 0);
    EXPECT_TRUE(process.readAllStandardOutput().startsWith("usage: tzvci-sim"));
    const auto failsWith = [&](const QStringList &arguments, int code, const QByteArray &text) {
        start(arguments);
        EXPECT_TRUE(process.waitForFinished());
        EXPECT_EQ(process.exitCode(), code);
        EXPECT_EQ(process.readAllStandardError(), text);
    };
    failsWith({"--x"}, 2, "tzvci-sim: --x is not an option\nTry tzvci-sim --help.\n");
    failsWith({"--replay", "none.log"}, 1, "tzvci-sim: cannot read none.log\n");
    failsWith({"--join", "0:can0+0:can9"}, 1, "tzvci-sim: --join: these channels cannot be joined\n");
    failsWith({"--fault", "junk,box=5"}, 1, "tzvci-sim: --fault: there is no box 5\n");
    failsWith({"--duration", "1", "--quiet", "--stats-file", "none/stats.json"}, 1,
              "tzvci-sim: cannot write none/stats.json\n");
}
