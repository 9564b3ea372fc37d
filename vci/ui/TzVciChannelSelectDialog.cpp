// SPDX-License-Identifier: GPL-3.0-or-later
#include "vci/ui/TzVciChannelSelectDialog.h"

#include "vci/TzVciDeviceStore.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QGridLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QScreen>
#include <QSignalBlocker>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace {

constexpr int channelsInLine = 8; // more go to further lines
constexpr int lineHeight = 20;    // pixels
constexpr int itemPadding = 8;    // pixels that the tree keeps free above and below a row, taken together

} // namespace

TzVciChannelSelectDialog::TzVciChannelSelectDialog(
    TzVciDeviceStore *store, std::uint8_t kind, bool singleSelection,
    const std::unordered_map<std::uint8_t, std::unordered_set<std::uint8_t>> *filter, QWidget *parent)
    : QDialog(parent)
    , m_selection(*store, kind,
                  singleSelection ? TzVciChannelSelection::Form::Single : TzVciChannelSelection::Form::Filter, filter)
    , m_tree(new QTreeWidget(this))
    , m_exclusiveGroup(new QButtonGroup(this))
    , m_selectAllButton(new QPushButton(tr("Select All"), this))
    , m_selectNoneButton(new QPushButton(tr("Select None"), this))
    , m_applyButton(new QPushButton(tr("Apply"), this))
{
    setWindowTitle(singleSelection ? tr("Select an Opened %1 Channel").arg(m_selection.familyName())
                                   : tr("Select Device/Channel Filter"));
    setWindowIcon(QIcon(QStringLiteral(":/resource/select.png")));
    m_tree->setObjectName(QStringLiteral("treeChannels"));
    m_tree->setAccessibleName(windowTitle());
    m_selectAllButton->setObjectName(QStringLiteral("buttonSelectAll"));
    m_selectNoneButton->setObjectName(QStringLiteral("buttonSelectNone"));
    m_applyButton->setObjectName(QStringLiteral("buttonApply"));
    buildTree();
    buildLayout();
    showSelection();

    connect(m_tree, &QTreeWidget::itemChanged, this, &TzVciChannelSelectDialog::onItemChanged);
    connect(m_selectAllButton, &QPushButton::clicked, this, &TzVciChannelSelectDialog::onSelectAll);
    connect(m_selectNoneButton, &QPushButton::clicked, this, &TzVciChannelSelectDialog::onSelectNone);
    connect(m_applyButton, &QPushButton::clicked, this, &TzVciChannelSelectDialog::onConfirm);
}

void TzVciChannelSelectDialog::buildTree()
{
    m_tree->setColumnCount(1);
    m_tree->header()->hide();
    m_tree->setSelectionMode(QAbstractItemView::NoSelection);
    m_tree->setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    for (const auto &[deviceIndex, device] : m_selection.devices())
        addDevice(deviceIndex, device);
}

void TzVciChannelSelectDialog::addDevice(int deviceIndex, const TzVciChannelSelection::Device &device)
{
    auto *item = new QTreeWidgetItem(m_tree, {device.text});
    item->setData(0, Qt::UserRole, deviceIndex);
    Qt::ItemFlags flags = Qt::ItemIsEnabled;
    if (!isSingle())
        flags |= Qt::ItemIsUserCheckable;
    item->setFlags(flags);
    if (device.channels.empty())
        return;
    auto *channelItem = new QTreeWidgetItem(item);
    channelItem->setFlags(Qt::ItemIsEnabled);
    QWidget *row = makeChannelRow(deviceIndex, device);
    channelItem->setSizeHint(0, row->sizeHint() + QSize(0, itemPadding));
    m_tree->setItemWidget(channelItem, 0, row);
    item->setExpanded(isSingle() || device.anyOpen);
}

QWidget *TzVciChannelSelectDialog::makeChannelRow(int deviceIndex, const TzVciChannelSelection::Device &device)
{
    auto *row = new QWidget(m_tree);
    auto *layout = new QGridLayout(row);
    layout->setContentsMargins(4, 0, 4, 0);
    layout->setHorizontalSpacing(12);
    layout->setVerticalSpacing(4);
    layout->setColumnStretch(channelsInLine, 1);
    int position = 0;
    for (const TzVciChannelSelection::Channel &channel : device.channels) {
        QAbstractButton *button = nullptr;
        if (isSingle()) {
            button = new QRadioButton(channel.text, row);
            m_exclusiveGroup->addButton(button);
        } else {
            button = new QCheckBox(channel.text, row);
        }
        button->setMinimumHeight(lineHeight);
        button->setAccessibleName(QStringLiteral("%1 %2").arg(device.text, channel.text));
        layout->addWidget(button, position / channelsInLine, position % channelsInLine);
        ++position;
        connect(button, &QAbstractButton::toggled, this,
                [this, deviceIndex, channelIndex = int(channel.index)](bool checked) {
                    onChannelToggled(deviceIndex, channelIndex, checked);
                });
        m_channelButtons.push_back({deviceIndex, channel.index, button});
    }
    return row;
}

