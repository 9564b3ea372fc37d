// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/DebugLogDialog.h"

#include "app/VciBuildInfo.h"
#include "common/ConfigManager.h"
#include "common/Log.h"
#include "common/ui/PlainMessageBox.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QIcon>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>
#include <QVBoxLayout>

#include <algorithm>
#include <cstdint>
#include <exception>
#include <limits>

namespace {

QSpinBox *makeByteSpin(const QString &name, const QString &toolTip, QWidget *parent)
{
    auto *spin = new QSpinBox(parent);
    spin->setObjectName(name);
    spin->setRange(0, std::numeric_limits<std::uint8_t>::max());
    spin->setToolTip(toolTip);
    spin->setMinimumWidth(96);
    return spin;
}

// Where a folder choice begins: the folder of the present path, or the nearest one above it that exists.
QString nearestFolder(const QString &path)
{
    QDir folder = QFileInfo(path).absoluteDir();
    if (QFileInfo(path).isDir())
        folder = QDir(path);
    QString candidate = folder.absolutePath();
    while (!QFileInfo(candidate).isDir() && candidate != QFileInfo(candidate).absolutePath())
        candidate = QFileInfo(candidate).absolutePath();
    return candidate;
}

} // namespace

DebugLogDialog::DebugLogDialog(Common::ConfigManager *config, const QString &programName, const QString &programVersion,
                               QWidget *parent)
    : QDialog(parent)
    , m_config(config)
    , m_programName(programName)
    , m_programVersion(programVersion)
    , m_levelCombo(new QComboBox(this))
    , m_fileCheckBox(new QCheckBox(tr("Log to File (unchecked = console only)"), this))
    , m_fileGroup(new QGroupBox(tr("File Settings"), this))
    , m_fileSizeSpin(makeByteSpin(QStringLiteral("spinFileSize"),
                                  tr("A new file is begun at this size. 0 counts as 1."), m_fileGroup))
    , m_maxFilesSpin(makeByteSpin(QStringLiteral("spinMaxFiles"),
                                  tr("Number of log files kept, the current one included. 0 counts as 1."),
                                  m_fileGroup))
    , m_pathEdit(new QLineEdit(m_fileGroup))
    , m_browseButton(new QPushButton(tr("Browse"), m_fileGroup))
{
    setWindowTitle(tr("Debug Log Settings"));
    setWindowIcon(QIcon(QStringLiteral(":/resource/log.png")));
    m_levelCombo->setObjectName(QStringLiteral("comboLevel"));
    m_fileCheckBox->setObjectName(QStringLiteral("checkBoxFile"));
    m_fileGroup->setObjectName(QStringLiteral("groupFile"));
    m_pathEdit->setObjectName(QStringLiteral("lineEditPath"));
    m_browseButton->setObjectName(QStringLiteral("buttonBrowse"));
    buildLayout();
    connect(m_browseButton, &QPushButton::clicked, this, &DebugLogDialog::browse);
    connect(m_fileCheckBox, &QCheckBox::toggled, m_fileGroup, &QWidget::setEnabled);
    showSettings();
}

QGroupBox *DebugLogDialog::makeLogGroup()
{
    m_levelCombo->addItems({tr("Debug"), tr("Info"), tr("Warning"), tr("Error"), tr("No Log")}); // in level order
    m_levelCombo->setMinimumWidth(96);
    m_levelCombo->setToolTip(tr("Messages of this level and above are logged"));
    auto *group = new QGroupBox(tr("Log Settings"), this);
    auto *layout = new QFormLayout(group);
    layout->setContentsMargins(8, 8, 8, 8);
    layout->setSpacing(8);
    layout->setFieldGrowthPolicy(QFormLayout::FieldsStayAtSizeHint);
    layout->addRow(tr("Log Level:"), m_levelCombo);
    layout->addRow(m_fileCheckBox);
    return group;
}

