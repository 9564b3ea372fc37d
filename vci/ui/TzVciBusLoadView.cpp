// SPDX-License-Identifier: GPL-3.0-or-later
#include "vci/ui/TzVciBusLoadView.h"

#include "vci/TzVciBusLoadSummary.h"
#include "vci/TzVciDeviceManager.h"
#include "vci/TzVciDeviceStore.h"
#include "vci/ui/TzVciBusLoadTable.h"

#include <QDateTime>
#include <QFormLayout>
#include <QGroupBox>
#include <QLabel>
#include <QListWidget>
#include <QLocale>
#include <QPushButton>
#include <QScreen>
#include <QSignalBlocker>
#include <QTimer>
#include <QVBoxLayout>

#include <utility>

namespace {

constexpr int updateIntervalMs = 1000;
constexpr int deviceListWidth = 168; // pixels
const QString noCounters = QStringLiteral("- / -");

} // namespace

TzVciBusLoadView::TzVciBusLoadView(TzVciDeviceManager *manager, TzVciDeviceStore *store, QWidget *parent)
    : QDialog(parent)
    , m_manager(manager)
    , m_store(store)
    , m_deviceList(new QListWidget(this))
    , m_refreshButton(new QPushButton(tr("Refresh Devices"), this))
    , m_timeLabel(new QLabel(this))
    , m_pcLabel(new QLabel(this))
    , m_deviceLabel(new QLabel(this))
    , m_table(new TzVciBusLoadTable(this))
    , m_timer(new QTimer(this))
{
    setWindowTitle(tr("Bus Load Monitor"));
    setWindowIcon(QIcon(QStringLiteral(":/resource/busload.png")));
    setWindowFlag(Qt::WindowMinMaxButtonsHint); // it stays open beside the main window
    m_deviceList->setObjectName(QStringLiteral("listDevices"));
    m_refreshButton->setObjectName(QStringLiteral("buttonRefresh"));
    m_timeLabel->setObjectName(QStringLiteral("labelCurrentTime"));
    m_pcLabel->setObjectName(QStringLiteral("labelPcCounters"));
    m_deviceLabel->setObjectName(QStringLiteral("labelDeviceCounters"));
    m_table->setObjectName(QStringLiteral("tableBusLoad"));
    buildLayout();

    m_timer->setInterval(updateIntervalMs);
    connect(m_timer, &QTimer::timeout, this, &TzVciBusLoadView::updateBusLoadInfo);
    connect(m_timer, &QTimer::timeout, this, &TzVciBusLoadView::updateCurrentTime);
    connect(m_refreshButton, &QPushButton::clicked, this, &TzVciBusLoadView::updateDeviceList);
    connect(m_deviceList, &QListWidget::currentRowChanged, this, &TzVciBusLoadView::onDeviceSelected);
    updateCurrentTime();
    updateDeviceList();
}

TzVciBusLoadView::~TzVciBusLoadView() = default;

QGroupBox *TzVciBusLoadView::makeDeviceGroup()
{
    auto *group = new QGroupBox(tr("Available Devices"), this);
    group->setFixedWidth(deviceListWidth);
    m_deviceList->setAccessibleName(group->title());
    m_refreshButton->setAutoDefault(false);
    m_refreshButton->setToolTip(tr("List the devices that have an open CAN channel now"));
    auto *layout = new QVBoxLayout(group);
    layout->setContentsMargins(8, 8, 8, 8);
    layout->setSpacing(8);
    layout->addWidget(m_deviceList, 1);
    layout->addWidget(m_refreshButton);
    return group;
}

