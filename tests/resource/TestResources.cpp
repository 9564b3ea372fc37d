// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/resource/TestResources.h"

#include "common/ui/WorkbenchStyle.h"
#include "tests/resource/TestWorkbenchProxyStyle.h"
#include "tests/support/QtTestMain.h"

#include <QApplication>
#include <QFile>
#include <QIcon>
#include <QImage>
#include <QImageReader>
#include <QMessageBox>
#include <QPushButton>
#include <QRegularExpression>
#include <QtTest>

namespace {

/// Whether anything is drawn that can be told from the window's background.
bool showsSomething(const QImage &image)
{
    int inked = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            inked += qAlpha(image.pixel(x, y)) > 128 ? 1 : 0;
    }
    return inked > image.width();
}

} // namespace

void TestResources::initTestCase()
{
    Common::applyWorkbenchStyle(*qApp);
}

void TestResources::iconExistsInBothDensities_data()
{
    QTest::addColumn<QString>("name");
    for (const char *name : {"add",
                             "busload",
                             "channel_start",
                             "channel_stop",
                             "clear",
                             "close_window",
                             "copy",
                             "copyright",
                             "critical",
                             "filter",
                             "info",
                             "light_off",
                             "light_on",
                             "log",
                             "logo",
                             "open_window",
                             "pause",
                             "question",
                             "record",
                             "resume",
                             "save",
                             "search",
                             "select",
                             "time",
                             "warning",
                             "vci/vci_analysis",
                             "vci/vci_close",
                             "vci/vci_diagnose",
                             "vci/vci_open",
                             "vci/vci_send",
                             "vci/vci_settings",
                             "vci/vci_tester",
                             "vci/vci_tools",
                             "vci/vci_view",
                             "vci/view_can",
                             "vci/view_close",
                             "vci/view_dbc",
                             "vci/view_ldf",
                             "vci/view_lin",
                             "vci/view_reset"})
        QTest::newRow(name) << QString::fromLatin1(name);
}

void TestResources::iconExistsInBothDensities()
{
    QFETCH(QString, name);
    const QImage ordinary(QStringLiteral(":/resource/%1.png").arg(name));
    const QImage dense(QStringLiteral(":/resource/%1@2x.png").arg(name));
    QCOMPARE(ordinary.size(), QSize(32, 32));
    QCOMPARE(dense.size(), QSize(64, 64));
    QVERIFY(showsSomething(ordinary));
    QVERIFY(showsSomething(dense));
}

void TestResources::logoHasSeveralSizes()
{
    QImageReader reader(QStringLiteral(":/resource/logo.ico"));
    QVERIFY(reader.canRead());
    QVERIFY(reader.imageCount() >= 4);
    QVERIFY(!QIcon(QStringLiteral(":/resource/logo.ico")).isNull());
}

void TestResources::highDensityIconsAreUsed()
{
    QVERIFY(QCoreApplication::testAttribute(Qt::AA_UseHighDpiPixmaps));
}

void TestResources::styleSheetNamesOnlyImagesThatExist()
{
    QFile file(QStringLiteral(":/resource/style.qss"));
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QString sheet = QString::fromUtf8(file.readAll());
    QCOMPARE(qApp->styleSheet(), sheet);
    auto match = QRegularExpression(QStringLiteral("url\\(([^)]*)\\)")).globalMatch(sheet);
    QVERIFY(match.hasNext());
    while (match.hasNext()) {
        const QString path = match.next().captured(1);
        QVERIFY2(QFile::exists(path), qPrintable(path));
    }
}

void TestResources::buttonsOfMessageBoxesHaveTextsAlone()
{
    const QMessageBox box(QMessageBox::Question, QStringLiteral("title"), QStringLiteral("text"), QMessageBox::Ok);
    QVERIFY(box.button(QMessageBox::Ok)->icon().isNull());
}

void TestResources::paletteIsLightOnEveryDesktop()
{
    const QPalette palette = QApplication::palette();
    QCOMPARE(palette.color(QPalette::Window), QColor(0xf0, 0xf0, 0xf0));
    QCOMPARE(palette.color(QPalette::Base), QColor(Qt::white));
    QVERIFY(palette.color(QPalette::Text).lightness() < 64);
    QCOMPARE(QApplication::font().pointSize(), 9);
}

TZ_QTEST_MAIN(TestResources, TestWorkbenchProxyStyle)
