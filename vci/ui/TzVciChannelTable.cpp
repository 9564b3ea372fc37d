// SPDX-License-Identifier: GPL-3.0-or-later
#include "vci/ui/TzVciChannelTable.h"

#include "vci/TzVciBitRates.h"
#include "vci/TzVciDeviceStore.h"
#include "vci/TzVciTypes.h"
#include "vci/ui/TzVciRateComboBox.h"

#include <QFocusEvent>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QPushButton>
#include <QSignalBlocker>

#include <vector>

/// In what the two families differ.
struct TzVciChannelTable::Family
{
    QString name;
    QStringList types;
    std::span<const TzVciBitRate> (*rates)() noexcept;
    QStringList headers;
    std::vector<int> widths; // in pixels; the last column stretches
    TzVciSetting<QString> *(*type)(TzVciDeviceStore &store, int deviceIndex, int channelIndex);
};

namespace {

constexpr int channelRowHeight = 28; // pixels
constexpr int cellMargin = 2;

// Null for a channel that the store does not know.
template <auto configOf> TzVciSetting<QString> *typeOf(TzVciDeviceStore &store, int deviceIndex, int channelIndex)
{
    auto *config = (store.*configOf)(deviceIndex, channelIndex);
    return config ? &config->type : nullptr;
}

} // namespace

const TzVciChannelTable::Family &TzVciChannelTable::familyOf(std::uint8_t protocol)
{
    static const Family can{
        .name = QStringLiteral("CAN"),
        .types = {QStringLiteral("CAN"), QStringLiteral("CANFD"), QStringLiteral("CANFDBRS")},
        .rates = &TzVciBitRates::canNominal,
        .headers = {tr("CH"), tr("Type"), tr("Baud"), tr("FD"), tr("Cfg")},
        .widths = {104, 124, 124, 124},
        .type = &typeOf<&TzVciDeviceStore::canChannelConfig>,
    };
    static const Family lin{
        .name = QStringLiteral("LIN"),
        .types = {QStringLiteral("Master"), QStringLiteral("Slave")},
        .rates = &TzVciBitRates::lin,
        .headers = {tr("CH"), tr("Type"), tr("Baud"), tr("LDF")},
        .widths = {104, 124, 124},
        .type = &typeOf<&TzVciDeviceStore::linChannelConfig>,
    };
    return protocol == TzVciProtocolId::lin ? lin : can;
}

TzVciChannelTable::TzVciChannelTable(TzVciDeviceStore *store, std::uint8_t protocol, QWidget *parent)
    : QTableWidget(parent)
    , m_store(store)
    , m_protocol(protocol)
    , m_family(familyOf(protocol))
{
    setColumnCount(m_family.headers.size());
    setHorizontalHeaderLabels(m_family.headers);
    for (std::size_t column = 0; column < m_family.widths.size(); ++column)
        setColumnWidth(static_cast<int>(column), m_family.widths[column]);
    horizontalHeader()->setStretchLastSection(true);
    horizontalHeader()->setSectionsClickable(false);
    verticalHeader()->hide();
    verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    verticalHeader()->setDefaultSectionSize(channelRowHeight);
    setSelectionMode(QAbstractItemView::NoSelection);
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setFocusPolicy(Qt::NoFocus); // Tab goes from control to control
    setTabKeyNavigation(false);
    setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
}

QString TzVciChannelTable::familyName() const
{
    return m_family.name;
}

QString TzVciChannelTable::channelName(int channelIndex) const
{
    return QStringLiteral("%1%2").arg(m_family.name).arg(channelIndex + 1);
}

void TzVciChannelTable::showDevice(int deviceIndex)
{
    m_deviceIndex = deviceIndex;
    m_clickedRow = -1;
    setRowCount(0);
    const int channels = m_protocol == TzVciProtocolId::lin ? m_store->linChannelCount(deviceIndex)
                                                            : m_store->canChannelCount(deviceIndex);
    setRowCount(channels);
    for (int row = 0; row < channels; ++row)
        addRow(row);
    refreshStates();
}

void TzVciChannelTable::addRow(int row)
{
    const QString channel = channelName(row);
    setCell(row, ChannelColumn, makeChannelButton(row), QStringLiteral("buttonChannel"), channel);
    setCell(row, TypeColumn, makeTypeCombo(row), QStringLiteral("comboType"), tr("%1 type").arg(channel));
    setCell(row, RateColumn, makeRateCombo(row), QStringLiteral("comboBaud"), tr("%1 bit rate").arg(channel));
    if (m_protocol != TzVciProtocolId::can)
        return;
    setCell(row, DataRateColumn, makeDataRateCombo(row), QStringLiteral("comboFdBaud"),
            tr("%1 data bit rate").arg(channel));
    setCell(row, ConfigureColumn, makeConfigureButton(row), QStringLiteral("buttonConfigure"),
            tr("Configure %1").arg(channel));
}

