// SPDX-License-Identifier: GPL-3.0-or-later
// What is in the files that a view is saved to, byte for byte.
#include "views/TzViewSnapshot.h"

#include "common/platform/ExclusiveFile.h"
#include "tests/support/FileSizeLimit.h"
#include "tests/support/LogCapture.h"
#include "tests/support/TempWorkDir.h"
#include "tests/views/CloseFailure.h"
#include "tests/views/SnapshotFrames.h"
#include "vci/TzVciDeviceManager.h"
#include "vci/TzVciDeviceStore.h"
#include "views/TzCanViewModel.h"
#include "views/TzLinViewModel.h"

#include <QDir>
#include <QFile>
#include <QStandardItemModel>

#include <gtest/gtest.h>

#include <cerrno>

using namespace tztest;
using Format = TzViewSnapshot::Format;

namespace {

class ViewSnapshot : public testing::Test
{
protected:
    static void show(TzRawViewModel &model, const std::vector<TzVciMessage> &messages)
    {
        model.addMessages(messages);
        model.updateData();
    }
    static void fold(TzRawViewModel &model)
    {
        model.setFold(true);
        QCoreApplication::processEvents();
    }
    static std::string text(const TzRawViewModel &model, Format format)
    {
        const QDateTime now({2026, 11, 7}, {14, 5, 9, 7});
        return TzViewSnapshot::text(model, format, now).toStdString();
    }
    static QByteArray contents(const QString &path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("cannot be read");
    }

    TempWorkDir m_workDir;
    TzVciDeviceStore m_store;
    TzVciDeviceManager m_manager{&m_store};
    TzCanViewModel m_can{&m_manager};
    TzLinViewModel m_lin{&m_manager};
};

const std::string ascHead = "date Sat Nov 07 02:05:09.007 pm 2026\n"
                            "base hex timestamps absolute\n"
                            "internal events logged\n"
                            "// version 12.0.0\n"
                            "Begin Triggerblock Sat Nov 07 02:05:09.007 pm 2026\n";

const std::string ascEnd = "End TriggerBlock\n";

/// With the data of the long frame and the text of the error in place of their names.
std::string withLongTexts(const std::string &text)
{
    return QString::fromStdString(text)
        .replace(QStringLiteral("<long data>"),
                 QStringLiteral("00 01 02 03 04 05 06 07 08 09 0A 0B 0C 0D 0E 0F 10 11 12 13 14 15 16 17 18 19 1A 1B "
                                "1C 1D 1E 1F 20 21 22 23 24 25 26 27 28 29 2A 2B 2C 2D 2E 2F 30 31 32 33 34 35 36 37 "
                                "38 39 3A 3B 3C 3D 3E 3F"))
        .replace(QStringLiteral("<error>"),
                 QStringLiteral("Protocol Error in Arbitration Phase (Nominal Bit Time is used)"))
        .toStdString();
}

TEST_F(ViewSnapshot, AscOfACanView)
{
    show(m_can, snapshotCanFrames());
    const std::string expected = "0.123456 1   12   Rx     d 2 01 AB\n"
                                 "2.000000 2  18ff1234   Tx     d 8 00 01 02 03 04 05 06 07\n"
                                 "3.000001 8  7ff   Rx     d 64 <long data>\n"
                                 "3.050000 1    0   Err    d 4 <error>\n"
                                 "1234.567890 1    5   Rx     d 0 \n";
    EXPECT_EQ(text(m_can, Format::Asc), ascHead + withLongTexts(expected) + ascEnd);
}

TEST_F(ViewSnapshot, AscOfAnEmptyViewHasItsHeadAndEnd)
{
    EXPECT_EQ(text(m_can, Format::Asc), ascHead + ascEnd);
}

TEST_F(ViewSnapshot, AscDateIsEnglishWithHalfDayInSmallLetters)
{
    const QLocale previous;
    QLocale::setDefault(QLocale(QLocale::German));
    const QDateTime midnight({2026, 3, 1}, {0, 0, 0, 0});
    const QString asc = TzViewSnapshot::text(m_can, Format::Asc, midnight);
    QLocale::setDefault(previous);
    EXPECT_EQ(asc.section(QLatin1Char('\n'), 0, 0).toStdString(), "date Sun Mar 01 12:00:00.000 am 2026");
}

TEST_F(ViewSnapshot, FoldedViewCutsTheTimeInAscAlone)
{
    const TzVciMessage frame = canData({0x7F}, canMessage(0x123));
    show(m_can, {at(10'000'000, frame), at(10'100'000, frame), at(10'200'000, canMessage(0x124))});
    fold(m_can);
    const std::string asc = "1.010000 1  123   Rx     d 1 7F\n"
                            "1.020000 1  124   Rx     d 0 \n";
    const std::string csv = R"(No.,Time,Device,Channel,ID(hex),Name,Dir,C-Type,F-Type,F-Format,Length,Data
"1[2]","1.010000[10.00]","0","CAN1","123","","Rx","CAN","Data","Standard","1","7F"
"2","1.020000","0","CAN1","124","","Rx","CAN","Data","Standard","0",""
)";
    EXPECT_EQ(text(m_can, Format::Asc), ascHead + asc + ascEnd);
    EXPECT_EQ(text(m_can, Format::Csv), csv);
    EXPECT_EQ(text(m_can, Format::Txt),
              "No.\tTime\tDevice\tChannel\tID(hex)\tName\tDir\tC-Type\tF-Type\tF-Format\tLength\tData\n"
              "1[2]\t1.010000[10.00]\t0\tCAN1\t123\t\tRx\tCAN\tData\tStandard\t1\t7F\n"
              "2\t1.020000\t0\tCAN1\t124\t\tRx\tCAN\tData\tStandard\t0\t\n");
}

