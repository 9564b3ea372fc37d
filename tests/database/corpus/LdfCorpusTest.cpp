// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/ldf/LdfConversions.h"
#include "database/ldf/LdfParser.h"
#include "tests/database/corpus/Corpus.h"
#include "tests/database/corpus/LdfCompare.h"
#include "tests/database/corpus/LdfGolden.h"
#include "tests/database/corpus/LdfRefusals.h"
#include "tests/support/TempWorkDir.h"

#include <QFile>
#include <QRegularExpression>
#include <QTextCodec>

#include <cstdio>

namespace {

using namespace tzcorpus;

/// What the whole run has compared, printed at its end.
struct Totals
{
    long files = 0;
    long refused = 0;
    long mended = 0;
    long frames = 0;
    long signals = 0;
    long payloads = 0;
    long encodings = 0;
};

/// Reads one file of the corpus and its results. A file that the reader refuses is mended first, so that the rest of it
/// can be compared, and so that nothing but the rule is shown to be the reason.
class LdfCorpus : public testing::TestWithParam<File>
{
public:
    static void TearDownTestSuite()
    {
        std::printf("LDF files read: %ld, refused: %ld, mended and read: %ld; frames: %ld, signals: %ld, payloads: "
                    "%ld, encodings: %ld\n",
                    s_totals.files, s_totals.refused, s_totals.mended, s_totals.frames, s_totals.signals,
                    s_totals.payloads, s_totals.encodings);
    }

protected:
    void SetUp() override
    {
        const File &file = GetParam();
        if (file.name.isEmpty())
            GTEST_SKIP() << skipReason;
        const QJsonObject json = readGolden(file);
        m_encoding = encodingOf(file, json);
        QTextCodec *codec = QTextCodec::codecForName(m_encoding.toLatin1());
        ASSERT_NE(codec, nullptr) << m_encoding.toStdString();
        m_hasGolden = !json.isEmpty();
        m_golden = LdfGolden::fromJson(json);
        m_text = codec->toUnicode(readBytes(file.path));
    }

    bool load(const QString &path) { return Common::LdfParser::loadLdfConfig(m_config, path, m_encoding); }

    bool loadText(const QString &text)
    {
        const QString path = m_folder.filePath(QStringLiteral("mended.ldf"));
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(QTextCodec::codecForName(m_encoding.toLatin1())->fromUnicode(text));
        file.close();
        return load(path);
    }

    bool loadMended(bool isCounting)
    {
        const MendedLdf mended = mendLdf(m_text, isCounting);
        m_rules = mended.rules;
        m_mendedText = mended.text;
        return loadText(mended.text);
    }

    static Totals s_totals;
    QString m_encoding;
    bool m_hasGolden = false;
    LdfGolden m_golden;
    QString m_text;
    QString m_mendedText;
    QStringList m_rules;
    tztest::TempWorkDir m_folder;
    LdfConfig m_config;
};

Totals LdfCorpus::s_totals;

TEST_P(LdfCorpus, LoadsUnlessARuleRefusesIt)
{
    const QStringList rules = mendLdf(m_text, false).rules;
    const bool isLoaded = load(GetParam().path);
    EXPECT_EQ(isLoaded, rules.isEmpty()) << rules.join(u'\n').toStdString();
    ++(isLoaded ? s_totals.files : s_totals.refused);
}

TEST_P(LdfCorpus, ContentMatchesFieldByField)
{
    ASSERT_TRUE(loadMended(true)) << "refused though mended: " << m_rules.join(u',').toStdString();
    s_totals.mended += m_rules.isEmpty() ? 0 : 1;
    if (!m_hasGolden)
        return;
    s_totals.frames += static_cast<long>(m_golden.frames.size());
    for (const GoldenLdfFrame &frame : m_golden.frames)
        s_totals.signals += static_cast<long>(frame.signals.size());
    reportDifferences(QStringLiteral("content"), compareLdf(m_golden, m_mendedText, m_config));
}

// A file is read with signals alone, so each encoding is given to the first one in turn.
TEST_P(LdfCorpus, EveryEncodingMatches)
{
    const QString text = mendLdf(m_text, false).text;
    const bool hasSignal = !m_golden.frames.empty() && !m_golden.frames.front().signals.empty();
    for (const auto &[name, values] : m_golden.encodings) {
        if (!hasSignal)
            return;
        LdfGolden golden = m_golden;
        GoldenLdfSignal &signal = golden.frames.front().signals.front();
        signal.encoding = name;
        const QString statement = QStringLiteral("\n%1: %2;\n").arg(name, signal.name);
        const int end = ldfSection(text, QStringLiteral("Signal_representation")).second;
        QString changed = text;
        if (end > 0)
            changed.insert(end, statement);
        else
            changed += QStringLiteral("\nSignal_representation {%1}\n").arg(statement);
        if (!text.contains(QRegularExpression(QStringLiteral("\\b%1\\s*\\{").arg(name))))
            continue; // it was taken out, for there is nothing in it
        ASSERT_TRUE(loadText(changed)) << name.toStdString();
        reportDifferences(name, compareLdf(golden, changed, m_config));
        ++s_totals.encodings;
    }
}

QStringList checkPayload(LdfFrame frame, const GoldenLdfPayload &payload)
{
    const QString name = QStringLiteral("%1 [%2] ").arg(payload.frame, QString::fromLatin1(payload.data.toHex()));
    const auto *bytes = reinterpret_cast<const std::uint8_t *>(payload.data.constData());
    if (decodeFrame(bytes, static_cast<std::size_t>(payload.data.size()), frame) != 0)
        return {name + QStringLiteral("not decoded")};
    QStringList differences;
    QByteArray covered(payload.data.size(), '\0');
    for (const auto &[signalName, raw] : payload.raw) {
        const auto signal = frame.signals.find(signalName);
        if (signal == frame.signals.end() || signal->second.value != raw) {
            differences += name + signalName;
            continue;
        }
        for (int bit = signal->second.startBit; bit < signal->second.startBit + signal->second.size; ++bit)
            covered[bit / 8] = static_cast<char>(covered[bit / 8] | (1 << (bit % 8)));
    }
    QByteArray expected = payload.data;
    for (int at = 0; at < expected.size(); ++at)
        expected[at] = static_cast<char>(expected.at(at) & covered.at(at));
    if (encodeFrame(frame) != expected)
        differences += name + QStringLiteral("encoded to ") + QString::fromLatin1(encodeFrame(frame).toHex());
    return differences;
}

TEST_P(LdfCorpus, PayloadsDecodeAndEncodeAgain)
{
    ASSERT_TRUE(loadMended(false));
    QStringList differences;
    for (const GoldenLdfPayload &payload : m_golden.payloads) {
        const auto frame = m_config.frames.find(payload.frame);
        ASSERT_NE(frame, m_config.frames.end()) << payload.frame.toStdString();
        differences += checkPayload(frame->second, payload);
        ++s_totals.payloads;
    }
    reportDifferences(QStringLiteral("payloads"), differences);
}

INSTANTIATE_TEST_SUITE_P(All, LdfCorpus, testing::ValuesIn(files(QStringLiteral("ldf"))), testName);

TEST(LdfCorpusFolder, HoldsFiles)
{
    const std::vector<File> all = files(QStringLiteral("ldf"));
    ASSERT_FALSE(all.empty()) << "TZ_CORPUS names a folder without ldf files";
    if (all.front().name.isEmpty())
        GTEST_SKIP() << skipReason;
}

} // namespace
