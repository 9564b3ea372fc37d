// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/database/dbc/DbcFixture.h"
#include "tests/support/ThreadSeconds.h"

namespace {

using DbcHostileFiles = DbcFixture;

constexpr double longestSeconds = 8; // of processor time: far more than needed, far less than quadratic time would take

const QByteArray smallFile =
    "VERSION \"1\"\nNS_ :\n\tCM_\nBS_:\nBU_: Ecu B\nVAL_TABLE_ T 0 \"a\" ;\nBO_ 100 Msg: 8 Ecu\n"
    " SG_ Mux M : 0|8@1+ (1,0) [0|255] \"V\" B\n SG_ Sig m1 : 8|8@1- (0.5,-1) [0|0] \"\xc2\xb0\" Ecu\n\n"
    "CM_ SG_ 100 Sig \"text\";\nCM_ BO_ 100 \"x\"y\" ;\nBA_DEF_ BO_ \"VFrameFormat\" ENUM \"StandardCAN\",\"FD\";\n"
    "BA_DEF_DEF_ \"VFrameFormat\" \"FD\";\nBA_ \"VFrameFormat\" BO_ 100 1;\nBA_ \"GenSigStartValue\" SG_ 100 Sig 5;\n"
    "VAL_ 100 Sig 0 \"a\"\n1 \"b\" ;\nSIG_VALTYPE_ 100 Sig : 1;\nSG_MUL_VAL_ 100 Sig Mux 1-1;\n";

} // namespace

TEST_F(DbcHostileFiles, TruncatedAtEveryByte)
{
    ASSERT_TRUE(parseBytes(smallFile));
    for (int size = 0; size < smallFile.size(); ++size) {
        const bool isRead = parseBytes(smallFile.left(size));
        EXPECT_EQ(isRead, !model.messages.empty()) << size;
    }
}

TEST_F(DbcHostileFiles, WithEachByteTakenOut)
{
    for (int index = 0; index < smallFile.size(); ++index) {
        QByteArray damaged = smallFile;
        damaged.remove(index, 1);
        const bool isRead = parseBytes(damaged);
        EXPECT_EQ(isRead, !model.messages.empty()) << index;
    }
}

TEST_F(DbcHostileFiles, EmptyOnesFailWithClearLines)
{
    EXPECT_FALSE(parseBytes(""));
    EXPECT_TRUE(log.has(warning, "NS_ section not found"));
    EXPECT_TRUE(log.has(error, "Failed to parse DBC file"));
}

TEST_F(DbcHostileFiles, BinaryOnesFail)
{
    QByteArray bytes;
    for (unsigned index = 0; index < 100000; ++index)
        bytes.append(static_cast<char>(index * 2654435761U >> 13));
    EXPECT_FALSE(parseBytes(bytes));
    EXPECT_FALSE(parseBytes(bytes, "GB18030"));
    EXPECT_TRUE(log.has(error, "Failed to parse DBC file"));
}

TEST_F(DbcHostileFiles, Utf16WithAMarkIsReadAndWithoutItFails)
{
    const QString text = QString::fromUtf8(smallFile);
    const QByteArray words(reinterpret_cast<const char *>(text.utf16()), text.size() * 2);
    EXPECT_TRUE(parseBytes("\xff\xfe" + words));
    EXPECT_FALSE(parseBytes(words));
}

TEST_F(DbcHostileFiles, HalfSurrogatesDoNoHarm)
{
    const QString text = QString::fromUtf8(smallFile);
    QByteArray words(reinterpret_cast<const char *>(text.utf16()), text.size() * 2);
    words.replace(QByteArray("t\0e\0", 4), QByteArray("\0\xd8"
                                                      "e\0",
                                                      4));
    EXPECT_TRUE(parseBytes("\xff\xfe" + words));
}

