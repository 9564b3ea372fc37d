// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>

class QComboBox;
class QGroupBox;
class QPushButton;
class TzVciDeviceManager;
class TzVciDeviceStore;

/// The version of the program and, on request, of a device's firmware; the way to the manual. UI thread.
class TzVciVersionDialog : public QDialog
{
    Q_OBJECT
public:
    /// The pointers must outlive the dialog, which lists the devices that the store knows now.
    TzVciVersionDialog(TzVciDeviceManager *manager, TzVciDeviceStore *store, const QString &programName,
                       const QString &programVersion, QWidget *parent = nullptr);

public Q_SLOTS:
    void onQueryButtonClicked();
    void onUpdateButtonClicked();
    void onHelpButtonClicked();

private:
    QGroupBox *makeSoftwareGroup(const QString &programVersion);
    QGroupBox *makeHardwareGroup();
    QGroupBox *makeHelpGroup();
    QPushButton *makeButton(const QString &name, const QString &text, void (TzVciVersionDialog::*onClicked)());

    TzVciDeviceManager *const m_manager;
    TzVciDeviceStore *const m_store;
    QPushButton *m_updateButton;
    QComboBox *m_deviceCombo;
    QPushButton *m_queryButton;
    QPushButton *m_helpButton;
};
