// SPDX-License-Identifier: GPL-3.0-or-later
// What BLFConverterDialog is made of; BLFConverterDialog.cpp holds what it does.
#include "logging/ui/BLFConverterDialog.h"

#include "logging/blf/BLFParser.h"

#include <QCheckBox>
#include <QDir>
#include <QGridLayout>
#include <QGroupBox>
#include <QIcon>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

namespace {

constexpr QSize smallestSize{480, 360};
constexpr QSize firstSize{640, 480};
constexpr int maxLogLines = 5000; // the oldest go
constexpr int startButtonWidth = 128;

template <typename Widget> Widget *named(const char *name, Widget *widget, const QString &toolTip = {})
{
    widget->setObjectName(QLatin1String(name));
    widget->setToolTip(toolTip);
    return widget;
}

} // namespace

BLFConverterDialog::BLFConverterDialog(QWidget *parent)
    : QDialog(parent)
    , m_parser(new BLF::BLFParser(this))
    , m_lastFolder(QDir::homePath())
    , m_inputEdit(named("lineEditInput", new QLineEdit))
    , m_browseInputButton(
          named("buttonBrowseInput", new QPushButton(tr("Browse...")), tr("Choose the BLF file to convert")))
    , m_outputEdit(named("lineEditOutput", new QLineEdit))
    , m_browseOutputButton(
          named("buttonBrowseOutput", new QPushButton(tr("Browse...")), tr("Choose the text file to write")))
    , m_csvButton(
          named("radioCsv", new QRadioButton(tr("CSV File (*.csv)")), tr("One line for each frame, for spreadsheets")))
    , m_ascButton(named("radioAsc", new QRadioButton(tr("ASC File (*.asc)")),
                        tr("One line for each frame, for programs that replay or analyse traffic")))
    , m_internalEventsBox(
          named("checkInternalEvents", new QCheckBox(tr("Export Internal Events")),
                tr("Also what is no frame: errors, bus statistics, system variables, changed settings")))
    , m_additionalInfoBox(named("checkAdditionalInfo", new QCheckBox(tr("Export Additional Info")),
                                tr("Also duration, number of bits, bit timing and checksum of frames")))
    , m_settings(createSettings())
    , m_log(named("textLog", new QPlainTextEdit))
    , m_progressBar(named("progressBar", new QProgressBar))
    , m_resetButton(
          named("buttonReset", new QPushButton(tr("Reset")), tr("Clear the paths and the log; CSV with all options")))
    , m_startButton(named("buttonStart", new QPushButton(tr("Start Conversion")),
                          tr("Needs an input file that exists, and an output file")))
{
    setWindowTitle(tr("BLF File Converter"));
    setWindowIcon(QIcon(QStringLiteral(":/resource/vci/blf.png")));
    setAcceptDrops(true);
    setSizeGripEnabled(true);

    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(12, 12, 12, 12);
    layout->setSpacing(8);
    layout->addWidget(m_settings);
    layout->addWidget(createLogGroup(), 1);
    layout->addLayout(createButtonRow());
    setMinimumSize(smallestSize);
    resize(firstSize);

    connectAll();
    onInputFilePathChanged();
    onOutputFilePathChanged();
    m_inputEdit->setFocus();
}

BLFConverterDialog::~BLFConverterDialog() = default;

QWidget *BLFConverterDialog::createSettings()
{
    auto *settings = new QWidget(this);
    auto *grid = new QGridLayout(settings);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->setSpacing(8);
    grid->setColumnStretch(1, 1);
    // Rows are added in the order of the Tab key.
    addPathRow(grid, tr("Input File:"), m_inputEdit, m_browseInputButton);
    addPathRow(grid, tr("Output File:"), m_outputEdit, m_browseOutputButton);
    addFormatRow(grid);
    addOptionRow(grid);
    return settings;
}

