// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/dbc/DbcParser.h"

#include "common/Log.h"
#include "database/dbc/DbcAttributeDefinitionReader.h"
#include "database/dbc/DbcAttributeValueReader.h"
#include "database/dbc/DbcCommentReader.h"
#include "database/dbc/DbcHeaderReader.h"
#include "database/dbc/DbcMessageReader.h"
#include "database/dbc/DbcSignalMultiplexReader.h"
#include "database/dbc/DbcSignalReader.h"
#include "database/dbc/DbcSignalValueTypeReader.h"
#include "database/dbc/DbcStatistics.h"
#include "database/dbc/DbcValueTableReader.h"
#include "database/text/LogText.h"
#include "database/text/TextFile.h"

namespace Common {

DbcParser::DbcParser(QObject *parent)
    : QObject(parent)
    , m_file(model())
{
}

DbcFile &DbcParser::model()
{
    static DbcFile file;
    return file;
}

bool DbcParser::parseFile(const QString &path, const QString &encoding)
{
    m_path.clear();
    m_file.clear();
    m_path = path;
    logInfo("Loading DBC file: {}, encoding: {}", path.toStdString(), LogText(encoding));
    auto text = TextFile::read(path, encoding);
    if (!text) {
        logError("Failed to open DBC file: {}", path.toStdString());
        return false;
    }
    if (!parseSections(TextFile::prepare(std::move(*text)))) {
        logError("Failed to parse DBC file");
        return false;
    }
    printStatistics();
    logInfo("Successfully parsed DBC file: {}", path.toStdString());
    return true;
}

// The order matters: each section refers to what those before it have entered.
bool DbcParser::parseSections(const QString &text)
{
    return parseVersion(text) && parseNewSymbols(text) && parseValueTables(text) && parseNodes(text) &&
           parseMessages(text) && parseComments(text) && parseAttributes(text) && parseValueDescriptions(text) &&
           parseSignalValueTypes(text) && parseSignalMultiplexValues(text);
}

bool DbcParser::parseVersion(const QString &text)
{
    DbcHeaderReader::readVersion(text, m_file);
    return true;
}

bool DbcParser::parseNewSymbols(const QString &text)
{
    return DbcHeaderReader::readNewSymbols(text, m_file);
}

bool DbcParser::parseValueTables(const QString &text)
{
    DbcValueTableReader::readValueTables(text, m_file);
    return true;
}

bool DbcParser::parseNodes(const QString &text)
{
    DbcHeaderReader::readNodes(text, m_file);
    return true;
}

bool DbcParser::parseMessages(const QString &text)
{
    const auto readSignals = [this](QStringView body, DbcMessage &message) { return parseSignals(body, message); };
    const bool hasMessages = DbcMessageReader(m_file, readSignals).read(text);
    m_texts = {};
    if (hasMessages)
        return true;
    logError("Message not found in dbc file: {}", m_path.toStdString());
    return false;
}

bool DbcParser::parseSignals(QStringView text, DbcMessage &message)
{
    DbcSignalReader::readSignals(text, message, m_file, m_texts);
    return true;
}

bool DbcParser::parseComments(const QString &text)
{
    DbcCommentReader::readComments(text, m_file);
    return true;
}

bool DbcParser::parseAttributes(const QString &text)
{
    parseAttributeDefinitions(text);
    parseAttributeDefaults(text);
    parseAttributeValues(text);
    return true;
}

bool DbcParser::parseAttributeDefinitions(const QString &text)
{
    DbcAttributeDefinitionReader::readDefinitions(text, m_file);
    return true;
}

bool DbcParser::parseAttributeDefaults(const QString &text)
{
    DbcAttributeDefinitionReader::readDefaults(text, m_file);
    return true;
}

bool DbcParser::parseAttributeValues(const QString &text)
{
    DbcAttributeValueReader(m_file).read(text);
    return true;
}

bool DbcParser::parseValueDescriptions(const QString &text)
{
    DbcValueTableReader::readValueDescriptions(text, m_file);
    return true;
}

bool DbcParser::parseSignalValueTypes(const QString &text)
{
    DbcSignalValueTypeReader::readValueTypes(text, m_file);
    return true;
}

bool DbcParser::parseSignalMultiplexValues(const QString &text)
{
    DbcSignalMultiplexReader::readMultiplexValues(text, m_file);
    return true;
}

void DbcParser::printStatistics()
{
    DbcStatistics::log(m_file, m_path);
}

} // namespace Common