TEST_F(ViewSnapshot, CsvOfACanView)
{
    show(m_can, snapshotCanFrames());
    const std::string expected = R"(No.,Time,Device,Channel,ID(hex),Name,Dir,C-Type,F-Type,F-Format,Length,Data
"1","0.123456","0","CAN1","12","","Rx","CAN","Data","Standard","2","01 AB"
"2","2.000000","0","CAN2","18ff1234","","Tx","CAN","Data","Extend","8","00 01 02 03 04 05 06 07"
"3","3.000001","3","CAN8","7ff","","Rx","CANFDBRS","Data","Standard","64","<long data>"
"4","3.050000","0","CAN1","0","","Err","CAN","Data","Standard","4","<error>"
"5","1234.567890","0","CAN1","5","","Rx","CAN","Remote","Standard","0",""
)";
    EXPECT_EQ(text(m_can, Format::Csv), withLongTexts(expected));
}

TEST_F(ViewSnapshot, TxtOfACanView)
{
    show(m_can, snapshotCanFrames());
    const std::string expected =
        "No.\tTime\tDevice\tChannel\tID(hex)\tName\tDir\tC-Type\tF-Type\tF-Format\tLength\tData\n"
        "1\t0.123456\t0\tCAN1\t12\t\tRx\tCAN\tData\tStandard\t2\t01 AB\n"
        "2\t2.000000\t0\tCAN2\t18ff1234\t\tTx\tCAN\tData\tExtend\t8\t00 01 02 03 04 05 06 07\n"
        "3\t3.000001\t3\tCAN8\t7ff\t\tRx\tCANFDBRS\tData\tStandard\t64\t<long data>\n"
        "4\t3.050000\t0\tCAN1\t0\t\tErr\tCAN\tData\tStandard\t4\t<error>\n"
        "5\t1234.567890\t0\tCAN1\t5\t\tRx\tCAN\tRemote\tStandard\t0\t\n";
    EXPECT_EQ(text(m_can, Format::Txt), withLongTexts(expected));
}

TEST_F(ViewSnapshot, CsvAndTxtOfALinView)
{
    show(m_lin, snapshotLinFrames());
    const std::string csv = R"(No.,Time,Device,Channel,ID(hex),Dir,Check Type,Frame Type,Length,Data
"1","0.123456","0","LIN1","0x02","Rx","Standard","Master Read","2","01 AB"
"2","2.000000","1","LIN3","0x3c","Tx","Standard","Master Write","1","FF"
)";
    EXPECT_EQ(text(m_lin, Format::Csv), csv);
    EXPECT_EQ(text(m_lin, Format::Txt),
              "No.\tTime\tDevice\tChannel\tID(hex)\tDir\tCheck Type\tFrame Type\tLength\tData\n"
              "1\t0.123456\t0\tLIN1\t0x02\tRx\tStandard\tMaster Read\t2\t01 AB\n"
              "2\t2.000000\t1\tLIN3\t0x3c\tTx\tStandard\tMaster Write\t1\tFF\n");
}

struct PathCase
{
    const char *name;
    const char *path;
    Format format;
    const char *completed;
};

