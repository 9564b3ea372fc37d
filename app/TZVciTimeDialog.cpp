// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/TZVciTimeDialog.h"

#include "common/UnifiedTimeManager.h"
#include "common/ui/WaitCursor.h"
#include "vci/TzVciDeviceManager.h"

#include <QButtonGroup>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLocale>
#include <QMessageBox>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalBlocker>
#include <QVBoxLayout>

TZVciTimeDialog::TZVciTimeDialog(TzVciDeviceManager *manager, QWidget *parent)
    : QDialog(parent)
    , m_manager(manager)
    , m_mode(manager ? manager->displayMode() : Common::TimestampDisplayMode::GlobalRelativeTime)
    , m_factor(manager ? manager->timeManager().getTimeScaleFactor() : Common::UnifiedTimeManager::defaultScaleFactor)
    , m_modeButtons(new QButtonGroup(this))
    , m_factorCombo(new QComboBox(this))
    , m_resetButton(new QPushButton(tr("Reset Time"), this))
{
    setWindowTitle(tr("Device Time Settings"));
    setWindowIcon(QIcon(QStringLiteral(":/resource/time.png")));
    m_factorCombo->setObjectName(QStringLiteral("comboFactor"));
    m_resetButton->setObjectName(QStringLiteral("buttonReset"));
    buildLayout();
    m_modeButtons->button(static_cast<int>(m_mode))->setChecked(true);
    m_modeButtons->checkedButton()->setFocus(); // from which the arrow keys go through the modes
    selectFactor();

    connect(m_modeButtons, qOverload<QAbstractButton *, bool>(&QButtonGroup::buttonToggled), this,
            &TZVciTimeDialog::onDisplayModeChanged);
    connect(m_factorCombo, qOverload<int>(&QComboBox::currentIndexChanged), this,
            &TZVciTimeDialog::onTimeScaleFactorChanged);
    connect(m_resetButton, &QPushButton::clicked, this, &TZVciTimeDialog::onResetTimeButtonClicked);
}

QGroupBox *TZVciTimeDialog::makeModeGroup()
{
    const QString texts[] = {tr("Absolute Time (2025-05-07 14:30:22.123456)"), tr("Relative Time (3.123456 s)"),
                             tr("Global Relative Time (25.678901 s)"), tr("Delta Time (Δ 0.001234 s)"),
                             tr("Time of Day (14:30:22.123456)")}; // in the order of the modes
    auto *group = new QGroupBox(tr("Timestamp Display Mode"), this);
    auto *layout = new QVBoxLayout(group);
    layout->setContentsMargins(8, 8, 8, 8);
    layout->setSpacing(8);
    int mode = 0;
    for (const QString &text : texts) {
        auto *button = new QRadioButton(text, group);
        button->setObjectName(QStringLiteral("radioMode%1").arg(mode));
        m_modeButtons->addButton(button, mode++);
        layout->addWidget(button);
    }
    return group;
}

QGroupBox *TZVciTimeDialog::makePrecisionGroup()
{
    m_factorCombo->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    m_factorCombo->addItem(tr("Seconds (1.0)"), 1.0);
    m_factorCombo->addItem(tr("Milliseconds (1000.0)"), 1000.0);
    m_factorCombo->addItem(tr("Microseconds (1000000.0)"), 1000000.0);
    m_factorCombo->addItem(tr("Nanoseconds (1000000000.0)"), 1000000000.0);

    auto *group = new QGroupBox(tr("Time Precision"), this);
    auto *label = new QLabel(tr("Time Scale Factor:"), group);
    label->setBuddy(m_factorCombo);
    auto *note = new QLabel(tr("Factor determines the time precision: 1.0=seconds, 1000.0=milliseconds, "
                               "1000000.0=microseconds"),
                            group);
    note->setObjectName(QStringLiteral("labelNote"));
    note->setWordWrap(true);
    note->setForegroundRole(QPalette::PlaceholderText);

    auto *factor = new QHBoxLayout;
    factor->setSpacing(8);
    factor->addWidget(label);
    factor->addWidget(m_factorCombo, 1);
    auto *layout = new QVBoxLayout(group);
    layout->setContentsMargins(8, 8, 8, 8);
    layout->setSpacing(8);
    layout->addLayout(factor);
    layout->addWidget(note);
    return group;
}

