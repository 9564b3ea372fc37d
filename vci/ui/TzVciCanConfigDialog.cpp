// SPDX-License-Identifier: GPL-3.0-or-later
#include "vci/ui/TzVciCanConfigDialog.h"

#include "vci/TzVciDeviceStore.h"

#include <QCheckBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QSpinBox>
#include <QVBoxLayout>

namespace {

const char *styleOf(TzVciBitTiming::SamplePointRating rating)
{
    switch (rating) {
    case TzVciBitTiming::SamplePointRating::Good: return "color: green;";
    case TzVciBitTiming::SamplePointRating::Acceptable: return "color: orange;";
    case TzVciBitTiming::SamplePointRating::Poor: return "color: red;";
    }
    return "";
}

void showSamplePoint(QLabel *label, const TzVciBitTiming &timing)
{
    label->setText(QStringLiteral("%1%").arg(timing.samplePointPercent(), 0, 'f', 1));
    label->setStyleSheet(QString::fromLatin1(styleOf(timing.samplePointRating())));
}

void showValidity(QLabel *label, const TzVciBitTiming &timing)
{
    const bool valid = timing.isDividerValid();
    label->setText(valid ? TzVciCanConfigDialog::tr("Valid") : TzVciCanConfigDialog::tr("Invalid divider"));
    label->setStyleSheet(valid ? QStringLiteral("color: green; font-weight: bold;")
                               : QStringLiteral("color: red; font-weight: bold;"));
}

QString invalidLine(const QString &pattern, const TzVciBitTiming &timing)
{
    return pattern.arg(TzVciBitTiming::clockMhz)
        .arg(timing.seg1)
        .arg(timing.seg2)
        .arg(timing.bitRate)
        .arg(timing.divider(), 0, 'f', 4);
}

} // namespace

TzVciBitTiming TzVciCanConfigDialog::Phase::timing() const
{
    return {seg1->value(), seg2->value(), bitRate};
}

TzVciCanConfigDialog::TzVciCanConfigDialog(TzVciDeviceStore *store, int deviceIndex, int channelIndex, QWidget *parent)
    : QDialog(parent)
    , m_store(store)
    , m_deviceIndex(deviceIndex)
    , m_channelIndex(channelIndex)
    , m_resistorCheck(new QCheckBox(tr("Enable Terminal Resistor"), this))
    , m_applyButton(new QPushButton(tr("Apply"), this))
    , m_resetButton(new QPushButton(tr("Reset"), this))
{
    setWindowTitle(tr("CAN FD Advanced Configuration - Device %1 CAN%2").arg(deviceIndex).arg(channelIndex + 1));
    m_resistorCheck->setObjectName(QStringLiteral("checkResistor"));
    m_applyButton->setObjectName(QStringLiteral("buttonApply"));
    m_resetButton->setObjectName(QStringLiteral("buttonReset"));
    buildLayout();
    loadRecord();

    for (QSpinBox *spin : {m_nominal.seg1, m_nominal.seg2, m_data.seg1, m_data.seg2}) {
        connect(spin, qOverload<int>(&QSpinBox::valueChanged), this, &TzVciCanConfigDialog::updateSamplePoint);
        connect(spin, qOverload<int>(&QSpinBox::valueChanged), this, &TzVciCanConfigDialog::validateTimingParameters);
    }
    connect(m_applyButton, &QPushButton::clicked, this, &TzVciCanConfigDialog::onApplyClicked);
    connect(m_resetButton, &QPushButton::clicked, this, &TzVciCanConfigDialog::onResetClicked);
    updateSamplePoint();
    validateTimingParameters();
    m_nominal.seg1->setFocus();
    m_nominal.seg1->selectAll(); // what is typed replaces the value
}

QGroupBox *TzVciCanConfigDialog::makePhaseGroup(const QString &title, const QString &name, int maxSeg1, int maxSeg2,
                                                Phase &phase)
{
    auto *group = new QGroupBox(title, this);
    const auto makeSpin = [group, &name](const char *suffix, int maximum) {
        auto *spin = new QSpinBox(group);
        spin->setObjectName(name + QLatin1String(suffix));
        spin->setRange(1, maximum);
        spin->setMinimumWidth(96);
        return spin;
    };
    const auto makeLabel = [group, &name](const char *suffix) {
        auto *label = new QLabel(group);
        label->setObjectName(name + QLatin1String(suffix));
        return label;
    };
    phase.seg1 = makeSpin("Seg1", maxSeg1);
    phase.seg2 = makeSpin("Seg2", maxSeg2);
    phase.samplePoint = makeLabel("SamplePoint");
    phase.validity = makeLabel("Validity");

    auto *form = new QFormLayout(group);
    form->setContentsMargins(12, 12, 12, 12);
    form->setHorizontalSpacing(12);
    form->setVerticalSpacing(8);
    form->addRow(tr("Seg1 (1-%1):").arg(maxSeg1), phase.seg1);
    form->addRow(tr("Seg2 (1-%1):").arg(maxSeg2), phase.seg2);
    form->addRow(tr("Sample Point:"), phase.samplePoint);
    form->addRow(tr("Validity:"), phase.validity);
    return group;
}

