// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "common/UnifiedTimeManager.h"
#include "common/ui/WorkbenchStyle.h"
#include "logging/ui/CANLoggerWindow.h"
#include "logging/ui/LINLoggerWindow.h"
#include "tests/support/LogCapture.h"
#include "tests/support/MessageBoxDriver.h"
#include "tests/support/TempWorkDir.h"
#include "tests/views/ViewFrames.h"

#include <QtTest>
#include <QtWidgets>

#include <memory>
#include <vector>

namespace tztest {

/// A recorder window on the screen, in a working directory of its own.
struct LoggerWindowFixture
{
    explicit LoggerWindowFixture(bool lin)
        : isLin(lin)
    {
        static const bool isStyled = (Common::applyWorkbenchStyle(*qApp), true); // sizes are those of the program
        Q_UNUSED(isStyled)
        if (isLin)
            window = std::make_unique<Common::LINLoggerWindow>(&unifiedTime);
        else
            window = std::make_unique<Common::CANLoggerWindow>(&unifiedTime);
        window->show();
        if (!QTest::qWaitForWindowExposed(window.get()))
            qFatal("the window does not appear");
    }

    template <typename Widget> Widget *get(const char *name) const
    {
        auto *widget = window->findChild<Widget *>(QLatin1String(name));
        if (!widget)
            qFatal("no %s", name);
        return widget;
    }
    QPushButton *button(const char *name) const { return get<QPushButton>(name); }
    void click(const char *name) const { QTest::mouseClick(button(name), Qt::LeftButton); }
    QLineEdit *path() const { return get<QLineEdit>("lineEditPath"); }
    QComboBox *format() const { return get<QComboBox>("comboFormat"); }
    QSpinBox *sizeLimit() const { return get<QSpinBox>("spinSizeLimit"); }
    QString labelText(const char *name) const { return get<QLabel>(name)->text(); }
    const char *family() const { return isLin ? "LIN" : "CAN"; }

    void start(const QString &file)
    {
        path()->setText(file);
        click("buttonStartStop");
    }
    /// A frame of device 0, channel 0. @param ticks 0.1 microsecond
    TzVciMessage frame(std::uint8_t id, std::uint64_t ticks = 0) const
    {
        TzVciMessage message = at(ticks, isLin ? linData({0xAB}, linMessage(id)) : canData({0xAB}, canMessage(id)));
        const auto low = static_cast<std::uint32_t>(ticks);
        const auto high = static_cast<std::uint32_t>(ticks >> 32);
        if (isLin) {
            message.frame.lin.timestampLow = low;
            message.frame.lin.timestampHigh = high;
        } else {
            message.frame.can.timestampLow = low;
            message.frame.can.timestampHigh = high;
        }
        return message;
    }
    bool add(const std::vector<TzVciMessage> &frames) { return window->addMessages(frames); }

    static QStringList linesOf(const QString &file)
    {
        QFile input(file);
        if (!input.open(QIODevice::ReadOnly))
            return {};
        return QString::fromLatin1(input.readAll()).split(QLatin1Char('\n'));
    }
    /// The lines of an ASC file's records; empty when it is not whole.
    static QStringList recordsOf(const QString &file)
    {
        const QStringList lines = linesOf(file);
        const int begin = lines.indexOf(QStringLiteral("Begin TriggerBlock"));
        const int end = lines.indexOf(QStringLiteral("End TriggerBlock"));
        if (begin < 0 || end != lines.size() - 2 || !lines.last().isEmpty())
            return {};
        return lines.mid(begin + 1, end - begin - 1);
    }

    const bool isLin;
    TempWorkDir workDir;
    LogCapture log;
    MessageBoxDriver driver;
    Common::UnifiedTimeManager unifiedTime;
    std::unique_ptr<Common::LoggerWindow> window;
};

} // namespace tztest
