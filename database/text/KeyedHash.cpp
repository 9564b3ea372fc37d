// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/text/KeyedHash.h"

#include <QRandomGenerator>

namespace Common {

namespace {

constexpr unsigned primeBits = 61;
constexpr std::uint64_t prime = (std::uint64_t{1} << primeBits) - 1; // 2^61 - 1, which is one
constexpr unsigned unitBits = 16;
constexpr qsizetype unitsPerBlock = 3; // as many as stay below the prime

__extension__ using Wide = unsigned __int128;

// Of the process, each from 1 to the prime less 1.
struct Key
{
    std::uint64_t base; // where the polynomial of a text is evaluated
    std::uint64_t factor;
    std::uint64_t addend;
};

std::uint64_t draw()
{
    return QRandomGenerator::system()->generate64() % (prime - 1) + 1;
}

const Key &processKey()
{
    static const Key key{draw(), draw(), draw()};
    return key;
}

// left * right + addend modulo the prime; all three are below it, and so is the result.
std::uint64_t multiplyAdd(std::uint64_t left, std::uint64_t right, std::uint64_t addend)
{
    const Wide sum = Wide{left} * right + addend;
    const std::uint64_t folded =
        (static_cast<std::uint64_t>(sum) & prime) + static_cast<std::uint64_t>(sum >> primeBits);
    return folded >= prime ? folded - prime : folded;
}

// From the field of the prime to all 64 bits, each hash to another one. Without the shift, keys at equal distances
// would have hashes at equal distances.
std::uint64_t finished(std::uint64_t hash, const Key &key)
{
    constexpr std::uint64_t spread = 0x9E3779B97F4A7C15; // any odd number of well mixed bits
    const std::uint64_t placed = multiplyAdd(hash, key.factor, key.addend);
    return (placed ^ placed >> 32U) * spread;
}

std::uint64_t blockOf(const char16_t *units, qsizetype count)
{
    std::uint64_t block = 0;
    for (qsizetype index = 0; index < count; ++index)
        block = block << unitBits | units[index];
    return block;
}

} // namespace

std::uint64_t hashOfText(QStringView text)
{
    const Key &key = processKey();
    const char16_t *units = text.utf16();
    // The length goes first, so that no text is the begin of another one's polynomial.
    std::uint64_t hash = static_cast<std::uint64_t>(text.size()) + 1;
    qsizetype left = text.size();
    for (; left >= unitsPerBlock; left -= unitsPerBlock, units += unitsPerBlock)
        hash = multiplyAdd(hash, key.base, blockOf(units, unitsPerBlock));
    if (left > 0)
        hash = multiplyAdd(hash, key.base, blockOf(units, left));
    return finished(hash, key);
}

std::uint64_t hashOfNumber(std::uint32_t number)
{
    return finished(number, processKey());
}

} // namespace Common
