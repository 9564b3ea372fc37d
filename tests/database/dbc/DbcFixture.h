// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "common/Log.h"
#include "database/dbc/DbcParser.h"
#include "tests/support/LogCapture.h"
#include "tests/support/TempWorkDir.h"

#include <gtest/gtest.h>

#include <QFile>

/// Parses texts as files. Log lines are those of the last parse.
class DbcFixture : public testing::Test
{
protected:
    static constexpr int debug = Common::LogLevel::debug;
    static constexpr int info = Common::LogLevel::info;
    static constexpr int warning = Common::LogLevel::warning;
    static constexpr int error = Common::LogLevel::error;

    /// What every file needs: its head, one node and one message with one signal, number 100.
    static QByteArray head() { return "VERSION \"1\"\n\nNS_ :\n\tCM_\n\nBS_:\n\nBU_: Ecu\n\n"; }
    static QByteArray message() { return "BO_ 100 Msg: 8 Ecu\n SG_ Sig : 0|8@1+ (1,0) [0|255] \"V\" Ecu\n\n"; }

    /// Parses the bytes as they are.
    bool parseBytes(const QByteArray &bytes, const char *encoding = "UTF-8")
    {
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
            throw std::runtime_error("the test's file could not be written");
        file.close();
        log.clear();
        return parser.parseFile(path, QString::fromLatin1(encoding));
    }
    /// Parses head() and the statements.
    bool parse(const QByteArray &statements) { return parseBytes(head() + statements); }
    /// Parses head(), message() and the statements behind them.
    bool parseBehindMessage(const QByteArray &statements) { return parse(message() + statements); }
    /// Parses a file whose one message, 100 with 8 bytes, has these lines.
    bool parseSignals(const QByteArray &lines) { return parse("BO_ 100 Msg: 8 Ecu\n" + lines + "\n"); }

    const DbcSignal &signal() const { return model.messages.at(0).signals.at(0); }
    std::size_t countWarningsAndErrors() const
    {
        return log.countContaining(warning, "") + log.countContaining(error, "");
    }

    const QString path = QStringLiteral("file.dbc");
    tztest::TempWorkDir dir;
    tztest::LogCapture log;
    Common::DbcParser parser;
    const DbcFile &model = Common::DbcParser::model();
};
