// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/ui/DbcTooltips.h"

#include "tests/database/dbc/DbcSamples.h"
#include "tests/database/ui/TooltipBody.h"

#include <QTextDocument>

#include <gtest/gtest.h>

using tztest::expectedBody;
using tztest::makeMessage;
using tztest::makeSignal;
using tztest::tooltipBody;

namespace {

DbcMessage makeLargeMessage(int signalCount, int attributeCount)
{
    DbcMessage message = makeMessage(1, "Status");
    for (int i = 1; i <= signalCount; ++i)
        message.signals.push_back(makeSignal(QString("S%1").arg(i)));
    for (int i = 1; i <= attributeCount; ++i)
        message.attributes.push_back({QString("A%1").arg(i), QString::number(i)});
    return message;
}

QStringList shownLines(const QString &html)
{
    QTextDocument document;
    document.setHtml(html);
    return document.toPlainText().split('\n');
}

} // namespace

TEST(DbcTooltips, AMessageWithoutAnything)
{
    DbcMessage message = makeMessage(1, "Status");
    message.transmitter.clear();
    EXPECT_EQ(tooltipBody(buildMessageTooltip(message)),
              expectedBody("Status", {"<span class='label'>Send Type:</span> Cyclic"}));
}

TEST(DbcTooltips, AMessageWithEveryLine)
{
    DbcMessage message = makeLargeMessage(2, 0);
    message.attributes = {{"GenMsgSendType", "6"}, {"Text", "hello"}};
    message.comment = QString(150, 'c');
    EXPECT_EQ(
        tooltipBody(buildMessageTooltip(message)),
        expectedBody("Status",
                     {"<span class='label'>Transmitter:</span> Ecu", "<span class='label'>Send Type:</span> On Change",
                      "<span class='label'>Signals:</span><div class='indent'>S1</div>\n"
                      "<div class='indent'>S2</div>",
                      ("<span class='label'>Comment:</span> <span class='comment'>" + std::string(150, 'c') +
                       "</span>") // not cut here
                          .c_str(),
                      "<span class='label'>Attributes:</span><div class='indent'>GenMsgSendType: 6</div>\n"
                      "<div class='indent'>Text: hello</div>"}));
}

TEST(DbcTooltips, TenSignalsAndFiveAttributesAreShown)
{
    const std::string full = tooltipBody(buildMessageTooltip(makeLargeMessage(10, 5)));
    EXPECT_NE(full.find("<div class='indent'>S10</div></div>"), std::string::npos);
    EXPECT_NE(full.find("<div class='indent'>A5: 5</div></div>"), std::string::npos);
    EXPECT_EQ(full.find("more"), std::string::npos);
    const std::string beyond = tooltipBody(buildMessageTooltip(makeLargeMessage(13, 6)));
    EXPECT_NE(beyond.find("<div class='indent'>S10</div>\n<div class='indent'>... and 3 more signals</div></div>"),
              std::string::npos);
    EXPECT_NE(beyond.find("<div class='indent'>A5: 5</div>\n<div class='indent'>... and 1 more attributes</div></div>"),
              std::string::npos);
    EXPECT_EQ(beyond.find("S11"), std::string::npos);
    EXPECT_EQ(beyond.find("A6"), std::string::npos);
}

TEST(DbcTooltips, APlainSignal)
{
    DbcSignal signal = makeSignal("Speed", 24);
    signal.maximum = 0.0; // neither limit
    EXPECT_EQ(
        tooltipBody(buildSignalTooltip(signal)),
        expectedBody("Speed", {"<span class='label'>Start Bit:</span> 24", "<span class='label'>Size:</span> 8 bits",
                               "<span class='label'>Format:</span> Little Endian, Unsigned"}));
}

TEST(DbcTooltips, ASignalWithEveryLine)
{
    DbcSignal signal = makeSignal("Speed", 7);
    signal.isBigEndian = true;
    signal.isSigned = true;
    signal.size = 16;
    signal.factor = 0.123456789;
    signal.offset = -40.0;
    signal.minimum = -40.0;
    signal.maximum = 1234567.0;
    signal.unit = "km/h";
    signal.isMultiplexed = true;
    signal.multiplexValue = 3;
    signal.receivers = QStringList{"A", "B"};
    signal.valueDescriptions = {{20, "twenty"}, {3, "three"}};
    signal.comment = "told";
    EXPECT_EQ(tooltipBody(buildSignalTooltip(signal)),
              expectedBody("Speed", {"<span class='label'>Start Bit:</span> 7 [Vector: 8]",
                                     "<span class='label'>Size:</span> 16 bits",
                                     "<span class='label'>Format:</span> Big Endian, Signed",
                                     "<span class='label'>Encoding:</span> Physical = Raw × 0.123457 + -40",
                                     "<span class='label'>Range:</span> -40 to 1.23457e+06 km/h",
                                     "<span class='label'>Multiplexing:</span> Multiplexed signal (Value: 3)",
                                     "<span class='label'>Receivers:</span><div class='indent'>A, B</div>",
                                     "<span class='label'>Value Descriptions:</span><div class='indent'>3 = three</div>"
                                     "<div class='indent'>20 = twenty</div>",
                                     "<span class='label'>Comment:</span> <span class='comment'>told</span>"}));
}

