// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "vci/TzVciChannelSelection.h"

#include <QDialog>

#include <cstdint>
#include <unordered_map>
#include <unordered_set>
#include <vector>

class QAbstractButton;
class QButtonGroup;
class QPushButton;
class QTreeWidget;
class QTreeWidgetItem;
class TzVciDeviceStore;

/// Lets the user pick channels in a tree of devices: which channels a view shows (many), or the one open channel that a
/// tool uses. TzVciChannelSelection decides; this shows it. UI thread.
class TzVciChannelSelectDialog : public QDialog
{
    Q_OBJECT
public:
    /// @param kind             1 or 5; a view's kind 16 or 17 counts as its family
    /// @param singleSelection  one open channel instead of a filter of any number
    /// @param filter           what is picked at first; null for nothing. Read here only
    TzVciChannelSelectDialog(TzVciDeviceStore *store, std::uint8_t kind, bool singleSelection,
                             const std::unordered_map<std::uint8_t, std::unordered_set<std::uint8_t>> *filter,
                             QWidget *parent = nullptr);

Q_SIGNALS:
    /// Filter form, on Apply: the checked channels; an empty map shows nothing.
    void sigUpdateFilters(std::unordered_map<uint8_t, std::unordered_set<uint8_t>> devices);
    /// Single form, on Apply.
    void sigChannelSelected(int deviceIndex, int channelIndex);

private Q_SLOTS:
    void onItemChanged(QTreeWidgetItem *item, int column);
    void onSelectAll();
    void onSelectNone();
    void onConfirm();

private:
    struct ChannelButton
    {
        int deviceIndex = 0;
        int channelIndex = 0;
        QAbstractButton *button = nullptr;
    };

    void buildLayout();
    void buildTabOrder();
    void buildTree();
    void addDevice(int deviceIndex, const TzVciChannelSelection::Device &device);
    QWidget *makeChannelRow(int deviceIndex, const TzVciChannelSelection::Device &device);
    QWidget *makeEmptyText();
    void onChannelToggled(int deviceIndex, int channelIndex, bool checked);
    void showSelection();
    bool isSingle() const { return m_selection.form() == TzVciChannelSelection::Form::Single; }

    TzVciChannelSelection m_selection;
    QTreeWidget *m_tree;
    QButtonGroup *m_exclusiveGroup; // one for all devices, single form only
    QPushButton *m_selectAllButton;
    QPushButton *m_selectNoneButton;
    QPushButton *m_applyButton;
    std::vector<ChannelButton> m_channelButtons;
};
