// SPDX-License-Identifier: GPL-3.0-or-later
#include "bench/DatabaseFiles.h"

#include "common/Log.h"

#include <fmt/format.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <iterator>
#include <stdexcept>
#include <string>

namespace {

constexpr int signalsPerMessage = 8;
constexpr int frameIds = 60; // of LIN, without the diagnostic and reserved ones

void write(const QString &path, const std::string &text)
{
    QFile file(path);
    const auto size = static_cast<qint64>(text.size());
    if (!file.open(QIODevice::WriteOnly) || file.write(text.data(), size) != size)
        throw std::runtime_error("cannot write " + path.toStdString());
}

// --- DBC ---

constexpr const char *dbcHead = "VERSION \"1.0\"\n\nNS_ :\n\tCM_\n\tBA_DEF_\n\tBA_\n\tVAL_\n\nBS_:\n\n"
                                "BU_: Gateway Engine Brake Display\n\n";
constexpr const char *dbcDefinitions = "BA_DEF_ BO_ \"GenMsgCycleTime\" INT 0 65535;\n"
                                       "BA_DEF_ BO_ \"GenMsgSendType\" ENUM \"Cyclic\",\"Event\",\"None\";\n"
                                       "BA_DEF_ SG_ \"GenSigStartValue\" FLOAT 0 100000;\n"
                                       "BA_DEF_DEF_ \"GenMsgCycleTime\" 0;\n"
                                       "BA_DEF_DEF_ \"GenMsgSendType\" \"Cyclic\";\n"
                                       "BA_DEF_DEF_ \"GenSigStartValue\" 0;\n";

// What one message adds to the sections of the file.
struct DbcSections
{
    std::string messages;
    std::string comments;
    std::string attributes;
    std::string descriptions;

    std::size_t size() const { return messages.size() + comments.size() + attributes.size() + descriptions.size(); }
};

void addSignal(DbcSections &sections, unsigned id, unsigned message, int signal)
{
    const bool isBigEndian = message % 2 != 0;
    fmt::format_to(std::back_inserter(sections.messages),
                   " SG_ Wheel_{}_Speed_{} : {}|8@{}{} (0.125,-40) [-40|{}] \"km/h\" Engine,Display\n", message, signal,
                   signal * 8 + (isBigEndian ? 7 : 0), isBigEndian ? 0 : 1, isBigEndian ? '-' : '+',
                   isBigEndian ? "-24.125" : "-8.125");
    fmt::format_to(std::back_inserter(sections.attributes), "BA_ \"GenSigStartValue\" SG_ {} Wheel_{}_Speed_{} {};\n",
                   id, message, signal, signal);
    if (signal == 0) {
        fmt::format_to(std::back_inserter(sections.comments),
                       "CM_ SG_ {} Wheel_{}_Speed_{} \"Speed of a wheel, averaged\nover two turns\";\n", id, message,
                       signal);
        fmt::format_to(std::back_inserter(sections.descriptions),
                       "VAL_ {} Wheel_{}_Speed_{} 255 \"Invalid\" 254 \"Sensor fault\" 0 \"Standstill\" ;\n", id,
                       message, signal);
    }
}

void addMessage(DbcSections &sections, unsigned message)
{
    const unsigned id = 0x8000'0000U + 0x100U + message;
    fmt::format_to(std::back_inserter(sections.messages), "BO_ {} Wheels_{}: 8 Brake\n", id, message);
    for (int signal = 0; signal < signalsPerMessage; ++signal)
        addSignal(sections, id, message, signal);
    sections.messages += '\n';
    fmt::format_to(std::back_inserter(sections.comments), "CM_ BO_ {} \"Speeds as the brake sees them\";\n", id);
    fmt::format_to(std::back_inserter(sections.attributes), "BA_ \"GenMsgCycleTime\" BO_ {} 20;\n", id);
}

// --- LDF ---

// The four frames of a slave: what is said of each in every section.
struct LdfSections
{
    std::string slaves;
    std::string signalList;
    std::string frames;
    std::string attributes;
    std::string schedule;
    std::string encodings;
    std::string representations;
};

void addFrame(LdfSections &sections, int slave, int frame)
{
    const int number = slave * 4 + frame;
    fmt::format_to(std::back_inserter(sections.signalList),
                   "  Position_{0}: 10, 0, Slave_{1}, Master1;\n  State_{0}: 3, 0, Slave_{1}, Master1;\n", number,
                   slave);
    fmt::format_to(std::back_inserter(sections.frames),
                   "  Frame_{0}: {1}, Slave_{2}, 4 {{\n    Position_{0}, 0;\n    State_{0}, 10;{3}\n  }}\n", number,
                   number % frameIds, slave, frame == 0 ? fmt::format("\n    Error_{}, 31;", slave) : "");
    fmt::format_to(std::back_inserter(sections.schedule), "    Frame_{} delay 10 ms;\n", number);
    fmt::format_to(std::back_inserter(sections.representations), "  Encoding_{}: Position_{};\n", slave, number);
}

void addSlave(LdfSections &sections, int slave)
{
    fmt::format_to(std::back_inserter(sections.slaves), "{}Slave_{}", slave == 0 ? "" : ", ", slave);
    fmt::format_to(std::back_inserter(sections.signalList), "  Error_{0}: 1, 0, Slave_{0}, Master1;\n", slave);
    fmt::format_to(std::back_inserter(sections.attributes),
                   "  Slave_{0} {{\n    LIN_protocol = \"2.1\";\n    configured_NAD = {1};\n    product_id = 1, 2, 3;\n"
                   "    response_error = Error_{0};\n    configurable_frames {{\n",
                   slave, slave + 1);
    fmt::format_to(std::back_inserter(sections.encodings),
                   "  Encoding_{} {{\n    logical_value, 0, \"off\";\n    logical_value, 1, \"on\";\n"
                   "    physical_value, 2, 1023, 0.5, -40, \"deg\";\n  }}\n",
                   slave);
    for (int frame = 0; frame < 4; ++frame) {
        addFrame(sections, slave, frame);
        fmt::format_to(std::back_inserter(sections.attributes), "      Frame_{};\n", slave * 4 + frame);
    }
    sections.attributes += "    }\n  }\n";
}

} // namespace