void TZVciTimeDialog::buildLayout()
{
    m_resetButton->setToolTip(tr("Reset the global reference time to the current time"));
    m_resetButton->setAutoDefault(false);
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    buttons->button(QDialogButtonBox::Ok)->setText(tr("OK"));
    buttons->button(QDialogButtonBox::Cancel)->setText(tr("Cancel"));
    connect(buttons, &QDialogButtonBox::accepted, this, &TZVciTimeDialog::onAccepted);
    connect(buttons, &QDialogButtonBox::rejected, this, &TZVciTimeDialog::reject);

    auto *bottom = new QHBoxLayout;
    bottom->setSpacing(8);
    bottom->addWidget(m_resetButton);
    bottom->addStretch(1);
    bottom->addWidget(buttons);

    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(12, 8, 12, 12);
    layout->setSpacing(12);
    layout->addWidget(makeModeGroup());
    layout->addWidget(makePrecisionGroup());
    layout->addStretch(1);
    layout->addLayout(bottom);
    setMinimumWidth(424);

    QWidgetList order;
    for (QAbstractButton *mode : m_modeButtons->buttons())
        order.append(mode);
    order.append({m_factorCombo, m_resetButton, buttons->button(QDialogButtonBox::Ok),
                  buttons->button(QDialogButtonBox::Cancel)});
    for (int i = 1; i < order.size(); ++i)
        setTabOrder(order.at(i - 1), order.at(i));
}

// A factor that no item has, as another program path may have set it, gets an item of its own.
void TZVciTimeDialog::selectFactor()
{
    int index = 0; // found by an exact comparison: that of the combo box takes close numbers for equal
    while (index < m_factorCombo->count() && m_factorCombo->itemData(index).toDouble() != m_factor)
        ++index;
    if (index == m_factorCombo->count()) {
        const QString number = QString::number(m_factor, 'g', QLocale::FloatingPointShortest);
        m_factorCombo->addItem(tr("Custom (%1)").arg(number), m_factor);
    }
    m_factorCombo->setCurrentIndex(index);
}

void TZVciTimeDialog::onDisplayModeChanged()
{
    const int mode = m_modeButtons->checkedId();
    if (mode >= 0)
        m_mode = static_cast<Common::TimestampDisplayMode>(mode);
}

void TZVciTimeDialog::onTimeScaleFactorChanged(int index)
{
    const QVariant factor = m_factorCombo->itemData(index);
    if (factor.isValid())
        m_factor = factor.toDouble();
}

void TZVciTimeDialog::onResetTimeButtonClicked()
{
    if (!m_manager) {
        showManagerMissing();
        return;
    }
    const auto answer = QMessageBox::question(this, tr("Reset Global Reference Time"),
                                              tr("This will reset the global reference time to the current time.\n"
                                                 "All relative timestamps will be recalculated from now.\n\n"
                                                 "Do you want to continue?"));
    if (answer != QMessageBox::Yes)
        return;
    Q_EMIT sigResetTime();
    {
        const Common::WaitCursor waitCursor; // a device may take 500 ms to tell its time
        m_manager->resetTimeBase();
    }
    Q_EMIT sigTimesChanged();
    QMessageBox::information(this, tr("Time Reset"), tr("Global reference time has been reset to current time."));
}

void TZVciTimeDialog::onAccepted()
{
    if (!m_manager) {
        showManagerMissing();
        return;
    }
    m_manager->setDisplayMode(m_mode);
    m_manager->timeManager().setTimeScaleFactor(m_factor);
    Q_EMIT sigTimesChanged();
    accept();
}

void TZVciTimeDialog::showManagerMissing()
{
    QMessageBox::critical(this, tr("Error"), tr("Time manager not available"));
}
