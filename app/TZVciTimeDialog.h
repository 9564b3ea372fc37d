// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "common/TimestampDisplayMode.h"

#include <QDialog>

class QButtonGroup;
class QComboBox;
class QGroupBox;
class QPushButton;
class TzVciDeviceManager;

/// How time stamps are shown, and what they count from. OK takes the choice over, "Reset Time" acts at once. UI thread.
class TZVciTimeDialog : public QDialog
{
    Q_OBJECT
public:
    /// Shows the manager's settings as they are now.
    /// @param manager  outlives the dialog; may be null, then the defaults are shown and nothing can be set
    explicit TZVciTimeDialog(TzVciDeviceManager *manager, QWidget *parent = nullptr);

Q_SIGNALS:
    /// The user agreed to make the present moment the reference; emitted before that is done.
    void sigResetTime();
    /// The times of frames that are shown already read differently now: the reference, the mode or the factor is set.
    void sigTimesChanged();

public Q_SLOTS:
    void onDisplayModeChanged();
    void onTimeScaleFactorChanged(int index);
    void onResetTimeButtonClicked();
    void onAccepted();

private:
    QGroupBox *makeModeGroup();
    QGroupBox *makePrecisionGroup();
    void buildLayout();
    void selectFactor();
    void showManagerMissing();

    TzVciDeviceManager *const m_manager;
    Common::TimestampDisplayMode m_mode;
    double m_factor;
    QButtonGroup *m_modeButtons; // their ids are the modes
    QComboBox *m_factorCombo;
    QPushButton *m_resetButton;
};
