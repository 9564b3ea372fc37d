// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "logging/LINLogger.h"
#include "logging/ui/LoggerWindow.h"

class QDoubleSpinBox;
class QRadioButton;

namespace Common {

/// Sets up the recording of a LIN view and owns its recorder.
class LINLoggerWindow final : public LoggerWindow
{
    Q_OBJECT
public:
    /// @param unifiedTime  gives the times in the files; may be null, else it must outlive the window
    explicit LINLoggerWindow(UnifiedTimeManager *unifiedTime, QWidget *parent = nullptr);
    ~LINLoggerWindow() override;

private:
    FrameLogger &logger() override { return m_logger; }
    void configureLogger(const Settings &settings) override;
    QString previewText(int format) const override;
    void resetOptions() override;

    static const Texts texts;

    LINLogger m_logger;
    QRadioButton *m_absoluteButton; // children of this window
    QRadioButton *m_relativeButton;
    QDoubleSpinBox *m_resolutionSpin;
    QCheckBox *m_extraInfoCheck;
};

} // namespace Common