QGroupBox *DebugLogDialog::makeFileGroup()
{
    m_browseButton->setAutoDefault(false);
    m_pathEdit->setMinimumWidth(280);
    m_pathEdit->setToolTip(tr("A folder, or a file whose name ends in .log"));

    auto *path = new QHBoxLayout;
    path->setSpacing(8);
    path->addWidget(m_pathEdit, 1);
    path->addWidget(m_browseButton);

    auto *pathLabel = new QLabel(tr("Log File Path:"), m_fileGroup);
    pathLabel->setBuddy(m_pathEdit);
    auto *layout = new QFormLayout(m_fileGroup);
    layout->setContentsMargins(8, 8, 8, 8);
    layout->setSpacing(8);
    layout->setFieldGrowthPolicy(QFormLayout::FieldsStayAtSizeHint);
    layout->addRow(tr("Log File Size (MB):"), m_fileSizeSpin);
    layout->addRow(tr("Max Log Files:"), m_maxFilesSpin);
    layout->addRow(pathLabel, path);
    return m_fileGroup;
}

void DebugLogDialog::buildLayout()
{
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    buttons->button(QDialogButtonBox::Ok)->setText(tr("OK"));
    buttons->button(QDialogButtonBox::Cancel)->setText(tr("Cancel"));
    connect(buttons, &QDialogButtonBox::accepted, this, &DebugLogDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &DebugLogDialog::reject);

    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(12, 8, 12, 12);
    layout->setSpacing(12);
    layout->addWidget(makeLogGroup());
    layout->addWidget(makeFileGroup());
    layout->addStretch(1);
    layout->addWidget(buttons);

    const QWidgetList order{m_levelCombo,
                            m_fileCheckBox,
                            m_fileSizeSpin,
                            m_maxFilesSpin,
                            m_pathEdit,
                            m_browseButton,
                            buttons->button(QDialogButtonBox::Ok),
                            buttons->button(QDialogButtonBox::Cancel)};
    for (int i = 1; i < order.size(); ++i)
        setTabOrder(order.at(i - 1), order.at(i));
    m_levelCombo->setFocus();
}

void DebugLogDialog::showSettings()
{
    // A level that the file of settings made up logs as little as the last one.
    m_levelCombo->setCurrentIndex(std::min<int>(m_config->logLevel, m_levelCombo->count() - 1));
    m_fileCheckBox->setChecked(!m_config->logConsoleOnly);
    m_fileGroup->setEnabled(!m_config->logConsoleOnly);
    m_fileSizeSpin->setValue(m_config->logFileSizeMb);
    m_maxFilesSpin->setValue(m_config->maxLogFiles);
    m_pathEdit->setText(m_config->logDirectory);
    m_pathEdit->setCursorPosition(0);
}

void DebugLogDialog::browse()
{
    const QString folder = chooseFolder();
    if (!folder.isEmpty())
        m_pathEdit->setText(folder + QStringLiteral("/%1.log").arg(m_programName));
}

QString DebugLogDialog::chooseFolder()
{
    return QFileDialog::getExistingDirectory(this, tr("Select Log Directory"), nearestFolder(m_pathEdit->text()));
}

void DebugLogDialog::accept()
{
    storeSettings();
    restartLog();
    QDialog::accept();
}

void DebugLogDialog::storeSettings()
{
    m_config->logConsoleOnly = !m_fileCheckBox->isChecked();
    m_config->logLevel = static_cast<std::uint8_t>(m_levelCombo->currentIndex());
    m_config->logFileSizeMb = static_cast<std::uint8_t>(m_fileSizeSpin->value());
    m_config->maxLogFiles = static_cast<std::uint8_t>(m_maxFilesSpin->value());
    m_config->logDirectory = m_pathEdit->text();
    m_config->saveConfig();
}

void DebugLogDialog::restartLog()
{
    try {
        Common::logStop();
        Common::logInit(m_config->getLogFilePath().toStdString(), m_config->logLevel, m_config->logFileSizeMb,
                        m_config->maxLogFiles);
        Common::logStart(m_config->logConsoleOnly);
        Common::logSoftwareInfo(m_programName.toStdString(), m_programVersion.toStdString(), VciBuildInfo::creator,
                                VciBuildInfo::platform);
    } catch (const std::exception &failure) {
        Common::PlainMessageBox(QMessageBox::Critical, tr("Error"), QString::fromUtf8(failure.what()), QMessageBox::Ok,
                                this)
            .exec();
    }
}
