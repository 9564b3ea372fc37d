// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/app/TestDebugLogDialog.h"

#include "app/DebugLogDialog.h"
#include "common/Log.h"
#include "common/ui/WorkbenchStyle.h"
#include "tests/support/IconCompare.h"
#include "tests/support/LogCapture.h"
#include "tests/support/MessageBoxDriver.h"
#include "tests/support/QuietConsole.h"
#include "tests/support/WaitFor.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QSpinBox>
#include <QtTest>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <thread>
#include <vector>

namespace {

const QString settingsFile = QStringLiteral("config/tzbench.ini");
constexpr auto banner = "========== TZBench v1.6.0 | zarnek | windows ==========";

class ShownDialog : public DebugLogDialog
{
public:
    explicit ShownDialog(Common::ConfigManager *config)
        : DebugLogDialog(config, QStringLiteral("TZBench"), QStringLiteral("v1.6.0"))
        , level(findChild<QComboBox *>(QStringLiteral("comboLevel")))
        , file(findChild<QCheckBox *>(QStringLiteral("checkBoxFile")))
        , fileGroup(findChild<QGroupBox *>(QStringLiteral("groupFile")))
        , size(findChild<QSpinBox *>(QStringLiteral("spinFileSize")))
        , files(findChild<QSpinBox *>(QStringLiteral("spinMaxFiles")))
        , path(findChild<QLineEdit *>(QStringLiteral("lineEditPath")))
        , browse(findChild<QPushButton *>(QStringLiteral("buttonBrowse")))
        , ok(findChild<QDialogButtonBox *>()->button(QDialogButtonBox::Ok))
        , cancel(findChild<QDialogButtonBox *>()->button(QDialogButtonBox::Cancel))
    {
        show();
    }

    QComboBox *level;
    QCheckBox *file;
    QGroupBox *fileGroup;
    QSpinBox *size;
    QSpinBox *files;
    QLineEdit *path;
    QPushButton *browse;
    QPushButton *ok;
    QPushButton *cancel;
};

void click(QAbstractButton *button)
{
    // A check box answers to its indicator and text alone.
    const QPoint position = qobject_cast<QCheckBox *>(button) ? QPoint(8, button->height() / 2) : QPoint();
    QTest::mouseClick(button, Qt::LeftButton, Qt::NoModifier, position);
}

QString contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

/// Whether one of the log's files holds a text.
bool logHolds(const QString &text)
{
    const QFileInfoList files = QDir(QStringLiteral("logs")).entryInfoList(QDir::Files);
    return std::any_of(files.begin(), files.end(),
                       [&text](const QFileInfo &file) { return contentOf(file.filePath()).contains(text); });
}

} // namespace

void TestDebugLogDialog::initTestCase()
{
    Common::applyWorkbenchStyle(*qApp);
}

void TestDebugLogDialog::init()
{
    m_workDir = std::make_unique<tztest::TempWorkDir>();
    m_config = std::make_unique<Common::ConfigManager>(settingsFile);
}

void TestDebugLogDialog::cleanup()
{
    Common::logInit("", Common::LogLevel::info, 1, 1); // as before the first start
    Common::logStart(true);
    Common::logStop();
    m_config.reset();
    m_workDir.reset();
}

void TestDebugLogDialog::showsTitleTextsAndItems()
{
    const ShownDialog dialog(m_config.get());
    QCOMPARE(dialog.windowTitle(), QStringLiteral("Debug Log Settings"));
    QVERIFY(showsIcon(dialog.windowIcon(), ":/resource/log.png"));
    QStringList groups;
    for (const auto *group : dialog.findChildren<QGroupBox *>())
        groups.append(group->title());
    groups.sort();
    QCOMPARE(groups, (QStringList{"File Settings", "Log Settings"}));
    QStringList labels;
    for (const auto *label : dialog.findChildren<QLabel *>())
        labels.append(label->text());
    labels.sort();
    QCOMPARE(labels, (QStringList{"Log File Path:", "Log File Size (MB):", "Log Level:", "Max Log Files:"}));
    QStringList levels;
    for (int i = 0; i < dialog.level->count(); ++i)
        levels.append(dialog.level->itemText(i));
    QCOMPARE(levels, (QStringList{"Debug", "Info", "Warning", "Error", "No Log"}));
    QCOMPARE(dialog.file->text(), QStringLiteral("Log to File (unchecked = console only)"));
    QCOMPARE(dialog.browse->text(), QStringLiteral("Browse"));
    QCOMPARE(dialog.ok->text(), QStringLiteral("OK"));
    QCOMPARE(dialog.cancel->text(), QStringLiteral("Cancel"));
}

