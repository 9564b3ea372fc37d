// SPDX-License-Identifier: GPL-3.0-or-later
#include "tools/demo/DemoDriver.h"

#include "app/TZBenchWindow.h"
#include "vci/TzVciDeviceStore.h"
#include "vci/TzVciTypes.h"
#include "vci/ui/TzVciCanConfigDialog.h"
#include "vci/ui/TzVciChannelSelectDialog.h"
#include "vci/ui/TzVciConfigDialog.h"
#include "views/ui/TzVciBaseViewWindow.h"

#include <QAbstractButton>
#include <QAction>
#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenu>
#include <QMessageBox>
#include <QPixmap>

#include <algorithm>
#include <cstdio>
#include <set>

namespace {

constexpr int deviceIndex = 0;
constexpr qulonglong framesWanted = 500;

} // namespace

DemoDriver::DemoDriver(TZBenchWindow *window, TzVciDeviceStore *store, const QDir &out, QObject *parent)
    : QObject(parent)
    , m_window(window)
    , m_store(store)
    , m_out(out)
{
    addSettingsSteps();
    addViewSteps();
    addViewPictureSteps();
    addDialogSteps();
    addAddDeviceSteps();
    addRecorderSteps();
    addToolSteps();
    addConverterSteps();
    addClosingSteps();
    connect(&m_script, &DemoScript::failed, this, [this](const QString &step) {
        std::fprintf(stderr, "demo: \"%s\" did not come about\n", qPrintable(step));
        m_window->closeWithoutQuestion();
        qApp->exit(1);
    });
}

void DemoDriver::start()
{
    m_script.start();
}

void DemoDriver::addSettingsSteps()
{
    m_script.add(
        tr("select the device that the scan found"),
        [this] {
            auto *dialog = openDialog<TzVciConfigDialog>();
            return dialog && dialog->isVisible() && m_store->deviceIndices().size() >= 2 &&
                   dialog->findChild<QListWidget *>()->count() >= 2;
        },
        [] { openDialog<TzVciConfigDialog>()->findChild<QListWidget *>()->setCurrentRow(deviceIndex); });
    m_script.add(tr("open the device"), isOpen<TzVciConfigDialog>, [this] {
        savePicture(openDialog<TzVciConfigDialog>(), QStringLiteral("device-settings-closed"));
        openDialog<TzVciConfigDialog>()->findChild<QAbstractButton *>(QStringLiteral("buttonToggleDevice"))->click();
    });
    const auto deviceOpen = [this] { return m_store->isDeviceOpen(deviceIndex); };
    m_script.add(tr("open CAN1"), deviceOpen, [this] { clickChannel(QStringLiteral("CAN1")); });
    m_script.add(tr("open CAN2"), deviceOpen, [this] { clickChannel(QStringLiteral("CAN2")); });
    m_script.add(tr("open LIN1"), deviceOpen, [this] { clickChannel(QStringLiteral("LIN1")); });
    m_script.add(
        tr("close the settings"),
        [this] {
            return m_store->isChannelOpen(deviceIndex, TzVciProtocolId::can, 1) &&
                   m_store->isChannelOpen(deviceIndex, TzVciProtocolId::lin, 0);
        },
        [this] {
            savePicture(openDialog<TzVciConfigDialog>(), QStringLiteral("device-settings"));
            openDialog<TzVciConfigDialog>()->close();
        });
}

void DemoDriver::addViewSteps()
{
    m_script.add(tr("open four views"), noDialogIsOpen, [this] {
        savePicture(m_window, QStringLiteral("main-window-start"));
        trigger("actionNew_CAN_View");
        trigger("actionNew_LIN_View");
        arrangeViews();
    });
    m_script.add(
        tr("wait for traffic"), [this] { return views().size() == 4 && everyViewCounted(framesWanted); },
        [this] { savePicture(m_window, QStringLiteral("main-window")); });
    m_script.add(
        tr("show a menu"), [] { return true; },
        [this] {
            auto *menu = m_window->findChild<QMenu *>(QStringLiteral("menuVCI_View"));
            menu->popup(m_window->mapToGlobal(QPoint(60, 100)));
            savePicture(menu, QStringLiteral("menu-view"));
            menu->close();
        });
}

