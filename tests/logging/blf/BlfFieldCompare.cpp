// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/logging/blf/BlfFieldCompare.h"

#include "tests/database/corpus/Comparison.h"

#include <algorithm>
#include <array>
#include <string>

namespace tztest {

namespace {

/// Compares fields with those of one object.
class Fields
{
public:
    Fields(const QString &where, const GoldenBlfObject &expected)
        : m_comparison(where)
        , m_expected(expected)
    {
    }

    void number(const char *name, std::uint64_t actual)
    {
        m_comparison.field(name, qulonglong(m_expected.number(name)), qulonglong(actual));
    }
    template <std::size_t size> void bytes(const std::array<std::uint8_t, size> &actual)
    {
        m_comparison.field("data", m_expected.bytes("data").toHex(), hexOf(actual));
    }
    // The independent reader took as many of the stored bytes as are valid; where there are fewer, the rest is zero.
    void stored(const std::array<std::uint8_t, 64> &actual, std::uint8_t storedBytes)
    {
        const QByteArray expected = m_expected.bytes("data");
        const auto valid = static_cast<int>(std::min<std::uint64_t>(m_expected.number("valid"), actual.size()));
        if (expected.size() < valid)
            m_comparison.field("storedBytes", expected.size(), int(storedBytes));
        m_comparison.field("data", expected.leftJustified(valid, '\0').toHex(), hexOf(actual).left(2 * valid));
    }
    void value(const char *name, const QByteArray &expected, const QByteArray &actual)
    {
        m_comparison.field(name, expected, actual);
    }
    const GoldenBlfObject &expected() const { return m_expected; }
    const QStringList &differences() const { return m_comparison.differences(); }

private:
    template <std::size_t size> static QByteArray hexOf(const std::array<std::uint8_t, size> &bytes)
    {
        return QByteArray(reinterpret_cast<const char *>(bytes.data()), static_cast<int>(size)).toHex();
    }

    tzcorpus::Comparison m_comparison;
    const GoldenBlfObject &m_expected;
};

void compare(Fields &fields, const BLF::CanMessage &object)
{
    fields.number("ch", object.channel);
    fields.number("flags", object.flags);
    fields.number("dlc", object.dlc);
    fields.number("id", object.id);
    fields.bytes(object.data);
    fields.number("flen", object.frameLength); // type 1 has none, and 0 is meant
    fields.number("bits", object.bitCount);
}

void compare(Fields &fields, const BLF::CanErrorFrame &object)
{
    fields.number("ch", object.channel);
}

void compare(Fields &fields, const BLF::CanStatistic &object)
{
    fields.number("ch", object.channel);
    fields.number("load", object.busLoad);
    fields.number("std", object.standardDataFrames);
    fields.number("ext", object.extendedDataFrames);
    fields.number("stdr", object.standardRemoteFrames);
    fields.number("extr", object.extendedRemoteFrames);
    fields.number("err", object.errorFrames);
    fields.number("ovl", object.overloadFrames);
}

void compare(Fields &fields, const BLF::CanDriverError &object)
{
    fields.number("ch", object.channel);
    fields.number("tx", object.txErrors);
    fields.number("rx", object.rxErrors);
    fields.number("code", object.errorCode);
}

void compare(Fields &fields, const BLF::SystemVariable &object)
{
    const QByteArray value(reinterpret_cast<const char *>(object.value.data()), static_cast<int>(object.value.size()));
    fields.number("type", object.type);
    fields.value("name", fields.expected().text("name").toUtf8(), QByteArray::fromStdString(std::string(object.name)));
    fields.value("data", fields.expected().bytes("data").toHex(), value.toHex());
}

void compare(Fields &fields, const BLF::CanErrorFrameExt &object)
{
    fields.number("ch", object.channel);
    fields.number("flags", object.flags);
    fields.number("ecc", object.ecc);
    fields.number("pos", object.position);
    fields.number("dlc", object.dlc);
    fields.number("flen", object.frameLength);
    fields.number("id", object.id);
    fields.number("fext", object.flagsExt);
    fields.bytes(object.data);
}

void compare(Fields &fields, const BLF::Overrun &object)
{
    fields.number("bus", object.busType);
    fields.number("ch", object.channel);
}

void compare(Fields &fields, const BLF::CanFdMessage &object)
{
    fields.number("ch", object.channel);
    fields.number("flags", object.flags);
    fields.number("dlc", object.dlc);
    fields.number("id", object.id);
    fields.number("flen", object.frameLength);
    fields.number("arbbits", object.arbBitCount);
    fields.number("fd", object.canFdFlags);
    fields.number("valid", object.validDataBytes);
    fields.bytes(object.data);
}

// What types 101 and 104 have in common.
template <typename Object> void compareFd64(Fields &fields, const Object &object)
{
    fields.number("ch", object.channel);
    fields.number("dlc", object.dlc);
    fields.number("valid", object.validDataBytes);
    fields.number("id", object.id);
    fields.number("flen", object.frameLength);
    fields.number("flags", object.flags);
    fields.number("btra", object.btrCfgArb);
    fields.number("btrd", object.btrCfgData);
    fields.number("brsns", object.timeOffsetBrsNs);
    fields.number("crcns", object.timeOffsetCrcDelNs);
    fields.number("crc", object.crc);
    fields.stored(object.data, object.storedBytes);
}

void compare(Fields &fields, const BLF::CanFdMessage64 &object)
{
    compareFd64(fields, object);
    fields.number("bits", object.bitCount);
    fields.number("dir", object.dir);
}

void compare(Fields &fields, const BLF::CanFdErrorFrame64 &object)
{
    compareFd64(fields, object);
    fields.number("ecc", object.ecc);
    fields.number("ecext", object.errorCodeExt);
    fields.number("extf", object.extFlags);
    fields.number("epos", object.errorPosition);
}

template <typename Object> QStringList compareAs(Fields &fields, BLF::BlfReader &reader)
{
    Object object;
    if (!reader.read(object))
        return {QStringLiteral("an object is refused")};
    compare(fields, object);
    reader.release();
    return fields.differences();
}

using CompareFunction = QStringList (*)(Fields &, BLF::BlfReader &);

CompareFunction functionFor(std::uint32_t type)
{
    switch (type) {
    case 1:
    case 86: return compareAs<BLF::CanMessage>;
    case 2: return compareAs<BLF::CanErrorFrame>;
    case 4: return compareAs<BLF::CanStatistic>;
    case 31: return compareAs<BLF::CanDriverError>;
    case 72: return compareAs<BLF::SystemVariable>;
    case 73: return compareAs<BLF::CanErrorFrameExt>;
    case 91: return compareAs<BLF::Overrun>;
    case 100: return compareAs<BLF::CanFdMessage>;
    case 101: return compareAs<BLF::CanFdMessage64>;
    case 104: return compareAs<BLF::CanFdErrorFrame64>;
    default: return nullptr;
    }
}

} // namespace

QStringList compareBlfObject(const QString &where, const GoldenBlfObject &expected, const BLF::ObjectHeader &header,
                             BLF::BlfReader &reader)
{
    Fields fields(where, expected);
    fields.value("object type", QByteArray::number(expected.type), QByteArray::number(header.type));
    fields.value("time", QByteArray::number(qulonglong(expected.timeNs)),
                 QByteArray::number(qulonglong(header.timeNs)));
    if (expected.type != header.type) {
        reader.skip();
        return fields.differences();
    }
    return functionFor(expected.type)(fields, reader);
}

bool isBlfRecordType(std::uint32_t type)
{
    return functionFor(type) != nullptr;
}

} // namespace tztest
