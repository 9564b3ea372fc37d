// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/views/ViewFilterWidgetTest.h"

#include "tests/views/ViewFrames.h"
#include "vci/TzVciTypes.h"
#include "views/ui/TzVciViewFilterWidget.h"

#include <QComboBox>
#include <QLayout>
#include <QLineEdit>
#include <QSignalSpy>
#include <QtTest>

using namespace tztest;

namespace {

struct FilterBar
{
    explicit FilterBar(std::uint8_t kind)
        : widget(kind)
    {
        widget.setupUi(&container);
    }
    QLineEdit *ids() const { return container.findChild<QLineEdit *>(QStringLiteral("lineEditId")); }
    QComboBox *combo(const char *name) const { return container.findChild<QComboBox *>(QLatin1String(name)); }
    QComboBox *device() const { return combo("comboDevice"); }
    QComboBox *channel() const { return combo("comboChannel"); }
    QComboBox *direction() const { return combo("comboDirection"); }

    QWidget container;
    TzVciViewFilterWidget widget;
};

QStringList textsOf(const QComboBox &combo)
{
    QStringList texts;
    for (int index = 0; index < combo.count(); ++index)
        texts << combo.itemText(index);
    return texts;
}

QList<int> dataOf(const QComboBox &combo)
{
    QList<int> data;
    for (int index = 0; index < combo.count(); ++index)
        data << combo.itemData(index).toInt();
    return data;
}

} // namespace

void TestViewFilterWidget::controlsHaveTheirTexts_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<QString>("family");
    QTest::newRow("CAN") << 1 << "CAN";
    QTest::newRow("LIN") << 5 << "LIN";
    QTest::newRow("DBC") << 16 << "CAN";
    QTest::newRow("LDF") << 17 << "LIN";
}

void TestViewFilterWidget::controlsHaveTheirTexts()
{
    QFETCH(int, kind);
    QFETCH(QString, family);
    const FilterBar bar(static_cast<std::uint8_t>(kind));
    QVERIFY(bar.container.isHidden());
    QCOMPARE(bar.ids()->placeholderText(), QStringLiteral("ID Filter (hex)"));
    QCOMPARE(bar.ids()->minimumWidth(), 150);
    QCOMPARE(bar.ids()->toolTip(),
             QStringLiteral("Support formats:\nSingle ID: 123\nID Range: 100-200\nMultiple IDs: 100,200,300\n"
                            "Exclude ID: !123\nCombined: 100-200,!150,300"));
    QCOMPARE(bar.device()->toolTip(), QStringLiteral("Select device"));
    QCOMPARE(bar.channel()->toolTip(), QStringLiteral("Select channel"));
    QCOMPARE(bar.direction()->toolTip(), QStringLiteral("Select message direction"));

    QStringList devices{"All Devices"};
    QList<int> deviceData{-1};
    for (int device = 0; device < 16; ++device) {
        devices << QStringLiteral("Device%1").arg(device);
        deviceData << device;
    }
    QCOMPARE(textsOf(*bar.device()), devices);
    QCOMPARE(dataOf(*bar.device()), deviceData);
    QStringList channels{"All Channels"};
    for (int channel = 1; channel <= 8; ++channel)
        channels << family + QString::number(channel);
    QCOMPARE(textsOf(*bar.channel()), channels);
    QCOMPARE(dataOf(*bar.channel()), (QList<int>{-1, 0, 1, 2, 3, 4, 5, 6, 7}));
}

void TestViewFilterWidget::barHasMarginsAndStyle()
{
    const FilterBar bar(TzVciViewKind::can);
    QLayout *layout = bar.container.layout();
    QCOMPARE(layout->contentsMargins(), QMargins(3, 3, 3, 3));
    QCOMPARE(layout->count(), 5);
    const QList<QWidget *> order{bar.ids(), bar.device(), bar.channel(), bar.direction()};
    for (int place = 0; place < order.size(); ++place) {
        QCOMPARE(layout->itemAt(place)->widget(), order[place]);
        QCOMPARE(order[place]->styleSheet(),
                 QStringLiteral("QWidget { border: 1px solid #A0C8F0; border-radius: 2px; }QComboBox QAbstractItemView "
                                "{ border: 1px solid #A0C8F0; selection-background-color: #A0C8F0; }"));
    }
    QVERIFY(layout->itemAt(4)->spacerItem());
}

