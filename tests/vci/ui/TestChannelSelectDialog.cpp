// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/vci/ui/TestChannelSelectDialog.h"

#include "common/ui/WorkbenchStyle.h"
#include "tests/support/IconCompare.h"
#include "vci/TzVciTypes.h"
#include "vci/ui/TzVciChannelSelectDialog.h"

#include <QApplication>
#include <QCheckBox>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalSpy>
#include <QTreeWidget>
#include <QtTest>

#include <optional>

namespace {

using Filter = std::unordered_map<std::uint8_t, std::unordered_set<std::uint8_t>>;

/// The control of a channel, found by what a screen reader would read: "Device 0 CAN1".
QAbstractButton *channel(const QDialog &dialog, const char *name)
{
    for (auto *button : dialog.findChildren<QAbstractButton *>()) {
        if (button->accessibleName() == QString::fromLatin1(name))
            return button;
    }
    return nullptr;
}

QPushButton *button(const QDialog &dialog, const char *name)
{
    return dialog.findChild<QPushButton *>(QString::fromLatin1(name));
}

QTreeWidget *tree(const QDialog &dialog)
{
    return dialog.findChild<QTreeWidget *>();
}

/// Remembers what the filter form reported.
std::optional<Filter> applied(TzVciChannelSelectDialog &dialog)
{
    std::optional<Filter> result;
    const auto connection = QObject::connect(&dialog, &TzVciChannelSelectDialog::sigUpdateFilters,
                                             [&result](const Filter &filter) { result = filter; });
    QTest::mouseClick(button(dialog, "buttonApply"), Qt::LeftButton);
    QObject::disconnect(connection);
    return result;
}

} // namespace

void TestChannelSelectDialog::initTestCase()
{
    Common::applyWorkbenchStyle(*qApp);
}

void TestChannelSelectDialog::init()
{
    m_store = std::make_unique<TzVciDeviceStore>();
    QCOMPARE(m_store->addDevice(0, {2, 1}), 0);
    QCOMPARE(m_store->addDevice(3, {1, 0}), 0);
    m_store->setDeviceOpen(0, true);
}

void TestChannelSelectDialog::cleanup()
{
    m_store.reset();
}

void TestChannelSelectDialog::titlesNameTheForm()
{
    const TzVciChannelSelectDialog filter(m_store.get(), TzVciViewKind::can, false, nullptr);
    QCOMPARE(filter.windowTitle(), QStringLiteral("Select Device/Channel Filter"));
    QVERIFY(showsIcon(filter.windowIcon(), ":/resource/select.png"));
    const TzVciChannelSelectDialog can(m_store.get(), TzVciViewKind::dbc, true, nullptr);
    QCOMPARE(can.windowTitle(), QStringLiteral("Select an Opened CAN Channel"));
    const TzVciChannelSelectDialog lin(m_store.get(), TzVciViewKind::ldf, true, nullptr);
    QCOMPARE(lin.windowTitle(), QStringLiteral("Select an Opened LIN Channel"));
    QCOMPARE(button(filter, "buttonSelectAll")->text(), QStringLiteral("Select All"));
    QCOMPARE(button(filter, "buttonSelectNone")->text(), QStringLiteral("Select None"));
    QCOMPARE(button(filter, "buttonApply")->text(), QStringLiteral("Apply"));
    QVERIFY(button(can, "buttonSelectAll")->isHidden());
    QVERIFY(button(can, "buttonSelectNone")->isHidden());
}

