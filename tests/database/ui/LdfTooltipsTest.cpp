// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/ui/LdfTooltips.h"

#include "database/ldf/LdfFrame.h"
#include "database/ldf/LdfSignal.h"
#include "tests/database/ui/TooltipBody.h"

#include <gtest/gtest.h>

#include <map>
#include <memory>

using tztest::expectedBody;
using tztest::tooltipBody;

namespace {

LdfFrame makeFrame()
{
    LdfFrame frame;
    frame.name = "Frame";
    frame.publisher = "Master";
    return frame;
}

LdfSignal makeSignal()
{
    LdfSignal signal;
    signal.name = "Signal";
    signal.publisher = "Slave";
    return signal;
}

std::shared_ptr<const LdfEncoding> makeEncoding(const std::map<std::uint32_t, LdfPhysicalRange> &ranges,
                                                const std::map<std::uint32_t, QString> &texts)
{
    return std::make_shared<const LdfEncoding>(LdfEncoding{QString(), ranges, texts});
}

bool contains(const std::string &text, const char *part)
{
    return text.find(part) != std::string::npos;
}

} // namespace

TEST(LdfTooltips, AFrameWithoutAnything)
{
    EXPECT_EQ(tooltipBody(buildFrameTooltip(makeFrame())),
              expectedBody("Frame", {"<span class='label'>Type:</span> Unconditional",
                                     "<span class='label'>Publisher:</span> Master"}));
}

TEST(LdfTooltips, AFrameWithEveryLine)
{
    LdfFrame frame = makeFrame();
    frame.signals = {{"B", makeSignal()}, {"A", makeSignal()}};
    frame.minPeriod = 10.0;
    frame.maxPeriod = 20.5;
    frame.comment = "told";
    EXPECT_EQ(tooltipBody(buildFrameTooltip(frame)),
              expectedBody("Frame", {"<span class='label'>Type:</span> Unconditional",
                                     "<span class='label'>Publisher:</span> Master",
                                     "<span class='label'>Signals:</span><div class='indent'>A</div>\n"
                                     "<div class='indent'>B</div>",
                                     "<span class='label'>Period:</span> 10 - 20.5 ms",
                                     "<span class='label'>Comment:</span> <span class='comment'>told</span>"}));
}

TEST(LdfTooltips, TypesOfFrames)
{
    const char *const texts[] = {"Unconditional", "Event Triggered", "Sporadic", "Diagnostic", "Unknown"};
    for (std::uint32_t type = 0; type < 5; ++type) {
        LdfFrame frame = makeFrame();
        frame.type = type;
        EXPECT_TRUE(contains(tooltipBody(buildFrameTooltip(frame)), texts[type]));
    }
}

TEST(LdfTooltips, OnePeriod)
{
    LdfFrame frame = makeFrame();
    frame.minPeriod = 10.0;
    frame.maxPeriod = 10.0;
    EXPECT_TRUE(contains(tooltipBody(buildFrameTooltip(frame)), "Period:</span> 10 ms</div>"));
}

TEST(LdfTooltips, TenSignalsAreShown)
{
    LdfFrame frame = makeFrame();
    for (int i = 10; i < 20; ++i)
        frame.signals.emplace(QString("S%1").arg(i), makeSignal());
    EXPECT_TRUE(contains(tooltipBody(buildFrameTooltip(frame)), "<div class='indent'>S19</div></div>"));
    frame.signals.emplace("S20", makeSignal());
    EXPECT_TRUE(contains(tooltipBody(buildFrameTooltip(frame)),
                         "<div class='indent'>S19</div>\n<div class='indent'>... and 1 more signals</div></div>"));
}

TEST(LdfTooltips, ASignalWithoutAnything)
{
    EXPECT_EQ(tooltipBody(buildSignalTooltip(makeSignal())),
              expectedBody("Signal", {"<span class='label'>Publisher:</span> Slave"}));
}

TEST(LdfTooltips, ASignalWithEveryLine)
{
    LdfSignal signal = makeSignal();
    signal.subscribers = QStringList{"A", "B"};
    signal.encoding = makeEncoding({{100, {0, 100, 0.5, -40.0, "degC"}}}, {{255, "invalid"}, {254, "init"}});
    signal.comment = QString(101, 'c');
    EXPECT_EQ(
        tooltipBody(buildSignalTooltip(signal)),
        expectedBody("Signal",
                     {"<span class='label'>Publisher:</span> Slave",
                      "<span class='label'>Subscribers:</span><div class='indent'>A</div>\n"
                      "<div class='indent'>B</div>",
                      "<span class='label'>Encoding Values:</span>"
                      "<div class='indent'>Raw: 0-100, Physical: -40-10 degC (factor: 0.5, offset: -40)</div>\n"
                      "<div class='indent'>Value: 254 - init</div>\n<div class='indent'>Value: 255 - "
                      "invalid</div>",
                      ("<span class='label'>Comment:</span> <span class='comment'>" + std::string(100, 'c') + "</span>")
                          .c_str()}));
}

TEST(LdfTooltips, LimitsOfTheLists)
{
    LdfSignal signal = makeSignal();
    std::map<std::uint32_t, LdfPhysicalRange> ranges;
    std::map<std::uint32_t, QString> texts;
    for (std::uint32_t i = 1; i <= 12; ++i) {
        signal.subscribers.append(QString("N%1").arg(i));
        texts[i] = QString("L%1").arg(i);
        if (i <= 5)
            ranges[i] = {i, i, 1.0, 0.0, ""};
    }
    signal.encoding = makeEncoding(ranges, texts);
    const std::string body = tooltipBody(buildSignalTooltip(signal));
    EXPECT_TRUE(contains(body, "N5</div>\n<div class='indent'>... and 7 more subscribers</div></div>"));
    EXPECT_TRUE(contains(body, "(factor: 1, offset: 0)</div>\n<div class='indent'>... and 2 more physical value "
                               "ranges</div>\n<div class='indent'>Value: 1 - L1</div>"));
    EXPECT_TRUE(contains(body, "Value: 10 - L10</div>\n<div class='indent'>... and 2 more logical values</div></div>"));
    EXPECT_FALSE(contains(body, "Raw: 4-4"));
}

TEST(LdfTooltips, WhatAFileSaysIsPlainText)
{
    LdfSignal signal = makeSignal();
    signal.subscribers = QStringList("<s>");
    signal.encoding = makeEncoding({{1, {0, 1, 1.0, 0.0, "<%1>"}}}, {{1, "%1 <l>"}});
    signal.comment = "<c> & %1";
    const std::string body = tooltipBody(buildSignalTooltip(signal));
    for (const char *part :
         {"&lt;s&gt;", "0-1 &lt;%1&gt; (factor: 1,", "Value: 1 - %1 &lt;l&gt;", "&lt;c&gt; &amp; %1"})
        EXPECT_TRUE(contains(body, part)) << part << '\n' << body;
}