void TestViewFilterWidget::directionsOfCan()
{
    const FilterBar bar(TzVciViewKind::can);
    QCOMPARE(textsOf(*bar.direction()), (QStringList{"All Directions", "Rx", "Tx", "Error Frame"}));
    QCOMPARE(dataOf(*bar.direction()), (QList<int>{-1, 2, 1, 4}));
}

void TestViewFilterWidget::directionsOfLin()
{
    const FilterBar bar(TzVciViewKind::lin);
    QCOMPARE(textsOf(*bar.direction()), (QStringList{"All Directions", "Rx", "Tx"}));
    QCOMPARE(dataOf(*bar.direction()), (QList<int>{-1, 1, 16}));
}

void TestViewFilterWidget::conditionsReachTheFilter()
{
    FilterBar bar(TzVciViewKind::can);
    bar.widget.setEnabled(true);
    QSignalSpy updated(&bar.widget, &TzVciViewFilterWidget::filterUpdated);
    bar.device()->setCurrentIndex(3);
    QCOMPARE(updated.count(), 1);
    QCOMPARE(int{bar.widget.filter()->device}, 2);
    bar.channel()->setCurrentIndex(1);
    QCOMPARE(int{bar.widget.filter()->channel}, 0);
    bar.direction()->setCurrentIndex(1);
    QCOMPARE(int{bar.widget.filter()->direction}, 2);
    QCOMPARE(updated.count(), 3);
    QVERIFY(bar.widget.passesCan(from(2, 0, canMessage(1, 2))));
    QVERIFY(!bar.widget.passesCan(from(1, 0, canMessage(1, 2))));
    QVERIFY(!bar.widget.passesCan(from(2, 1, canMessage(1, 2))));
    QVERIFY(!bar.widget.passesCan(from(2, 0, canMessage(1, 1))));
    bar.device()->setCurrentIndex(0);
    bar.channel()->setCurrentIndex(0);
    bar.direction()->setCurrentIndex(0);
    QVERIFY(!bar.widget.isActive());
}

void TestViewFilterWidget::typingAnIdUpdatesTheFilter()
{
    FilterBar bar(TzVciViewKind::can);
    bar.container.show();
    bar.widget.setEnabled(true);
    QSignalSpy updated(&bar.widget, &TzVciViewFilterWidget::filterUpdated);
    QTest::keyClicks(bar.ids(), QStringLiteral("!123"));
    QCOMPARE(updated.count(), 4);
    QVERIFY(bar.widget.passesCan(canMessage(0x124)));
    QVERIFY(!bar.widget.passesCan(canMessage(0x123)));
}

void TestViewFilterWidget::linDirectionFilters()
{
    FilterBar bar(TzVciViewKind::lin);
    bar.widget.setEnabled(true);
    bar.direction()->setCurrentIndex(2);
    QVERIFY(bar.widget.passesLin(linMessage(1, 17)));
    QVERIFY(!bar.widget.passesLin(linMessage(1, 1)));
    bar.direction()->setCurrentIndex(1);
    QVERIFY(bar.widget.passesLin(linMessage(1, 1)));
    QVERIFY(!bar.widget.passesLin(linMessage(1, 17)));
}

void TestViewFilterWidget::enablingIsToldOnce()
{
    FilterBar bar(TzVciViewKind::can);
    QSignalSpy updated(&bar.widget, &TzVciViewFilterWidget::filterUpdated);
    bar.widget.setEnabled(false);
    QCOMPARE(updated.count(), 0);
    bar.widget.setEnabled(true);
    bar.widget.setEnabled(true);
    QCOMPARE(updated.count(), 1);
    bar.widget.setEnabled(false);
    QCOMPARE(updated.count(), 2);
}

void TestViewFilterWidget::shownBarWithoutConditionsIsInactive()
{
    FilterBar bar(TzVciViewKind::can);
    bar.widget.setEnabled(true);
    QVERIFY(!bar.widget.isActive());
    QVERIFY(bar.widget.passesCan(canMessage(0x1FFFFFFF, 8)));
    bar.ids()->setText(QStringLiteral("XYZ"));
    QVERIFY(bar.widget.isActive());
    QVERIFY(bar.widget.passesCan(canMessage(1)));
}
