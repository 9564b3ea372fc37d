// SPDX-License-Identifier: GPL-3.0-or-later
#include "vci/ui/TzVciConfigDialog.h"

#include "common/ui/WaitCursor.h"
#include "vci/TzVciDeviceManager.h"
#include "vci/TzVciDeviceStore.h"
#include "vci/TzVciTypes.h"
#include "vci/ui/TzVciCanConfigDialog.h"
#include "vci/ui/TzVciChannelTable.h"
#include "vci/ui/TzVciDeviceWidget.h"

#include <QGroupBox>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QScreen>
#include <QSignalBlocker>
#include <QTimer>

#include <chrono>

namespace {

// A device may close by itself, when its link is lost; the dialog tells that soon after.
constexpr std::chrono::milliseconds stateInterval{500};

} // namespace

TzVciConfigDialog::TzVciConfigDialog(TzVciDeviceManager *manager, TzVciDeviceStore *store, TzVciDeviceScanner *scanner,
                                     QWidget *parent)
    : QDialog(parent)
    , m_manager(manager)
    , m_store(store)
    , m_deviceWidget(new TzVciDeviceWidget(store, scanner, this))
    , m_toggleButton(new QPushButton(this))
    , m_localIpEdit(new QLineEdit(this))
    , m_canTable(new TzVciChannelTable(store, TzVciProtocolId::can, this))
    , m_linTable(new TzVciChannelTable(store, TzVciProtocolId::lin, this))
{
    setWindowTitle(tr("Device Settings"));
    setWindowIcon(QIcon(QStringLiteral(":/resource/vci/vci_open.png")));
    m_toggleButton->setObjectName(QStringLiteral("buttonToggleDevice"));
    m_localIpEdit->setObjectName(QStringLiteral("lineEditLocalIp"));
    m_canTable->setObjectName(QStringLiteral("tableCan"));
    m_linTable->setObjectName(QStringLiteral("tableLin"));
    m_store->loadConfig();
    buildLayout();
    connectAll();
    onDeviceSelected(-1);
    m_deviceWidget->refreshDevices(); // selects a device, if there is one
}

TzVciConfigDialog::~TzVciConfigDialog()
{
    if (!isVisible())
        return;
    storeLocalIp(); // the program quits under the dialog, which so was never closed
    m_store->saveConfig();
}

QGroupBox *TzVciConfigDialog::makeControlGroup()
{
    m_toggleButton->setCheckable(true);
    m_toggleButton->setAutoDefault(false);
    m_toggleButton->setMinimumWidth(96);
    m_localIpEdit->setPlaceholderText(QStringLiteral("192.168.201.199"));
    m_localIpEdit->setToolTip(tr("When multiple device index numbers (IPs) are the same, you need to enter the IP of "
                                 "the local network card connected to the operating device."));

    auto *group = new QGroupBox(tr("Device Control"), this);
    auto *label = new QLabel(tr("Local IP:"), group);
    label->setBuddy(m_localIpEdit);
    auto *layout = new QHBoxLayout(group);
    layout->setContentsMargins(8, 8, 8, 8);
    layout->setSpacing(8);
    layout->addWidget(m_toggleButton);
    layout->addSpacing(8);
    layout->addWidget(label);
    layout->addWidget(m_localIpEdit, 1);
    return group;
}

QGroupBox *TzVciConfigDialog::makeTableGroup(const QString &title, TzVciChannelTable *table)
{
    auto *group = new QGroupBox(title, this);
    table->setAccessibleName(title);
    auto *layout = new QVBoxLayout(group);
    layout->setContentsMargins(8, 8, 8, 8);
    layout->addWidget(table);
    return group;
}

void TzVciConfigDialog::buildLayout()
{
    auto *right = new QVBoxLayout;
    right->setSpacing(8);
    right->addWidget(makeControlGroup());
    right->addWidget(makeTableGroup(tr("CAN Channel"), m_canTable), 1);
    right->addWidget(makeTableGroup(tr("LIN Channel"), m_linTable), 1);

    m_deviceWidget->setFixedWidth(200);
    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(12, 8, 12, 12);
    layout->setSpacing(12);
    layout->addWidget(m_deviceWidget);
    layout->addLayout(right, 1);
    resize(QSize(856, 720).boundedTo(screen()->availableGeometry().size()));
}

void TzVciConfigDialog::connectAll()
{
    connect(m_deviceWidget, &TzVciDeviceWidget::deviceSelected, this, &TzVciConfigDialog::onDeviceSelected);
    connect(m_toggleButton, &QPushButton::clicked, this, &TzVciConfigDialog::onToggleDeviceClicked);
    connect(m_localIpEdit, &QLineEdit::editingFinished, this, &TzVciConfigDialog::storeLocalIp);
    connect(m_canTable, &TzVciChannelTable::channelClicked, this, &TzVciConfigDialog::onCanChannelClicked);
    connect(m_linTable, &TzVciChannelTable::channelClicked, this, &TzVciConfigDialog::onLinChannelClicked);
    connect(m_canTable, &TzVciChannelTable::configureClicked, this, &TzVciConfigDialog::onAdvancedButtonClicked);

    auto *stateTimer = new QTimer(this);
    connect(stateTimer, &QTimer::timeout, this, &TzVciConfigDialog::refresh);
    stateTimer->start(stateInterval);
}

