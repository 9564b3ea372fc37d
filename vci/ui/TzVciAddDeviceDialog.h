// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>

class QFormLayout;
class QSpinBox;
class TzVciDeviceStore;

/// Asks for the index and the channel counts of a device that no scan has found. UI thread.
class TzVciAddDeviceDialog : public QDialog
{
    Q_OBJECT
public:
    /// Presets the lowest index that the store does not have.
    explicit TzVciAddDeviceDialog(const TzVciDeviceStore &store, QWidget *parent = nullptr);

    int deviceIndex() const;
    int canChannels() const;
    int linChannels() const;

private:
    QSpinBox *addSpinBox(QFormLayout *form, const QString &label, const QString &name, int maximum, int value);

    QSpinBox *m_indexSpin;
    QSpinBox *m_canSpin;
    QSpinBox *m_linSpin;
};
