// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tools/demo/DemoScript.h"

#include <QDir>
#include <QObject>

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
    void addSettingsSteps();
    void addViewSteps();
    void addDialogSteps();
    void addClosingSteps();

    void clickChannel(const QString &name);
    void trigger(const char *action);
    void savePicture(QWidget *widget, const QString &name);
    void arrangeViews();
    void printCounters();
    std::vector<TzVciBaseViewWindow *> views() const;
    bool everyViewCounted(qulonglong frames) const;

    TZBenchWindow *m_window;
    TzVciDeviceStore *m_store;
    QDir m_out;
    DemoScript m_script;
    bool m_succeeded = false;
};
