// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "common/ui/WorkbenchStyle.h"
#include "logging/blf/BLFParser.h"
#include "logging/ui/BLFConverterDialog.h"
#include "tests/logging/blf/BlfTestWriter.h"
#include "tests/support/LogCapture.h"
#include "tests/support/MessageBoxDriver.h"
#include "tests/support/TempWorkDir.h"

#include <QtTest>
#include <QtWidgets>

#include <algorithm>
#include <chrono>
#include <functional>
#include <thread>

namespace tztest {

/// The converter on the screen, in a working directory of its own.
struct BlfConverterFixture
{
    BlfConverterFixture()
    {
        static const bool isStyled = (Common::applyWorkbenchStyle(*qApp), true); // sizes are those of the program
        Q_UNUSED(isStyled)
        dialog.show();
        if (!QTest::qWaitForWindowExposed(&dialog))
            qFatal("the dialog does not appear");
    }

    template <typename Widget> Widget *get(const char *name) const
    {
        auto *widget = dialog.findChild<Widget *>(QLatin1String(name));
        if (!widget)
            qFatal("no %s", name);
        return widget;
    }
    QString inFolder(const char *name) const { return workDir.filePath(QString::fromUtf8(name)); }
    const MessageBoxDriver::Seen &lastBox() const { return driver.seen().back(); }
    QPushButton *button(const char *name) const { return get<QPushButton>(name); }
    void click(const char *name) const { QTest::mouseClick(button(name), Qt::LeftButton); }
    QLineEdit *input() const { return get<QLineEdit>("lineEditInput"); }
    QLineEdit *output() const { return get<QLineEdit>("lineEditOutput"); }
    QRadioButton *csv() const { return get<QRadioButton>("radioCsv"); }
    QRadioButton *asc() const { return get<QRadioButton>("radioAsc"); }
    QCheckBox *internalEvents() const { return get<QCheckBox>("checkInternalEvents"); }
    QCheckBox *additionalInfo() const { return get<QCheckBox>("checkAdditionalInfo"); }
    QPlainTextEdit *log() const { return get<QPlainTextEdit>("textLog"); }
    QStringList logLines() const { return log()->toPlainText().split(QLatin1Char('\n'), Qt::SkipEmptyParts); }
    QProgressBar *progress() const { return get<QProgressBar>("progressBar"); }

    /// A log of that many frames, then an error frame.
    QString makeLog(const QString &name, int frames) const
    {
        BlfTestWriter writer;
        for (int i = 0; i < frames; ++i)
            writer.add(CanMessageBody{.id = 0x123}, {.timeStamp = 1'000'000u * static_cast<std::uint64_t>(i)});
        writer.add(CanErrorFrameBody{});
        const QString path = workDir.filePath(name);
        if (!writer.save(path))
            qFatal("cannot write %s", qPrintable(path));
        return path;
    }
    /// Names a log and presses Start; returns when the conversion and its box are done.
    void convert(const QString &log, const QString &text)
    {
        input()->setText(log);
        output()->setText(text);
        click("buttonStart");
    }
    /// Makes each frame cost time, as if the log were long: a log of 3000 frames lasts half a second.
    void slowDown()
    {
        QObject::connect(parser(), qOverload<const QString &, int, bool>(&BLF::BLFParser::sigProcessReport), &dialog,
                         [] { std::this_thread::sleep_for(std::chrono::microseconds(100)); });
    }
    static constexpr int framesOfHalfASecond = 3000;
    /// Calls @p action once from within the conversion that is started next.
    void duringRun(std::function<void()> action)
    {
        QTimer::singleShot(0, &dialog, [this, action = std::move(action)] {
            if (!dialog.isProcessing())
                qFatal("no conversion is under way");
            action();
        });
    }
    BLF::BLFParser *parser() const { return dialog.findChild<BLF::BLFParser *>(); }

    static QString textOf(const QString &path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
    }

    TempWorkDir workDir;
    LogCapture lines;
    MessageBoxDriver driver;
    BLFConverterDialog dialog;
};

} // namespace tztest