QGroupBox *TzVciCanConfigDialog::makeResistorGroup()
{
    auto *group = new QGroupBox(tr("Terminal Resistor"), this);
    auto *layout = new QVBoxLayout(group);
    layout->setContentsMargins(12, 12, 12, 12);
    layout->addWidget(m_resistorCheck);
    return group;
}

void TzVciCanConfigDialog::buildLayout()
{
    auto *phases = new QHBoxLayout;
    phases->setSpacing(12);
    phases->addWidget(makePhaseGroup(tr("Nominal Bit Timing"), QStringLiteral("nominal"), 64, 32, m_nominal));
    phases->addWidget(makePhaseGroup(tr("Data Bit Timing"), QStringLiteral("data"), 32, 16, m_data));

    auto *note = new QLabel(
        tr("Note: Device clock is %1 MHz. Parameters must yield an integer divider.").arg(TzVciBitTiming::clockMhz),
        this);
    note->setObjectName(QStringLiteral("labelNote"));

    m_applyButton->setDefault(true);
    auto *buttons = new QHBoxLayout;
    buttons->setSpacing(8);
    buttons->addStretch(1);
    for (QPushButton *button : {m_applyButton, m_resetButton}) {
        button->setMinimumWidth(88);
        buttons->addWidget(button);
    }

    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(12, 12, 12, 12);
    layout->setSpacing(12);
    layout->addLayout(phases);
    layout->addWidget(makeResistorGroup());
    layout->addWidget(note);
    layout->addLayout(buttons);
    layout->setSizeConstraint(QLayout::SetFixedSize);
    setTabOrder(m_data.seg2, m_resistorCheck);
    setTabOrder(m_resistorCheck, m_applyButton);
    setTabOrder(m_applyButton, m_resetButton);
}

void TzVciCanConfigDialog::loadRecord()
{
    const TzVciCanChannelConfig defaults;
    const TzVciCanChannelConfig *config = m_store->canChannelConfig(m_deviceIndex, m_channelIndex);
    if (!config)
        config = &defaults;
    m_nominal.bitRate = config->baudRate;
    m_data.bitRate = config->fdBaudRate;
    setSegments(config->nominalSeg1, config->nominalSeg2, config->dataSeg1, config->dataSeg2);
    m_resistorCheck->setChecked(config->terminalResistorEnabled);
}

void TzVciCanConfigDialog::setSegments(int nominalSeg1, int nominalSeg2, int dataSeg1, int dataSeg2)
{
    m_nominal.seg1->setValue(nominalSeg1);
    m_nominal.seg2->setValue(nominalSeg2);
    m_data.seg1->setValue(dataSeg1);
    m_data.seg2->setValue(dataSeg2);
}

void TzVciCanConfigDialog::updateSamplePoint()
{
    for (const Phase *phase : {&m_nominal, &m_data})
        showSamplePoint(phase->samplePoint, phase->timing());
}

void TzVciCanConfigDialog::validateTimingParameters()
{
    for (const Phase *phase : {&m_nominal, &m_data})
        showValidity(phase->validity, phase->timing());
}

bool TzVciCanConfigDialog::confirmInvalidTiming()
{
    const TzVciBitTiming nominal = m_nominal.timing();
    const TzVciBitTiming dataPhase = m_data.timing();
    QStringList lines{tr("Timing parameters are invalid and may cause communication errors."), QString()};
    if (!nominal.isDividerValid())
        lines << invalidLine(tr("Nominal timing: %1 MHz / (%2 + %3 + 1) * %4 bps = %5 (not an integer)"), nominal);
    if (!dataPhase.isDividerValid())
        lines << invalidLine(tr("Data timing: %1 MHz / (%2 + %3 + 1) * %4 bps = %5 (not an integer)"), dataPhase);
    lines << QString() << tr("Do you want to continue anyway?");
    return QMessageBox::warning(this, tr("Invalid Parameters"), lines.join(QLatin1Char('\n')),
                                QMessageBox::Yes | QMessageBox::No, QMessageBox::No) == QMessageBox::Yes;
}

void TzVciCanConfigDialog::onApplyClicked()
{
    TzVciCanChannelConfig *config = m_store->canChannelConfig(m_deviceIndex, m_channelIndex);
    if (!config) {
        QMessageBox::critical(this, tr("Error"), tr("Failed to get CAN configuration"));
        return;
    }
    const bool valid = m_nominal.timing().isDividerValid() && m_data.timing().isDividerValid();
    if (!valid && !confirmInvalidTiming())
        return;
    config->nominalSeg1 = static_cast<std::uint8_t>(m_nominal.seg1->value());
    config->nominalSeg2 = static_cast<std::uint8_t>(m_nominal.seg2->value());
    config->dataSeg1 = static_cast<std::uint8_t>(m_data.seg1->value());
    config->dataSeg2 = static_cast<std::uint8_t>(m_data.seg2->value());
    config->terminalResistorEnabled = m_resistorCheck->isChecked();
    accept();
}

void TzVciCanConfigDialog::onResetClicked()
{
    setSegments(TzVciBitTimingDefault::nominalSeg1, TzVciBitTimingDefault::nominalSeg2, TzVciBitTimingDefault::dataSeg1,
                TzVciBitTimingDefault::dataSeg2);
    m_resistorCheck->setChecked(true);
}
