// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/ui/CommonFileManager.h"

#include "common/ui/PlainMessageBox.h"
#include "views/TzViewSnapshot.h"

#include <QAbstractItemView>
#include <QFileDialog>
#include <QFileInfo>
#include <QPointer>
#include <QTableView>
#include <QTreeView>

#include <algorithm>
#include <optional>
#include <vector>

namespace {

using Format = TzViewSnapshot::Format;

struct Choice
{
    QString path;
    Format format = Format::Txt;
};

// What shows these windows may be destroyed meanwhile, and they with it: each is a child of it that is looked after.

int showBox(QMessageBox::Icon icon, const QString &title, const QString &text, QMessageBox::StandardButtons buttons,
            QMessageBox::StandardButton defaultButton, QWidget *parent)
{
    const QPointer<QMessageBox> box(new Common::PlainMessageBox(icon, title, text, buttons, parent));
    box->setDefaultButton(defaultButton);
    const int answer = box->exec();
    delete box;
    return answer;
}

bool mayReplace(const QString &path, const QString &title, QWidget *parent)
{
    const QFileInfo file(path);
    if (!file.exists() || file.isDir()) // a folder is not replaced: it makes the save fail
        return true;
    const QString question = CommonFileManager::tr("%1 already exists.\nDo you want to replace it?");
    return showBox(QMessageBox::Warning, title, question.arg(file.fileName()), QMessageBox::Yes | QMessageBox::No,
                   QMessageBox::No, parent) == QMessageBox::Yes;
}

// The dialog asks nothing by itself about a file that is there: it does not know the name with its extension.
std::optional<Choice> chooseFile(const std::vector<Format> &formats, QWidget *parent)
{
    const QPointer<QFileDialog> dialog(new QFileDialog(parent, CommonFileManager::tr("Save File")));
    dialog->setAcceptMode(QFileDialog::AcceptSave);
    dialog->setFileMode(QFileDialog::AnyFile);
    dialog->setOption(QFileDialog::DontConfirmOverwrite);
    QStringList filters;
    for (const Format format : formats)
        filters << TzViewSnapshot::nameFilter(format);
    dialog->setNameFilters(filters);

    std::optional<Choice> choice;
    while (!choice && dialog && dialog->exec() == QDialog::Accepted && dialog) {
        const QString name = dialog->selectedFiles().value(0);
        if (name.isEmpty())
            break;
        const int filter = std::max(0, filters.indexOf(dialog->selectedNameFilter()));
        const Format format = formats[static_cast<std::size_t>(filter)];
        const QString path = TzViewSnapshot::completedPath(name, format);
        const QString title = dialog->windowTitle();
        if (mayReplace(path, title, parent))
            choice = Choice{path, format};
    }
    delete dialog;
    return choice;
}

bool saveView(QAbstractItemView *shown, QWidget *owner, const std::vector<Format> &formats)
{
    const QPointer<QAbstractItemView> view(shown);
    const QPointer<QWidget> parent(owner);
    if (!view || !view->model())
        return false;
    const std::optional<Choice> choice = chooseFile(formats, parent);
    if (!choice || !view || !view->model())
        return false;
    if (TzViewSnapshot::save(*view->model(), choice->format, choice->path))
        return true;
    showBox(QMessageBox::Warning, CommonFileManager::tr("Error"),
            CommonFileManager::tr("Failed to save file. Please check the file path and permissions."), QMessageBox::Ok,
            QMessageBox::Ok, parent);
    return false;
}

} // namespace

bool CommonFileManager::saveTable(QTableView *view, QWidget *parent, bool withAsc)
{
    if (withAsc)
        return saveView(view, parent, {Format::Asc, Format::Csv, Format::Txt});
    return saveView(view, parent, {Format::Csv, Format::Txt});
}

bool CommonFileManager::saveTree(QTreeView *view, QWidget *parent)
{
    return saveView(view, parent, {Format::Csv, Format::Txt});
}
