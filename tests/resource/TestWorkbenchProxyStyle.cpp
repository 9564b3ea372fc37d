// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/resource/TestWorkbenchProxyStyle.h"

#include "common/ui/WorkbenchProxyStyle.h"
#include "common/ui/WorkbenchStyle.h"

#include <QApplication>
#include <QMessageBox>
#include <QPainter>
#include <QStyleFactory>
#include <QStyleOption>
#include <QTreeWidget>
#include <QtTest>

namespace {

constexpr int edge = 20;

int density()
{
    return static_cast<int>(qApp->devicePixelRatio());
}

/// A branch in the display's density.
QImage branch(QStyle::State state, Qt::LayoutDirection direction = Qt::LeftToRight,
              const QStyle &style = *QApplication::style())
{
    QStyleOptionViewItem option; // as a view passes
    option.rect = QRect(0, 0, edge, edge);
    option.state = state;
    option.direction = direction;
    QImage image(QSize(edge, edge) * density(), QImage::Format_ARGB32);
    image.setDevicePixelRatio(density());
    image.fill(Qt::white);
    QPainter painter(&image);
    const QTreeWidget tree;
    tree.ensurePolished(); // only then the style sheet reaches it
    style.drawPrimitive(QStyle::PE_IndicatorBranch, &option, &painter, &tree);
    return image;
}

int darkest(const QImage &image)
{
    int lightness = 255;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            lightness = std::min(lightness, image.pixelColor(x, y).lightness());
    }
    return lightness;
}

/// Whether the image is no more than one of half the size with every pixel drawn as four.
bool isUpscaled(const QImage &image)
{
    for (int y = 0; y + 1 < image.height(); y += 2) {
        for (int x = 0; x + 1 < image.width(); x += 2) {
            const QRgb pixel = image.pixel(x, y);
            if (image.pixel(x + 1, y) != pixel || image.pixel(x, y + 1) != pixel || image.pixel(x + 1, y + 1) != pixel)
                return false;
        }
    }
    return true;
}

constexpr QStyle::State closedBranch = QStyle::State_Enabled | QStyle::State_Item | QStyle::State_Children;

} // namespace

void TestWorkbenchProxyStyle::initTestCase()
{
    Common::applyWorkbenchStyle(*qApp);
}

void TestWorkbenchProxyStyle::messageBoxesShowOurIconsInTheDisplaysDensity_data()
{
    QTest::addColumn<int>("icon");
    QTest::addColumn<QString>("name");
    QTest::newRow("question") << int{QMessageBox::Question} << QStringLiteral("question");
    QTest::newRow("information") << int{QMessageBox::Information} << QStringLiteral("info");
    QTest::newRow("warning") << int{QMessageBox::Warning} << QStringLiteral("warning");
    QTest::newRow("critical") << int{QMessageBox::Critical} << QStringLiteral("critical");
}

void TestWorkbenchProxyStyle::messageBoxesShowOurIconsInTheDisplaysDensity()
{
    QFETCH(int, icon);
    QFETCH(QString, name);
    const QMessageBox box(static_cast<QMessageBox::Icon>(icon), QStringLiteral("title"), QStringLiteral("text"));
    const QString suffix = density() > 1 ? QStringLiteral("@2x") : QString();
    const QImage drawn(QStringLiteral(":/resource/%1%2.png").arg(name, suffix));
    QCOMPARE(drawn.size(), QSize(32, 32) * density());
    const QImage shown = box.iconPixmap().toImage();
    QCOMPARE(shown.devicePixelRatio(), static_cast<qreal>(density()));
    constexpr auto format = QImage::Format_ARGB32_Premultiplied;
    QCOMPARE(shown.convertToFormat(format), drawn.convertToFormat(format));
}

void TestWorkbenchProxyStyle::otherStandardIconsStayTheToolkits()
{
    const std::unique_ptr<QStyle> fusion(QStyleFactory::create(QStringLiteral("Fusion")));
    const auto open = [](const QStyle &style) {
        return style.standardIcon(QStyle::SP_DialogOpenButton).pixmap(16).toImage();
    };
    QVERIFY(!open(*fusion).isNull());
    QCOMPARE(open(*QApplication::style()), open(*fusion));
}

void TestWorkbenchProxyStyle::branchesAreDrawnInTheDisplaysDensity()
{
    for (const auto state : {closedBranch, closedBranch | QStyle::State_Open}) {
        const QImage shown = branch(state);
        QVERIFY2(darkest(shown) < 128, "there is a branch");
        QVERIFY(!isUpscaled(shown));
        QVERIFY2(shown == branch(state, Qt::LeftToRight, Common::WorkbenchProxyStyle()), "the style sheet keeps out");
    }
}

void TestWorkbenchProxyStyle::branchTellsOpenFromClosedAndPointsWithTheText()
{
    const QImage closed = branch(closedBranch);
    QVERIFY(darkest(closed) < 128);
    QVERIFY(branch(closedBranch | QStyle::State_Open) != closed);
    const QImage rightToLeft = branch(closedBranch, Qt::RightToLeft);
    QVERIFY(rightToLeft != closed);
    QCOMPARE(branch(closedBranch | QStyle::State_Open, Qt::RightToLeft), branch(closedBranch | QStyle::State_Open));
}

void TestWorkbenchProxyStyle::branchOfALeafIsEmpty()
{
    QCOMPARE(darkest(branch(QStyle::State_Enabled | QStyle::State_Item | QStyle::State_Sibling)), 255);
}

void TestWorkbenchProxyStyle::branchOfADisabledTreeIsMuted()
{
    QVERIFY(darkest(branch(QStyle::State_Item | QStyle::State_Children)) > darkest(branch(closedBranch)));
}