QGroupBox *TzVciBusLoadView::makeLoadGroup()
{
    auto *group = new QGroupBox(tr("Bus Load && Statistics"), this);
    m_pcLabel->setToolTip(tr("Bytes and frames sent / bytes and records received, as counted on this computer"));
    m_deviceLabel->setToolTip(tr("Bytes and frames received / bytes sent, as counted by the device"));
    m_table->setAccessibleName(tr("Bus Load"));

    auto *counters = new QFormLayout;
    counters->setHorizontalSpacing(12);
    counters->setVerticalSpacing(4);
    counters->addRow(tr("PC TX / RX:"), m_pcLabel);
    counters->addRow(tr("Device RX / Tx:"), m_deviceLabel);
    for (QLabel *label : {m_pcLabel, m_deviceLabel}) {
        label->setTextInteractionFlags(Qt::TextSelectableByMouse);
        label->setWordWrap(true); // the counters of a weekend are long
    }

    auto *layout = new QVBoxLayout(group);
    layout->setContentsMargins(8, 8, 8, 8);
    layout->setSpacing(8);
    layout->addLayout(counters);
    layout->addWidget(m_table, 1);
    return group;
}

void TzVciBusLoadView::buildLayout()
{
    m_timeLabel->setAlignment(Qt::AlignRight | Qt::AlignVCenter);

    auto *groups = new QHBoxLayout;
    groups->setSpacing(12);
    groups->addWidget(makeDeviceGroup());
    groups->addWidget(makeLoadGroup(), 1);

    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(12, 8, 12, 8);
    layout->setSpacing(8);
    layout->addLayout(groups, 1);
    layout->addWidget(m_timeLabel);
    resize(QSize(640, 480).boundedTo(screen()->availableGeometry().size()));
    setTabOrder(m_deviceList, m_refreshButton);
    setTabOrder(m_refreshButton, m_table);
    m_deviceList->setFocus();
}

void TzVciBusLoadView::showEvent(QShowEvent *event)
{
    QDialog::showEvent(event);
    if (std::exchange(m_wasHidden, false))
        updateDeviceList();
    updateBusLoadInfo();
    updateCurrentTime();
    m_timer->start();
}

void TzVciBusLoadView::hideEvent(QHideEvent *event)
{
    QDialog::hideEvent(event);
    m_timer->stop();
    m_wasHidden = !event->spontaneous(); // not when it is only minimised
}

void TzVciBusLoadView::updateDeviceList()
{
    {
        const QSignalBlocker blocker(m_deviceList); // one selection at the end
        m_deviceList->clear();
        for (const int index : m_store->deviceIndices()) {
            if (!m_store->anyCanChannelOpen(index))
                continue;
            auto *item = new QListWidgetItem(tr("Device %1").arg(index), m_deviceList);
            item->setData(Qt::UserRole, index);
        }
        m_deviceList->setCurrentRow(m_deviceList->count() > 0 ? 0 : -1);
    }
    onDeviceSelected(m_deviceList->currentRow());
}

void TzVciBusLoadView::onDeviceSelected(int row)
{
    const QListWidgetItem *item = m_deviceList->item(row);
    m_deviceIndex = item ? item->data(Qt::UserRole).toInt() : -1;
    clearDisplay(); // a selection belongs to the device that was shown
    updateBusLoadInfo();
}

void TzVciBusLoadView::updateBusLoadInfo()
{
    const auto device = m_deviceIndex >= 0 ? m_manager->getDevice(m_deviceIndex) : nullptr;
    if (!device || device->deviceIndex() < 0) { // the manager keeps a device whose link was lost
        clearDisplay();
        return;
    }
    const TzVciBusLoadSummary summary = TzVciBusLoadSummary::of(*device, *m_store);
    m_pcLabel->setText(summary.pcCounters);
    m_deviceLabel->setText(summary.deviceCounters);
    m_table->showRows(summary.rows);
}

void TzVciBusLoadView::clearDisplay()
{
    m_pcLabel->setText(noCounters);
    m_deviceLabel->setText(noCounters);
    m_table->showRows({});
}

void TzVciBusLoadView::updateCurrentTime()
{
    // Digits like those of the counters beside it, whatever the locale has.
    m_timeLabel->setText(QLocale::c().toString(QDateTime::currentDateTime(), QStringLiteral("yyyy-MM-dd hh:mm:ss")));
}