void TestChannelSelectDialog::filterFormShowsWhatTheFilterHolds()
{
    const Filter filter{{0, {1}}};
    const TzVciChannelSelectDialog dialog(m_store.get(), TzVciViewKind::can, false, &filter);
    QCOMPARE(tree(dialog)->topLevelItemCount(), 2);
    const QTreeWidgetItem *device = tree(dialog)->topLevelItem(0);
    QCOMPARE(device->text(0), QStringLiteral("Device 0"));
    QCOMPARE(device->data(0, Qt::UserRole).toInt(), 0);
    QCOMPARE(device->checkState(0), Qt::Checked);
    QCOMPARE(tree(dialog)->topLevelItem(1)->checkState(0), Qt::Unchecked);
    QVERIFY(qobject_cast<QCheckBox *>(channel(dialog, "Device 0 CAN1")));
    QVERIFY(!channel(dialog, "Device 0 CAN1")->isChecked());
    QVERIFY(channel(dialog, "Device 0 CAN2")->isChecked());
    QCOMPARE(channel(dialog, "Device 0 CAN2")->text(), QStringLiteral("CAN2"));
}

void TestChannelSelectDialog::filterFormExpandsDevicesWithAnOpenChannel()
{
    m_store->setChannelOpen(0, TzVciProtocolId::can, 1, true);
    const TzVciChannelSelectDialog can(m_store.get(), TzVciViewKind::can, false, nullptr);
    QVERIFY(tree(can)->topLevelItem(0)->isExpanded());
    QVERIFY(!tree(can)->topLevelItem(1)->isExpanded());
    const TzVciChannelSelectDialog lin(m_store.get(), TzVciViewKind::lin, false, nullptr);
    QVERIFY(!tree(lin)->topLevelItem(0)->isExpanded()); // a channel of the other family is open
}

void TestChannelSelectDialog::deviceCheckBoxSetsItsChannels()
{
    TzVciChannelSelectDialog dialog(m_store.get(), TzVciViewKind::can, false, nullptr);
    dialog.show();
    tree(dialog)->topLevelItem(0)->setCheckState(0, Qt::Checked);
    QVERIFY(channel(dialog, "Device 0 CAN1")->isChecked());
    QVERIFY(channel(dialog, "Device 0 CAN2")->isChecked());
    QVERIFY(!channel(dialog, "Device 3 CAN1")->isChecked());
    tree(dialog)->topLevelItem(0)->setCheckState(0, Qt::Unchecked);
    QVERIFY(!channel(dialog, "Device 0 CAN1")->isChecked());
}

void TestChannelSelectDialog::channelCheckBoxSetsItsDevice()
{
    TzVciChannelSelectDialog dialog(m_store.get(), TzVciViewKind::can, false, nullptr);
    dialog.show();
    channel(dialog, "Device 0 CAN1")->click();
    QCOMPARE(tree(dialog)->topLevelItem(0)->checkState(0), Qt::Checked);
    QVERIFY(!channel(dialog, "Device 0 CAN2")->isChecked());
    channel(dialog, "Device 0 CAN1")->click();
    QCOMPARE(tree(dialog)->topLevelItem(0)->checkState(0), Qt::Unchecked);
}

void TestChannelSelectDialog::selectAllAndSelectNone()
{
    TzVciChannelSelectDialog dialog(m_store.get(), TzVciViewKind::can, false, nullptr);
    dialog.show();
    QTest::mouseClick(button(dialog, "buttonSelectAll"), Qt::LeftButton);
    QVERIFY(channel(dialog, "Device 0 CAN2")->isChecked());
    QVERIFY(channel(dialog, "Device 3 CAN1")->isChecked());
    QCOMPARE(tree(dialog)->topLevelItem(1)->checkState(0), Qt::Checked);
    QTest::mouseClick(button(dialog, "buttonSelectNone"), Qt::LeftButton);
    QVERIFY(!channel(dialog, "Device 3 CAN1")->isChecked());
    QCOMPARE(tree(dialog)->topLevelItem(1)->checkState(0), Qt::Unchecked);
}

