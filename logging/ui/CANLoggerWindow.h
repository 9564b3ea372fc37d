// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "logging/CANLogger.h"
#include "logging/ui/LoggerWindow.h"

namespace Common {

/// Sets up the recording of a CAN view and owns its recorder.
class CANLoggerWindow final : public LoggerWindow
{
    Q_OBJECT
public:
    /// @param unifiedTime  gives the times in the files; may be null, else it must outlive the window
    explicit CANLoggerWindow(UnifiedTimeManager *unifiedTime, QWidget *parent = nullptr);
    ~CANLoggerWindow() override;

private:
    FrameLogger &logger() override { return m_logger; }
    void configureLogger(const Settings &settings) override;
    QString previewText(int format) const override;
    void resetOptions() override;

    static const Texts texts;

    CANLogger m_logger;
    QCheckBox *m_errorFramesCheck; // children of this window
    QCheckBox *m_extraInfoCheck;
};

} // namespace Common
