// SPDX-License-Identifier: GPL-3.0-or-later
// What LoggerWindow is made of; LoggerWindow.cpp holds what it does.
#include "logging/ui/LoggerWindow.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFontDatabase>
#include <QFormLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScrollArea>
#include <QSpinBox>
#include <QStatusBar>
#include <QVBoxLayout>

#include <algorithm>

namespace Common {
namespace {

constexpr QSize windowSize{640, 480};
constexpr QMargins groupMargins{9, 5, 9, 5}; // tight: the whole preview has to show
constexpr int previewFontSize = 8;           // points
constexpr auto previewStyle = "QScrollArea { border: 1px solid #cccccc; border-radius: 3px; }"; // like a text field
constexpr Qt::WindowFlags flagsWithoutMaximize = Qt::Window | Qt::WindowTitleHint | Qt::WindowSystemMenuHint |
                                                 Qt::WindowMinimizeButtonHint | Qt::WindowCloseButtonHint;

} // namespace

LoggerWindow::LoggerWindow(const Texts &texts, QWidget *parent)
    : QMainWindow(parent, flagsWithoutMaximize)
    , m_texts(texts)
{
    setWindowTitle(tr(m_texts.title));
    setWindowIcon(QIcon(QStringLiteral(":/resource/record.png")));
    setFixedSize(windowSize);
    setCentralWidget(new QWidget(this));
    auto *layout = new QVBoxLayout(centralWidget());
    layout->setContentsMargins(12, 4, 12, 8);
    layout->setSpacing(4);
    buildFileGroup();
    buildRecordingGroup();
    buildControlGroup();
    buildStatusBar();
}

QPushButton *LoggerWindow::createButton(const QString &name, const QString &text, const QString &toolTip,
                                        void (LoggerWindow::*onClicked)())
{
    auto *button = new QPushButton(text, this);
    button->setObjectName(name);
    button->setToolTip(toolTip);
    connect(button, &QPushButton::clicked, this, onClicked);
    return button;
}

QCheckBox *LoggerWindow::createCheckBox(const QString &name, const QString &text, const QString &toolTip)
{
    auto *box = new QCheckBox(text, this);
    box->setObjectName(name);
    box->setToolTip(toolTip);
    return box;
}

void LoggerWindow::buildFileGroup()
{
    auto *group = new QGroupBox(tr("File Configuration"), centralWidget());
    auto *label = new QLabel(tr("Log File:"), group);
    m_pathEdit = new QLineEdit(QString::fromUtf8(m_texts.startPath), group);
    m_pathEdit->setObjectName(QStringLiteral("lineEditPath"));
    label->setBuddy(m_pathEdit);
    m_browseButton = createButton(QStringLiteral("buttonBrowse"), tr("Browse..."), tr("Choose where to record to"),
                                  &LoggerWindow::onBrowseClicked);
    auto *openButton =
        createButton(QStringLiteral("buttonOpen"), tr(m_texts.openButton),
                     tr("Open the file in the desktop's default program"), &LoggerWindow::onOpenFileClicked);

    auto *row = new QHBoxLayout(group);
    row->setContentsMargins(groupMargins);
    row->setSpacing(8);
    row->addWidget(label);
    row->addWidget(m_pathEdit, 1);
    row->addWidget(m_browseButton);
    row->addWidget(openButton);
    centralWidget()->layout()->addWidget(group);
    connect(m_pathEdit, &QLineEdit::textChanged, this, &LoggerWindow::onFilePathChanged);
}

void LoggerWindow::buildRecordingGroup()
{
    m_recordingGroup = new QGroupBox(tr("Recording Configuration"), centralWidget());
    auto *formatLabel = new QLabel(tr(m_texts.formatLabel), m_recordingGroup);
    m_formatCombo = new QComboBox(m_recordingGroup);
    m_formatCombo->setObjectName(QStringLiteral("comboFormat"));
    for (const char *format : m_texts.formats)
        m_formatCombo->addItem(tr(format));
    formatLabel->setBuddy(m_formatCombo);
    auto *sizeLabel = new QLabel(tr(m_texts.sizeLabel), m_recordingGroup);
    m_sizeSpin = new QSpinBox(m_recordingGroup);
    m_sizeSpin->setObjectName(QStringLiteral("spinSizeLimit"));
    m_sizeSpin->setRange(0, maxSizeLimitMb);
    m_sizeSpin->setSingleStep(5);
    m_sizeSpin->setValue(defaultSizeLimitMb);
    m_sizeSpin->setMinimumWidth(80);
    m_sizeSpin->setToolTip(tr("A file that has reached this size is kept under a number and a new one is begun;\n"
                              "0 counts as 1"));
    sizeLabel->setBuddy(m_sizeSpin);
    m_lastSetting = m_sizeSpin;
    m_descriptionLabel = new QLabel(m_recordingGroup);
    m_descriptionLabel->setObjectName(QStringLiteral("labelDescription"));

    m_optionsLayout = new QFormLayout(m_recordingGroup);
    m_optionsLayout->setHorizontalSpacing(8);
    m_optionsLayout->setVerticalSpacing(4);
    m_optionsLayout->setLabelAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    auto *row = new QHBoxLayout;
    row->setSpacing(8);
    row->addWidget(m_formatCombo);
    row->addSpacing(16);
    row->addWidget(sizeLabel);
    row->addWidget(m_sizeSpin);
    row->addStretch();
    m_optionsLayout->addRow(formatLabel, row);
    m_optionsLayout->addRow(QString(), m_descriptionLabel);
    centralWidget()->layout()->addWidget(m_recordingGroup);
    connect(m_formatCombo, qOverload<int>(&QComboBox::currentIndexChanged), this, &LoggerWindow::onFormatChanged);
}

void LoggerWindow::addOptions(const QString &label, std::initializer_list<QWidget *> options)
{
    auto *row = new QHBoxLayout;
    row->setSpacing(16);
    for (QWidget *option : options) {
        row->addWidget(option);
        if (option->focusPolicy() == Qt::NoFocus)
            continue;
        setTabOrder(m_lastSetting, option); // it was made after the buttons at the bottom
        m_lastSetting = option;
    }
    row->addStretch();
    m_optionsLayout->addRow(label, row);
}

void LoggerWindow::buildControlGroup()
{
    auto *group = new QGroupBox(tr("Preview and Control"), centralWidget());
    m_previewLabel = new QLabel;
    m_previewLabel->setObjectName(QStringLiteral("labelPreview"));
    m_previewLabel->setTextFormat(Qt::PlainText);
    m_previewLabel->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_previewLabel->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    m_previewLabel->setMargin(4);
    QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    font.setPointSize(previewFontSize);
    m_previewLabel->setFont(font);
    auto *scrollArea = new QScrollArea(group);
    scrollArea->setWidget(m_previewLabel);
    scrollArea->setWidgetResizable(true);
    scrollArea->setBackgroundRole(QPalette::Base);
    scrollArea->setStyleSheet(QLatin1String(previewStyle));

    auto *row = new QHBoxLayout;
    row->setSpacing(8);
    row->addWidget(createButton(QStringLiteral("buttonPreview"), tr("Generate Preview"),
                                tr("Show what a file with these settings looks like"),
                                &LoggerWindow::onPreviewClicked));
    m_resetButton =
        createButton(QStringLiteral("buttonReset"), tr("Reset Settings"),
                     tr("Give all settings but the file their default values"), &LoggerWindow::onResetClicked);
    row->addWidget(m_resetButton);
    row->addStretch();
    m_startStopButton =
        createButton(QStringLiteral("buttonStartStop"), QString(), QString(), &LoggerWindow::onStartStopClicked);
    row->addWidget(m_startStopButton);
    row->addWidget(createButton(QStringLiteral("buttonClose"), tr("Close"), QString(), &LoggerWindow::onCloseClicked));

    auto *layout = new QVBoxLayout(group);
    layout->setContentsMargins(groupMargins);
    layout->setSpacing(8);
    layout->addWidget(scrollArea, 1);
    layout->addLayout(row);
    static_cast<QBoxLayout *>(centralWidget()->layout())->addWidget(group, 1);
    reserveStartButtonWidth();
}

// The button must not move when its text changes.
void LoggerWindow::reserveStartButtonWidth()
{
    int width = 0;
    for (const QString &text : {tr("Start Recording"), tr("Stop Recording")}) {
        m_startStopButton->setText(text);
        width = std::max(width, m_startStopButton->sizeHint().width());
    }
    m_startStopButton->setMinimumWidth(width);
}

void LoggerWindow::buildStatusBar()
{
    m_statusLabel = new QLabel(this);
    m_statusLabel->setObjectName(QStringLiteral("labelStatus"));
    m_statusLabel->setTextFormat(Qt::PlainText);
    m_statusLabel->setContentsMargins(8, 0, 8, 0);
    m_statusLabel->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred); // a long path is cut
    statusBar()->setSizeGripEnabled(false);
    statusBar()->addWidget(m_statusLabel, 1);
}

} // namespace Common
