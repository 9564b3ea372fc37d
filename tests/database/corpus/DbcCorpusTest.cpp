// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/dbc/DbcConversions.h"
#include "database/dbc/DbcParser.h"
#include "database/dbc/DbcWriter.h"
#include "tests/database/corpus/Corpus.h"
#include "tests/database/corpus/DbcCompare.h"
#include "tests/database/corpus/DbcExpectation.h"
#include "tests/database/corpus/DbcSaveRules.h"
#include "tests/database/corpus/RuleBook.h"
#include "tests/support/TempWorkDir.h"

#include <QFile>
#include <QTextCodec>

#include <cmath>
#include <cstdio>

namespace {

using namespace tzcorpus;

constexpr double relativeTolerance = 1e-9;

/// What the whole run has compared, printed at its end.
struct Totals
{
    long files = 0;
    long refused = 0;
    long messages = 0;
    long signals = 0;
    long frames = 0;
    long values = 0;
    long encoded = 0;
    long saved = 0;
};

/// Reads one file of the corpus and its results.
class DbcCorpus : public testing::TestWithParam<File>
{
public:
    static void TearDownTestSuite()
    {
        std::printf(
            "DBC files read: %ld, refused: %ld; messages: %ld, signals: %ld; frames: %ld, values: %ld, encoded: "
            "%ld; files saved and read again: %ld\n",
            s_totals.files, s_totals.refused, s_totals.messages, s_totals.signals, s_totals.frames, s_totals.values,
            s_totals.encoded, s_totals.saved);
    }

protected:
    void SetUp() override
    {
        const File &file = GetParam();
        if (file.name.isEmpty())
            GTEST_SKIP() << skipReason;
        const QJsonObject json = readGolden(file);
        m_encoding = encodingOf(file, json);
        ASSERT_NE(QTextCodec::codecForName(m_encoding.toLatin1()), nullptr) << m_encoding.toStdString();
        m_golden = DbcGolden::fromJson(json);
        m_text.emplace(decoded());
    }

    bool parse(const QString &path) { return m_parser.parseFile(path, m_encoding); }

    /// Loads the file, with a list of symbols put before it where it lacks one, so that the rest of it can be compared.
    /// False for a file without messages.
    bool load()
    {
        if (m_text->hasNewSymbols() || !readable())
            return parse(GetParam().path);
        const QString path = m_folder.filePath(QStringLiteral("with_symbols.dbc"));
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("NS_ :\n\nBS_:\n" + readBytes(GetParam().path));
        file.close();
        return parse(path);
    }

    bool readable() const
    {
        const auto &messages = m_text->messages();
        return std::any_of(messages.begin(), messages.end(), [](const auto &message) { return message.isOrdinary(); });
    }

    QString decoded() const
    {
        QTextCodec::ConverterState state;
        const QByteArray bytes = readBytes(GetParam().path);
        QTextCodec *codec = QTextCodec::codecForUtfText(bytes, QTextCodec::codecForName(m_encoding.toLatin1()));
        return codec->toUnicode(bytes.constData(), bytes.size(), &state);
    }

    static const DbcFile &model() { return Common::DbcParser::model(); }

