// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/views/FileManagerTest.h"

#include "common/platform/ExclusiveFile.h"
#include "tests/support/MessageBoxDriver.h"
#include "tests/support/TempWorkDir.h"
#include "tests/views/SmallTree.h"
#include "views/ui/CommonFileManager.h"

#include <QtTest>
#include <QtWidgets>

#include <memory>
#include <optional>

using namespace tztest;

namespace {

const QString asc = QStringLiteral("ASC Files (*.asc)");
const QString csv = QStringLiteral("CSV Files (*.csv)");
const QString txt = QStringLiteral("Text Files (*.txt)");
const QByteArray older = "older";

/// A window with a table and a tree of the same model.
struct Window : QWidget
{
    Window()
    {
        table->setModel(&model);
        tree->setModel(&model);
        table->setColumnHidden(1, true);
        show();
    }
    SmallTree model;
    QTableView *table = new QTableView(this);
    QTreeView *tree = new QTreeView(this);
};

struct Scene
{
    TempWorkDir workDir;
    std::unique_ptr<Window> window = std::make_unique<Window>();
    MessageBoxDriver driver;
};

std::optional<Scene> scene;

bool saveTable(bool withAsc = true)
{
    return CommonFileManager::saveTable(scene->window->table, scene->window.get(), withAsc);
}

QString pathOf(const char *name)
{
    return scene->workDir.filePath(QLatin1String(name));
}

QByteArray contents(const char *name)
{
    QFile file(pathOf(name));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void makeOlder(const char *name)
{
    QFile file(pathOf(name));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(older);
}

QStringList files()
{
    return QDir(pathOf("")).entryList(QDir::AllEntries | QDir::NoDotAndDotDot);
}

} // namespace

void TestFileManager::init()
{
    scene.emplace();
}

void TestFileManager::cleanup()
{
    QVERIFY(scene->driver.allMet());
    QCOMPARE(scene->driver.unexpected(), 0);
    scene.reset();
}

void TestFileManager::nullViewsAskNothing()
{
    QTableView withoutModel;
    QVERIFY(!CommonFileManager::saveTable(nullptr, nullptr, true));
    QVERIFY(!CommonFileManager::saveTree(nullptr, nullptr));
    QVERIFY(!CommonFileManager::saveTable(&withoutModel, nullptr, true));
    QVERIFY(scene->driver.seen().empty());
}

void TestFileManager::tableOffersAscWhenAskedTo()
{
    scene->driver.expectFileDialog(asc, {});
    QVERIFY(!saveTable(true));
    scene->driver.expectFileDialog(csv, {});
    QVERIFY(!saveTable(false));
    QCOMPARE(scene->driver.seen().size(), std::size_t{2});
    QCOMPARE(scene->driver.seen()[0].title, QStringLiteral("Save File"));
    QCOMPARE(scene->driver.seen()[0].text, QStringLiteral("ASC Files (*.asc);;CSV Files (*.csv);;Text Files (*.txt)"));
    QCOMPARE(scene->driver.seen()[1].text, QStringLiteral("CSV Files (*.csv);;Text Files (*.txt)"));
}

void TestFileManager::treeOffersNoAsc()
{
    scene->driver.expectFileDialog(csv, {});
    QVERIFY(!CommonFileManager::saveTree(scene->window->tree, scene->window.get()));
    QCOMPARE(scene->driver.seen()[0].title, QStringLiteral("Save File"));
    QCOMPARE(scene->driver.seen()[0].text, QStringLiteral("CSV Files (*.csv);;Text Files (*.txt)"));
}

void TestFileManager::cancelledDialogWritesNothing()
{
    scene->driver.expectFileDialog(txt, {});
    QVERIFY(!saveTable());
    QCOMPARE(files(), QStringList());
    QCOMPARE(scene->driver.seen().size(), std::size_t{1});
}

void TestFileManager::formatFollowsTheChosenFilter()
{
    scene->driver.expectFileDialog(asc, pathOf("a.asc"));
    QVERIFY(saveTable());
    scene->driver.expectFileDialog(csv, pathOf("b.csv"));
    QVERIFY(saveTable());
    scene->driver.expectFileDialog(txt, pathOf("c.txt"));
    QVERIFY(saveTable());
    scene->driver.expectFileDialog(txt, pathOf("d.txt"));
    QVERIFY(saveTable(false));
    QVERIFY(contents("a.asc").startsWith("date "));
    QCOMPARE(contents("b.csv").left(8), QByteArray("No.,Time"));
    QCOMPARE(contents("c.txt").left(8), QByteArray("No.\tTime"));
    QCOMPARE(contents("d.txt"), contents("c.txt"));
}

void TestFileManager::extensionIsAddedToMatch()
{
    const std::pair<const char *, const char *> names[] = {
        {"bare", "bare.csv"}, {"Own.CSV", "Own.CSV"}, {"other.txt", "other.txt.csv"}, {"a.2026", "a.2026.csv"}};
    QStringList expected;
    for (const auto &[typed, written] : names) {
        scene->driver.expectFileDialog(csv, pathOf(typed));
        QVERIFY2(saveTable(), typed);
        QVERIFY2(contents(written).startsWith("No.,Time"), written);
        expected << QLatin1String(written);
    }
    expected.sort(Qt::CaseInsensitive);
    QCOMPARE(files(), expected);
}

void TestFileManager::treeIsSavedWithItsChildren()
{
    scene->driver.expectFileDialog(csv, pathOf("tree"));
    QVERIFY(CommonFileManager::saveTree(scene->window->tree, scene->window.get()));
    QCOMPARE(contents("tree.csv"), QByteArray(R"(No.,Time,Name,Data
"1","0.1","Engine","01"
    "","Name","Raw Value"
    "","Speed","100"
"2","0.2","Door, left","02"
"3","0.3","Roof","03"
    "","Name","Raw Value"
)"));
    QVERIFY(!scene->window->tree->isExpanded(scene->window->model.index(0, 0)));
}

void TestFileManager::unwritablePathShowsTheWarning()
{
    scene->driver.expectFileDialog(csv, pathOf("missing/view.csv"));
    scene->driver.expectBox(QMessageBox::Ok);
    QVERIFY(!saveTable());
    QCOMPARE(scene->driver.seen().size(), std::size_t{2});
    QCOMPARE(scene->driver.seen()[1].title, QStringLiteral("Error"));
    QCOMPARE(scene->driver.seen()[1].text,
             QStringLiteral("Failed to save file. Please check the file path and permissions."));
    QCOMPARE(scene->driver.seen()[1].icon, int{QMessageBox::Warning});
}

void TestFileManager::folderOfTheNameShowsTheWarning()
{
    QVERIFY(QDir().mkdir(pathOf("view.txt")));
    scene->driver.expectFileDialog(txt, pathOf("view"));
    scene->driver.expectBox(QMessageBox::Ok);
    QVERIFY(!CommonFileManager::saveTree(scene->window->tree, scene->window.get()));
    QCOMPARE(scene->driver.seen()[1].title, QStringLiteral("Error"));
}

void TestFileManager::existingFileIsReplacedOnlyOnYes()
{
    makeOlder("view.csv");
    scene->driver.expectFileDialog(csv, pathOf("view")); // whose name gets the extension only afterwards
    scene->driver.expectBox(QMessageBox::Yes);
    QVERIFY(saveTable());
    QCOMPARE(scene->driver.seen().size(), std::size_t{2});
    QCOMPARE(scene->driver.seen()[1].title, QStringLiteral("Save File"));
    QCOMPARE(scene->driver.seen()[1].text, QStringLiteral("view.csv already exists.\nDo you want to replace it?"));
    QVERIFY(contents("view.csv").startsWith("No.,Time"));
}

void TestFileManager::namesAreNoMarkup()
{
    makeOlder("<b>view.csv");
    scene->driver.expectFileDialog(csv, pathOf("<b>view.csv"));
    scene->driver.expectBox(QMessageBox::Yes);
    QVERIFY(saveTable());
    QCOMPARE(scene->driver.seen()[1].text, QStringLiteral("<b>view.csv already exists.\nDo you want to replace it?"));
    QCOMPARE(scene->driver.seen()[1].textFormat, Qt::PlainText);
}

void TestFileManager::recordedFileShowsTheWarning()
{
    Common::platform::ExclusiveFile recording;
    QVERIFY(!recording.open(QFile::encodeName(pathOf("view.csv")).toStdString()));
    recording.write("older");
    scene->driver.expectFileDialog(csv, pathOf("view.csv"));
    scene->driver.expectBox(QMessageBox::Yes);
    scene->driver.expectBox(QMessageBox::Ok);
    QVERIFY(!saveTable());
    QCOMPARE(scene->driver.seen()[2].title, QStringLiteral("Error"));
    QCOMPARE(contents("view.csv"), older);
}

void TestFileManager::refusedReplacementAsksForAnotherName()
{
    makeOlder("view.txt");
    scene->driver.expectFileDialog(txt, pathOf("view.txt"));
    scene->driver.expectBox(QMessageBox::No);
    scene->driver.expectFileDialog(txt, pathOf("new.txt"));
    QVERIFY(saveTable());
    QCOMPARE(contents("view.txt"), older);
    QVERIFY(contents("new.txt").startsWith("No.\tTime"));
}

void TestFileManager::viewMayGoUnderTheDialogs()
{
    makeOlder("view.txt");
    const auto goUnder = [](QDialog *) { scene->window.reset(); };
    scene->driver.expectDialog(goUnder);
    QVERIFY(!saveTable());

    scene->window = std::make_unique<Window>();
    scene->driver.expectFileDialog(txt, pathOf("view.txt"));
    QTimer ender;
    connect(&ender, &QTimer::timeout, &ender, [&ender] {
        if (!qobject_cast<QMessageBox *>(QApplication::activeModalWidget()))
            return;
        ender.stop();
        scene->window.reset();
    });
    ender.start(0); // ahead of the driver, which looks less often
    QVERIFY(!saveTable());
    QVERIFY(!ender.isActive());
    QCOMPARE(contents("view.txt"), older);
}
