// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tools/demo/DemoScript.h"
#include "tools/demo/OpenDialog.h"

#include <QDir>
#include <QObject>

#include <functional>
#include <vector>

class QDialog;
class TZBenchWindow;
class TzVciBaseViewWindow;
class TzVciDeviceStore;

/// Works the windows as a user would: opens a device, two CAN channels and a LIN channel in the settings dialog, shows
/// four views, takes pictures of every window, and closes the program. UI thread only.
class DemoDriver : public QObject
{
    Q_OBJECT
public:
    /// @param out  folder of the pictures, which exists
    DemoDriver(TZBenchWindow *window, TzVciDeviceStore *store, const QDir &out, QObject *parent = nullptr);

    void start();
    /// Whether all steps were taken and every view counted frames.
    bool succeeded() const { return m_succeeded; }

private:
    static constexpr qulonglong freshFrames = 60; // more than come between two refreshes of a LIN view

    void addSettingsSteps();
    void addViewSteps();
    void addViewPictureSteps();
    void addDialogSteps();
    void addAddDeviceSteps();
    void addRecorderSteps();
    void addToolSteps();
    void addConverterSteps();
    void addClosingSteps();

    void addViewPicture(int index, const QSize &size, const QString &name,
                        const std::function<void(TzVciBaseViewWindow *)> &prepare);
    void addContextMenuPicture();
    template <typename Dialog> void addDialogPicture(const char *action, const QString &name);
    /// Takes a picture of that dialog as soon as it is open, and closes it.
    template <typename Dialog> void addClosingPicture(const QString &step, const QString &name)
    {
        m_script.add(step, isOpen<Dialog>, [this, name] {
            savePicture(openDialog<Dialog>(), name);
            openDialog<Dialog>()->close();
        });
    }
    void addRecorderPicture(int index, const QString &name, const QString &path);

    void clickChannel(const QString &name);
    void trigger(const char *action);
    void savePicture(QWidget *widget, const QString &name);
    void arrangeViews();
    void printCounters();
    std::vector<TzVciBaseViewWindow *> views() const;
    bool everyViewCounted(qulonglong frames) const;
    static qulonglong framesCounted(const TzVciBaseViewWindow *view);

    TZBenchWindow *m_window;
    TzVciDeviceStore *m_store;
    QDir m_out;
    DemoScript m_script;
    qulonglong m_framesBefore = 0; // of the view whose picture comes next
    bool m_succeeded = false;
};