    static Totals s_totals;
    QString m_encoding;
    DbcGolden m_golden;
    std::optional<DbcText> m_text;
    tztest::TempWorkDir m_folder;
    Common::DbcParser m_parser;
};

Totals DbcCorpus::s_totals;

TEST_P(DbcCorpus, LoadsOrFailsAsExpected)
{
    const bool isLoaded = parse(GetParam().path);
    EXPECT_EQ(isLoaded, m_text->isLoadable());
    if (m_golden.isLoadable && *m_golden.isLoadable != m_text->isLoadable()) {
        RuleBook::instance().add("file refused", "none of its messages is one that the reader takes");
        RuleBook::instance().count("file refused");
        EXPECT_TRUE(*m_golden.isLoadable && !m_text->messages().empty()) << "no rule explains the difference";
    }
    ++(isLoaded ? s_totals.files : s_totals.refused);
}

TEST_P(DbcCorpus, MessagesAndSignalsMatchFieldByField)
{
    if (!load()) {
        EXPECT_FALSE(readable());
        return;
    }
    const std::vector<ExpectedMessage> expected = expectedMessages(m_golden, *m_text, RuleBook::Counting::on);
    ASSERT_EQ(expected.size(), model().messages.size());
    QStringList differences;
    for (std::size_t at = 0; at < expected.size(); ++at) {
        differences += compareMessages(expected[at].message, model().messages[at], Depth::description);
        s_totals.signals += static_cast<long>(expected[at].message.signals.size());
    }
    s_totals.messages += static_cast<long>(expected.size());
    reportDifferences(QStringLiteral("messages"), differences);
}

std::size_t independentBit(std::size_t start, std::size_t step, bool isBigEndian)
{
    if (!isBigEndian)
        return start + step;
    const std::size_t fromTop = (start / 8) * 8 + (7 - start % 8) + step; // bits counted from the top of byte 0
    return (fromTop / 8) * 8 + (7 - fromTop % 8);
}

/// The bits that signals cover, as bytes; empty where a signal reaches past the end.
QByteArray coveredBits(const DbcMessage &message)
{
    QByteArray mask(message.size, '\0');
    for (const DbcSignal &signal : message.signals) {
        for (std::size_t step = 0; step < signal.size; ++step) {
            const std::size_t bit = independentBit(signal.startBit, step, signal.isBigEndian);
            if (bit / 8 >= message.size)
                return {};
            mask[static_cast<int>(bit / 8)] = static_cast<char>(mask[static_cast<int>(bit / 8)] | (1 << (bit % 8)));
        }
    }
    return mask;
}

/// The value that a raw value stands for by the signal's own fields, worked out apart from the program.
double physicalOf(std::uint64_t raw, const DbcSignal &signal)
{
    if (signal.valueType == 1) {
        const auto bits = static_cast<std::uint32_t>(raw);
        float number = 0;
        std::memcpy(&number, &bits, sizeof number);
        return number;
    }
    double number = static_cast<double>(raw);
    if (signal.valueType == 2)
        std::memcpy(&number, &raw, sizeof number);
    else if (signal.isSigned && (raw >> (signal.size - 1U)) != 0)
        number = static_cast<double>(static_cast<std::int64_t>(raw << (64U - signal.size)) >> (64U - signal.size));
    return signal.valueType == 2 ? number : number * signal.factor + signal.offset;
}

bool isNear(double expected, double actual)
{
    if (!std::isfinite(expected) || !std::isfinite(actual))
        return (std::isnan(expected) && std::isnan(actual)) || expected == actual;
    return std::abs(expected - actual) <= relativeTolerance * std::max(std::abs(expected), std::abs(actual));
}

void addDecodedRules()
{
    RuleBook::instance().add("decoded otherwise", "whether a signal is a float, and its scale, are as the rules of the "
                                                  "fields say, and so is its value");
    RuleBook::instance().add("not encoded", "a message with a signal past its end encodes to nothing");
}

/// Decodes frames of one message and encodes them again.
class FrameCheck
{
public:
    FrameCheck(const ExpectedMessage &expected, DbcMessage message)
        : m_expected(expected)
        , m_message(std::move(message))
        , m_mask(coveredBits(m_message))
    {
    }

    QStringList check(const GoldenFrame &frame, Totals &totals)
    {
        m_differences.clear();
        const auto *bytes = reinterpret_cast<const std::uint8_t *>(frame.data.constData());
        if (decodeMessage(bytes, static_cast<std::size_t>(frame.data.size()), m_message) != 0) {
            differ(frame, QStringLiteral("not decoded"));
            return m_differences;
        }
        for (const DbcSignal &signal : m_message.signals)
            totals.values += checkSignal(frame, signal) ? 1 : 0;
        checkEncoded(frame, totals);
        ++totals.frames;
        return m_differences;
    }

private:
    const GoldenSignal *goldenSignal(const DbcSignal &signal) const
    {
        for (const GoldenSignal &golden : m_expected.golden->signals) {
            if (golden.shortName == signal.name)
                return &golden;
        }
        return nullptr;
    }

