// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/text/KeyedHash.h"

#include <gtest/gtest.h>

#include <QHash>

#include <algorithm>
#include <cstdint>
#include <unordered_set>
#include <vector>

namespace {

// As many texts of 32 characters as there are numbers of 16 bits, all alike to a hash that adds 31 times what it had.
QString twin(unsigned number)
{
    QString text;
    for (unsigned bit = 0; bit < 16; ++bit)
        text += (number >> bit & 1U) != 0 ? QStringLiteral("Aa") : QStringLiteral("BB");
    return text;
}

// Keys in the fullest of as many buckets as there are keys.
template <typename Map> std::size_t fullestBucket(const Map &map)
{
    std::size_t most = 0;
    for (std::size_t bucket = 0; bucket < map.bucket_count(); ++bucket)
        most = std::max(most, map.bucket_size(bucket));
    return most;
}

} // namespace

TEST(KeyedHash, EqualTextsHaveTheSameHash)
{
    const QString text = QStringLiteral("x Wheel_Speed y");
    EXPECT_EQ(Common::hashOfText(QStringView(text).mid(2, 11)), Common::hashOfText(u"Wheel_Speed"));
    EXPECT_EQ(Common::hashOfText(QString()), Common::hashOfText(u""));
    EXPECT_EQ(Common::TextHash()(text), Common::hashOfText(text));
}

TEST(KeyedHash, TextsThatTheToolkitTakesForOneDiffer)
{
    ASSERT_EQ(qHash(QStringView(twin(0))), qHash(QStringView(twin(0xFFFF))));
    std::unordered_set<std::uint64_t> hashes;
    for (unsigned number = 0; number <= 0xFFFF; ++number)
        hashes.insert(Common::hashOfText(twin(number)));
    EXPECT_EQ(hashes.size(), 0x10000U);
}

TEST(KeyedHash, TextsOfAnyLengthDiffer)
{
    std::unordered_set<std::uint64_t> hashes;
    QString zeroes;
    QString letters;
    for (int size = 0; size < 100; ++size) {
        hashes.insert(Common::hashOfText(zeroes));
        hashes.insert(Common::hashOfText(letters));
        zeroes += QChar(u'\0');
        letters += QChar(u'\uffff');
    }
    EXPECT_EQ(hashes.size(), 199U); // the empty text was there twice
}

TEST(KeyedHash, NoBucketOfATableIsFullOfTwins)
{
    Common::TextMap<unsigned> map;
    for (unsigned number = 0; number <= 0xFFFF; ++number)
        map.emplace(twin(number), number);
    EXPECT_EQ(map.size(), 0x10000U);
    EXPECT_LT(fullestBucket(map), 30U);
    EXPECT_EQ(map.find(QStringView(twin(4711)))->second, 4711U);
}

TEST(KeyedHash, NoBucketOfATableIsFullOfMultiplesOfTheNumberOfBuckets)
{
    constexpr std::uint32_t count = 40000;
    Common::NumberMap<std::uint32_t> map;
    map.reserve(count);
    const auto step = static_cast<std::uint32_t>(map.bucket_count());
    ASSERT_LT(std::uint64_t{step} * count, std::uint64_t{1} << 32);
    for (std::uint32_t number = 0; number < count; ++number)
        map.emplace(number * step, number);
    ASSERT_EQ(map.bucket_count(), step);
    EXPECT_EQ(map.size(), count);
    EXPECT_LT(fullestBucket(map), 30U);
    EXPECT_EQ(map.at(4711 * step), 4711U);
}
