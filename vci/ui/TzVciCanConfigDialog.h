// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "vci/TzVciBitTiming.h"

#include <QDialog>

#include <cstdint>

class QCheckBox;
class QGroupBox;
class QLabel;
class QPushButton;
class QSpinBox;
class TzVciDeviceStore;

/// Edits the CAN FD bit timing and the terminal resistor of one channel. Nothing is written before Apply; what is
/// written takes effect when the channel is next opened. UI thread.
class TzVciCanConfigDialog : public QDialog
{
    Q_OBJECT
public:
    /// Shows the channel's settings, or the defaults if there is no such channel; Apply then reports an error.
    TzVciCanConfigDialog(TzVciDeviceStore *store, int deviceIndex, int channelIndex, QWidget *parent = nullptr);

private Q_SLOTS:
    void onApplyClicked();
    void onResetClicked();
    void updateSamplePoint();
    void validateTimingParameters();

private:
    /// The controls of one phase, nominal or data.
    struct Phase
    {
        QSpinBox *seg1 = nullptr;
        QSpinBox *seg2 = nullptr;
        QLabel *samplePoint = nullptr;
        QLabel *validity = nullptr;
        std::uint32_t bitRate = 0;

        TzVciBitTiming timing() const;
    };

    QGroupBox *makePhaseGroup(const QString &title, const QString &name, int maxSeg1, int maxSeg2, Phase &phase);
    QGroupBox *makeResistorGroup();
    void buildLayout();
    void loadRecord();
    void setSegments(int nominalSeg1, int nominalSeg2, int dataSeg1, int dataSeg2);
    bool confirmInvalidTiming();

    TzVciDeviceStore *const m_store;
    const int m_deviceIndex;
    const int m_channelIndex;
    Phase m_nominal;
    Phase m_data;
    QCheckBox *m_resistorCheck;
    QPushButton *m_applyButton;
    QPushButton *m_resetButton;
};