TEST(ViewSnapshotPath, EndsInTheExtensionOfItsFormat)
{
    const PathCase cases[] = {
        {"Bare", "logs/run", Format::Asc, "logs/run.asc"},
        {"Own", "run.csv", Format::Csv, "run.csv"},
        {"Capitals", "run.TxT", Format::Txt, "run.TxT"},
        {"OfAnotherFormat", "run.txt", Format::Csv, "run.txt.csv"},
        {"Unknown", "run.2026", Format::Asc, "run.2026.asc"},
        {"DotAtEnd", "run.", Format::Txt, "run..txt"},
        {"NoDot", "runcsv", Format::Csv, "runcsv.csv"},
        {"InTheFolder", "a.asc/run", Format::Asc, "a.asc/run.asc"},
    };
    for (const PathCase &test : cases) {
        const QString completed = TzViewSnapshot::completedPath(QLatin1String(test.path), test.format);
        EXPECT_EQ(completed.toStdString(), test.completed) << test.name;
    }
}

TEST_F(ViewSnapshot, SaveWritesUtf8WithLineFeedsOverAnOlderFile)
{
    const QString path = m_workDir.filePath(QStringLiteral("运行 1.txt"));
    QFile older(path);
    ASSERT_TRUE(older.open(QIODevice::WriteOnly));
    older.write(QByteArray(10'000, 'x'));
    older.close();
    show(m_lin, snapshotLinFrames());
    ASSERT_TRUE(TzViewSnapshot::save(m_lin, Format::Txt, path));
    EXPECT_EQ(contents(path).toStdString(), text(m_lin, Format::Txt));
}

TEST_F(ViewSnapshot, SaveFailsWhereNoFileCanBeOpened)
{
    const LogCapture log;
    EXPECT_FALSE(TzViewSnapshot::save(m_can, Format::Asc, m_workDir.filePath(QStringLiteral("missing/run.asc"))));
    ASSERT_TRUE(QDir().mkdir(QStringLiteral("folder.asc")));
    EXPECT_FALSE(TzViewSnapshot::save(m_can, Format::Asc, QStringLiteral("folder.asc")));
    EXPECT_FALSE(TzViewSnapshot::save(m_can, Format::Asc, QString()));
    EXPECT_EQ(log.countContaining(2, "for writing"), std::size_t{3});
}

TEST_F(ViewSnapshot, FullDiskIsLoggedAndNoFailure)
{
    const LogCapture log;
    show(m_can, snapshotCanFrames());
    {
        const tztest::FileSizeLimit limit(20);
        EXPECT_TRUE(TzViewSnapshot::save(m_can, Format::Csv, QStringLiteral("full.csv")));
    }
    EXPECT_EQ(contents(QStringLiteral("full.csv")).size(), 20);
    EXPECT_EQ(log.countContaining(2, "Could not write all of full.csv: 20 of "), std::size_t{1});
}

TEST_F(ViewSnapshot, DiskThatTellsOnlyAtTheEndIsLoggedAndNoFailure)
{
    const LogCapture log;
    show(m_can, snapshotCanFrames());
    {
        const tztest::CloseFailure lost(EIO);
        EXPECT_TRUE(TzViewSnapshot::save(m_can, Format::Csv, QStringLiteral("lost.csv")));
    }
    EXPECT_EQ(contents(QStringLiteral("lost.csv")).toStdString(), text(m_can, Format::Csv));
    EXPECT_TRUE(log.has(2, "Could not write all of lost.csv: Input/output error"));
}

TEST_F(ViewSnapshot, FileOfARunningRecordingIsRefusedAndLeftWhole)
{
    const LogCapture log;
    Common::platform::ExclusiveFile recording;
    ASSERT_FALSE(recording.open("run.asc"));
    recording.write("recorded");
    EXPECT_FALSE(TzViewSnapshot::save(m_can, Format::Asc, QStringLiteral("run.asc")));
    EXPECT_EQ(contents(QStringLiteral("run.asc")), QByteArray("recorded"));
    EXPECT_EQ(log.countContaining(2, "Cannot open run.asc for writing"), std::size_t{1});
    recording.close();
    EXPECT_TRUE(TzViewSnapshot::save(m_can, Format::Asc, QStringLiteral("run.asc")));
    EXPECT_TRUE(contents(QStringLiteral("run.asc")).startsWith("date "));
}

// No view shows such a direction now; a table that does gets the short line.
TEST_F(ViewSnapshot, AscHasAShortLineForADirectionThatSaysError)
{
    QStandardItemModel model(1, 12);
    const auto set = [&model](int column, const char *text) {
        model.setItem(0, column, new QStandardItem(QString::fromLatin1(text)));
    };
    set(1, "1.5");
    set(3, " CAN 1 ");
    set(4, "123");
    set(6, "Error Frame");
    set(10, "2");
    set(11, "01 02");
    const QString asc = TzViewSnapshot::text(model, Format::Asc, QDateTime({2026, 11, 7}, {14, 5, 9, 7}));
    EXPECT_EQ(asc.toStdString(), ascHead + "1.5 1  ErrorFrame\n" + ascEnd);
}

} // namespace
