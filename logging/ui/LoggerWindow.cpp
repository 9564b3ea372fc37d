// SPDX-License-Identifier: GPL-3.0-or-later
#include "logging/ui/LoggerWindow.h"

#include "common/LocalFileName.h"
#include "common/Log.h"
#include "common/ui/PlainMessageBox.h"
#include "common/ui/UiUtils.h"
#include "logging/FrameLogger.h"
#include "logging/LoggerResult.h"

#include <QCloseEvent>
#include <QComboBox>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>

namespace Common {
namespace {

constexpr int ascFormat = 0; // index in the format box, and its number in the recorders' settings
constexpr auto startStyle = "QPushButton { background-color: #50c050; color: white; }";
constexpr auto stopStyle = "QPushButton { background-color: #ff5050; color: white; }";

} // namespace

LoggerWindow::~LoggerWindow() = default;

void LoggerWindow::showState()
{
    onFilePathChanged(m_pathEdit->text());
    onFormatChanged(m_formatCombo->currentIndex());
    updateUI();
}

bool LoggerWindow::addMessages(std::span<const TzVciMessage> messages)
{
    return isRecording() && logger().addMessages(messages);
}

void LoggerWindow::startRecording()
{
    const QString path = m_pathEdit->text();
    if (path.isEmpty()) {
        tell(QMessageBox::Warning, tr("Error"), tr("Please specify a log file path"));
        return;
    }
    // While it records, the recorder refuses both by itself and goes on.
    configureLogger(
        {.filePath = localFileName(path), .format = m_formatCombo->currentIndex(), .sizeLimitMb = m_sizeSpin->value()});
    const int result = logger().start();
    if (result != LoggerResult::ok) {
        tell(QMessageBox::Critical, tr("Recording Failed"),
             tr("Cannot start logging: %1").arg(startFailureText(result)));
        return;
    }
    m_recording.store(true, std::memory_order_release);
    updateUI();
    logInfo("{} logger recording started: {}", m_texts.family, path.toStdString());
}

void LoggerWindow::stopRecording()
{
    if (!isRecording())
        return;
    logger().stop();
    m_recording.store(false, std::memory_order_release);
    logInfo("{} logger recording stopped", m_texts.family);
    updateUI();
}

QString LoggerWindow::startFailureText(int code) const
{
    switch (code) {
    case LoggerResult::openFailed: return tr("Cannot open log file");
    case LoggerResult::alreadyRunning: return tr("Logger is already running");
    case LoggerResult::headerFailed: return tr("Failed to write to file");
    }
    return tr("Unknown error (Code: %1)").arg(code);
}

void LoggerWindow::onStartStopClicked()
{
    if (isRecording())
        stopRecording();
    else
        startRecording();
}

void LoggerWindow::onBrowseClicked()
{
    if (!m_browseDialog)
        m_browseDialog = openBrowseDialog();
}

QFileDialog *LoggerWindow::openBrowseDialog()
{
    auto *dialog = new QFileDialog(this, tr("Select Log File"), QDir::homePath());
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setAcceptMode(QFileDialog::AcceptSave);
    dialog->setNameFilter(m_formatCombo->currentIndex() == ascFormat ? tr("ASC Files (*.asc);;All Files (*)")
                                                                     : tr("CSV Files (*.csv);;All Files (*)"));
    connect(dialog, &QFileDialog::fileSelected, m_pathEdit, &QLineEdit::setText);
    dialog->open();
    return dialog;
}

void LoggerWindow::onOpenFileClicked()
{
    const QString path = m_pathEdit->text();
    QString error;
    if (path.isEmpty())
        error = tr("No log file path specified");
    else if (!QFileInfo(path).isFile())
        error = tr("File does not exist: %1").arg(path);
    else
        UiUtils::openHelpFile(path, &error);
    if (!error.isEmpty())
        tell(QMessageBox::Warning, tr("Error"), error);
}

void LoggerWindow::onFormatChanged(int index)
{
    m_descriptionLabel->setText(tr(m_texts.descriptions[index == ascFormat ? 0 : 1]));
    onPreviewClicked();
}

void LoggerWindow::onPreviewClicked()
{
    m_previewLabel->setText(previewText(m_formatCombo->currentIndex()));
}

void LoggerWindow::onResetClicked()
{
    ask(tr("Confirm Reset"), tr("Are you sure you want to reset all settings to default values?"),
        &LoggerWindow::resetSettings);
}

void LoggerWindow::resetSettings()
{
    m_formatCombo->setCurrentIndex(ascFormat);
    m_sizeSpin->setValue(defaultSizeLimitMb);
    resetOptions();
    onPreviewClicked(); // also where the format stayed
}

void LoggerWindow::onFilePathChanged(const QString &path)
{
    // The box shows little of a long path, and a relative one does not tell its folder.
    m_pathEdit->setToolTip(path.isEmpty() ? tr("The file to record to")
                                          : QDir::toNativeSeparators(QFileInfo(path).absoluteFilePath()));
}

void LoggerWindow::updateUI()
{
    const bool recording = isRecording();
    for (QWidget *setting : {static_cast<QWidget *>(m_pathEdit), static_cast<QWidget *>(m_browseButton),
                             static_cast<QWidget *>(m_recordingGroup), static_cast<QWidget *>(m_resetButton)})
        setting->setEnabled(!recording);
    m_startStopButton->setText(recording ? tr("Stop Recording") : tr("Start Recording"));
    m_startStopButton->setStyleSheet(QLatin1String(recording ? stopStyle : startStyle));
    updateStatusMessage();
}

void LoggerWindow::updateStatusMessage()
{
    const QString text = isRecording() ? tr("Recording to: %1").arg(m_pathEdit->text()) : tr(m_texts.readyStatus);
    m_statusLabel->setText(text);
    m_statusLabel->setToolTip(isRecording() ? m_pathEdit->toolTip() : QString());
}

void LoggerWindow::onCloseClicked()
{
    close();
}

void LoggerWindow::closeEvent(QCloseEvent *event)
{
    if (!isRecording()) {
        event->accept(); // hides
        return;
    }
    event->ignore();
    ask(tr("Confirm Close"),
        tr("Recording is in progress. Are you sure you want to stop recording and close the window?"),
        &LoggerWindow::stopAndHide);
}

void LoggerWindow::stopAndHide()
{
    stopRecording();
    hide();
}

// A message of this window waits in no event loop of its own, so that the window may be destroyed while it shows.
void LoggerWindow::tell(QMessageBox::Icon icon, const QString &title, const QString &text)
{
    auto *box = new PlainMessageBox(icon, title, text, QMessageBox::Ok, this);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->open();
}

void LoggerWindow::ask(const QString &title, const QString &text, void (LoggerWindow::*onYes)())
{
    if (m_question)
        return;
    m_question = new PlainMessageBox(QMessageBox::Question, title, text, QMessageBox::Yes | QMessageBox::No, this);
    m_question->setDefaultButton(QMessageBox::No);
    m_question->setAttribute(Qt::WA_DeleteOnClose);
    connect(m_question, &QMessageBox::finished, this, [this, onYes](int answer) {
        if (answer == QMessageBox::Yes)
            (this->*onYes)();
    });
    m_question->open();
}

} // namespace Common