void TestDebugLogDialog::showsTheSettings()
{
    {
        const ShownDialog dialog(m_config.get());
        QCOMPARE(dialog.level->currentText(), QStringLiteral("Info"));
        QVERIFY(dialog.file->isChecked());
        QCOMPARE(dialog.size->value(), 10);
        QCOMPARE(dialog.files->value(), 5);
        QCOMPARE(dialog.path->text(), QStringLiteral("logs"));
    }
    m_config->logConsoleOnly = true;
    m_config->logLevel = 4;
    m_config->logFileSizeMb = 255;
    m_config->maxLogFiles = 0;
    m_config->logDirectory = QStringLiteral("/var/log/bench/TZBench.log");
    const ShownDialog dialog(m_config.get());
    QCOMPARE(dialog.level->currentText(), QStringLiteral("No Log"));
    QVERIFY(!dialog.file->isChecked()); // the inverse
    QVERIFY(!dialog.fileGroup->isEnabled());
    QCOMPARE(dialog.size->value(), 255);
    QCOMPARE(dialog.files->value(), 0);
    QCOMPARE(dialog.path->text(), QStringLiteral("/var/log/bench/TZBench.log"));
}

void TestDebugLogDialog::uncheckingLogToFileDisablesTheFileGroup()
{
    const ShownDialog dialog(m_config.get());
    const std::vector<QWidget *> controls{dialog.size, dialog.files, dialog.path, dialog.browse};
    const auto allAre = [&](bool enabled) {
        return std::all_of(controls.begin(), controls.end(), [&](auto *c) { return c->isEnabled() == enabled; });
    };
    QVERIFY(dialog.fileGroup->isEnabled() && allAre(true));
    click(dialog.file);
    QVERIFY(!dialog.file->isChecked());
    QVERIFY(!dialog.fileGroup->isEnabled() && allAre(false));
    QVERIFY(dialog.level->isEnabled());
    click(dialog.file);
    QVERIFY(dialog.fileGroup->isEnabled() && allAre(true));
}

void TestDebugLogDialog::okSavesTheSettingsAndStartsTheLogAnew()
{
    const ShownDialog dialog(m_config.get());
    dialog.level->setCurrentText(QStringLiteral("Debug"));
    dialog.size->setValue(7);
    dialog.files->setValue(3);
    dialog.path->setText(QStringLiteral("记录 of the bench/run.log"));
    click(dialog.ok);
    QCOMPARE(dialog.result(), int(QDialog::Accepted));
    QCOMPARE(int(m_config->logLevel), 0);
    QCOMPARE(int(m_config->logFileSizeMb), 7);
    QCOMPARE(int(m_config->maxLogFiles), 3);
    QVERIFY(!m_config->logConsoleOnly);
    const Common::ConfigManager saved(settingsFile);
    QCOMPARE(int(saved.logLevel), 0);
    QCOMPARE(int(saved.logFileSizeMb), 7);
    QCOMPARE(int(saved.maxLogFiles), 3);
    QCOMPARE(saved.logDirectory, QStringLiteral("记录 of the bench/run.log"));

    QVERIFY(Common::shouldLogLevel(Common::LogLevel::debug));
    Common::logDebug("after the restart");
    Common::logStop(); // writes out
    const QString log = contentOf(QStringLiteral("记录 of the bench/run.log"));
    QVERIFY2(log.contains(QString::fromUtf8(banner)), qPrintable(log));
    QVERIFY(log.contains(QStringLiteral("after the restart")));
}

void TestDebugLogDialog::cancelChangesNothing()
{
    const ShownDialog dialog(m_config.get());
    dialog.level->setCurrentIndex(3);
    click(dialog.file);
    click(dialog.cancel);
    QCOMPARE(dialog.result(), int(QDialog::Rejected));
    QCOMPARE(int(m_config->logLevel), 1);
    QVERIFY(!m_config->logConsoleOnly);
    QVERIFY(!QFile::exists(settingsFile));
    QVERIFY(!QFile::exists(QStringLiteral("logs")));
}