void DemoDriver::addDialogSteps()
{
    m_script.add(
        tr("open the channel filter"), [] { return true; },
        [this] { views().front()->findChild<QAbstractButton *>(QStringLiteral("buttonDevices"))->click(); });
    addClosingPicture<TzVciChannelSelectDialog>(tr("close the channel filter"), QStringLiteral("channel-filter"));
    m_script.add(tr("open the settings"), noDialogIsOpen, [this] { trigger("actionDevice_Settings"); });
    m_script.add(tr("open the bit timing"), isOpen<TzVciConfigDialog>, [] {
        for (auto *button : openDialog<TzVciConfigDialog>()->findChildren<QAbstractButton *>()) {
            if (button->property("row").isValid() && button->text() == TzVciConfigDialog::tr("Configure")) {
                button->click();
                return;
            }
        }
    });
    addClosingPicture<TzVciCanConfigDialog>(tr("close the bit timing"), QStringLiteral("bit-timing"));
    m_script.add(tr("close the settings again"), isOpen<TzVciConfigDialog>,
                 [] { openDialog<TzVciConfigDialog>()->close(); });
}

void DemoDriver::addClosingSteps()
{
    m_script.add(tr("close the program"), noDialogIsOpen, [this] {
        printCounters();
        m_succeeded = everyViewCounted(framesWanted);
        m_window->close();
    });
    m_script.add(tr("answer Yes"), isOpen<QMessageBox>, [this] {
        savePicture(openDialog<QMessageBox>(), QStringLiteral("close-question"));
        openDialog<QMessageBox>()->button(QMessageBox::Yes)->click();
    });
}

void DemoDriver::clickChannel(const QString &name)
{
    auto *dialog = openDialog<TzVciConfigDialog>();
    for (auto *button : dialog->findChildren<QAbstractButton *>()) {
        if (button->text() == name)
            button->click();
    }
}

void DemoDriver::trigger(const char *action)
{
    m_window->findChild<QAction *>(QString::fromLatin1(action))->trigger();
}

void DemoDriver::savePicture(QWidget *widget, const QString &name)
{
    const QString path = m_out.filePath(name + QStringLiteral(".png"));
    if (!widget || !widget->grab().save(path))
        std::fprintf(stderr, "demo: could not save %s\n", qPrintable(path));
}

void DemoDriver::arrangeViews()
{
    // One raw and one folded view of each family; the filter bar shows in the first.
    std::set<QString> families;
    for (TzVciBaseViewWindow *view : views()) {
        const bool isFirst = families.insert(view->windowTitle().section(QLatin1Char(' '), -1)).second;
        view->findChild<QCheckBox *>(QStringLiteral("checkBoxFold"))->setChecked(!isFirst);
    }
    views().front()->findChild<QAbstractButton *>(QStringLiteral("buttonFilter"))->click();
}

void DemoDriver::printCounters()
{
    for (TzVciBaseViewWindow *view : views()) {
        const auto *status = view->findChild<QLabel *>(QStringLiteral("lableStatus"));
        std::printf("%s: %s\n", qPrintable(view->windowTitle()), qPrintable(status->text()));
    }
    std::fflush(stdout);
}

std::vector<TzVciBaseViewWindow *> DemoDriver::views() const
{
    std::vector<TzVciBaseViewWindow *> result;
    const auto *area = m_window->findChild<QMdiArea *>(QStringLiteral("areaVCI"));
    for (QMdiSubWindow *sub : area->subWindowList()) {
        if (auto *view = qobject_cast<TzVciBaseViewWindow *>(sub->widget()))
            result.push_back(view);
    }
    return result;
}

bool DemoDriver::everyViewCounted(qulonglong frames) const
{
    const auto all = views();
    return !all.empty() && std::all_of(all.begin(), all.end(), [frames](const TzVciBaseViewWindow *view) {
        return framesCounted(view) >= frames;
    });
}

qulonglong DemoDriver::framesCounted(const TzVciBaseViewWindow *view)
{
    const QString text = view->findChild<QLabel *>(QStringLiteral("lableStatus"))->text(); // "Tl:000000000123 Rx:..."
    return text.section(QLatin1Char(' '), 0, 0).mid(3).toULongLong();
}
