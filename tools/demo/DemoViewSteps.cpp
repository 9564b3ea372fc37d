// SPDX-License-Identifier: GPL-3.0-or-later
// The part of the demo driver that takes pictures of single views and of what belongs to them.
#include "tools/demo/DemoDriver.h"

#include "logging/ui/LoggerWindow.h"
#include "vci/ui/TzVciAddDeviceDialog.h"
#include "vci/ui/TzVciConfigDialog.h"
#include "views/ui/TzRawViewWindow.h"
#include "views/ui/TzVciBaseViewWindow.h"

#include <QAbstractButton>
#include <QApplication>
#include <QFileInfo>
#include <QLineEdit>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenu>
#include <QTableView>

namespace {

// Wide enough for a whole payload of eight bytes, high enough for a page of rows.
constexpr QSize viewSize{1000, 420};
constexpr QSize smallViewSize{1000, 260};
constexpr int firstCanView = 0;
constexpr int firstLinView = 1;
constexpr int foldedCanView = 2;

const char *const idFilterText = "100-200,320";

QAbstractButton *filterButton(const TzVciBaseViewWindow *view)
{
    return view->findChild<QAbstractButton *>(QStringLiteral("buttonFilter"));
}

QLineEdit *idEdit(const TzVciBaseViewWindow *view)
{
    return view->findChild<QLineEdit *>(QStringLiteral("lineEditId"));
}

// The recorder of a view; null for a view without one.
Common::LoggerWindow *recorder(const TzVciBaseViewWindow *view)
{
    const auto *rawView = qobject_cast<const TzRawViewWindow *>(view);
    return rawView ? rawView->logger() : nullptr;
}

// Lets the view stand alone in front, with the keyboard on it, as a user works with it.
void bringForward(TzVciBaseViewWindow *view, const QSize &size)
{
    auto *frame = qobject_cast<QMdiSubWindow *>(view->parentWidget());
    frame->setGeometry(QRect(QPoint(0, 0), size));
    frame->mdiArea()->setActiveSubWindow(frame);
}

} // namespace

void DemoDriver::addViewPictureSteps()
{
    addViewPicture(firstCanView, viewSize, QStringLiteral("view-can"), [](TzVciBaseViewWindow *view) {
        if (idEdit(view)->isVisible())
            filterButton(view)->click();
    });
    addViewPicture(firstCanView, smallViewSize, QStringLiteral("view-filter"), [](TzVciBaseViewWindow *view) {
        filterButton(view)->click();
        idEdit(view)->setText(QLatin1String(idFilterText));
    });
    addViewPicture(foldedCanView, viewSize, QStringLiteral("view-folded"), {});
    addViewPicture(firstLinView, smallViewSize, QStringLiteral("view-lin"), {});
    addContextMenuPicture();
    m_script.add(
        tr("tile the views again"), [] { return QApplication::activePopupWidget() == nullptr; },
        [this] {
            idEdit(views().front())->clear();
            trigger("actionReset_View");
        });
}

// The picture is taken when the view has been refreshed in its new form.
void DemoDriver::addViewPicture(int index, const QSize &size, const QString &name,
                                const std::function<void(TzVciBaseViewWindow *)> &prepare)
{
    const auto place = static_cast<std::size_t>(index);
    m_script.add(tr("show %1").arg(name), noDialogIsOpen, [this, place, size, prepare] {
        TzVciBaseViewWindow *view = views().at(place);
        if (prepare)
            prepare(view);
        bringForward(view, size);
        m_framesBefore = framesCounted(view);
    });
    m_script.add(
        tr("take a picture of %1").arg(name),
        [this, place] { return framesCounted(views().at(place)) > m_framesBefore + freshFrames; },
        [this, place, name] { savePicture(views().at(place)->parentWidget(), name); });
}

void DemoDriver::addContextMenuPicture()
{
    m_script.add(
        tr("show the menu of a view"), [] { return true; },
        [this] {
            auto *table = views().front()->findChild<QTableView *>(QStringLiteral("tableView"));
            table->selectRow(0);
            Q_EMIT table->customContextMenuRequested(table->viewport()->rect().center());
        });
    m_script.add(
        tr("close the menu of a view"),
        [] { return qobject_cast<QMenu *>(QApplication::activePopupWidget()) != nullptr; },
        [this] {
            QWidget *menu = QApplication::activePopupWidget();
            savePicture(menu, QStringLiteral("menu-context"));
            menu->close();
        });
}

void DemoDriver::addRecorderSteps()
{
    addRecorderPicture(firstCanView, QStringLiteral("can-recorder"), QStringLiteral("logs/can_recording.asc"));
    addRecorderPicture(firstLinView, QStringLiteral("lin-recorder"), QStringLiteral("logs/lin_recording.asc"));
}

// The recording that follows the picture shows that the recorder works.
void DemoDriver::addRecorderPicture(int index, const QString &name, const QString &path)
{
    const auto place = static_cast<std::size_t>(index);
    const auto startStop = [this, place] {
        recorder(views().at(place))->findChild<QAbstractButton *>(QStringLiteral("buttonStartStop"))->click();
    };
    const auto isShown = [this, place] {
        const auto *window = recorder(views().at(place));
        return window && window->isVisible();
    };
    m_script.add(tr("open the recorder for %1").arg(name), noDialogIsOpen, [this, place] {
        views().at(place)->findChild<QAbstractButton *>(QStringLiteral("buttonRecord"))->click();
    });
    m_script.add(tr("start recording to %1").arg(path), isShown, [this, place, name, path, startStop] {
        auto *window = recorder(views().at(place));
        window->findChild<QLineEdit *>(QStringLiteral("lineEditPath"))->setText(path);
        savePicture(window, name);
        startStop();
        m_framesBefore = framesCounted(views().at(place));
    });
    m_script.add(
        tr("stop recording to %1").arg(path),
        [this, place, path] {
            return framesCounted(views().at(place)) > m_framesBefore + freshFrames && QFileInfo(path).isFile();
        },
        [this, place, startStop] {
            startStop();
            recorder(views().at(place))->close();
        });
}

void DemoDriver::addAddDeviceSteps()
{
    m_script.add(tr("open the settings to add a device"), noDialogIsOpen, [this] { trigger("actionDevice_Settings"); });
    m_script.add(tr("ask for a new device"), isOpen<TzVciConfigDialog>, [] {
        openDialog<TzVciConfigDialog>()->findChild<QAbstractButton *>(QStringLiteral("buttonAddDevice"))->click();
    });
    addClosingPicture<TzVciAddDeviceDialog>(tr("close the question for a new device"), QStringLiteral("add-device"));
    m_script.add(tr("close the settings without a new device"), isOpen<TzVciConfigDialog>,
                 [] { openDialog<TzVciConfigDialog>()->close(); });
}