void TestChannelSelectDialog::filterFormReportsTheChoice()
{
    TzVciChannelSelectDialog dialog(m_store.get(), TzVciViewKind::can, false, nullptr);
    dialog.show();
    channel(dialog, "Device 0 CAN2")->click();
    channel(dialog, "Device 3 CAN1")->click();
    QCOMPARE(applied(dialog), std::optional<Filter>(Filter{{0, {1}}, {3, {0}}}));
    QCOMPARE(dialog.result(), int(QDialog::Accepted));
}

void TestChannelSelectDialog::emptyChoiceInTheFilterFormGivesAnEmptyMap()
{
    const Filter filter{{0, {0, 1}}};
    TzVciChannelSelectDialog dialog(m_store.get(), TzVciViewKind::can, false, &filter);
    dialog.show();
    QTest::mouseClick(button(dialog, "buttonSelectNone"), Qt::LeftButton);
    QCOMPARE(applied(dialog), std::optional<Filter>(Filter{}));
}

void TestChannelSelectDialog::filterFormWithoutDevicesSaysSoAndGivesAnEmptyMap()
{
    TzVciDeviceStore empty;
    TzVciChannelSelectDialog dialog(&empty, TzVciViewKind::can, false, nullptr);
    dialog.show();
    QCOMPARE(dialog.findChild<QLabel *>(QStringLiteral("labelEmpty"))->text(),
             QStringLiteral("<b>No devices found.</b>"));
    QVERIFY(tree(dialog)->isHidden());
    QCOMPARE(applied(dialog), std::optional<Filter>(Filter{}));
    QCOMPARE(dialog.result(), int(QDialog::Accepted));
}

void TestChannelSelectDialog::enterOnSelectNoneOnlySelectsNone()
{
    TzVciChannelSelectDialog dialog(m_store.get(), TzVciViewKind::can, false, nullptr);
    dialog.show();
    QVERIFY(QTest::qWaitForWindowActive(&dialog));
    for (const bool all : {true, false}) {
        QPushButton *chosen = button(dialog, all ? "buttonSelectAll" : "buttonSelectNone");
        chosen->setFocus(Qt::TabFocusReason);
        QTest::keyClick(chosen, Qt::Key_Return);
        QVERIFY(dialog.isVisible());
        QCOMPARE(channel(dialog, "Device 3 CAN1")->isChecked(), all);
    }
}

void TestChannelSelectDialog::tabGoesFromTheTreeOverTheChannelsToTheButtons()
{
    TzVciChannelSelectDialog dialog(m_store.get(), TzVciViewKind::can, false, nullptr);
    tree(dialog)->expandAll();
    dialog.show();
    QVERIFY(QTest::qWaitForWindowActive(&dialog));
    QCOMPARE(dialog.focusWidget(), static_cast<QWidget *>(tree(dialog)));
    QWidget *const expected[] = {channel(dialog, "Device 0 CAN1"),
                                 channel(dialog, "Device 0 CAN2"),
                                 channel(dialog, "Device 3 CAN1"),
                                 button(dialog, "buttonSelectAll"),
                                 button(dialog, "buttonSelectNone"),
                                 button(dialog, "buttonApply"),
                                 tree(dialog)};
    for (QWidget *next : expected) {
        QTest::keyClick(dialog.focusWidget(), Qt::Key_Tab);
        QCOMPARE(dialog.focusWidget(), next);
    }
}

void TestChannelSelectDialog::singleFormLeavesOutADeviceWithNoOpenChannel()
{
    m_store->setDeviceOpen(3, true);
    m_store->setChannelOpen(0, TzVciProtocolId::can, 1, true);
    const TzVciChannelSelectDialog dialog(m_store.get(), TzVciViewKind::can, true, nullptr);
    QCOMPARE(tree(dialog)->topLevelItemCount(), 1);
    const QTreeWidgetItem *device = tree(dialog)->topLevelItem(0);
    QCOMPARE(device->text(0), QStringLiteral("Device 0"));
    QVERIFY(device->isExpanded());
    QVERIFY(!(device->flags() & Qt::ItemIsUserCheckable));
    QVERIFY(!device->data(0, Qt::CheckStateRole).isValid());
    QVERIFY(!channel(dialog, "Device 0 CAN1"));
    QVERIFY(qobject_cast<QRadioButton *>(channel(dialog, "Device 0 CAN2")));
}

