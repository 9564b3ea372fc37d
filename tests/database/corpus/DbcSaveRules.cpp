// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/database/corpus/DbcSaveRules.h"

#include "tests/database/corpus/DbcSignalRules.h"
#include "tests/database/corpus/RuleBook.h"

#include <QSet>

#include <algorithm>
#include <functional>
#include <limits>

namespace tzcorpus {

namespace {

struct SaveRule
{
    const char *name;
    const char *reason;
    int (*apply)(DbcFile &file); ///< returns how many records it changed
};

int forMessages(DbcFile &file, const std::function<bool(DbcMessage &)> &change)
{
    return static_cast<int>(std::count_if(file.messages.begin(), file.messages.end(), change) +
                            std::count_if(file.specialMessages.begin(), file.specialMessages.end(), change));
}

int forSignals(DbcFile &file, const std::function<bool(DbcSignal &)> &change)
{
    int changed = 0;
    forMessages(file, [&](DbcMessage &message) {
        changed += static_cast<int>(std::count_if(message.signals.begin(), message.signals.end(), change));
        return false;
    });
    return changed;
}

const DbcAttributeDefinition *frameFormatDefinition(const DbcFile &file)
{
    for (const DbcAttributeDefinition &definition : file.attributeDefinitions) {
        if (definition.name == QLatin1String("VFrameFormat") && definition.objectType == QLatin1String("BO_"))
            return &definition;
    }
    return nullptr;
}

// Whether the message has a frame format of its own, which sets its flags whatever its number says.
bool hasFrameFormat(const DbcFile &file, const DbcMessage &message)
{
    const DbcAttributeDefinition *definition = frameFormatDefinition(file);
    return definition != nullptr &&
           std::any_of(message.attributes.begin(), message.attributes.end(), [&](const DbcAttributeValue &attribute) {
               bool isNumber = false;
               const int value = attribute.value.toInt(&isNumber);
               return attribute.name == QLatin1String("VFrameFormat") && isNumber && value >= 0 &&
                      value < definition->enumValues.size();
           });
}

int extendedBit(DbcFile &file)
{
    int changed = 0;
    for (DbcMessage &message : file.messages) {
        if (message.isExtended && !hasFrameFormat(file, message)) {
            message.isExtended = false;
            ++changed;
        }
    }
    return changed;
}

int nodeComments(DbcFile &file)
{
    return static_cast<int>(std::count_if(file.nodes.begin(), file.nodes.end(), [](DbcNode &node) {
        const bool hadOne = !node.comment.isEmpty();
        node.comment.clear();
        return hadOne;
    }));
}

int specialComments(DbcFile &file)
{
    int changed = 0;
    for (DbcMessage &message : file.specialMessages) {
        changed += message.comment.isEmpty() ? 0 : 1;
        message.comment.clear();
        for (DbcSignal &signal : message.signals) {
            changed += signal.comment.isEmpty() ? 0 : 1;
            signal.comment.clear();
        }
    }
    return changed;
}

bool loseAttributes(std::vector<DbcAttributeValue> &attributes, bool (*isLost)(const QString &value))
{
    const auto lost = std::remove_if(attributes.begin(), attributes.end(),
                                     [=](const DbcAttributeValue &attribute) { return isLost(attribute.value); });
    const bool any = lost != attributes.end();
    attributes.erase(lost, attributes.end());
    return any;
}

// Without its quotes an empty value leaves nothing to read.
int emptyAttributes(DbcFile &file)
{
    const auto isEmpty = [](const QString &value) { return value.isEmpty(); };
    return forMessages(file, [=](DbcMessage &message) { return loseAttributes(message.attributes, isEmpty); }) +
           forSignals(file, [=](DbcSignal &signal) { return loseAttributes(signal.attributes, isEmpty); });
}

// Without its quotes the first word of a message's text reads as the name of an object.
int firstWords(DbcFile &file)
{
    return forMessages(file, [](DbcMessage &message) {
        bool changed = false;
        for (DbcAttributeValue &attribute : message.attributes) {
            const int blank = attribute.value.indexOf(u' ');
            if (blank <= 0)
                continue;
            attribute.value = attribute.value.mid(blank).trimmed();
            changed = true;
        }
        return changed;
    });
}

int escapedQuotes(DbcFile &file)
{
    int changed = 0;
    for (DbcAttributeValue &attribute : file.attributes) {
        changed += attribute.value.contains(QLatin1String("\\\"")) ? 1 : 0;
        attribute.value.replace(QLatin1String("\\\""), QLatin1String("\""));
    }
    return changed;
}

QString written(double value)
{
    return QString::number(value, 'g', 6);
}

bool roundNumbers(DbcSignal &signal)
{
    bool changed = false;
    for (double *number : {&signal.factor, &signal.offset, &signal.minimum, &signal.maximum}) {
        const double rounded = written(*number).toDouble();
        changed = changed || rounded != *number;
        *number = rounded;
    }
    return changed;
}

int roundedNumbers(DbcFile &file)
{
    return forSignals(file, &roundNumbers);
}

int floatByWrittenRange(DbcFile &file)
{
    return forSignals(file, [](DbcSignal &signal) {
        const std::uint8_t kind = floatKindByRange(signal, {written(signal.minimum), written(signal.maximum)});
        const bool changed = kind != signal.valueType;
        signal.valueType = kind;
        return changed;
    });
}

// The statement is written again, so the limits are exact again.
int declaredFloatLimits(DbcFile &file)
{
    int changed = 0;
    for (const DbcSignalValueType &type : file.signalValueTypes) {
        DbcSignal *signal = file.findSignal(type.messageId, type.signalName);
        if (signal == nullptr || signal->size != (type.type == 1 ? 32 : 64) || type.type == 0)
            continue;
        signal->maximum =
            type.type == 1 ? double(std::numeric_limits<float>::max()) : std::numeric_limits<double>::max();
        signal->minimum = -signal->maximum;
        ++changed;
    }
    return changed;
}

int receivers(DbcFile &file)
{
    return forSignals(file, [](DbcSignal &signal) {
        const bool hadNone = signal.receivers.isEmpty();
        if (hadNone)
            signal.receivers = QStringList{QStringLiteral("Vector__XXX")};
        return hadNone;
    });
}

int defaultForms(DbcFile &file)
{
    return static_cast<int>(
        std::count_if(file.attributeDefinitions.begin(), file.attributeDefinitions.end(), [](auto &definition) {
            if (definition.defaultValue.isNull())
                return false;
            const QString before = definition.defaultValue.toString();
            QString after = before;
            if (definition.valueType == QLatin1String("FLOAT"))
                after = QString::number(before.toDouble(), 'f', 6);
            else if (definition.valueType == QLatin1String("INT") || definition.valueType == QLatin1String("HEX"))
                after = QString::number(before.toLongLong());
            definition.defaultValue = after;
            return before != after;
        }));
}

int valueTables(DbcFile &file)
{
    QSet<QString> names;
    const auto isLost = [&](const DbcValueTable &table) {
        const bool isKnown = names.contains(table.name);
        names.insert(table.name);
        return isKnown || table.entries.empty();
    };
    std::vector<DbcValueTable> kept;
    std::copy_if(file.valueTables.begin(), file.valueTables.end(), std::back_inserter(kept),
                 [&](const DbcValueTable &table) { return !isLost(table); });
    const auto lost = file.valueTables.size() - kept.size();
    file.valueTables = std::move(kept);
    return static_cast<int>(lost);
}

constexpr SaveRule saveRules[] = {
    {"save: extended bit", "bit 31 is not written: without a frame format a message comes back as standard",
     &extendedBit},
    {"save: node comments", "comments of nodes are read, not written", &nodeComments},
    {"save: special comments", "comments of messages that are no frames are not written", &specialComments},
    {"save: first word", "a text attribute of a message loses its quotes, and then its first word", &firstWords},
    {"save: empty attribute", "an empty text attribute of a message or signal loses its quotes, and itself",
     &emptyAttributes},
    {"save: escaped quotes", "an escaped quote in an attribute of the file becomes a plain one", &escapedQuotes},
    {"save: six digits", "numbers are written with six significant digits", &roundedNumbers},
    {"save: float by range", "the written range gains or loses its E", &floatByWrittenRange},
    {"save: declared float", "a declared float takes the exact limits of its type again", &declaredFloatLimits},
    {"save: receivers", "a signal without receivers is written with the pseudo node", &receivers},
    {"save: default forms", "defaults are written as integers and with six decimals", &defaultForms},
    {"save: value tables", "empty tables are not written; of tables of one name the first is read", &valueTables},
};

} // namespace

DbcFile expectedAfterSave(DbcFile file)
{
    applyRules(saveRules, file);
    return file;
}

} // namespace tzcorpus