QWidget *TzVciChannelSelectDialog::makeEmptyText()
{
    auto *label =
        new QLabel(isSingle() ? tr("<b>No opened channels available.</b><br>Please open a device channel first.")
                              : tr("<b>No devices found.</b>"),
                   this);
    label->setObjectName(QStringLiteral("labelEmpty"));
    label->setTextFormat(Qt::RichText);
    label->setAlignment(Qt::AlignCenter);
    return label;
}

void TzVciChannelSelectDialog::buildLayout()
{
    auto *buttons = new QHBoxLayout;
    buttons->setSpacing(8);
    buttons->addWidget(m_selectAllButton);
    buttons->addWidget(m_selectNoneButton);
    buttons->addStretch(1);
    buttons->addWidget(m_applyButton);
    m_applyButton->setMinimumWidth(88);
    m_applyButton->setDefault(true);
    for (QPushButton *button : {m_selectAllButton, m_selectNoneButton}) {
        button->setVisible(!isSingle());
        button->setEnabled(!m_selection.isEmpty());
    }

    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(12, 12, 12, 12);
    layout->setSpacing(12);
    layout->addWidget(m_selection.isEmpty() ? makeEmptyText() : m_tree, 1);
    layout->addLayout(buttons);
    m_tree->setVisible(!m_selection.isEmpty());
    resize(QSize(640, 360).boundedTo(screen()->availableGeometry().size()));
    buildTabOrder();
}

void TzVciChannelSelectDialog::buildTabOrder()
{
    QWidget *last = m_tree;
    const auto append = [&last](QWidget *next) {
        setTabOrder(last, next);
        last = next;
    };
    for (const ChannelButton &entry : m_channelButtons)
        append(entry.button);
    for (QPushButton *button : {m_selectAllButton, m_selectNoneButton, m_applyButton})
        append(button);
}

void TzVciChannelSelectDialog::showSelection()
{
    const QSignalBlocker treeBlocker(m_tree);
    for (int row = 0; !isSingle() && row < m_tree->topLevelItemCount(); ++row) {
        QTreeWidgetItem *item = m_tree->topLevelItem(row);
        const auto device = m_selection.devices().find(item->data(0, Qt::UserRole).toInt());
        if (device != m_selection.devices().end())
            item->setCheckState(0, device->second.checked ? Qt::Checked : Qt::Unchecked);
    }
    for (const ChannelButton &entry : m_channelButtons) {
        const QSignalBlocker blocker(entry.button);
        entry.button->setChecked(m_selection.isChannelChecked(entry.deviceIndex, entry.channelIndex));
    }
    m_applyButton->setEnabled(!isSingle() || m_selection.firstChecked()); // an empty filter is a choice
}

void TzVciChannelSelectDialog::onItemChanged(QTreeWidgetItem *item, int column)
{
    if (item->parent() || column != 0)
        return;
    m_selection.setDeviceChecked(item->data(0, Qt::UserRole).toInt(), item->checkState(0) == Qt::Checked);
    showSelection();
}

void TzVciChannelSelectDialog::onChannelToggled(int deviceIndex, int channelIndex, bool checked)
{
    m_selection.setChannelChecked(deviceIndex, channelIndex, checked);
    showSelection();
}

void TzVciChannelSelectDialog::onSelectAll()
{
    m_selection.setAllChecked(true);
    showSelection();
}

void TzVciChannelSelectDialog::onSelectNone()
{
    m_selection.setAllChecked(false);
    showSelection();
}

void TzVciChannelSelectDialog::onConfirm()
{
    if (!isSingle()) {
        Q_EMIT sigUpdateFilters(m_selection.checkedChannels());
        accept();
        return;
    }
    const auto channel = m_selection.firstChecked();
    if (!channel)
        return;
    Q_EMIT sigChannelSelected(channel->first, channel->second);
    accept();
}