    bool checkSignal(const GoldenFrame &frame, const DbcSignal &signal)
    {
        const GoldenSignal *golden = goldenSignal(signal);
        const auto value = golden != nullptr ? frame.values.find(golden->name) : frame.values.end();
        if (value == frame.values.end()) {
            if (golden == nullptr || golden->fits)
                differ(frame, signal.name + QStringLiteral(": the results do not tell of it"));
            return false; // outside the payload
        }
        const std::uint64_t raw = value->second.raw;
        if (raw != signal.value)
            differ(frame, QStringLiteral("%1: raw %2, is %3").arg(signal.name).arg(raw).arg(signal.value));
        const bool isSameKind = (signal.valueType != 0) == golden->isFloat && signal.factor == golden->scale &&
                                signal.offset == golden->offset;
        RuleBook::instance().count("decoded otherwise", isSameKind ? 0 : 1);
        const double physical = isSameKind ? value->second.physical : physicalOf(raw, signal);
        if (!isNear(physical, getSignalPhysicalValue(signal)))
            differ(frame, QStringLiteral("%1: physical %2, is %3")
                              .arg(signal.name)
                              .arg(physical, 0, 'g', 17)
                              .arg(getSignalPhysicalValue(signal), 0, 'g', 17));
        checkWayBack(frame, signal);
        return true;
    }

    // Up to 32 bits, and with an offset that leaves them in a double, the physical value gives the raw value again.
    void checkWayBack(const GoldenFrame &frame, const DbcSignal &signal)
    {
        const bool isExact = signal.valueType == 0 && signal.size <= 32 && signal.factor != 0.0 &&
                             std::abs(signal.offset) < 1e5 * std::abs(signal.factor);
        if (isExact && physicalToRawValue(getSignalPhysicalValue(signal), signal) != signal.value)
            differ(frame, signal.name + QStringLiteral(": the physical value does not give the raw value again"));
    }

    void checkEncoded(const GoldenFrame &frame, Totals &totals)
    {
        const QByteArray encoded = encodeMessage(m_message);
        const bool isWithin = m_message.size == 0 || !m_mask.isEmpty();
        RuleBook::instance().count("not encoded", isWithin ? 0 : 1);
        QByteArray expected = isWithin ? frame.data.left(m_message.size) : QByteArray();
        for (int at = 0; at < expected.size(); ++at)
            expected[at] = static_cast<char>(expected.at(at) & m_mask.at(at));
        if (encoded != expected)
            differ(frame, QStringLiteral("encoded to %1 instead of %2")
                              .arg(QString::fromLatin1(encoded.toHex()), QString::fromLatin1(expected.toHex())));
        ++totals.encoded;
    }

    void differ(const GoldenFrame &frame, const QString &what)
    {
        m_differences +=
            QStringLiteral("%1 [%2] %3").arg(m_message.name, QString::fromLatin1(frame.data.toHex()), what);
    }

    const ExpectedMessage &m_expected;
    DbcMessage m_message;
    QByteArray m_mask;
    QStringList m_differences;
};

TEST_P(DbcCorpus, FramesDecodeAndEncodeAgain)
{
    addDecodedRules();
    if (!load())
        return;
    const std::vector<ExpectedMessage> expected = expectedMessages(m_golden, *m_text, RuleBook::Counting::off);
    ASSERT_EQ(expected.size(), model().messages.size());
    std::map<std::pair<std::uint32_t, bool>, FrameCheck> checks;
    for (std::size_t at = 0; at < expected.size(); ++at) {
        const GoldenMessage *golden = expected[at].golden;
        if (golden != nullptr)
            checks.try_emplace({golden->id, golden->isExtended}, expected[at], model().messages[at]);
    }
    QStringList differences;
    for (const GoldenFrame &frame : m_golden.frames) {
        const auto check = checks.find({frame.id, frame.isExtended});
        if (check != checks.end())
            differences += check->second.check(frame, s_totals);
    }
    reportDifferences(QStringLiteral("frames"), differences);
}

TEST_P(DbcCorpus, SavedFileReadsAsTheSameButForTheKnownLosses)
{
    if (!load())
        return;
    const DbcFile before = model();
    const QString path = m_folder.filePath(QStringLiteral("saved.dbc"));
    ASSERT_TRUE(DbcWriter(before).save(path, m_encoding));
    ASSERT_TRUE(parse(path));
    reportDifferences(QStringLiteral("saved and read again"), compareFiles(expectedAfterSave(before), model()));
    ++s_totals.saved;
}

INSTANTIATE_TEST_SUITE_P(All, DbcCorpus, testing::ValuesIn(files(QStringLiteral("dbc"))), testName);

TEST(DbcCorpusFolder, HoldsFiles)
{
    const std::vector<File> all = files(QStringLiteral("dbc"));
    ASSERT_FALSE(all.empty()) << "TZ_CORPUS names a folder without dbc files";
    if (all.front().name.isEmpty())
        GTEST_SKIP() << skipReason;
}

} // namespace
