// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/logging/ui/TestLoggerWindow.h"

#include "tests/logging/ui/LoggerWindowFixture.h"
#include "tests/support/DocumentOpener.h"
#include "tests/support/IconCompare.h"

#include <algorithm>

using namespace tztest;

namespace {

template <typename T> const T &byFamily(const T &can, const T &lin)
{
    return fixture->isLin ? lin : can;
}

/// The texts of labels and buttons below @p parent, from top to bottom and left to right.
QStringList textsWithin(const QWidget *parent)
{
    QList<QWidget *> widgets;
    for (auto *label : parent->findChildren<QLabel *>())
        widgets.append(label);
    for (auto *button : parent->findChildren<QAbstractButton *>())
        widgets.append(button);
    const auto place = [parent](const QWidget *widget) {
        const QPoint center = widget->mapTo(parent, widget->rect().center());
        return std::pair(center.y() / 8, center.x());
    };
    std::sort(widgets.begin(), widgets.end(), [&](auto *a, auto *b) { return place(a) < place(b); });
    QStringList texts;
    for (const QWidget *widget : widgets) {
        if (widget->isVisible() && widget->objectName() != QLatin1String("labelPreview"))
            texts.append(widget->property("text").toString());
    }
    texts.removeAll(QString()); // empty cells of the form
    return texts;
}

} // namespace

void TestLoggerWindow::windowIsFixedWithoutMaximize()
{
    const QMainWindow &window = *fixture->window;
    QCOMPARE(window.windowTitle(), byFamily(QStringLiteral("CAN Logger"), QStringLiteral("LIN Logger")));
    QCOMPARE(window.minimumSize(), QSize(640, 480));
    QCOMPARE(window.maximumSize(), QSize(640, 480));
    QVERIFY(!window.windowFlags().testFlag(Qt::WindowMaximizeButtonHint));
    QVERIFY(window.windowFlags().testFlag(Qt::WindowMinimizeButtonHint));
    QVERIFY(window.windowFlags().testFlag(Qt::WindowCloseButtonHint));
    QVERIFY(showsIcon(window.windowIcon(), ":/resource/record.png"));
    QVERIFY(!window.testAttribute(Qt::WA_DeleteOnClose));
}

void TestLoggerWindow::groupsAndTextsInOrder()
{
    QList<QGroupBox *> groups = fixture->window->findChildren<QGroupBox *>();
    std::sort(groups.begin(), groups.end(), [](auto *a, auto *b) { return a->y() < b->y(); });
    QCOMPARE(groups.size(), 3);
    const char *const titles[] = {"File Configuration", "Recording Configuration", "Preview and Control"};
    for (int i = 0; i < groups.size(); ++i)
        QCOMPARE(groups[i]->title(), QLatin1String(titles[i]));
    QCOMPARE(textsWithin(groups[0]), byFamily(QStringList{"Log File:", "Browse...", "Open"},
                                              QStringList{"Log File:", "Browse...", "Open File"}));
    QCOMPARE(
        textsWithin(groups[1]),
        byFamily(QStringList{"Format:", "Size Limit (MB):", "Vector ASC format, compatible with CANalyzer/CANoe",
                             "Log Error Frames", "Log Extra Info",
                             "Note: Timestamp format is controlled by global time display settings"},
                 QStringList{"Log Format:", "File Size Limit (MB):", "Vector ASC format, compatible with CANalyzer",
                             "Timestamp Mode:", "Absolute Time", "Relative Time", "Time Resolution (sec):",
                             "Recording Options:", "Log Extra Information (Device index, PID, etc.)"}));
    QCOMPARE(textsWithin(groups[2]), (QStringList{"Generate Preview", "Reset Settings", "Start Recording", "Close"}));
    QCOMPARE(
        fixture->labelText("labelStatus"),
        byFamily(QStringLiteral("Ready - Timestamp format controlled by global settings"), QStringLiteral("Ready")));
}

void TestLoggerWindow::nothingIsClipped()
{
    const QRect inside = fixture->window->centralWidget()->rect();
    for (const QWidget *widget : fixture->window->centralWidget()->findChildren<QWidget *>()) {
        const bool scrolls = qobject_cast<const QAbstractScrollArea *>(widget) ||
                             widget->parent()->inherits("QScrollArea") ||
                             widget->objectName() == QLatin1String("labelPreview");
        if (!widget->isVisible() || scrolls || widget->inherits("QScrollBar"))
            continue;
        const QRect place(widget->mapTo(fixture->window->centralWidget(), QPoint(0, 0)), widget->size());
        QVERIFY2(inside.contains(place), qPrintable(widget->objectName()));
        if (qobject_cast<const QLabel *>(widget) || qobject_cast<const QAbstractButton *>(widget))
            QVERIFY2(widget->width() >= widget->sizeHint().width(), qPrintable(widget->property("text").toString()));
    }
    const auto *previewArea = fixture->window->findChild<QScrollArea *>();
    QCOMPARE(previewArea->verticalScrollBar()->maximum(), 0); // the whole sample shows at once
}

