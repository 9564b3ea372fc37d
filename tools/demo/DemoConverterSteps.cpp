// SPDX-License-Identifier: GPL-3.0-or-later
// The part of the demo driver that converts a log and takes pictures of it.
#include "tools/demo/DemoBlfLog.h"
#include "tools/demo/DemoDriver.h"

#include "logging/ui/BLFConverterDialog.h"

#include <QAbstractButton>
#include <QLineEdit>
#include <QMessageBox>

#include <cstdio>

namespace {

const char *const inputPath = "logs/drive.blf";
const char *const outputPath = "logs/drive_processed.csv";

void enterPath(const char *edit, const char *path)
{
    openDialog<BLFConverterDialog>()->findChild<QLineEdit *>(QLatin1String(edit))->setText(QLatin1String(path));
}

} // namespace

void DemoDriver::addConverterSteps()
{
    m_script.add(tr("open the BLF converter"), noDialogIsOpen, [this] {
        if (!QDir().mkpath(QStringLiteral("logs")) || !saveDemoBlfLog(QLatin1String(inputPath)))
            std::fprintf(stderr, "demo: could not write %s\n", inputPath);
        trigger("actionBLF_Converter");
    });
    m_script.add(tr("convert a log"), isOpen<BLFConverterDialog>, [] {
        enterPath("lineEditInput", inputPath);
        enterPath("lineEditOutput", outputPath);
        openDialog<BLFConverterDialog>()->findChild<QAbstractButton *>(QStringLiteral("buttonStart"))->click();
    });
    m_script.add(
        tr("close the message of the converter"),
        [] {
            const auto *box = openDialog<QMessageBox>();
            return box && box->button(QMessageBox::Close);
        },
        [this] {
            auto *box = openDialog<QMessageBox>();
            savePicture(box, QStringLiteral("blf-converted"));
            box->button(QMessageBox::Close)->click();
        });
    addClosingPicture<BLFConverterDialog>(tr("close the BLF converter"), QStringLiteral("blf-converter"));
}
