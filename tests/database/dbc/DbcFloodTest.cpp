// SPDX-License-Identifier: GPL-3.0-or-later
// Files made to cost far more time than their size tells: names and numbers that a common hash takes for one, and
// signals far longer than a frame.
#include "tests/database/dbc/DbcFixture.h"
#include "tests/support/ThreadSeconds.h"

#include <algorithm>
#include <cstdint>
#include <functional>
#include <limits>
#include <unordered_map>

namespace {

class DbcFloods : public DbcFixture
{
protected:
    using FileOf = std::function<QByteArray(int count)>;

    /// Processor time, the shortest of a few runs: what else the machine does only adds to it.
    double msToParse(const QByteArray &bytes)
    {
        double shortest = std::numeric_limits<double>::max();
        for (int run = 0; run < 3; ++run) {
            const double start = tztest::threadSeconds();
            EXPECT_TRUE(parseBytes(bytes));
            shortest = std::min(shortest, (tztest::threadSeconds() - start) * 1e3);
        }
        return shortest;
    }

    /// Eight times the statements may take 24 times the time, where 64 times would show that it is quadratic.
    void expectLinear(int count, const FileOf &fileOf)
    {
        const double few = msToParse(fileOf(count));
        const double many = msToParse(fileOf(8 * count));
        EXPECT_LT(many, 3 * 8 * few + 20.0) << few << " ms for an eighth";
    }
};

// Texts of 32 characters that have one hash where the next character is added to 31 times the hash so far.
QByteArray twin(int number)
{
    QByteArray text;
    for (int bit = 0; bit < 16; ++bit)
        text += (number >> bit & 1) != 0 ? "Aa" : "BB";
    return text;
}

// So many buckets has a table of so many numbers; its multiples are in one of them.
std::size_t bucketsOf(std::uint32_t count, bool isReserved)
{
    std::unordered_map<std::uint32_t, int> map;
    if (isReserved)
        map.reserve(count);
    for (std::uint32_t number = 0; number < count; ++number)
        map.emplace(number, 0);
    return map.bucket_count();
}

QByteArray lineOfSignal(const QByteArray &name, const QByteArray &place, const QByteArray &receivers = "Ecu")
{
    return " SG_ " + name + " : " + place + "@1+ (1,0) [0|1] \"\" " + receivers + "\n";
}

} // namespace

TEST_F(DbcFloods, ReceiversOfOneHash)
{
    expectLinear(2000, [](int count) {
        QByteArray receivers;
        for (int number = 0; number < count; ++number)
            receivers += twin(number) + ',';
        return head() + "BO_ 1 A: 8 Ecu\n" + lineOfSignal("S", "0|8", receivers);
    });
    EXPECT_EQ(model.nodes.size(), 16001U);
}

TEST_F(DbcFloods, NodesOfOneHash)
{
    expectLinear(2000, [](int count) {
        QByteArray nodes = "NS_ :\nBS_:\nBU_:";
        for (int number = 0; number < count; ++number)
            nodes += ' ' + twin(number);
        return nodes + '\n' + message();
    });
    EXPECT_EQ(model.nodes.size(), 16001U);
}

TEST_F(DbcFloods, SignalsOfOneHash)
{
    expectLinear(2000, [](int count) {
        QByteArray text = head() + "BO_ 1 A: 64 Ecu\n";
        QByteArray comments;
        for (int number = 0; number < count; ++number) {
            text += lineOfSignal(twin(number), "0|8").replace(" :", " m1 :");
            comments += "CM_ SG_ 1 " + twin(number) + " \"x\";\n";
        }
        return text + '\n' + comments;
    });
    EXPECT_EQ(model.messages.at(0).signals.size(), 16000U);
    EXPECT_EQ(model.messages.at(0).signals.at(4711).comment, QStringLiteral("x"));
}

TEST_F(DbcFloods, AttributesOfOneHash)
{
    expectLinear(2000, [](int count) {
        QByteArray text = head() + message();
        QByteArray defaults;
        for (int number = 0; number < count; ++number) {
            text += "BA_DEF_ \"" + twin(number) + "\" INT 0 1;\n";
            defaults += "BA_DEF_DEF_ \"" + twin(number) + "\" 1;\n";
        }
        return text + defaults;
    });
    EXPECT_EQ(model.attributeDefinitions.size(), 16000U);
    EXPECT_EQ(model.attributeDefinitions.at(4711).defaultValue, QVariant(QStringLiteral("1")));
}

TEST_F(DbcFloods, ValueTablesOfOneHash)
{
    expectLinear(2000, [](int count) {
        QByteArray text = head() + message();
        for (int number = 0; number < count; ++number)
            text += "VAL_TABLE_ " + twin(number) + " 0 \"a\" ;\n";
        return text;
    });
    EXPECT_EQ(model.valueTables.size(), 16000U);
}

TEST_F(DbcFloods, MessageNumbersOfOneBucket)
{
    expectLinear(2500, [](int count) {
        const auto step = bucketsOf(static_cast<std::uint32_t>(count), true);
        QByteArray text = head();
        for (int number = 0; number < count; ++number)
            text += "BO_ " + QByteArray::number(static_cast<qulonglong>(number) * step) + " A: 8 Ecu\n\n";
        return text;
    });
    EXPECT_EQ(model.messages.size(), 20000U);
    EXPECT_EQ(model.findMessage(model.messages.at(4711).id), &model.messages.at(4711));
}

TEST_F(DbcFloods, ValuesOfOneBucket)
{
    expectLinear(4000, [](int count) {
        const auto step = bucketsOf(static_cast<std::uint32_t>(count), false);
        QByteArray pairs;
        for (int number = 0; number < count; ++number)
            pairs += ' ' + QByteArray::number(static_cast<qulonglong>(number) * step) + " \"\"";
        return head() + message() + "VAL_ 100 Sig" + pairs + ";\nVAL_TABLE_ T" + pairs + ";\n";
    });
    EXPECT_EQ(signal().valueDescriptions.size(), 32000U);
    EXPECT_EQ(model.valueTables.at(0).entries.size(), 32000U);
}

TEST_F(DbcFloods, SignalsFarLongerThanAFrameCostNoMoreThanOthers)
{
    const auto inOneMessage = [](const QByteArray &place) {
        return head() + "BO_ 1 A: 64 Ecu\n" + lineOfSignal("ExtendedVersion", place).repeated(3000);
    };
    const auto inMessagesOfTheirOwn = [](const QByteArray &place) {
        QByteArray text = head();
        for (int number = 0; number < 2000; ++number)
            text +=
                "BO_ " + QByteArray::number(number) + " A: 64 Ecu\n" + lineOfSignal("ExtendedVersion", place) + '\n';
        return text;
    };
    EXPECT_LT(msToParse(inOneMessage("0|65535")), 6 * msToParse(inOneMessage("0|64")) + 20.0);
    EXPECT_LT(msToParse(inMessagesOfTheirOwn("0|65535")), 6 * msToParse(inMessagesOfTheirOwn("0|64")) + 20.0);
    EXPECT_EQ(model.messages.size(), 2000U);
}
