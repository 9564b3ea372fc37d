// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/vci/ui/TestCanConfigDialog.h"

#include "common/ui/WorkbenchStyle.h"
#include "tests/support/MessageBoxDriver.h"
#include "vci/ui/TzVciCanConfigDialog.h"

#include <QApplication>
#include <QCheckBox>
#include <QGroupBox>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QSpinBox>
#include <QtTest>

namespace {

QSpinBox *spin(const TzVciCanConfigDialog &dialog, const char *name)
{
    return dialog.findChild<QSpinBox *>(QString::fromLatin1(name));
}

QLabel *label(const TzVciCanConfigDialog &dialog, const char *name)
{
    return dialog.findChild<QLabel *>(QString::fromLatin1(name));
}

void click(const TzVciCanConfigDialog &dialog, const char *name)
{
    QTest::mouseClick(dialog.findChild<QPushButton *>(QString::fromLatin1(name)), Qt::LeftButton);
}

QStringList textsOf(const QWidget &window)
{
    QStringList texts;
    for (const auto *shown : window.findChildren<QLabel *>())
        texts << shown->text();
    for (const auto *group : window.findChildren<QGroupBox *>())
        texts << group->title();
    for (const auto *button : window.findChildren<QAbstractButton *>())
        texts << button->text();
    return texts;
}

} // namespace

void TestCanConfigDialog::initTestCase()
{
    Common::applyWorkbenchStyle(*qApp);
}

void TestCanConfigDialog::init()
{
    m_store = std::make_unique<TzVciDeviceStore>();
    QCOMPARE(m_store->addDevice(2, {3, 0}), 0);
}

void TestCanConfigDialog::cleanup()
{
    m_store.reset();
}

void TestCanConfigDialog::showsTitleTextsAndRanges()
{
    const TzVciCanConfigDialog dialog(m_store.get(), 2, 1);
    QCOMPARE(dialog.windowTitle(), QStringLiteral("CAN FD Advanced Configuration - Device 2 CAN2"));
    const QStringList texts = textsOf(dialog);
    for (const char *text :
         {"Nominal Bit Timing", "Seg1 (1-64):", "Seg2 (1-32):", "Data Bit Timing",
          "Seg1 (1-32):", "Seg2 (1-16):", "Sample Point:", "Validity:", "Terminal Resistor", "Enable Terminal Resistor",
          "Apply", "Reset", "Note: Device clock is 80 MHz. Parameters must yield an integer divider."})
        QVERIFY2(texts.contains(QString::fromLatin1(text)), text);
    const std::pair<const char *, int> ranges[] = {
        {"nominalSeg1", 64}, {"nominalSeg2", 32}, {"dataSeg1", 32}, {"dataSeg2", 16}};
    for (const auto &[name, maximum] : ranges) {
        QCOMPARE(spin(dialog, name)->minimum(), 1);
        QCOMPARE(spin(dialog, name)->maximum(), maximum);
    }
}

void TestCanConfigDialog::showsTheRecord()
{
    TzVciCanChannelConfig *config = m_store->canChannelConfig(2, 0);
    config->nominalSeg1 = 63;
    config->nominalSeg2 = 16;
    config->dataSeg1 = 7;
    config->dataSeg2 = 2;
    config->terminalResistorEnabled = false;
    const TzVciCanConfigDialog dialog(m_store.get(), 2, 0);
    QCOMPARE(spin(dialog, "nominalSeg1")->value(), 63);
    QCOMPARE(spin(dialog, "nominalSeg2")->value(), 16);
    QCOMPARE(spin(dialog, "dataSeg1")->value(), 7);
    QCOMPARE(spin(dialog, "dataSeg2")->value(), 2);
    QVERIFY(!dialog.findChild<QCheckBox *>()->isChecked());
}

void TestCanConfigDialog::samplePointHasItsColour_data()
{
    QTest::addColumn<int>("seg1");
    QTest::addColumn<int>("seg2");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("style");
    const auto row = [](const char *name, int seg1, int seg2, const char *text, const char *style) {
        QTest::newRow(name) << seg1 << seg2 << QString::fromLatin1(text) << QString::fromLatin1(style);
    };
    row("default", 31, 8, "80.0%", "color: green;");
    row("upper edge of green", 6, 1, "87.5%", "color: green;");
    row("above green", 7, 1, "88.9%", "color: orange;");
    row("lower edge of orange", 6, 3, "70.0%", "color: orange;");
    row("below orange", 5, 3, "66.7%", "color: red;");
    row("above orange", 10, 1, "91.7%", "color: red;");
}

