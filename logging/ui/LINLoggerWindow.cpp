// SPDX-License-Identifier: GPL-3.0-or-later
#include "logging/ui/LINLoggerWindow.h"

#include "logging/ui/LoggerPreview.h"

#include <QCheckBox>
#include <QDoubleSpinBox>
#include <QRadioButton>

namespace Common {
namespace {

constexpr double defaultResolution = 0.001; // seconds

} // namespace

const LoggerWindow::Texts LINLoggerWindow::texts{
    .family = "LIN",
    .title = QT_TRANSLATE_NOOP("Common::LoggerWindow", "LIN Logger"),
    .startPath = "",
    .openButton = QT_TRANSLATE_NOOP("Common::LoggerWindow", "Open File"),
    .formatLabel = QT_TRANSLATE_NOOP("Common::LoggerWindow", "Log Format:"),
    .formats = {QT_TRANSLATE_NOOP("Common::LoggerWindow", "ASC Format (*.asc)"),
                QT_TRANSLATE_NOOP("Common::LoggerWindow", "CSV Format (*.csv)")},
    .descriptions = {QT_TRANSLATE_NOOP("Common::LoggerWindow", "Vector ASC format, compatible with CANalyzer"),
                     QT_TRANSLATE_NOOP("Common::LoggerWindow",
                                       "CSV format, can be opened with Excel or similar software")},
    .sizeLabel = QT_TRANSLATE_NOOP("Common::LoggerWindow", "File Size Limit (MB):"),
    .readyStatus = QT_TRANSLATE_NOOP("Common::LoggerWindow", "Ready"),
};

LINLoggerWindow::LINLoggerWindow(UnifiedTimeManager *unifiedTime, QWidget *parent)
    : LoggerWindow(texts, parent)
    , m_logger(unifiedTime)
    , m_absoluteButton(new QRadioButton(tr("Absolute Time"), this))
    , m_relativeButton(new QRadioButton(tr("Relative Time"), this))
    , m_resolutionSpin(new QDoubleSpinBox(this))
    , m_extraInfoCheck(createCheckBox(QStringLiteral("checkExtraInfo"),
                                      tr("Log Extra Information (Device index, PID, etc.)"),
                                      tr("Add the index of the device and the protected identifier to each line")))
{
    m_absoluteButton->setObjectName(QStringLiteral("radioAbsolute"));
    m_absoluteButton->setToolTip(tr("Times count from the first frame of the file"));
    m_relativeButton->setObjectName(QStringLiteral("radioRelative"));
    m_relativeButton->setToolTip(tr("Each time counts from the frame before"));
    m_resolutionSpin->setObjectName(QStringLiteral("spinResolution"));
    m_resolutionSpin->setDecimals(6);
    m_resolutionSpin->setRange(0.000001, 1.0);
    m_resolutionSpin->setSingleStep(0.001);
    m_resolutionSpin->setMinimumWidth(104);
    m_resolutionSpin->setToolTip(tr("Times are written in microseconds, whatever is set here"));
    addOptions(tr("Timestamp Mode:"), {m_absoluteButton, m_relativeButton});
    addOptions(tr("Time Resolution (sec):"), {m_resolutionSpin});
    addOptions(tr("Recording Options:"), {m_extraInfoCheck});
    resetOptions();
    showState();
}

LINLoggerWindow::~LINLoggerWindow()
{
    stopRecording();
}

void LINLoggerWindow::configureLogger(const Settings &settings)
{
    m_logger.setConfig({.filePath = settings.filePath,
                        .format = settings.format,
                        .sizeLimitMb = settings.sizeLimitMb,
                        .logExtraInfo = m_extraInfoCheck->isChecked(),
                        .absoluteTime = m_absoluteButton->isChecked()});
}

QString LINLoggerWindow::previewText(int format) const
{
    return LoggerPreview::lin({.csv = format != 0,
                               .absoluteTime = m_absoluteButton->isChecked(),
                               .extraInfo = m_extraInfoCheck->isChecked()});
}

void LINLoggerWindow::resetOptions()
{
    m_absoluteButton->setChecked(true);
    m_resolutionSpin->setValue(defaultResolution);
    m_extraInfoCheck->setChecked(false);
}

} // namespace Common