void TestLoggerWindow::controlsStartWithTheirValues()
{
    QCOMPARE(fixture->path()->text(), byFamily(QStringLiteral("logs/can_recording.asc"), QString()));
    QComboBox *format = fixture->format();
    QCOMPARE(format->count(), 2);
    QCOMPARE(format->currentIndex(), 0);
    QCOMPARE(format->itemText(0), byFamily(QStringLiteral("ASC Format"), QStringLiteral("ASC Format (*.asc)")));
    QCOMPARE(format->itemText(1), byFamily(QStringLiteral("CSV Format"), QStringLiteral("CSV Format (*.csv)")));
    QSpinBox *size = fixture->sizeLimit();
    QCOMPARE(size->minimum(), 0);
    QCOMPARE(size->maximum(), 100);
    QCOMPARE(size->singleStep(), 5);
    QCOMPARE(size->value(), 10);
    QVERIFY(!fixture->get<QCheckBox>("checkExtraInfo")->isChecked());
    if (!fixture->isLin) {
        QVERIFY(fixture->get<QCheckBox>("checkErrorFrames")->isChecked());
        return;
    }
    QVERIFY(fixture->get<QRadioButton>("radioAbsolute")->isChecked());
    QVERIFY(!fixture->get<QRadioButton>("radioRelative")->isChecked());
    auto *resolution = fixture->get<QDoubleSpinBox>("spinResolution");
    QCOMPARE(resolution->decimals(), 6);
    QCOMPARE(resolution->minimum(), 0.000001);
    QCOMPARE(resolution->maximum(), 1.0);
    QCOMPARE(resolution->singleStep(), 0.001);
    QCOMPARE(resolution->value(), 0.001);
}

void TestLoggerWindow::tabKeyFollowsTheLayout()
{
    const QStringList can{"lineEditPath",  "buttonBrowse",     "buttonOpen",     "comboFormat",
                          "spinSizeLimit", "checkErrorFrames", "checkExtraInfo", "buttonPreview",
                          "buttonReset",   "buttonStartStop",  "buttonClose"};
    const QStringList lin{"lineEditPath",  "buttonBrowse",  "buttonOpen",      "comboFormat",
                          "spinSizeLimit", "radioAbsolute", "spinResolution",  "checkExtraInfo",
                          "buttonPreview", "buttonReset",   "buttonStartStop", "buttonClose"};
    fixture->window->activateWindow();
    fixture->path()->setFocus();
    QStringList visited;
    for (int i = 0; i < 20 && !visited.contains(QStringLiteral("buttonClose")); ++i) {
        const QWidget *focused = fixture->window->focusWidget();
        if (focused && !focused->inherits("QScrollArea"))
            visited.append(focused->objectName());
        QTest::keyClick(fixture->window->focusWidget(), Qt::Key_Tab);
    }
    QCOMPARE(visited, byFamily(can, lin));
}

void TestLoggerWindow::formatChangesDescriptionAndPreviewButNoPath()
{
    const QString path = QStringLiteral("logs/mine.asc");
    fixture->path()->setText(path);
    fixture->format()->setCurrentIndex(1);
    QCOMPARE(fixture->labelText("labelDescription"),
             byFamily(QStringLiteral("CSV format, can be opened with Excel or data analysis tools"),
                      QStringLiteral("CSV format, can be opened with Excel or similar software")));
    QVERIFY(fixture->labelText("labelPreview").startsWith(QStringLiteral("Timestamp,Channel,ID,")));
    QCOMPARE(fixture->path()->text(), path);
    fixture->format()->setCurrentIndex(0);
    QCOMPARE(fixture->labelText("labelDescription"),
             byFamily(QStringLiteral("Vector ASC format, compatible with CANalyzer/CANoe"),
                      QStringLiteral("Vector ASC format, compatible with CANalyzer")));
    QVERIFY(fixture->labelText("labelPreview").startsWith(QStringLiteral("date ")));
    QCOMPARE(fixture->path()->text(), path);
}

void TestLoggerWindow::previewFollowsTheOptionsWhenAskedFor()
{
    const auto preview = [] { return fixture->labelText("labelPreview"); };
    const QString before = preview();
    fixture->get<QCheckBox>("checkExtraInfo")->setChecked(true);
    if (fixture->isLin)
        fixture->get<QRadioButton>("radioRelative")->setChecked(true);
    else
        fixture->get<QCheckBox>("checkErrorFrames")->setChecked(false);
    QCOMPARE(preview(), before);
    fixture->click("buttonPreview");
    QVERIFY(preview().contains(QStringLiteral(" // Index: 1")));
    QVERIFY(preview().contains(
        byFamily(QStringLiteral("no internal events logged"), QStringLiteral("timestamps relative"))));
}

void TestLoggerWindow::resetAsksAndKeepsOnNo()
{
    fixture->sizeLimit()->setValue(35);
    fixture->driver.expectBox(QMessageBox::No);
    fixture->click("buttonReset");
    QTRY_COMPARE(fixture->driver.seen().size(), std::size_t{1});
    QCOMPARE(fixture->driver.seen()[0].title, QStringLiteral("Confirm Reset"));
    QCOMPARE(fixture->driver.seen()[0].text,
             QStringLiteral("Are you sure you want to reset all settings to default values?"));
    QCoreApplication::processEvents();
    QCOMPARE(fixture->sizeLimit()->value(), 35);
}