void TestCanConfigDialog::samplePointHasItsColour()
{
    QFETCH(int, seg1);
    QFETCH(int, seg2);
    const TzVciCanConfigDialog dialog(m_store.get(), 2, 0);
    for (const char *phase : {"nominal", "data"}) {
        const QByteArray name(phase);
        spin(dialog, (name + "Seg1").constData())->setValue(seg1);
        spin(dialog, (name + "Seg2").constData())->setValue(seg2);
        const QLabel *shown = label(dialog, (name + "SamplePoint").constData());
        QTEST(shown->text(), "text");
        QTEST(shown->styleSheet(), "style");
    }
}

void TestCanConfigDialog::segments31And8At33333BitPerSecondAreValid()
{
    m_store->canChannelConfig(2, 0)->baudRate = 33333u;
    const TzVciCanConfigDialog dialog(m_store.get(), 2, 0);
    QCOMPARE(label(dialog, "nominalValidity")->text(), QStringLiteral("Valid"));
    QCOMPARE(label(dialog, "nominalValidity")->styleSheet(), QStringLiteral("color: green; font-weight: bold;"));
}

void TestCanConfigDialog::segments31And8At83300BitPerSecondAreValid()
{
    m_store->canChannelConfig(2, 0)->baudRate = 83300u;
    const TzVciCanConfigDialog dialog(m_store.get(), 2, 0);
    QCOMPARE(label(dialog, "nominalValidity")->text(), QStringLiteral("Valid"));
}

void TestCanConfigDialog::aFractionIsAnInvalidDivider()
{
    const TzVciCanConfigDialog dialog(m_store.get(), 2, 0);
    spin(dialog, "dataSeg2")->setValue(6);
    QCOMPARE(label(dialog, "dataValidity")->text(), QStringLiteral("Invalid divider"));
    QCOMPARE(label(dialog, "dataValidity")->styleSheet(), QStringLiteral("color: red; font-weight: bold;"));
    QCOMPARE(label(dialog, "nominalValidity")->text(), QStringLiteral("Valid"));
}

void TestCanConfigDialog::applyStoresSegmentsAndResistor()
{
    TzVciCanConfigDialog dialog(m_store.get(), 2, 1);
    dialog.show();
    spin(dialog, "nominalSeg1")->setValue(63);
    spin(dialog, "nominalSeg2")->setValue(16);
    spin(dialog, "dataSeg1")->setValue(14);
    spin(dialog, "dataSeg2")->setValue(5);
    dialog.findChild<QCheckBox *>()->setChecked(false);
    click(dialog, "buttonApply");
    QCOMPARE(dialog.result(), int(QDialog::Accepted));
    const TzVciCanChannelConfig *config = m_store->canChannelConfig(2, 1);
    QCOMPARE(int(config->nominalSeg1), 63);
    QCOMPARE(int(config->nominalSeg2), 16);
    QCOMPARE(int(config->dataSeg1), 14);
    QCOMPARE(int(config->dataSeg2), 5);
    QVERIFY(!config->terminalResistorEnabled);
    QCOMPARE(int(m_store->canChannelConfig(2, 0)->nominalSeg1), 31); // the neighbour is untouched
}

void TestCanConfigDialog::enterInASpinBoxApplies()
{
    TzVciCanConfigDialog dialog(m_store.get(), 2, 0);
    dialog.show();
    spin(dialog, "dataSeg1")->setValue(13);
    spin(dialog, "dataSeg2")->setValue(6);
    QTest::keyClick(spin(dialog, "dataSeg2"), Qt::Key_Return);
    QCOMPARE(dialog.result(), int(QDialog::Accepted));
    QCOMPARE(int(m_store->canChannelConfig(2, 0)->dataSeg1), 13);
}

void TestCanConfigDialog::invalidTimingIsStoredOnlyOnYes()
{
    tztest::MessageBoxDriver driver;
    driver.expectBox(QMessageBox::No);
    driver.expectBox(QMessageBox::Yes);
    TzVciCanConfigDialog dialog(m_store.get(), 2, 0);
    dialog.show();
    spin(dialog, "nominalSeg1")->setValue(3);
    click(dialog, "buttonApply");
    QVERIFY(dialog.isVisible());
    QCOMPARE(int(m_store->canChannelConfig(2, 0)->nominalSeg1), 31);

    click(dialog, "buttonApply");
    QVERIFY(!dialog.isVisible());
    QCOMPARE(int(m_store->canChannelConfig(2, 0)->nominalSeg1), 3);
    QVERIFY(driver.allMet());
    QCOMPARE(driver.unexpected(), 0);
    QCOMPARE(driver.seen().front().title, QStringLiteral("Invalid Parameters"));
    QCOMPARE(driver.seen().front().icon, int(QMessageBox::Warning));
    QCOMPARE(driver.seen().front().text,
             QStringLiteral("Timing parameters are invalid and may cause communication errors.\n\n"
                            "Nominal timing: 80 MHz / (3 + 8 + 1) * 500000 bps = 13.3333 (not an integer)\n\n"
                            "Do you want to continue anyway?"));
}

