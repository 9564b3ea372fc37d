// SPDX-License-Identifier: GPL-3.0-or-later
#include "vci/ui/TzVciDeviceWidget.h"

#include "common/Log.h"
#include "common/Thread.h"
#include "common/ui/WaitCursor.h"
#include "vci/TzVciDeviceScanner.h"
#include "vci/TzVciDeviceStore.h"
#include "vci/TzVciTypes.h"
#include "vci/ui/TzVciAddDeviceDialog.h"
#include "vci/ui/TzVciDeviceToolTip.h"
#include "vci/ui/TzVciInputBlocker.h"

#include <QBoxLayout>
#include <QEventLoop>
#include <QListWidget>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <QSignalBlocker>
#include <QTimer>

#include <atomic>
#include <chrono>
#include <system_error>
#include <thread>
#include <utility>

namespace {

constexpr std::chrono::milliseconds scanPollInterval{20};

enum class ScanEnd
{
    FoundNew,
    NothingNew,
    Cancelled ///< by the end of the program
};

/// Runs a scan on a thread of its own, joined here, while this thread paints and runs its timers; the user's clicks and
/// keys are dropped meanwhile. When the program quits under it the scan is ended early.
ScanEnd scanWhilePainting(TzVciDeviceScanner &scanner)
{
    TzVciDeviceScanner::RunningScan running = scanner.begin();
    if (!running)
        return ScanEnd::NothingNew;
    const TzVciInputBlocker blocker;
    std::atomic<bool> finished{false};
    bool foundAny = false; // read after the join
    std::jthread thread;
    try {
        thread = std::jthread([&] {
            Common::setThreadName("vci-scan-dialog");
            foundAny = scanner.scan(std::move(running), tzVciScanTimeoutMs);
            finished = true;
        });
    } catch (const std::system_error &error) {
        Common::logError("Scan for devices cannot start: {}", error.what());
        return ScanEnd::NothingNew;
    }
    QEventLoop loop;
    QTimer poll;
    QObject::connect(&poll, &QTimer::timeout, &loop, [&] {
        if (finished)
            loop.quit();
    });
    poll.start(scanPollInterval);
    loop.exec();
    const bool endedEarly = !finished;
    if (endedEarly)
        scanner.cancel();
    thread.join();
    if (endedEarly)
        return ScanEnd::Cancelled;
    return foundAny ? ScanEnd::FoundNew : ScanEnd::NothingNew;
}

QIcon deviceIcon(bool open)
{
    const QString path = open ? QStringLiteral(":/resource/light_on.png") : QStringLiteral(":/resource/light_off.png");
    QIcon icon(path);
    icon.addFile(path, QSize(), QIcon::Selected); // a selected row must not tint the lamp
    return icon;
}

} // namespace

TzVciDeviceWidget::TzVciDeviceWidget(TzVciDeviceStore *store, TzVciDeviceScanner *scanner, QWidget *parent)
    : QGroupBox(parent)
    , m_store(store)
    , m_scanner(scanner)
    , m_list(new QListWidget(this))
    , m_scanButton(new QPushButton(QIcon(QStringLiteral(":/resource/search.png")), tr("Scan"), this))
    , m_addButton(new QPushButton(QIcon(QStringLiteral(":/resource/add.png")), QString(), this))
{
    setTitle(tr("Device List"));
    m_list->setObjectName(QStringLiteral("listDevices"));
    m_list->setAccessibleName(tr("Device List"));
    m_scanButton->setObjectName(QStringLiteral("buttonScan"));
    m_scanButton->setToolTip(tr("Scan for devices (timeout 2 seconds)"));
    m_addButton->setObjectName(QStringLiteral("buttonAddDevice"));
    m_addButton->setToolTip(tr("Add device manually"));
    m_addButton->setAccessibleName(tr("Add device manually"));
    buildLayout();

    connect(m_list, &QListWidget::currentRowChanged, this, &TzVciDeviceWidget::onDeviceListCurrentRowChanged);
    connect(m_scanButton, &QPushButton::clicked, this, &TzVciDeviceWidget::onScanDeviceClicked);
    connect(m_addButton, &QPushButton::clicked, this, &TzVciDeviceWidget::onAddDeviceClicked);
    connect(m_store, &TzVciDeviceStore::deviceAdded, this, &TzVciDeviceWidget::refreshDevices);
}