void TestDebugLogDialog::browseTakesTheFolderWithTheProgramsName()
{
    QVERIFY(QDir().mkpath(QStringLiteral("my logs")));
    const ShownDialog dialog(m_config.get());
    tztest::MessageBoxDriver driver;
    QString title;
    driver.expectDialog([&](QDialog *chooser) {
        title = chooser->windowTitle();
        auto *files = qobject_cast<QFileDialog *>(chooser);
        files->selectFile(QDir::current().absoluteFilePath(QStringLiteral("my logs")));
        files->findChild<QDialogButtonBox *>()->button(QDialogButtonBox::Open)->click();
    });
    click(dialog.browse);
    QVERIFY(driver.allMet());
    QCOMPARE(title, QStringLiteral("Select Log Directory"));
    QCOMPARE(dialog.path->text(), QDir::current().absoluteFilePath(QStringLiteral("my logs")) + "/TZBench.log");
    QVERIFY(dialog.isVisible());
}

void TestDebugLogDialog::browseCancelledKeepsThePath()
{
    const ShownDialog dialog(m_config.get());
    dialog.path->setText(QStringLiteral("no/such/folder/run.log"));
    tztest::MessageBoxDriver driver;
    QString folder;
    driver.expectDialog([&](QDialog *chooser) {
        folder = qobject_cast<QFileDialog *>(chooser)->directory().absolutePath();
        chooser->reject();
    });
    click(dialog.browse);
    QVERIFY(driver.allMet());
    QCOMPARE(folder, QDir::currentPath()); // the nearest that exists
    QCOMPARE(dialog.path->text(), QStringLiteral("no/such/folder/run.log"));
}

void TestDebugLogDialog::consoleOnlyWritesNoFile()
{
    const ShownDialog dialog(m_config.get());
    click(dialog.file);
    click(dialog.ok);
    QVERIFY(m_config->logConsoleOnly);
    QVERIFY(Common::ConfigManager(settingsFile).logConsoleOnly);
    Common::logStop();
    QVERIFY(!QFile::exists(QStringLiteral("logs")));
}

void TestDebugLogDialog::noLogWritesNothing()
{
    const ShownDialog dialog(m_config.get());
    dialog.level->setCurrentText(QStringLiteral("No Log"));
    click(dialog.ok);
    QVERIFY(!Common::shouldLogLevel(Common::LogLevel::error));
    QCOMPARE(int(m_config->logLevel), 4);
    Common::logStop();
    QVERIFY(!QFile::exists(QStringLiteral("logs/TZBench.log")));
}

void TestDebugLogDialog::numbersHaveTheWholeRangeOfAByte()
{
    const ShownDialog dialog(m_config.get());
    for (QSpinBox *spin : {dialog.size, dialog.files}) {
        QCOMPARE(spin->minimum(), 0);
        QCOMPARE(spin->maximum(), 255);
        spin->setFocus();
        spin->selectAll();
        QTest::keyClicks(spin, QStringLiteral("256")); // the last digit is refused
        QCOMPARE(spin->value(), 25);
    }
}

void TestDebugLogDialog::aLogThatCannotStartIsShownAndTheDialogAcceptedAllTheSame()
{
    QFile blocker(QStringLiteral("blocked"));
    QVERIFY(blocker.open(QIODevice::WriteOnly));
    const ShownDialog dialog(m_config.get());
    dialog.path->setText(QStringLiteral("blocked/run.log"));
    tztest::MessageBoxDriver driver;
    driver.expectBox(QMessageBox::Ok);
    click(dialog.ok);
    QVERIFY(driver.allMet());
    QCOMPARE(driver.seen().front().icon, int(QMessageBox::Critical));
    QVERIFY(driver.seen().front().text.contains(QStringLiteral("blocked/run.log")));
    QCOMPARE(driver.seen().front().textFormat, Qt::PlainText);
    QCOMPARE(dialog.result(), int(QDialog::Accepted));
    QVERIFY(!dialog.isVisible());
    QCOMPARE(m_config->logDirectory, QStringLiteral("blocked/run.log"));
}

