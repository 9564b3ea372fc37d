// SPDX-License-Identifier: GPL-3.0-or-later
#include "logging/ui/BLFConverterDialog.h"

#include "common/ui/PendingEvents.h"
#include "common/ui/PlainMessageBox.h"
#include "common/ui/WaitCursor.h"
#include "logging/blf/BLFParser.h"
#include "logging/blf/BlfAscWriter.h"
#include "logging/blf/BlfCsvWriter.h"

#include <QCheckBox>
#include <QDesktopServices>
#include <QDir>
#include <QDragEnterEvent>
#include <QFileDialog>
#include <QFileInfo>
#include <QLineEdit>
#include <QMimeData>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QScopeGuard>
#include <QScrollBar>
#include <QUrl>

using BLF::BlfConversionJob;
using BLF::BlfConverter;
using Common::PlainMessageBox;

namespace {

constexpr int noProgress = -1; // leaves the bar as it is

void showMessage(QMessageBox::Icon icon, const QString &title, const QString &text, QWidget *parent)
{
    PlainMessageBox(icon, title, text, QMessageBox::Ok, parent).exec();
}

void showFile(QLineEdit *edit, const QString &path)
{
    edit->setText(QDir::toNativeSeparators(path));
}

QString shownFile(const QLineEdit *edit)
{
    return QDir::fromNativeSeparators(edit->text());
}

// The box shows little of a long path, and a relative one does not tell its folder.
void showWholePath(QLineEdit *edit, const QString &toolTipWithoutPath)
{
    const QString path = shownFile(edit);
    edit->setToolTip(path.isEmpty() ? toolTipWithoutPath
                                    : QDir::toNativeSeparators(QFileInfo(path).absoluteFilePath()));
}

} // namespace

void BLFConverterDialog::done(int result)
{
    if (m_processing)
        warnThatItRuns();
    else
        QDialog::done(result);
}

BlfConversionJob BLFConverterDialog::currentJob() const
{
    BlfConversionJob job;
    job.inputPath = shownFile(m_inputEdit);
    job.outputPath = shownFile(m_outputEdit);
    job.format = m_csvButton->isChecked() ? BLF::TextFormat::Csv : BLF::TextFormat::Asc;
    return job;
}

void BLFConverterDialog::onSelectInputFile()
{
    const QString path = chooseInput();
    if (!path.isEmpty())
        setInput(path);
}

QString BLFConverterDialog::chooseInput()
{
    return QFileDialog::getOpenFileName(this, tr("Select BLF File"), m_lastFolder,
                                        tr("BLF Files (*.blf);;All Files (*)"));
}

void BLFConverterDialog::setInput(const QString &path)
{
    m_lastFolder = QFileInfo(path).absolutePath();
    showFile(m_inputEdit, path);
}

void BLFConverterDialog::onSelectOutputFile()
{
    const QString path = chooseOutput();
    if (!path.isEmpty())
        showFile(m_outputEdit, path);
}

// The dialog asks nothing by itself about a file that is there: the start does.
QString BLFConverterDialog::chooseOutput()
{
    const BlfConversionJob job = currentJob();
    const QFileInfo output(job.outputPath);
    QFileDialog dialog(this, tr("Save File"), job.outputPath.isEmpty() ? m_lastFolder : output.absolutePath());
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setOption(QFileDialog::DontConfirmOverwrite);
    dialog.setNameFilter(BlfConversionJob::nameFilter(job.format));
    dialog.setDefaultSuffix(BlfConversionJob::extension(job.format));
    dialog.selectFile(output.fileName());
    return dialog.exec() == QDialog::Accepted ? dialog.selectedFiles().value(0) : QString();
}

void BLFConverterDialog::onInputFilePathChanged()
{
    if (m_outputEdit->text().isEmpty())
        proposeOutput();
    showWholePath(m_inputEdit, tr("The BLF file to convert; it can also be dropped onto this window"));
    updateProcessButtonState();
}

// A path that is typed comes letter by letter. Without this the proposal would stay the one for its first letter.
void BLFConverterDialog::onInputFilePathEdited()
{
    if (!m_typedProposal.isEmpty() && m_outputEdit->text() == m_typedProposal)
        m_outputEdit->clear();
    if (!m_outputEdit->text().isEmpty())
        return;
    proposeOutput();
    m_typedProposal = m_outputEdit->text();
}

void BLFConverterDialog::proposeOutput()
{
    const BlfConversionJob job = currentJob();
    showFile(m_outputEdit, BlfConversionJob::defaultOutputPath(job.inputPath, job.format));
}

void BLFConverterDialog::onOutputFilePathChanged()
{
    showWholePath(m_outputEdit, tr("The text file to write"));
    updateProcessButtonState();
}

void BLFConverterDialog::onOutputFormatChanged()
{
    if (!m_inputEdit->text().isEmpty())
        proposeOutput();
}

void BLFConverterDialog::onExportOptionChanged()
{
    m_options.exportInternalEvents = m_internalEventsBox->isChecked();
    m_options.exportAdditionalInfo = m_additionalInfoBox->isChecked();
}

void BLFConverterDialog::updateProcessButtonState()
{
    m_startButton->setEnabled(!m_processing && currentJob().isComplete());
}

void BLFConverterDialog::changeEvent(QEvent *event)
{
    QDialog::changeEvent(event);
    // The file may have come or gone while the user was elsewhere.
    if (event->type() == QEvent::ActivationChange && isActiveWindow())
        updateProcessButtonState();
}

void BLFConverterDialog::dragEnterEvent(QDragEnterEvent *event)
{
    if (m_processing || BlfConversionJob::firstLog(event->mimeData()->urls()).isEmpty())
        return;
    event->setDropAction(Qt::CopyAction); // a file manager would take a move for leave to delete the file
    event->accept();
}

