// SPDX-License-Identifier: GPL-3.0-or-later
#include "vci/ui/TzVciAddDeviceDialog.h"

#include "vci/TzVciDeviceStore.h"
#include "vci/TzVciTypes.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QSpinBox>
#include <QVBoxLayout>

namespace {

int lowestFreeIndex(const TzVciDeviceStore &store)
{
    for (int index = 0; index < tzVciMaxDevices; ++index) {
        if (!store.hasDevice(index))
            return index;
    }
    return 0; // none is free: whatever is chosen, the user is told that it exists
}

} // namespace

TzVciAddDeviceDialog::TzVciAddDeviceDialog(const TzVciDeviceStore &store, QWidget *parent)
    : QDialog(parent)
{
    setWindowTitle(tr("Add Virtual Device"));
    auto *form = new QFormLayout;
    form->setHorizontalSpacing(12);
    form->setVerticalSpacing(8);
    m_indexSpin = addSpinBox(form, tr("Device Index:"), QStringLiteral("spinDeviceIndex"), tzVciMaxDevices - 1,
                             lowestFreeIndex(store));
    m_canSpin =
        addSpinBox(form, tr("CAN Channels:"), QStringLiteral("spinCanChannels"), tzVciMaxChannels, tzVciMaxChannels);
    m_linSpin =
        addSpinBox(form, tr("LIN Channels:"), QStringLiteral("spinLinChannels"), tzVciMaxChannels, tzVciMaxChannels);

    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(16, 16, 16, 12);
    layout->setSpacing(16);
    layout->addLayout(form);
    layout->addWidget(buttons);
    layout->setSizeConstraint(QLayout::SetFixedSize);
    m_indexSpin->setFocus();
    m_indexSpin->selectAll(); // what is typed replaces the value
}

QSpinBox *TzVciAddDeviceDialog::addSpinBox(QFormLayout *form, const QString &label, const QString &name, int maximum,
                                           int value)
{
    auto *spin = new QSpinBox(this);
    spin->setObjectName(name);
    spin->setRange(0, maximum);
    spin->setValue(value);
    spin->setMinimumWidth(120);
    form->addRow(label, spin); // the label is also the accessible name
    return spin;
}

int TzVciAddDeviceDialog::deviceIndex() const
{
    return m_indexSpin->value();
}

int TzVciAddDeviceDialog::canChannels() const
{
    return m_canSpin->value();
}

int TzVciAddDeviceDialog::linChannels() const
{
    return m_linSpin->value();
}