TEST_F(DbcHostileFiles, OneLineOf50Megabytes)
{
    for (const QByteArray &piece : {QByteArray("x"), QByteArray("CM_ BO_ ")}) {
        const double start = tztest::threadSeconds();
        EXPECT_FALSE(parseBytes(piece.repeated(50'000'000 / piece.size())));
        EXPECT_LT(tztest::threadSeconds() - start, longestSeconds) << piece.toStdString();
    }
}

TEST_F(DbcHostileFiles, RepeatedBeginningsOfStatementsTakeLinearTime)
{
    for (const char *piece :
         {"CM_ BO_ 100 \"", "CM_ SG_ 100 Sig ", "BA_ \"A\" BO_ 100 ", "BA_ \"", "BA_DEF_ BO_ \"A\" INT ",
          "BA_DEF_DEF_ \"A\" ", "VAL_ 100 Sig 0 \"a\n", "SG_MUL_VAL_ 100 Sig Mux 1\n", "BO_ 1 A: 8", "VAL_TABLE_ T\n",
          "/*", "SIG_VALTYPE_ 100 Sig :\n", "111111111111", "\n", "          "}) {
        const double start = tztest::threadSeconds();
        ASSERT_TRUE(parseBehindMessage(QByteArray(piece).repeated(2'000'000 / static_cast<int>(strlen(piece)))));
        EXPECT_LT(tztest::threadSeconds() - start, longestSeconds) << piece;
    }
}

TEST_F(DbcHostileFiles, LongRunsOfDigitsTakeLinearTime)
{
    const double start = tztest::threadSeconds();
    const QByteArray digits(2'000'000, '7');
    ASSERT_TRUE(parseBehindMessage("VAL_ 100 Sig " + digits + ";\nVAL_ T " + digits +
                                   " \"a\";\nSG_MUL_VAL_ 100 Sig M " + digits + ";\nBO_ " + digits + " A: " + digits +
                                   " Ecu\n\n"));
    EXPECT_LT(tztest::threadSeconds() - start, longestSeconds);
}

TEST_F(DbcHostileFiles, UnbalancedQuotesLoseNoMoreThanTheyMust)
{
    ASSERT_TRUE(parseBehindMessage("CM_ BO_ 100 \"never closed;\nBA_ \"A BO_ 100 5;\nVAL_ 100 Sig 0 \"a 1 \"b\" ;\n"));
    EXPECT_EQ(model.messages.size(), 1U);
}

TEST_F(DbcHostileFiles, OneHundredThousandMessages)
{
    QByteArray text;
    for (int number = 0; number < 100000; ++number) {
        const QByteArray id = QByteArray::number(number);
        text += "BO_ " + id + " M" + id + ": 8 Ecu\n SG_ S : 0|8@1+ (1,0) [0|1] \"\" Ecu\n\n";
    }
    ASSERT_TRUE(parse(text));
    EXPECT_EQ(model.messages.size(), 100000U);
    EXPECT_EQ(model.findMessage(99999)->name, QStringLiteral("M99999"));
}

TEST_F(DbcHostileFiles, OneMessageOf50000SignalsTakesLinearTime)
{
    const double start = tztest::threadSeconds();
    QByteArray text = "BO_ 1 A: 64 Ecu\n";
    QByteArray multiplexing;
    for (int number = 0; number < 50000; ++number) {
        const QByteArray name = "S" + QByteArray::number(number);
        text += " SG_ " + name + " m1 : " + QByteArray::number(number % 512) + "|8@1+ (1,0) [0|1] \"\" R" + name + "\n";
        multiplexing += "SG_MUL_VAL_ 1 " + name + " M 1-1;\n";
    }
    ASSERT_TRUE(parse(text + "\n" + multiplexing));
    EXPECT_EQ(model.messages.at(0).signals.size(), 50000U);
    EXPECT_EQ(model.nodes.size(), 50001U);
    EXPECT_LT(tztest::threadSeconds() - start, longestSeconds);
}
