// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "logging/blf/BlfReader.h"
#include "tests/logging/blf/BlfTestWriter.h"
#include "tests/support/LogCapture.h"
#include "tests/support/TempWorkDir.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

namespace tztest {

/// What a test looks at in an object that the reader gave.
struct SeenObject
{
    std::uint32_t type = 0;
    std::uint64_t timeNs = 0;
    std::uint32_t id = 0;               ///< of types 1 and 86
    std::array<std::uint8_t, 8> data{}; ///< likewise
    std::string name{};                 ///< of type 72
    std::vector<std::uint8_t> value{};  ///< likewise
    bool operator==(const SeenObject &) const = default;
};
using SeenObjects = std::vector<SeenObject>;

inline void PrintTo(const SeenObject &object, std::ostream *out)
{
    *out << "type " << object.type << " at " << object.timeNs << " ns, id " << object.id << ' ' << object.name;
}

/// A frame that is known again by its number, and what is to be seen of it.
inline CanMessage2Body numberedFrame(std::uint32_t number)
{
    const auto byte = static_cast<std::uint8_t>(number);
    return {.dlc = 8, .id = number, .data = {byte, 1, 2, 3, 4, 5, 6, 7}, .frameLength = 268'000, .bitCount = 134};
}
inline SeenObject seenFrame(std::uint32_t number, std::uint32_t type = CanMessage2Body::type)
{
    return {.type = type, .timeNs = number * 1'000'000ull, .id = number, .data = numberedFrame(number).data};
}
inline void addFrame(BlfTestWriter &writer, std::uint32_t number)
{
    writer.add(numberedFrame(number), {.timeStamp = number * 1'000'000ull});
}
inline BlfBytes frameObject(std::uint32_t number)
{
    return blfObject(numberedFrame(number), {.timeStamp = number * 1'000'000ull});
}
/// Frames of the numbers from 0 on.
inline SeenObjects seenFrames(std::uint32_t count)
{
    SeenObjects objects;
    for (std::uint32_t number = 0; number < count; ++number)
        objects.push_back(seenFrame(number));
    return objects;
}

/// Reads logs from memory through a file, in a folder of their own.
class BlfLogFixture : public testing::Test
{
protected:
    /// All objects; fails the test for what is no log.
    SeenObjects objectsOf(const BlfBytes &file)
    {
        EXPECT_TRUE(saveBytes(path, file));
        return objectsOfFile();
    }
    SeenObjects objectsOf(BlfTestWriter &writer) { return objectsOf(writer.file()); }
    /// Those of the file that is there.
    SeenObjects objectsOfFile()
    {
        EXPECT_TRUE(reader.open(path));
        SeenObjects objects;
        for (BLF::ObjectHeader header; reader.peek(header);)
            objects.push_back(next(header));
        reader.close();
        return objects;
    }

    /// Those of a log of three frames, of which the second comes from @p second.
    SeenObjects objectsWithSecond(const BlfBytes &second)
    {
        log.clear();
        BlfTestWriter writer;
        addFrame(writer, 0);
        writer.addRaw(second);
        addFrame(writer, 2);
        return objectsOf(writer);
    }

    bool opens(const BlfBytes &file) { return saveBytes(path, file) && reader.open(path); }

    /// The error lines, without the name in front of them.
    std::vector<std::string> errors() const
    {
        std::vector<std::string> texts;
        for (const LogCapture::Line &line : log.lines()) {
            EXPECT_EQ(line.level, 3) << line.text;
            const std::string name = path.toStdString() + ": ";
            EXPECT_TRUE(line.text.starts_with(name)) << line.text;
            texts.push_back(line.text.substr(name.size()));
        }
        return texts;
    }

    TempWorkDir workDir;
    LogCapture log;
    const QString path = workDir.filePath(QStringLiteral("trace.blf"));
    BLF::BlfReader reader;
    const SeenObjects firstAndThird{seenFrame(0), seenFrame(2)}; ///< what is left where a second frame was lost

private:
    SeenObject next(const BLF::ObjectHeader &header)
    {
        SeenObject object{.type = header.type, .timeNs = header.timeNs};
        if (header.type == CanMessageBody::type || header.type == CanMessage2Body::type) {
            BLF::CanMessage message;
            EXPECT_TRUE(reader.read(message));
            object.id = message.id;
            object.data = message.data;
        } else if (header.type == SystemVariableBody::type) {
            BLF::SystemVariable variable;
            EXPECT_TRUE(reader.read(variable));
            object.name = variable.name;
            for (const std::byte byte : variable.value)
                object.value.push_back(std::to_integer<std::uint8_t>(byte));
        } else {
            reader.skip();
        }
        reader.release();
        return object;
    }
};

} // namespace tztest