void TzVciDeviceWidget::buildLayout()
{
    for (QPushButton *button : {m_scanButton, m_addButton})
        button->setAutoDefault(false); // Enter in a field of the dialog must not start a scan
    m_list->setIconSize(QSize(20, 20));
    m_list->setSpacing(1);

    auto *buttons = new QHBoxLayout;
    buttons->setSpacing(8);
    buttons->addWidget(m_scanButton, 1);
    buttons->addWidget(m_addButton);

    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(8, 8, 8, 8);
    layout->setSpacing(8);
    layout->addLayout(buttons);
    layout->addWidget(m_list, 1);
    setTabOrder(m_scanButton, m_addButton);
    setTabOrder(m_addButton, m_list);
    m_list->setFocus();
}

int TzVciDeviceWidget::selectedDevice() const
{
    const QListWidgetItem *item = m_list->currentItem();
    return item ? item->data(Qt::UserRole).toInt() : -1;
}

void TzVciDeviceWidget::refreshDevices()
{
    const int before = selectedDevice();
    {
        const QSignalBlocker blocker(m_list);
        if (m_list->count() != static_cast<int>(m_store->deviceIndices().size()))
            rebuildRows();
        for (int row = 0; row < m_list->count(); ++row)
            showDeviceState(row, m_list->item(row)->data(Qt::UserRole).toInt());
        const int row = rowOf(before >= 0 ? before : m_store->currentDeviceIndex());
        m_list->setCurrentRow(row >= 0 || m_list->count() == 0 ? row : 0);
    }
    if (selectedDevice() != before)
        Q_EMIT deviceSelected(selectedDevice());
}

void TzVciDeviceWidget::rebuildRows()
{
    m_list->clear();
    for (const int deviceIndex : m_store->deviceIndices()) {
        auto *item = new QListWidgetItem(tr("Device %1").arg(deviceIndex), m_list);
        item->setData(Qt::UserRole, deviceIndex);
    }
}

void TzVciDeviceWidget::showDeviceState(int row, int deviceIndex)
{
    QListWidgetItem *item = m_list->item(row);
    const QString toolTip = tzVciDeviceToolTip(*m_store, deviceIndex); // tells all that the row shows
    if (item->toolTip() == toolTip)
        return;
    item->setToolTip(toolTip);
    item->setIcon(deviceIcon(m_store->isDeviceOpen(deviceIndex)));
}

int TzVciDeviceWidget::rowOf(int deviceIndex) const
{
    for (int row = 0; row < m_list->count(); ++row) {
        if (m_list->item(row)->data(Qt::UserRole).toInt() == deviceIndex)
            return row;
    }
    return -1;
}

void TzVciDeviceWidget::setScanning(bool scanning)
{
    m_scanButton->setEnabled(!scanning);
    m_addButton->setEnabled(!scanning);
}

void TzVciDeviceWidget::onScanDeviceClicked()
{
    if (!m_scanButton->isEnabled()) // a scan of this widget is running
        return;
    const QPointer<TzVciDeviceWidget> self(this);
    const bool wasVisible = isVisible();
    const QPointer<QWidget> focused = window()->focusWidget(); // a disabled button loses the focus
    ScanEnd end = ScanEnd::Cancelled;
    setScanning(true);
    {
        const Common::WaitCursor waitCursor;
        end = scanWhilePainting(*m_scanner);
    }
    if (!self) // the dialog was closed and deleted meanwhile
        return;
    setScanning(false);
    if (focused)
        focused->setFocus();
    refreshDevices();
    if (end == ScanEnd::NothingNew && isVisible() == wasVisible)
        QMessageBox::information(this, tr("Scan Result"), tr("No new devices were found."));
}

void TzVciDeviceWidget::onAddDeviceClicked()
{
    TzVciAddDeviceDialog dialog(*m_store, this);
    if (dialog.exec() != QDialog::Accepted)
        return;
    const int deviceIndex = dialog.deviceIndex();
    if (m_store->hasDevice(deviceIndex)) {
        QMessageBox::warning(this, tr("Add Failed"), tr("Device with index %1 already exists.").arg(deviceIndex));
        return;
    }
    const TzVciDeviceConfig config(static_cast<std::size_t>(dialog.canChannels()),
                                   static_cast<std::size_t>(dialog.linChannels()));
    if (m_store->addDevice(deviceIndex, config) == 0)
        QMessageBox::information(this, tr("Success"), tr("Virtual device %1 added.").arg(deviceIndex));
    else
        QMessageBox::critical(this, tr("Error"), tr("Failed to add virtual device."));
}

void TzVciDeviceWidget::onDeviceListCurrentRowChanged(int)
{
    Q_EMIT deviceSelected(selectedDevice());
}