void BLFConverterDialog::dropEvent(QDropEvent *event)
{
    const QString log = BlfConversionJob::firstLog(event->mimeData()->urls());
    if (m_processing || log.isEmpty())
        return;
    event->setDropAction(Qt::CopyAction);
    event->accept();
    setInput(log);
}

void BLFConverterDialog::onResetClicked()
{
    if (m_processing) {
        warnThatItRuns();
        return;
    }
    m_inputEdit->clear(); // first, so that the format proposes nothing
    m_csvButton->setChecked(true);
    m_outputEdit->clear();
    m_internalEventsBox->setChecked(true);
    m_additionalInfoBox->setChecked(true);
    m_log->clear();
    m_progressBar->setValue(0);
    m_progressBar->hide();
}

void BLFConverterDialog::onProcessFile()
{
    if (m_processing)
        return;
    const BlfConversionJob job = currentJob();
    if (!mayStart(job))
        return;
    switch (run(job)) {
    case BlfConverter::Result::Succeeded: showSuccess(job.outputPath); break;
    case BlfConverter::Result::Failed:
        showMessage(QMessageBox::Critical, tr("Conversion Failed"),
                    tr("An error occurred during file conversion. Please check the log for details."), this);
        break;
    case BlfConverter::Result::GivenUp: break;
    }
}

bool BLFConverterDialog::mayStart(const BlfConversionJob &job)
{
    if (const std::optional<QString> problem = job.problem()) {
        showMessage(QMessageBox::Warning, tr("Error"), *problem, this);
        return false;
    }
    if (!job.replacesFile())
        return true;
    PlainMessageBox question(QMessageBox::Question, tr("Confirm"),
                             tr("Output file already exists. Do you want to overwrite it?"),
                             QMessageBox::Yes | QMessageBox::No, this);
    question.setDefaultButton(QMessageBox::No);
    return question.exec() == QMessageBox::Yes;
}

BlfConverter::Result BLFConverterDialog::run(const BlfConversionJob &job)
{
    BLF::BlfCsvWriter::options = m_options;
    BLF::BlfAscWriter::options = m_options;
    setProcessing(true);
    const auto endProcessing = qScopeGuard([this] { setProcessing(false); });
    const Common::WaitCursor waitCursor;
    m_log->clear();
    m_progressBar->setValue(0);
    m_progressBar->show();
    BlfConverter converter(
        m_parser, {.report = [this](const QString &text, bool isError) { onProcessReport(text, noProgress, isError); },
                   .mayGoOn = Common::handlePendingEvents});
    return converter.convert(job);
}

void BLFConverterDialog::setProcessing(bool processing)
{
    m_processing = processing;
    if (processing)
        m_log->setFocus(); // not on to Reset, where a key that was meant for Start would land
    m_settings->setEnabled(!processing);
    updateProcessButtonState();
    if (processing)
        return;
    m_progressBar->hide();
    m_startButton->setFocus();
    if (m_warning)
        m_warning->close(); // what it tells is no longer so
}

// Waits in no event loop of its own: the conversion goes on below it.
void BLFConverterDialog::warnThatItRuns()
{
    if (m_warning)
        return;
    m_warning = new PlainMessageBox(QMessageBox::Warning, tr("Warning"),
                                    tr("Processing in progress, please wait for completion"), QMessageBox::Ok, this);
    m_warning->setAttribute(Qt::WA_DeleteOnClose);
    m_warning->open();
}

void BLFConverterDialog::onProcessReport(const QString &text, int value, bool isError)
{
    // At the end of the text, wherever the user has put the cursor, and never taken for markup.
    QTextCharFormat format;
    format.setForeground(isError ? Qt::red : Qt::black);
    QTextCursor end(m_log->document());
    end.movePosition(QTextCursor::End);
    if (!m_log->document()->isEmpty())
        end.insertBlock();
    end.insertText(text, format);
    m_log->verticalScrollBar()->setValue(m_log->verticalScrollBar()->maximum());
    if (value >= 0) {
        m_progressBar->setValue(value);
        m_progressBar->show();
    }
    static_cast<void>(Common::handlePendingEvents()); // a run asks for itself whether to go on
}

void BLFConverterDialog::onProcessReport(const QString &text, int value)
{
    onProcessReport(text, value, false);
}

void BLFConverterDialog::onProcessReport(const QString &text)
{
    onProcessReport(text, noProgress, false);
}

void BLFConverterDialog::showSuccess(const QString &path)
{
    PlainMessageBox box(
        QMessageBox::Information, tr("Conversion Successful"),
        tr("File has been successfully converted and saved to:\n%1").arg(QDir::toNativeSeparators(path)),
        QMessageBox::NoButton, this);
    QPushButton *openFile = box.addButton(QMessageBox::Open);
    openFile->setText(tr("Open File"));
    const QPushButton *openFolder = box.addButton(tr("Open Folder"), QMessageBox::AcceptRole);
    box.addButton(QMessageBox::Close)->setText(tr("Close"));
    box.setDefaultButton(openFile);
    box.setEscapeButton(QMessageBox::Close);
    box.exec();
    if (box.clickedButton() == openFile)
        openOnDesktop(path);
    else if (box.clickedButton() == openFolder)
        openOnDesktop(QFileInfo(path).absolutePath());
}

void BLFConverterDialog::openOnDesktop(const QString &path)
{
    if (!QDesktopServices::openUrl(QUrl::fromLocalFile(QFileInfo(path).absoluteFilePath())))
        showMessage(QMessageBox::Warning, tr("Error"),
                    tr("No program was found that shows %1.").arg(QDir::toNativeSeparators(path)), this);
}
