// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QTableWidget>

#include <cstdint>

class QComboBox;
class QPushButton;
class TzVciCellComboBox;
class TzVciDeviceStore;
class TzVciRateComboBox;

/// One row of controls for each channel of one family of a device: the button that opens and closes it and its
/// settings, which are written straight into the channel's record. The same body serves CAN and LIN. UI thread.
class TzVciChannelTable : public QTableWidget
{
    Q_OBJECT
public:
    enum Column
    {
        ChannelColumn,
        TypeColumn,
        RateColumn,
        DataRateColumn,             ///< CAN
        LdfColumn = DataRateColumn, ///< LIN; empty, as no LDF files can be bound yet
        ConfigureColumn             ///< CAN
    };

    /// @param protocol  TzVciProtocolId::can or lin
    TzVciChannelTable(TzVciDeviceStore *store, std::uint8_t protocol, QWidget *parent = nullptr);

    std::uint8_t protocol() const { return m_protocol; }
    QString familyName() const;                  ///< "CAN" or "LIN"
    QString channelName(int channelIndex) const; ///< "CAN1" for index 0

    void showDevice(int deviceIndex); ///< makes the rows anew; none for a device that the store does not know
    void refreshStates();             ///< brings the channel buttons into line with the store
    void refreshState(int row);
    int clickedRow() const { return m_clickedRow; } ///< row, and so the channel, of the last click; -1 before the first

    QPushButton *channelButton(int row) const;
    QComboBox *typeCombo(int row) const;
    QComboBox *rateCombo(int row) const;
    QComboBox *dataRateCombo(int row) const;     ///< CAN, else null
    QPushButton *configureButton(int row) const; ///< CAN, else null

Q_SIGNALS:
    void channelClicked();   ///< a channel button; see clickedRow()
    void configureClicked(); ///< a "Configure" button; see clickedRow()

protected:
    bool eventFilter(QObject *watched, QEvent *event) override; ///< scrolls to a control that Tab reaches

private:
    struct Family;
    static const Family &familyOf(std::uint8_t protocol);

    void addRow(int row);
    QPushButton *makeChannelButton(int row);
    TzVciCellComboBox *makeTypeCombo(int row);
    TzVciRateComboBox *makeRateCombo(int row);
    TzVciRateComboBox *makeDataRateCombo(int row);
    QPushButton *makeConfigureButton(int row);
    void setCell(int row, int column, QWidget *control, const QString &name, const QString &accessibleName);
    template <typename Control> Control *cellControl(int row, int column) const;

    TzVciDeviceStore *const m_store;
    const std::uint8_t m_protocol;
    const Family &m_family;
    int m_deviceIndex = -1;
    int m_clickedRow = -1;
};
