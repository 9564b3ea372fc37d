// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>

class QCheckBox;
class QComboBox;
class QGroupBox;
class QLineEdit;
class QPushButton;
class QSpinBox;

namespace Common {
class ConfigManager;
}

/// The settings of the log. OK saves them and starts the log anew; other threads may log meanwhile. UI thread.
class DebugLogDialog : public QDialog
{
    Q_OBJECT
public:
    /// Shows the settings as they are now.
    /// @param config          must outlive the dialog
    /// @param programName     names the log file that "Browse" proposes, and the banner of the log
    /// @param programVersion  for the banner of the log
    DebugLogDialog(Common::ConfigManager *config, const QString &programName, const QString &programVersion,
                   QWidget *parent = nullptr);

    void accept() override;

private:
    QGroupBox *makeLogGroup();
    QGroupBox *makeFileGroup();
    void buildLayout();
    void showSettings();
    void storeSettings();
    void restartLog();
    void browse();
    QString chooseFolder();

    Common::ConfigManager *const m_config;
    const QString m_programName;
    const QString m_programVersion;
    QComboBox *m_levelCombo;
    QCheckBox *m_fileCheckBox;
    QGroupBox *m_fileGroup;
    QSpinBox *m_fileSizeSpin;
    QSpinBox *m_maxFilesSpin;
    QLineEdit *m_pathEdit;
    QPushButton *m_browseButton;
};