void TestChannelSelectDialog::singleFormAppliesOnlyAfterAChoice()
{
    m_store->setChannelOpen(0, TzVciProtocolId::lin, 0, true);
    TzVciChannelSelectDialog dialog(m_store.get(), TzVciViewKind::lin, true, nullptr);
    QSignalSpy selected(&dialog, &TzVciChannelSelectDialog::sigChannelSelected);
    dialog.show();
    QVERIFY(!button(dialog, "buttonApply")->isEnabled());
    QTest::keyClick(&dialog, Qt::Key_Return);
    QVERIFY(dialog.isVisible());

    channel(dialog, "Device 0 LIN1")->click();
    QVERIFY(button(dialog, "buttonApply")->isEnabled());
    QTest::mouseClick(button(dialog, "buttonApply"), Qt::LeftButton);
    QCOMPARE(selected.count(), 1);
    QCOMPARE(selected.first(), (QList<QVariant>{0, 0}));
    QCOMPARE(dialog.result(), int(QDialog::Accepted));
}

void TestChannelSelectDialog::singleFormHoldsOneChoiceAcrossDevices()
{
    m_store->setDeviceOpen(3, true);
    m_store->setChannelOpen(0, TzVciProtocolId::can, 0, true);
    m_store->setChannelOpen(3, TzVciProtocolId::can, 0, true);
    TzVciChannelSelectDialog dialog(m_store.get(), TzVciViewKind::can, true, nullptr);
    QSignalSpy selected(&dialog, &TzVciChannelSelectDialog::sigChannelSelected);
    dialog.show();
    channel(dialog, "Device 0 CAN1")->click();
    channel(dialog, "Device 3 CAN1")->click();
    QVERIFY(!channel(dialog, "Device 0 CAN1")->isChecked());
    QTest::mouseClick(button(dialog, "buttonApply"), Qt::LeftButton);
    QCOMPARE(selected.first(), (QList<QVariant>{3, 0}));
}

void TestChannelSelectDialog::singleFormPreselectsTheFilter()
{
    m_store->setChannelOpen(0, TzVciProtocolId::can, 0, true);
    m_store->setChannelOpen(0, TzVciProtocolId::can, 1, true);
    const Filter filter{{0, {1}}};
    const TzVciChannelSelectDialog dialog(m_store.get(), TzVciViewKind::can, true, &filter);
    QVERIFY(channel(dialog, "Device 0 CAN2")->isChecked());
    QVERIFY(button(dialog, "buttonApply")->isEnabled());
}

void TestChannelSelectDialog::singleFormWithoutChannelsSaysSo()
{
    TzVciChannelSelectDialog dialog(m_store.get(), TzVciViewKind::can, true, nullptr);
    dialog.show();
    QCOMPARE(dialog.findChild<QLabel *>(QStringLiteral("labelEmpty"))->text(),
             QStringLiteral("<b>No opened channels available.</b><br>Please open a device channel first."));
    QVERIFY(!tree(dialog)->isVisible());
    QVERIFY(!button(dialog, "buttonApply")->isEnabled());
}

void TestChannelSelectDialog::escapeReportsNothing()
{
    TzVciChannelSelectDialog dialog(m_store.get(), TzVciViewKind::can, false, nullptr);
    bool reported = false;
    connect(&dialog, &TzVciChannelSelectDialog::sigUpdateFilters, this, [&reported] { reported = true; });
    dialog.show();
    channel(dialog, "Device 0 CAN1")->click();
    QTest::keyClick(&dialog, Qt::Key_Escape);
    QVERIFY(!dialog.isVisible());
    QVERIFY(!reported);
}
