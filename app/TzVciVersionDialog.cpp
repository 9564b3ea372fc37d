// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/TzVciVersionDialog.h"

#include "app/VciBuildInfo.h"
#include "common/ui/UiUtils.h"
#include "common/ui/WaitCursor.h"
#include "vci/TzVciDeviceManager.h"
#include "vci/TzVciDeviceStore.h"

#include <QComboBox>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QVBoxLayout>

#include <cstdint>

namespace {

constexpr int buttonWidth = 144; // pixels, the same for all three

// Byte @p part of a packed version, 3 for the first of its four numbers.
std::uint32_t versionPart(std::uint32_t version, int part)
{
    return version >> (8 * part) & 0xFF;
}

QHBoxLayout *makeLine(QGroupBox *group)
{
    auto *line = new QHBoxLayout(group);
    line->setContentsMargins(8, 8, 8, 8);
    line->setSpacing(8);
    return line;
}

} // namespace

TzVciVersionDialog::TzVciVersionDialog(TzVciDeviceManager *manager, TzVciDeviceStore *store, const QString &programName,
                                       const QString &programVersion, QWidget *parent)
    : QDialog(parent)
    , m_manager(manager)
    , m_store(store)
    , m_updateButton(makeButton(QStringLiteral("buttonUpdate"), tr("Check for Updates"),
                                &TzVciVersionDialog::onUpdateButtonClicked))
    , m_deviceCombo(new QComboBox(this))
    , m_queryButton(makeButton(QStringLiteral("buttonQuery"), tr("Query"), &TzVciVersionDialog::onQueryButtonClicked))
    , m_helpButton(
          makeButton(QStringLiteral("buttonHelp"), tr("Open Help Document"), &TzVciVersionDialog::onHelpButtonClicked))
{
    setWindowTitle(tr("%1 Version Information").arg(programName));
    setWindowIcon(QIcon(QStringLiteral(":/resource/copyright.png")));
    m_deviceCombo->setObjectName(QStringLiteral("comboDevice"));
    m_deviceCombo->setAccessibleName(tr("Device"));

    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(12, 8, 12, 12);
    layout->setSpacing(12);
    layout->addWidget(makeSoftwareGroup(programVersion));
    layout->addWidget(makeHardwareGroup());
    layout->addWidget(makeHelpGroup());
    layout->addStretch(1);
    setMinimumWidth(464);
    m_updateButton->setFocus();
    setTabOrder(m_updateButton, m_deviceCombo);
    setTabOrder(m_deviceCombo, m_queryButton);
    setTabOrder(m_queryButton, m_helpButton);
}

QPushButton *TzVciVersionDialog::makeButton(const QString &name, const QString &text,
                                            void (TzVciVersionDialog::*onClicked)())
{
    auto *button = new QPushButton(text, this);
    button->setObjectName(name);
    button->setMinimumWidth(buttonWidth);
    connect(button, &QPushButton::clicked, this, onClicked);
    return button;
}

QGroupBox *TzVciVersionDialog::makeSoftwareGroup(const QString &programVersion)
{
    auto *group = new QGroupBox(tr("Software Information"), this);
    auto *version = new QLabel(
        QStringLiteral("%1 %2 %3")
            .arg(programVersion, QLatin1String(VciBuildInfo::buildDate()), QLatin1String(VciBuildInfo::buildTime())),
        group);
    version->setObjectName(QStringLiteral("labelVersion"));
    version->setTextFormat(Qt::PlainText); // which keeps the two blanks before a day of one digit
    version->setTextInteractionFlags(Qt::TextSelectableByMouse);
    QHBoxLayout *line = makeLine(group);
    line->addWidget(new QLabel(tr("Version:"), group));
    line->addWidget(version, 1);
    line->addWidget(m_updateButton);
    return group;
}

QGroupBox *TzVciVersionDialog::makeHardwareGroup()
{
    auto *group = new QGroupBox(tr("Hardware Version"), this);
    for (const int index : m_store->deviceIndices())
        m_deviceCombo->addItem(tr("Device %1").arg(index), index);
    m_queryButton->setToolTip(tr("Ask the device, which must be open, for the version of its firmware"));
    const bool anyDevice = m_deviceCombo->count() > 0;
    m_deviceCombo->setEnabled(anyDevice);
    m_queryButton->setEnabled(anyDevice);
    QHBoxLayout *line = makeLine(group);
    line->addWidget(m_deviceCombo, 1);
    line->addWidget(m_queryButton);
    return group;
}

QGroupBox *TzVciVersionDialog::makeHelpGroup()
{
    auto *group = new QGroupBox(tr("Help"), this);
    QHBoxLayout *line = makeLine(group);
    line->addStretch(1);
    line->addWidget(m_helpButton);
    return group;
}

void TzVciVersionDialog::onQueryButtonClicked()
{
    const QString name = m_deviceCombo->currentText();
    const auto device = m_manager->getDevice(m_deviceCombo->currentData().toInt());
    if (!device || device->deviceIndex() < 0) { // the manager keeps a device whose link was lost
        QMessageBox::critical(this, tr("Error"), tr("The current %1 is not open").arg(name));
        return;
    }
    std::uint32_t version = 0;
    {
        const Common::WaitCursor waitCursor;
        version = device->readFirmwareVersion();
    }
    const QString text = tr("%1 Firmware version: v%2.%3.%4.%5")
                             .arg(name)
                             .arg(versionPart(version, 3))
                             .arg(versionPart(version, 2))
                             .arg(versionPart(version, 1))
                             .arg(versionPart(version, 0));
    QMessageBox::information(this, tr("Version"), text);
}

void TzVciVersionDialog::onUpdateButtonClicked()
{
    Common::UiUtils::checkForUpdates(false);
}

void TzVciVersionDialog::onHelpButtonClicked()
{
    Common::UiUtils::openHelpFile(QStringLiteral("doc/TZBench.pdf"), nullptr);
}
