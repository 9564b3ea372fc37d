// SPDX-License-Identifier: GPL-3.0-or-later
#include "logging/ui/CANLoggerWindow.h"

#include "logging/ui/LoggerPreview.h"

#include <QCheckBox>
#include <QLabel>

namespace Common {

const LoggerWindow::Texts CANLoggerWindow::texts{
    .family = "CAN",
    .title = QT_TRANSLATE_NOOP("Common::LoggerWindow", "CAN Logger"),
    .startPath = "logs/can_recording.asc",
    .openButton = QT_TRANSLATE_NOOP("Common::LoggerWindow", "Open"),
    .formatLabel = QT_TRANSLATE_NOOP("Common::LoggerWindow", "Format:"),
    .formats = {QT_TRANSLATE_NOOP("Common::LoggerWindow", "ASC Format"),
                QT_TRANSLATE_NOOP("Common::LoggerWindow", "CSV Format")},
    .descriptions = {QT_TRANSLATE_NOOP("Common::LoggerWindow", "Vector ASC format, compatible with CANalyzer/CANoe"),
                     QT_TRANSLATE_NOOP("Common::LoggerWindow",
                                       "CSV format, can be opened with Excel or data analysis tools")},
    .sizeLabel = QT_TRANSLATE_NOOP("Common::LoggerWindow", "Size Limit (MB):"),
    .readyStatus = QT_TRANSLATE_NOOP("Common::LoggerWindow", "Ready - Timestamp format controlled by global settings"),
};

CANLoggerWindow::CANLoggerWindow(UnifiedTimeManager *unifiedTime, QWidget *parent)
    : LoggerWindow(texts, parent)
    , m_logger(unifiedTime)
    , m_errorFramesCheck(createCheckBox(QStringLiteral("checkErrorFrames"), tr("Log Error Frames"),
                                        tr("Also write the error frames of the bus")))
    , m_extraInfoCheck(createCheckBox(QStringLiteral("checkExtraInfo"), tr("Log Extra Info"),
                                      tr("Add the index of the device to each line")))
{
    auto *note = new QLabel(tr("Note: Timestamp format is controlled by global time display settings"), this);
    note->setObjectName(QStringLiteral("labelNote"));
    addOptions(QString(), {m_errorFramesCheck, m_extraInfoCheck});
    addOptions(QString(), {note});
    resetOptions();
    showState();
}

CANLoggerWindow::~CANLoggerWindow()
{
    stopRecording();
}

void CANLoggerWindow::configureLogger(const Settings &settings)
{
    m_logger.setConfig({.filePath = settings.filePath,
                        .format = settings.format,
                        .sizeLimitMb = settings.sizeLimitMb,
                        .logErrorFrames = m_errorFramesCheck->isChecked(),
                        .logExtraInfo = m_extraInfoCheck->isChecked(),
                        .absoluteTime = true});
}

QString CANLoggerWindow::previewText(int format) const
{
    return LoggerPreview::can({.csv = format != 0,
                               .errorFrames = m_errorFramesCheck->isChecked(),
                               .extraInfo = m_extraInfoCheck->isChecked()});
}

void CANLoggerWindow::resetOptions()
{
    m_errorFramesCheck->setChecked(true);
    m_extraInfoCheck->setChecked(false);
}

} // namespace Common