void TestCanConfigDialog::invalidTimingNamesBothPhases()
{
    tztest::MessageBoxDriver driver;
    driver.expectBox(QMessageBox::No);
    TzVciCanConfigDialog dialog(m_store.get(), 2, 0);
    dialog.show();
    spin(dialog, "nominalSeg1")->setValue(3);
    spin(dialog, "dataSeg2")->setValue(6);
    click(dialog, "buttonApply");
    QCOMPARE(driver.seen().size(), std::size_t(1));
    QCOMPARE(driver.seen().front().text,
             QStringLiteral("Timing parameters are invalid and may cause communication errors.\n\n"
                            "Nominal timing: 80 MHz / (3 + 8 + 1) * 500000 bps = 13.3333 (not an integer)\n"
                            "Data timing: 80 MHz / (15 + 6 + 1) * 2000000 bps = 1.8182 (not an integer)\n\n"
                            "Do you want to continue anyway?"));
}

void TestCanConfigDialog::applyWithoutAChannelShowsAnError()
{
    tztest::MessageBoxDriver driver;
    driver.expectBox(QMessageBox::Ok);
    TzVciCanConfigDialog dialog(m_store.get(), 2, 3);
    dialog.show();
    click(dialog, "buttonApply");
    QVERIFY(driver.allMet());
    QCOMPARE(driver.seen().front().title, QStringLiteral("Error"));
    QCOMPARE(driver.seen().front().text, QStringLiteral("Failed to get CAN configuration"));
    QVERIFY(dialog.isVisible());
}

void TestCanConfigDialog::resetChangesTheRecordOnlyOnApply()
{
    TzVciCanChannelConfig *config = m_store->canChannelConfig(2, 0);
    config->nominalSeg1 = 63;
    config->nominalSeg2 = 16;
    config->terminalResistorEnabled = false;
    TzVciCanConfigDialog dialog(m_store.get(), 2, 0);
    dialog.show();
    click(dialog, "buttonReset");
    QCOMPARE(spin(dialog, "nominalSeg1")->value(), 31);
    QCOMPARE(spin(dialog, "nominalSeg2")->value(), 8);
    QCOMPARE(spin(dialog, "dataSeg1")->value(), 15);
    QCOMPARE(spin(dialog, "dataSeg2")->value(), 4);
    QVERIFY(dialog.findChild<QCheckBox *>()->isChecked());
    QVERIFY(dialog.isVisible());
    QCOMPARE(int(config->nominalSeg1), 63);
    click(dialog, "buttonApply");
    QCOMPARE(int(config->nominalSeg1), 31);
    QVERIFY(config->terminalResistorEnabled);
}

void TestCanConfigDialog::enterOnResetResets()
{
    TzVciCanConfigDialog dialog(m_store.get(), 2, 0);
    dialog.show();
    QVERIFY(QTest::qWaitForWindowActive(&dialog));
    spin(dialog, "nominalSeg1")->setValue(63);
    auto *reset = dialog.findChild<QPushButton *>(QStringLiteral("buttonReset"));
    reset->setFocus(Qt::TabFocusReason);
    QTest::keyClick(reset, Qt::Key_Return);
    QVERIFY(dialog.isVisible());
    QCOMPARE(spin(dialog, "nominalSeg1")->value(), 31);
}

void TestCanConfigDialog::firstValueIsSelected()
{
    TzVciCanConfigDialog dialog(m_store.get(), 2, 0);
    dialog.show();
    QVERIFY(QTest::qWaitForWindowActive(&dialog));
    QCOMPARE(dialog.focusWidget(), spin(dialog, "nominalSeg1"));
    QTest::keyClicks(spin(dialog, "nominalSeg1"), QStringLiteral("17"));
    QCOMPARE(spin(dialog, "nominalSeg1")->value(), 17);
}

void TestCanConfigDialog::escapeChangesNothing()
{
    TzVciCanConfigDialog dialog(m_store.get(), 2, 0);
    dialog.show();
    spin(dialog, "nominalSeg1")->setValue(40);
    QTest::keyClick(&dialog, Qt::Key_Escape);
    QVERIFY(!dialog.isVisible());
    QCOMPARE(dialog.result(), int(QDialog::Rejected));
    QCOMPARE(int(m_store->canChannelConfig(2, 0)->nominalSeg1), 31);
}