void TestLoggerWindow::resetAsksAndResetsOnYes()
{
    fixture->path()->setText(QStringLiteral("logs/mine.csv"));
    fixture->format()->setCurrentIndex(1);
    fixture->sizeLimit()->setValue(35);
    fixture->get<QCheckBox>("checkExtraInfo")->setChecked(true);
    if (fixture->isLin) {
        fixture->get<QRadioButton>("radioRelative")->setChecked(true);
        fixture->get<QDoubleSpinBox>("spinResolution")->setValue(0.5);
    } else {
        fixture->get<QCheckBox>("checkErrorFrames")->setChecked(false);
    }
    fixture->driver.expectBox(QMessageBox::Yes);
    fixture->click("buttonReset");
    QTRY_COMPARE(fixture->sizeLimit()->value(), 10);
    QCOMPARE(fixture->path()->text(), QStringLiteral("logs/mine.csv"));
    fixture->path()->setText(byFamily(QStringLiteral("logs/can_recording.asc"), QString()));
    controlsStartWithTheirValues();
    QVERIFY(fixture->labelText("labelPreview").startsWith(QStringLiteral("date ")));
}

void TestLoggerWindow::browseOffersTheFormatsFilesFromHome()
{
    const QString chosen = fixture->workDir.filePath(QStringLiteral("chosen.asc"));
    for (const int format : {0, 1}) {
        fixture->format()->setCurrentIndex(format);
        fixture->driver.expectDialog([&](QDialog *dialog) {
            auto *browse = qobject_cast<QFileDialog *>(dialog);
            QVERIFY(browse);
            QCOMPARE(browse->windowTitle(), QStringLiteral("Select Log File"));
            QCOMPARE(browse->acceptMode(), QFileDialog::AcceptSave);
            QCOMPARE(browse->directory().absolutePath(), QDir::homePath());
            QCOMPARE(browse->nameFilters(),
                     (QStringList{format == 0 ? "ASC Files (*.asc)" : "CSV Files (*.csv)", "All Files (*)"}));
            Q_EMIT browse->fileSelected(chosen);
            browse->reject();
        });
        fixture->path()->clear();
        fixture->click("buttonBrowse");
        QTRY_COMPARE(fixture->path()->text(), chosen);
        QTRY_VERIFY(!fixture->window->findChild<QFileDialog *>());
    }
}

void TestLoggerWindow::openWarnsWithoutPathOrFile()
{
    const DocumentOpener opener;
    fixture->path()->clear();
    fixture->driver.expectBox(QMessageBox::Ok);
    fixture->click("buttonOpen");
    QTRY_COMPARE(fixture->driver.seen().size(), std::size_t{1});
    fixture->path()->setText(QStringLiteral("logs/none.asc"));
    fixture->driver.expectBox(QMessageBox::Ok);
    fixture->click("buttonOpen");
    QTRY_COMPARE(fixture->driver.seen().size(), std::size_t{2});
    const auto &seen = fixture->driver.seen();
    for (const auto &box : seen) {
        QCOMPARE(box.title, QStringLiteral("Error"));
        QCOMPARE(box.icon, static_cast<int>(QMessageBox::Warning));
    }
    QCOMPARE(seen[0].text, QStringLiteral("No log file path specified"));
    QCOMPARE(seen[1].text, QStringLiteral("File does not exist: logs/none.asc"));
    QCOMPARE(opener.count(), 0);
}

void TestLoggerWindow::openShowsTheFileInTheDefaultProgram()
{
    const DocumentOpener opener;
    const QString name = QStringLiteral("a b.asc");
    QFile file(name);
    QVERIFY(file.open(QIODevice::WriteOnly));
    fixture->path()->setText(name);
    fixture->click("buttonOpen");
    QCOMPARE(opener.count(), 1);
    QCOMPARE(opener.openedFile(), QFileInfo(name).canonicalFilePath());
}

void TestLoggerWindow::idleWindowClosesWithoutAsking()
{
    fixture->click("buttonClose");
    QVERIFY(!fixture->window->isVisible());
    fixture->window->showNormal();
    QVERIFY(fixture->window->close());
    QVERIFY(!fixture->window->isVisible());
    QVERIFY(fixture->driver.seen().empty());
}

// As when the program is ended from outside.
void TestLoggerWindow::windowMayGoUnderItsDialogs()
{
    const bool lin = fixture->isLin;
    for (const char *button : {"buttonReset", "buttonBrowse", "buttonOpen", "buttonStartStop"}) {
        fixture.reset();
        fixture = std::make_unique<LoggerWindowFixture>(lin);
        fixture->path()->clear();
        fixture->click(button);
        QVERIFY2(QApplication::activeModalWidget(), button);
        fixture->window.reset();
        QVERIFY2(!QApplication::activeModalWidget(), button);
    }
}