TEST(DbcTooltips, LinesThatDependOnOneValueEach)
{
    DbcSignal signal = makeSignal("S");
    EXPECT_NE(tooltipBody(buildSignalTooltip(signal)).find("Range:</span> 0 to 255</div>"), std::string::npos);
    EXPECT_EQ(tooltipBody(buildSignalTooltip(signal)).find("Encoding"), std::string::npos);
    signal.offset = 1.0;
    EXPECT_NE(tooltipBody(buildSignalTooltip(signal)).find("Physical = Raw × 1 + 1"), std::string::npos);
    signal.isMultiplexor = true;
    signal.isMultiplexed = true;
    EXPECT_NE(tooltipBody(buildSignalTooltip(signal)).find("Multiplexing:</span> Multiplexor signal</div>"),
              std::string::npos);
}

TEST(DbcTooltips, FiveReceiversAndTenDescriptionsAreShown)
{
    DbcSignal signal = makeSignal("S");
    for (std::uint32_t i = 1; i <= 10; ++i) {
        if (i <= 5)
            signal.receivers.append(QString("R%1").arg(i));
        signal.valueDescriptions[i * 10] = QString("D%1").arg(i);
    }
    const std::string full = tooltipBody(buildSignalTooltip(signal));
    EXPECT_NE(full.find("<div class='indent'>R1, R2, R3, R4, R5</div></div>"), std::string::npos);
    EXPECT_NE(full.find("<div class='indent'>100 = D10</div></div>"), std::string::npos);
    signal.receivers.append(QStringList{"R6", "R7"});
    signal.valueDescriptions[1] = "first";
    const std::string beyond = tooltipBody(buildSignalTooltip(signal));
    EXPECT_NE(beyond.find("<div class='indent'>R1, R2, R3, R4, R5</div><div class='indent'>... and 2 more "
                          "receivers</div></div>"),
              std::string::npos);
    EXPECT_NE(beyond.find("</span><div class='indent'>1 = first</div>"), std::string::npos);
    EXPECT_NE(beyond.find("<div class='indent'>90 = D9</div><div class='indent'>... and 1 more values</div></div>"),
              std::string::npos);
}

TEST(DbcTooltips, ASignalsCommentIsCutToAHundredCharacters)
{
    DbcSignal signal = makeSignal("S");
    signal.comment = QString(100, 'c');
    EXPECT_NE(tooltipBody(buildSignalTooltip(signal)).find('>' + std::string(100, 'c') + "</span>"), std::string::npos);
    signal.comment = QString(101, 'c');
    EXPECT_NE(tooltipBody(buildSignalTooltip(signal)).find('>' + std::string(100, 'c') + "...</span>"),
              std::string::npos);
    signal.comment = QString(99, 'c') + QString::fromUtf8("\xF0\x9F\x9A\x97") + 'x'; // no half of a pair is left
    EXPECT_NE(tooltipBody(buildSignalTooltip(signal)).find('>' + std::string(99, 'c') + "...</span>"),
              std::string::npos);
    signal.comment = QString(100, '<'); // cut before it is escaped
    EXPECT_NE(tooltipBody(buildSignalTooltip(signal)).find("&lt;</span>"), std::string::npos);
}

TEST(DbcTooltips, ACommentShowsInTheLinesInWhichItWasWritten)
{
    const QString comment = "Gears:\n  1 to 8\n\n  0: none";
    DbcMessage message = makeMessage(1, "Status");
    message.comment = comment;
    EXPECT_EQ(shownLines(buildMessageTooltip(message)), (QStringList{"Status", "Transmitter: Ecu", "Send Type: Cyclic",
                                                                     "Comment: Gears:", "  1 to 8", "", "  0: none"}));
    DbcSignal signal = makeSignal("Gear");
    signal.comment = comment;
    EXPECT_EQ(shownLines(buildSignalTooltip(signal)).mid(5),
              (QStringList{"Comment: Gears:", "  1 to 8", "", "  0: none"}));
}

TEST(DbcTooltips, WhatAFileSaysIsPlainText)
{
    DbcMessage message = makeMessage(1, "<i>M", {makeSignal("<b>S")});
    message.transmitter = "<a href='x'>";
    message.comment = "a < b & \"c\" %1 %2";
    message.attributes = {{"<u>", "%1 </body>"}};
    const std::string body = tooltipBody(buildMessageTooltip(message));
    EXPECT_NE(body.find("<b>&lt;i&gt;M</b>"), std::string::npos);
    EXPECT_NE(body.find("&lt;b&gt;S"), std::string::npos);
    EXPECT_NE(body.find("&lt;a href='x'&gt;"), std::string::npos);
    EXPECT_NE(body.find("a &lt; b &amp; &quot;c&quot; %1 %2"), std::string::npos);
    EXPECT_NE(body.find("&lt;u&gt;: %1 &lt;/body&gt;"), std::string::npos);

    DbcSignal signal = makeSignal("S");
    signal.unit = "<%2>";
    signal.receivers = QStringList("<r>");
    signal.valueDescriptions = {{0, "<d> %1"}};
    signal.comment = "<c>";
    const std::string signalBody = tooltipBody(buildSignalTooltip(signal));
    for (const char *part : {"255 &lt;%2&gt;", "&lt;r&gt;", "0 = &lt;d&gt; %1", "&lt;c&gt;"})
        EXPECT_NE(signalBody.find(part), std::string::npos) << part;
}