void tzbench_files::writeDbcFile(const QString &path, std::size_t bytes)
{
    DbcSections sections;
    for (unsigned message = 0; sections.size() < bytes; ++message)
        addMessage(sections, message);
    write(path, dbcHead + sections.messages + sections.comments + dbcDefinitions + sections.attributes +
                    sections.descriptions);
}

void tzbench_files::writeLdfFile(const QString &path, int slaves)
{
    LdfSections sections;
    for (int slave = 0; slave < slaves; ++slave)
        addSlave(sections, slave);
    write(path,
          fmt::format("LIN_description_file;\nLIN_protocol_version = \"2.1\";\nLIN_language_version = \"2.1\";\n"
                      "LIN_speed = 19.2 kbps;\n\nNodes {{\n  Master: Master1, 5 ms, 0.1 ms;\n  Slaves: {};\n}}\n\n"
                      "Signals {{\n{}}}\n\nFrames {{\n{}}}\n\nNode_attributes {{\n{}}}\n\n"
                      "Schedule_tables {{\n  Normal {{\n{}  }}\n}}\n\nSignal_encoding_types {{\n{}}}\n\n"
                      "Signal_representation {{\n{}}}\n",
                      sections.slaves, sections.signalList, sections.frames, sections.attributes, sections.schedule,
                      sections.encodings, sections.representations));
}

QStringList tzbench_files::corpusFiles(const QString &suffix)
{
    QStringList paths;
    const QString root = qEnvironmentVariable("TZ_CORPUS");
    if (root.isEmpty())
        return paths;
    const QDir folder(root + QLatin1Char('/') + suffix);
    for (const QFileInfo &file : folder.entryInfoList({QStringLiteral("*.") + suffix}, QDir::Files, QDir::Size))
        paths += file.filePath();
    return paths;
}

void tzbench_files::startLog(const QString &folder)
{
    Common::logInit((folder + QStringLiteral("/bench.log")).toStdString(), Common::LogLevel::info, 10, 2);
    Common::logStart(false);
}
