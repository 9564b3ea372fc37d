// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/database/corpus/DbcExpectation.h"

#include "tests/database/corpus/DbcSignalRules.h"
#include "tests/database/corpus/RuleBook.h"

#include <algorithm>

namespace tzcorpus {

namespace {

struct MessageCase
{
    const DbcText *file = nullptr;
    ExpectedMessage result;
    bool isLost = false;
};

struct MessageRule
{
    const char *name;
    const char *reason;
    bool (*apply)(MessageCase &message);
};

bool lose(MessageCase &message, bool applies)
{
    message.isLost = message.isLost || applies;
    return applies;
}

// Text of the frame format that the message states itself; empty without one.
QString ownFrameFormat(const MessageCase &message)
{
    return message.file->frameFormats().value(message.result.text->frameFormat.value_or(-1));
}

bool shortName(MessageCase &message)
{
    const bool differs = message.result.message.name != message.result.text->name;
    message.result.message.name = message.result.text->name;
    return differs;
}

bool extendedByFormat(MessageCase &message)
{
    const QString format = ownFrameFormat(message);
    if (format.isEmpty())
        return false;
    DbcMessage &expected = message.result.message;
    const bool isExtended = format.startsWith(QLatin1String("Extended"));
    const bool differs = isExtended != expected.isExtended;
    expected.isExtended = isExtended;
    expected.isRemote = format.contains(QLatin1String("Remote"));
    return differs;
}

bool fdBySize(MessageCase &message)
{
    DbcMessage &expected = message.result.message;
    if (!ownFrameFormat(message).isEmpty())
        return false;
    const bool isFd = expected.size > 8;
    const bool differs = isFd != expected.isFd;
    expected.isFd = isFd;
    return differs;
}

bool sizeCut(MessageCase &message)
{
    return message.result.text->size > 0xFF;
}

constexpr MessageRule messageRules[] = {
    {"message lost: blank", "a blank before the colon of its line hides a message",
     [](MessageCase &message) { return lose(message, message.result.text->hasBlankBeforeColon); }},
    {"message lost: name", "a message's name must be ASCII",
     [](MessageCase &message) { return lose(message, !message.result.text->hasAsciiName()); }},
    {"message lost: no frame", "messages that are no frames on a bus are held apart",
     [](MessageCase &message) { return lose(message, message.result.text->isSpecial()); }},
    {"message lost: size", "a message has at most 64 bytes, after the size was cut to 8 bits",
     [](MessageCase &message) { return lose(message, (message.result.text->size & 0xFFU) > 64); }},
    {"message lost: end", "a message whose line ends the file has no text",
     [](MessageCase &message) { return lose(message, message.result.text->isLastWord); }},
    {"size cut", "the size is kept in 8 bits", &sizeCut},
    {"short name", "a long name is an attribute here; the name is the one on the message's line", &shortName},
    {"extended by format", "a frame format without Extended at its start, such as J1939PG, clears the flag",
     &extendedByFormat},
    {"FD by size", "without a frame format of its own a message is CAN FD exactly if it is longer than 8 bytes",
     &fdBySize},
};

std::vector<const GoldenSignal *> goldenSignalsOf(const TextMessage &text, const GoldenMessage *golden)
{
    std::vector<const GoldenSignal *> result(text.signals.size(), nullptr);
    if (golden == nullptr)
        return result;
    std::vector<bool> isTaken(golden->signals.size(), false); // names may come twice
    for (std::size_t at = 0; at < text.signals.size(); ++at) {
        for (std::size_t candidate = 0; candidate < golden->signals.size() && result[at] == nullptr; ++candidate) {
            const GoldenSignal &signal = golden->signals[candidate];
            if (isTaken[candidate] || signal.shortName != text.signals[at].name ||
                signal.start != text.signals[at].startBit)
                continue;
            isTaken[candidate] = true;
            result[at] = &signal;
        }
    }
    return result;
}

// Every one of the results must have found its line, and count the descriptions that stand in the text.
void checkReading(const TextMessage &text, const GoldenMessage &golden, const std::vector<const GoldenSignal *> &found,
                  bool isOnlyOne)
{
    EXPECT_EQ(golden.signals.size(),
              static_cast<std::size_t>(
                  std::count_if(found.begin(), found.end(), [](const auto *signal) { return signal != nullptr; })))
        << text.name.toStdString() << ": not every signal of the results has a line";
    for (std::size_t at = 0; at < found.size() && isOnlyOne; ++at) {
        QStringList keys;
        for (const auto &[key, description] : text.signals[at].descriptions)
            keys += key;
        keys.removeDuplicates();
        if (found[at] != nullptr) {
            EXPECT_EQ(found[at]->choices, static_cast<std::size_t>(keys.size()))
                << text.name.toStdString() << " " << text.signals[at].name.toStdString();
            EXPECT_EQ(found[at]->isFloat, text.signals[at].valueType.value_or(0) > 0)
                << text.name.toStdString() << " " << text.signals[at].name.toStdString();
        }
    }
}

MessageCase messageCase(const DbcText &file, const TextMessage &text, const GoldenMessage *golden)
{
    MessageCase result;
    result.file = &file;
    result.result.golden = golden;
    result.result.text = &text;
    DbcMessage &message = result.result.message;
    message.id = text.isSpecial() ? text.number : text.id();
    message.name = golden != nullptr ? golden->name : text.name;
    message.size = static_cast<std::uint8_t>(golden != nullptr ? golden->length : text.size);
    message.isExtended = golden != nullptr ? golden->isExtended : text.isExtended();
    message.isFd = golden != nullptr ? golden->isFd : ownFrameFormat(result).contains(QLatin1String("FD"));
    message.transmitter = text.transmitter;
    message.comment = text.comment.trimmed();
    return result;
}

} // namespace

std::vector<ExpectedMessage> expectedMessages(const DbcGolden &golden, const DbcText &text, RuleBook::Counting counting)
{
    RuleBook::instance().setCounting(counting);
    RuleBook::instance().add("one id for two",
                             "the same number as standard and extended is one id: statements about it "
                             "reach the later message");
    std::vector<ExpectedMessage> result;
    std::size_t goldenAt = 0;
    for (const TextMessage &textMessage : text.messages()) {
        const GoldenMessage *goldenMessage = nullptr;
        const bool isNext = goldenAt < golden.messages.size() && golden.messages[goldenAt].id == textMessage.id() &&
                            golden.messages[goldenAt].isExtended == textMessage.isExtended() &&
                            golden.messages[goldenAt].shortName == textMessage.name;
        if (isNext)
            goldenMessage = &golden.messages[goldenAt++];
        EXPECT_TRUE(isNext || golden.messages.empty() || textMessage.isSpecial())
            << "the results do not tell of " << textMessage.name.toStdString();
        const bool isOnlyOne = 1 == std::count_if(text.messages().begin(), text.messages().end(),
                                                  [&](const auto &other) { return other.id() == textMessage.id(); });
        RuleBook::instance().count("one id for two", isOnlyOne ? 0 : 1);
        MessageCase message = messageCase(text, textMessage, goldenMessage);
        applyRules(messageRules, message);
        const auto goldenSignals = goldenSignalsOf(textMessage, goldenMessage);
        if (goldenMessage != nullptr)
            checkReading(textMessage, *goldenMessage, goldenSignals, isOnlyOne);
        for (std::size_t at = 0; at < textMessage.signals.size() && !message.isLost; ++at) {
            SignalCase signal = signalCase(textMessage.signals[at], goldenSignals[at]);
            applySignalRules(signal);
            if (!signal.isLost)
                message.result.message.signals.push_back(signal.expected);
        }
        if (!message.isLost)
            result.push_back(message.result);
    }
    RuleBook::instance().setCounting(RuleBook::Counting::on);
    EXPECT_EQ(goldenAt, golden.messages.size()) << "a message of the results is not in the file";
    return result;
}

} // namespace tzcorpus