void BLFConverterDialog::addPathRow(QGridLayout *grid, const QString &text, QLineEdit *edit, QPushButton *browse)
{
    const int row = grid->rowCount();
    auto *label = new QLabel(text);
    label->setBuddy(edit);
    edit->setAcceptDrops(false); // it would take the address of a dropped file for text; the dialog takes the file
    browse->setAutoDefault(false);
    grid->addWidget(label, row, 0);
    grid->addWidget(edit, row, 1);
    grid->addWidget(browse, row, 2);
}

void BLFConverterDialog::addFormatRow(QGridLayout *grid)
{
    m_csvButton->setChecked(true);
    const int row = grid->rowCount();
    auto *buttons = new QHBoxLayout;
    buttons->setSpacing(16);
    buttons->addWidget(m_csvButton);
    buttons->addWidget(m_ascButton);
    buttons->addStretch(1);
    grid->addWidget(new QLabel(tr("Output Format:")), row, 0);
    grid->addLayout(buttons, row, 1, 1, 2);
}

void BLFConverterDialog::addOptionRow(QGridLayout *grid)
{
    auto *boxes = new QHBoxLayout;
    boxes->setSpacing(16);
    for (QCheckBox *box : {m_internalEventsBox, m_additionalInfoBox}) {
        box->setChecked(true);
        boxes->addWidget(box);
    }
    boxes->addStretch(1);
    grid->addLayout(boxes, grid->rowCount(), 1, 1, 2);
}

QWidget *BLFConverterDialog::createLogGroup()
{
    auto *group = new QGroupBox(tr("Processing Log"), this);
    m_log->setReadOnly(true);
    m_log->setUndoRedoEnabled(false);
    m_log->setMaximumBlockCount(maxLogLines);
    m_log->setAcceptDrops(false);
    m_log->setTabChangesFocus(true);
    m_log->setAccessibleName(group->title());
    m_progressBar->setRange(0, 100);
    m_progressBar->hide();

    auto *layout = new QVBoxLayout(group);
    layout->setContentsMargins(8, 8, 8, 8);
    layout->setSpacing(8);
    layout->addWidget(m_log, 1);
    layout->addWidget(m_progressBar);
    return group;
}

QBoxLayout *BLFConverterDialog::createButtonRow()
{
    m_resetButton->setAutoDefault(false);
    m_startButton->setMinimumWidth(startButtonWidth);
    m_startButton->setDefault(true);
    auto *row = new QHBoxLayout;
    row->setSpacing(8);
    row->addWidget(m_resetButton);
    row->addStretch(1);
    row->addWidget(m_startButton);
    return row;
}

void BLFConverterDialog::connectAll()
{
    connect(m_inputEdit, &QLineEdit::textEdited, this, &BLFConverterDialog::onInputFilePathEdited);
    connect(m_inputEdit, &QLineEdit::textChanged, this, &BLFConverterDialog::onInputFilePathChanged);
    connect(m_inputEdit, &QLineEdit::editingFinished, this, [this] { m_typedProposal.clear(); });
    connect(m_browseInputButton, &QPushButton::clicked, this, &BLFConverterDialog::onSelectInputFile);
    connect(m_outputEdit, &QLineEdit::textChanged, this, &BLFConverterDialog::onOutputFilePathChanged);
    connect(m_browseOutputButton, &QPushButton::clicked, this, &BLFConverterDialog::onSelectOutputFile);
    connect(m_csvButton, &QRadioButton::toggled, this, &BLFConverterDialog::onOutputFormatChanged); // of the two one
    connect(m_internalEventsBox, &QCheckBox::toggled, this, &BLFConverterDialog::onExportOptionChanged);
    connect(m_additionalInfoBox, &QCheckBox::toggled, this, &BLFConverterDialog::onExportOptionChanged);
    connect(m_resetButton, &QPushButton::clicked, this, &BLFConverterDialog::onResetClicked);
    connect(m_startButton, &QPushButton::clicked, this, &BLFConverterDialog::onProcessFile);
}