void TestDebugLogDialog::settingsThatCannotBeSavedStillStartTheLog()
{
    QFile blocker(QStringLiteral("config")); // a file where the folder should be
    QVERIFY(blocker.open(QIODevice::WriteOnly));
    const ShownDialog dialog(m_config.get());
    const tztest::LogCapture log;
    click(dialog.ok);
    QCOMPARE(log.countContaining(3, "config/tzbench.ini"), std::size_t(1));
    QVERIFY(log.has(1, banner));
    Common::logStop();
    QVERIFY(contentOf(QStringLiteral("logs/TZBench.log")).contains(QString::fromUtf8(banner)));
}

void TestDebugLogDialog::restartWhileOtherThreadsLogAtFullRate()
{
    constexpr int restarts = 6;
    const tztest::QuietConsole console;
    std::atomic<bool> done{false};
    std::vector<std::jthread> threads;
    for (int thread = 0; thread < 3; ++thread) {
        threads.emplace_back([&done, thread] {
            for (int line = 0; !done; ++line) {
                Common::logInfo("thread {} line {}", thread, line);
                Common::logDebugHex("datagram", &line, sizeof line);
            }
        });
    }
    for (int i = 0; i < restarts; ++i) {
        const ShownDialog dialog(m_config.get());
        dialog.level->setCurrentIndex(i % 2); // with and without the dumps
        dialog.path->setText(QStringLiteral("logs/%1/run.log").arg(i));
        click(dialog.ok);
        QVERIFY(!dialog.isVisible());
    }
    done = true;
    threads.clear();
    Common::logStop();
    for (int i = 0; i < restarts; ++i) {
        QString all; // the banner may stand in a file that was turned over since
        for (const QFileInfo &file : QDir(QStringLiteral("logs/%1").arg(i)).entryInfoList(QDir::Files))
            all += contentOf(file.filePath());
        QVERIFY2(all.contains(QStringLiteral(" [info] ")), qPrintable(QString::number(i)));
    }
}

void TestDebugLogDialog::sizeAndNumberOfFilesReachTheLog()
{
    constexpr qint64 limit = 2 * 1024 * 1024;
    constexpr int lineLength = 1024; // of the filler; the line's head and number come on top
    {
        const ShownDialog dialog(m_config.get());
        dialog.size->setValue(2);
        dialog.files->setValue(3);
        click(dialog.ok);
    }
    const std::string filler(lineLength, 'x');
    for (int line = 0; line < 5 * limit / lineLength; ++line) { // more than three files hold
        Common::logInfo("line {} {}", line, filler);
        if (line % 1000 == 0) // the log's queue is bounded: what was logged has its time to reach the disk
            QVERIFY(tztest::waitFor([line] { return logHolds(QStringLiteral("line %1 ").arg(line)); }));
    }
    Common::logStop();
    const QFileInfoList files = QDir(QStringLiteral("logs")).entryInfoList(QDir::Files);
    QCOMPARE(files.size(), 3);
    for (const QFileInfo &file : files) {
        QVERIFY2(file.size() <= limit, qPrintable(file.fileName()));
        const bool isCurrent = file.fileName() == QStringLiteral("TZBench.log");
        QVERIFY2(isCurrent || file.size() > limit - 2 * lineLength, qPrintable(file.fileName()));
    }
}

void TestDebugLogDialog::anUnknownLevelIsSavedAsNoLog()
{
    m_config->logLevel = 200;
    const ShownDialog dialog(m_config.get());
    QCOMPARE(dialog.level->currentText(), QStringLiteral("No Log"));
    click(dialog.ok);
    QCOMPARE(int(m_config->logLevel), 4);
    QCOMPARE(int(Common::ConfigManager(settingsFile).logLevel), 4);
}

void TestDebugLogDialog::tabOrder()
{
    ShownDialog dialog(m_config.get());
    dialog.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&dialog));
    QVERIFY(dialog.ok->isDefault());
    QCOMPARE(dialog.focusWidget(), dialog.level);
    for (QWidget *next : {static_cast<QWidget *>(dialog.file), static_cast<QWidget *>(dialog.size),
                          static_cast<QWidget *>(dialog.files), static_cast<QWidget *>(dialog.path),
                          static_cast<QWidget *>(dialog.browse), static_cast<QWidget *>(dialog.ok),
                          static_cast<QWidget *>(dialog.cancel)}) {
        QTest::keyClick(&dialog, Qt::Key_Tab);
        QCOMPARE(dialog.focusWidget(), next);
    }
}
