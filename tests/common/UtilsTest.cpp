// SPDX-License-Identifier: GPL-3.0-or-later
#include "common/Utils.h"

#include "common/platform/ThreadControl.h"
#include "tests/support/TempWorkDir.h"
#include "tests/support/WaitFor.h"
#include "vci/TzVciNetwork.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QDateTime>
#include <QFile>
#include <QLocale>
#include <QRegularExpression>

#include <atomic>
#include <filesystem>
#include <set>
#include <thread>

#include <sys/resource.h>

using Common::Utils;

namespace {

TEST(UtilsKey, IsReversibleForKindAndChannel)
{
    for (const unsigned kind : {0U, 1U, 17U, 8229U, 65535U}) {
        for (const unsigned channel : {0U, 7U, 65535U}) {
            for (const unsigned discriminator : {0U, 1U, 0x1FFFFFFFU, 0xFFFFFFFFU}) {
                unsigned short foundKind = 1;
                unsigned short foundChannel = 1;
                Utils::parseUtilsKey(Utils::makeUtilsKey(static_cast<unsigned short>(kind),
                                                         static_cast<unsigned short>(channel), discriminator),
                                     foundKind, foundChannel);
                EXPECT_EQ(foundKind, kind);
                EXPECT_EQ(foundChannel, channel);
            }
        }
    }
}

TEST(UtilsKey, IsUniqueForEachTriple)
{
    std::set<unsigned long long> keys;
    for (unsigned short kind = 0; kind < 20; ++kind) {
        for (unsigned short channel = 0; channel < 20; ++channel) {
            for (unsigned discriminator = 0; discriminator < 20; ++discriminator)
                keys.insert(Utils::makeUtilsKey(kind, channel, discriminator));
        }
    }
    EXPECT_EQ(keys.size(), 20U * 20U * 20U);
}

TEST(UtilsFile, MakesTheDirectoryOfAFilePath)
{
    const tztest::TempWorkDir workDir;
    EXPECT_TRUE(Utils::ensureFilePath("config/vci/vci_config.json"));
    EXPECT_TRUE(std::filesystem::is_directory("config/vci"));
    EXPECT_FALSE(Utils::fileExists("config/vci/vci_config.json"));
    EXPECT_TRUE(Utils::ensureFilePath("config/vci/vci_config.json")); // again
    EXPECT_TRUE(Utils::ensureFilePath("plain.json"));
}

TEST(UtilsFile, FailsWhereAFileStandsInTheWay)
{
    const tztest::TempWorkDir workDir;
    QFile file(QStringLiteral("config"));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.close();
    EXPECT_FALSE(Utils::ensureFilePath("config/vci/vci_config.json"));
    EXPECT_FALSE(Utils::ensureFilePath("config/vci_config.json"));
    EXPECT_FALSE(Utils::ensureFilePath(""));
}

TEST(UtilsFile, ExistsIsTrueForFilesAlone)
{
    const tztest::TempWorkDir workDir;
    QFile file(QStringLiteral("数据.json"));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    EXPECT_TRUE(Utils::fileExists("数据.json"));
    EXPECT_FALSE(Utils::fileExists("."));
    EXPECT_FALSE(Utils::fileExists(""));
    EXPECT_FALSE(Utils::fileExists("missing"));
}

TEST(UtilsTime, MillisecondsAreMonotonicAndRun)
{
    const auto before = Utils::getCurrentMillisecondsFast();
    auto last = before;
    EXPECT_TRUE(tztest::waitFor([&] {
        const auto now = Utils::getCurrentMillisecondsFast();
        EXPECT_GE(now, last);
        last = now;
        return now >= before + 5;
    }));
}

TEST(UtilsTime, LogTimeIsTheLocalTimeWithMilliseconds)
{
    const QDateTime before = QDateTime::currentDateTime();
    const QDateTime told = QDateTime::fromString(QString::fromLatin1(Utils::getCurrentTimeStringFast()),
                                                 QStringLiteral("yyyy-MM-dd HH:mm:ss.zzz"));
    ASSERT_TRUE(told.isValid());
    EXPECT_GE(told, before);
    EXPECT_LE(told, QDateTime::currentDateTime());
}

TEST(UtilsTime, AscHeaderDateIsEnglish)
{
    const QDateTime before = QDateTime::currentDateTime();
    const QString text = QString::fromLatin1(Utils::getASCHeaderDateString());
    const QRegularExpression form(
        QStringLiteral("^(Sun|Mon|Tue|Wed|Thu|Fri|Sat) [A-Z][a-z]{2} \\d\\d \\d\\d:\\d\\d:\\d\\d\\.\\d{3} \\d{4}$"));
    EXPECT_TRUE(form.match(text).hasMatch()) << text.toStdString();
    const QDateTime told = QLocale::c().toDateTime(text, QStringLiteral("ddd MMM dd HH:mm:ss.zzz yyyy"));
    ASSERT_TRUE(told.isValid());
    EXPECT_GE(told, before);
    EXPECT_LE(told, QDateTime::currentDateTime());
}

TEST(UtilsTime, EachThreadHasItsOwnText)
{
    const char *const mine = Utils::getASCHeaderDateString();
    const std::string copy = mine;
    std::thread([mine] { EXPECT_NE(Utils::getASCHeaderDateString(), mine); }).join();
    EXPECT_EQ(copy, mine);
}

TEST(UtilsTime, HexTextIsUpperCasePairs)
{
    const std::array<unsigned char, 4> bytes{0x00, 0xAB, 0x0F, 0xFF};
    EXPECT_EQ(Utils::bytesToHexStringUpper(bytes.data(), bytes.size()), "00 AB 0F FF");
    EXPECT_EQ(Utils::bytesToHexStringUpper(bytes.data(), 1), "00");
    EXPECT_EQ(Utils::bytesToHexStringUpper(bytes.data(), 0), "");
    EXPECT_EQ(Utils::bytesToHexStringUpper(nullptr, 3), "");
}

TEST(UtilsProcess, ThreadIdsDiffer)
{
    const std::string mine = Utils::getThreadIdString();
    EXPECT_FALSE(mine.empty());
    EXPECT_EQ(mine, Utils::getThreadIdString());
    std::thread([&] { EXPECT_NE(Utils::getThreadIdString(), mine); }).join();
}

TEST(UtilsProcess, HighPriorityReachesEveryThreadOrIsRefusedSilently)
{
    std::atomic<bool> done{false};
    std::atomic<int> threadId{0};
    std::thread other([&] {
        threadId = std::stoi(Utils::getThreadIdString());
        done.wait(false);
    });
    while (threadId == 0)
        std::this_thread::yield();
    const int before = ::getpriority(PRIO_PROCESS, static_cast<id_t>(threadId));
    const bool granted = Common::platform::raiseProcessPriority();
    Utils::setProcessHighPriority(); // again, harmless
    const int after = ::getpriority(PRIO_PROCESS, static_cast<id_t>(threadId));
    EXPECT_LE(after, granted ? -1 : before);
    done = true;
    done.notify_all();
    other.join();
}

TEST(UtilsNetwork, ALoopbackNetworkOffersItsFirstHostAlone)
{
    Utils::setLoopbackNetwork("127.9.8");
    EXPECT_THAT(Utils::getAllLocalIPv4s(), testing::ElementsAre("127.9.8.1"));
    Utils::setLoopbackNetwork("");
    for (const std::string &address : Utils::getAllLocalIPv4s())
        EXPECT_FALSE(address.starts_with("127.")) << address;
    Utils::setLoopbackNetwork(TzVciNetwork::current().prefix); // as the test's main had set it
}

} // namespace