void TzVciChannelTable::setCell(int row, int column, QWidget *control, const QString &name,
                                const QString &accessibleName)
{
    control->setObjectName(name);
    control->setAccessibleName(accessibleName);
    auto *cell = new QWidget(this);
    auto *layout = new QHBoxLayout(cell);
    layout->setContentsMargins(2 * cellMargin, cellMargin, 2 * cellMargin, cellMargin);
    layout->addWidget(control);
    setCellWidget(row, column, cell);
    control->installEventFilter(this);
}

bool TzVciChannelTable::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::FocusIn) {
        const Qt::FocusReason reason = static_cast<QFocusEvent *>(event)->reason();
        const auto *control = qobject_cast<QWidget *>(watched);
        // Not for the mouse: the control would move away from under it between press and release.
        if (control && (reason == Qt::TabFocusReason || reason == Qt::BacktabFocusReason))
            scrollTo(indexAt(control->parentWidget()->pos()));
    }
    return QTableWidget::eventFilter(watched, event);
}

QPushButton *TzVciChannelTable::makeChannelButton(int row)
{
    auto *button = new QPushButton(channelName(row));
    button->setCheckable(true);
    button->setAutoDefault(false);
    connect(button, &QPushButton::clicked, this, [this, row] {
        m_clickedRow = row;
        Q_EMIT channelClicked();
    });
    return button;
}

TzVciCellComboBox *TzVciChannelTable::makeTypeCombo(int row)
{
    auto *combo = new TzVciCellComboBox;
    combo->addItems(m_family.types);
    if (const auto *type = m_family.type(*m_store, m_deviceIndex, row))
        combo->setCurrentText(*type);
    connect(combo, &QComboBox::currentTextChanged, this, [this, row, device = m_deviceIndex](const QString &text) {
        if (auto *type = m_family.type(*m_store, device, row))
            *type = text;
    });
    return combo;
}

TzVciRateComboBox *TzVciChannelTable::makeRateCombo(int row)
{
    auto *combo = new TzVciRateComboBox(m_family.rates());
    if (const auto *config = m_store->channelConfig(m_deviceIndex, m_protocol, row))
        combo->setRate(config->baudRate);
    connect(combo, &TzVciRateComboBox::rateChosen, this, [this, row, device = m_deviceIndex](quint32 rate) {
        if (auto *config = m_store->channelConfig(device, m_protocol, row))
            config->baudRate = rate;
    });
    return combo;
}

TzVciRateComboBox *TzVciChannelTable::makeDataRateCombo(int row)
{
    auto *combo = new TzVciRateComboBox(TzVciBitRates::canFdData());
    if (const auto *config = m_store->canChannelConfig(m_deviceIndex, row))
        combo->setRate(config->fdBaudRate);
    connect(combo, &TzVciRateComboBox::rateChosen, this, [this, row, device = m_deviceIndex](quint32 rate) {
        if (auto *config = m_store->canChannelConfig(device, row))
            config->fdBaudRate = rate;
    });
    return combo;
}

QPushButton *TzVciChannelTable::makeConfigureButton(int row)
{
    auto *button = new QPushButton(tr("Configure"));
    button->setProperty("row", row);
    button->setAutoDefault(false);
    connect(button, &QPushButton::clicked, this, [this, row] {
        m_clickedRow = row;
        Q_EMIT configureClicked();
    });
    return button;
}

void TzVciChannelTable::refreshStates()
{
    for (int row = 0; row < rowCount(); ++row)
        refreshState(row);
}

void TzVciChannelTable::refreshState(int row)
{
    QPushButton *button = channelButton(row);
    if (!button)
        return;
    const bool open = m_store->isChannelOpen(m_deviceIndex, m_protocol, row);
    const QString toolTip = QStringLiteral("%1 %2").arg(open ? tr("Close") : tr("Open"), channelName(row));
    const QSignalBlocker blocker(button);
    button->setChecked(open);
    if (button->toolTip() == toolTip)
        return;
    button->setToolTip(toolTip);
    button->setIcon(
        QIcon(open ? QStringLiteral(":/resource/close_window.png") : QStringLiteral(":/resource/open_window.png")));
}

template <typename Control> Control *TzVciChannelTable::cellControl(int row, int column) const
{
    const QWidget *cell = column < columnCount() ? cellWidget(row, column) : nullptr;
    return cell ? cell->findChild<Control *>() : nullptr;
}

QPushButton *TzVciChannelTable::channelButton(int row) const
{
    return cellControl<QPushButton>(row, ChannelColumn);
}

QComboBox *TzVciChannelTable::typeCombo(int row) const
{
    return cellControl<QComboBox>(row, TypeColumn);
}

QComboBox *TzVciChannelTable::rateCombo(int row) const
{
    return cellControl<QComboBox>(row, RateColumn);
}

QComboBox *TzVciChannelTable::dataRateCombo(int row) const
{
    return cellControl<QComboBox>(row, DataRateColumn);
}

QPushButton *TzVciChannelTable::configureButton(int row) const
{
    return cellControl<QPushButton>(row, ConfigureColumn);
}
