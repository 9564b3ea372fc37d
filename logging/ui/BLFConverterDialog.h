// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "logging/blf/BlfConversionJob.h"
#include "logging/blf/BlfConverter.h"
#include "logging/blf/BlfExportOptions.h"

#include <QDialog>
#include <QPointer>
#include <QString>

class QBoxLayout;
class QCheckBox;
class QGridLayout;
class QLineEdit;
class QMessageBox;
class QPlainTextEdit;
class QProgressBar;
class QPushButton;
class QRadioButton;

namespace BLF {
class BLFParser;
}

/// The window that turns a BLF log into CSV or ASC. A conversion runs on the UI thread; the dialog handles events
/// meanwhile, so that windows go on painting, and cannot be closed until it is done. A program that is told to end
/// gives it up.
class BLFConverterDialog : public QDialog
{
    Q_OBJECT
public:
    explicit BLFConverterDialog(QWidget *parent = nullptr);
    ~BLFConverterDialog() override;

    bool isProcessing() const { return m_processing; }
    void done(int result) override; ///< refused during a run, with a warning

public Q_SLOTS:
    void onSelectInputFile();
    void onSelectOutputFile();
    void onProcessFile();
    /// A line of the progress box, red for an error. A @p value from 0 to 100 sets the progress bar and shows it.
    /// Handles pending events.
    void onProcessReport(const QString &text, int value, bool isError);
    void onProcessReport(const QString &text, int value);
    void onProcessReport(const QString &text);
    void onResetClicked();
    void onInputFilePathChanged();
    void onOutputFormatChanged();
    void updateProcessButtonState();
    void onExportOptionChanged();

protected:
    void changeEvent(QEvent *event) override;
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dropEvent(QDropEvent *event) override;

private:
    QWidget *createSettings();
    void addPathRow(QGridLayout *grid, const QString &text, QLineEdit *edit, QPushButton *browse);
    void addFormatRow(QGridLayout *grid);
    void addOptionRow(QGridLayout *grid);
    QWidget *createLogGroup();
    QBoxLayout *createButtonRow();
    void connectAll();

    BLF::BlfConversionJob currentJob() const;
    QString chooseInput();
    QString chooseOutput();
    void setInput(const QString &path);
    void proposeOutput();
    void onInputFilePathEdited();
    void onOutputFilePathChanged();
    bool mayStart(const BLF::BlfConversionJob &job);
    BLF::BlfConverter::Result run(const BLF::BlfConversionJob &job);
    void setProcessing(bool processing);
    void warnThatItRuns();
    void showSuccess(const QString &path);
    void openOnDesktop(const QString &path);

    BLF::BLFParser *const m_parser; // a child
    BLF::BlfExportOptions m_options;
    QString m_lastFolder;    // of the log that was chosen last
    QString m_typedProposal; // the output that the log's path as typed so far led to
    bool m_processing = false;
    QPointer<QMessageBox> m_warning; // one at a time

    // Children of this dialog.
    QLineEdit *const m_inputEdit;
    QPushButton *const m_browseInputButton;
    QLineEdit *const m_outputEdit;
    QPushButton *const m_browseOutputButton;
    QRadioButton *const m_csvButton;
    QRadioButton *const m_ascButton;
    QCheckBox *const m_internalEventsBox;
    QCheckBox *const m_additionalInfoBox;
    QWidget *const m_settings; // all of the above
    QPlainTextEdit *const m_log;
    QProgressBar *const m_progressBar;
    QPushButton *const m_resetButton;
    QPushButton *const m_startButton;
};