void TzVciConfigDialog::done(int result)
{
    storeLocalIp();
    m_store->saveConfig();
    QDialog::done(result);
}

void TzVciConfigDialog::keyPressEvent(QKeyEvent *event)
{
    // No button is an automatic default, so that Enter in a field starts nothing; one that has the focus is meant.
    const bool isEnter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    auto *button = isEnter ? qobject_cast<QPushButton *>(focusWidget()) : nullptr;
    if (!button) {
        QDialog::keyPressEvent(event);
        return;
    }
    if (!event->isAutoRepeat())
        button->click();
}

void TzVciConfigDialog::onDeviceSelected(int deviceIndex)
{
    m_currentDevice = deviceIndex;
    if (deviceIndex >= 0)
        m_store->setCurrentDevice(deviceIndex);
    m_localIpEdit->setText(m_store->localIP(deviceIndex));
    m_canTable->showDevice(deviceIndex);
    m_linTable->showDevice(deviceIndex);
    showDeviceState();
}

void TzVciConfigDialog::storeLocalIp()
{
    if (m_currentDevice < 0)
        return;
    const QString localIp = m_localIpEdit->text().trimmed();
    m_store->setLocalIP(m_currentDevice, localIp);
    if (localIp != m_localIpEdit->text())
        m_localIpEdit->setText(localIp);
}

std::int32_t TzVciConfigDialog::openCurrentDevice()
{
    const Common::WaitCursor waitCursor;
    std::int32_t result = m_manager->openDevice(m_currentDevice);
    // A device whose link was lost closed by itself, but the manager keeps it and answers that it is open already.
    if (result == TzVciResult::ok && !m_store->isDeviceOpen(m_currentDevice)) {
        m_manager->closeDevice(m_currentDevice);
        result = m_manager->openDevice(m_currentDevice);
    }
    return result;
}

void TzVciConfigDialog::onToggleDeviceClicked()
{
    if (m_currentDevice < 0)
        return;
    storeLocalIp();
    if (!m_toggleButton->isChecked()) {
        const Common::WaitCursor waitCursor;
        m_manager->closeDevice(m_currentDevice);
    } else if (openCurrentDevice() != TzVciResult::ok) {
        QMessageBox::warning(this, tr("Open Device Error"),
                             tr("Please check whether the IP corresponding to the index can be pinged successfully."));
        const QSignalBlocker blocker(m_toggleButton);
        m_toggleButton->setChecked(false);
    }
    refresh();
}

void TzVciConfigDialog::onCanChannelClicked()
{
    toggleChannel(m_canTable);
}

void TzVciConfigDialog::onLinChannelClicked()
{
    toggleChannel(m_linTable);
}

void TzVciConfigDialog::toggleChannel(TzVciChannelTable *table)
{
    const int channelIndex = table->clickedRow();
    if (channelIndex < 0) // nothing was clicked since the rows were made
        return;
    const bool opening = !m_store->isChannelOpen(m_currentDevice, table->protocol(), channelIndex);
    std::int32_t result = TzVciResult::ok;
    {
        const Common::WaitCursor waitCursor;
        result = opening ? m_manager->openChannel(m_currentDevice, table->protocol(), channelIndex)
                         : m_manager->closeChannel(m_currentDevice, table->protocol(), channelIndex);
    }
    if (result != TzVciResult::ok)
        showChannelError(opening, table->familyName(), result);
    table->refreshState(channelIndex);
    m_deviceWidget->refreshDevices();
}

void TzVciConfigDialog::showChannelError(bool opening, const QString &family, std::int32_t code)
{
    const QString action = opening ? tr("Open") : tr("Close");
    const QString text = opening ? tr("Error code %1, Please check whether the baud rate is set correctly or whether "
                                      "the network is connected.")
                                       .arg(code)
                                 : tr("%1 %2 channel error code %3.").arg(action, family).arg(code);
    QMessageBox::warning(this, tr("%1 %2 Error").arg(action, family), text);
}

void TzVciConfigDialog::onAdvancedButtonClicked()
{
    const int channelIndex = m_canTable->clickedRow();
    if (channelIndex < 0)
        return;
    TzVciCanConfigDialog dialog(m_store, m_currentDevice, channelIndex, this);
    dialog.exec();
}

void TzVciConfigDialog::refresh()
{
    m_deviceWidget->refreshDevices();
    m_canTable->refreshStates();
    m_linTable->refreshStates();
    showDeviceState();
}

void TzVciConfigDialog::showDeviceState()
{
    const bool selected = m_currentDevice >= 0;
    for (QWidget *control : {static_cast<QWidget *>(m_toggleButton), static_cast<QWidget *>(m_localIpEdit),
                             static_cast<QWidget *>(m_canTable), static_cast<QWidget *>(m_linTable)})
        control->setEnabled(selected);

    const bool open = selected && m_store->isDeviceOpen(m_currentDevice);
    const QString text = open ? tr("Stop") : tr("Start");
    const QSignalBlocker blocker(m_toggleButton);
    m_toggleButton->setChecked(open);
    if (m_toggleButton->text() == text)
        return;
    m_toggleButton->setText(text);
    m_toggleButton->setIcon(
        QIcon(open ? QStringLiteral(":/resource/channel_stop.png") : QStringLiteral(":/resource/channel_start.png")));
}
