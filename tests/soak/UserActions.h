// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tests/support/MessageBoxDriver.h"

#include <QObject>
#include <QTimer>

#include <array>
#include <functional>
#include <random>
#include <string>
#include <utility>
#include <vector>

class QDialog;
class TzRawViewWindow;

namespace tzsoak {

class FaultPlayer;
class Recorder;
class Workbench;

/// A user who cannot leave the windows alone: presses their buttons, types filters, opens and closes views, stops and
/// starts channels, converts a log, at random. UI thread.
class UserActions : public QObject
{
    Q_OBJECT
public:
    /// @param recorders  whose views are neither cleared nor closed, nor given other channels
    UserActions(Workbench &workbench, const FaultPlayer &faults, std::vector<const Recorder *> recorders,
                std::mt19937 &random);

    void start();
    void stop();
    /// No dialog shows, and nothing is to be undone.
    bool isIdle() const;
    /// Opens all channels, ends all pauses and physical filters.
    bool restore();
    std::uint64_t count() const { return m_count; }
    const std::string &failure() const { return m_failure; }

private:
    struct Action
    {
        int weight;
        void (UserActions::*act)();
    };
    struct TextForm
    {
        const char *radio;
        const char *path;
        int linesAround; ///< that are no frames
    };
    struct Channel
    {
        int box;
        std::uint8_t protocol;
        int channel;
    };

    void actNext();
    void pause();
    void fold();
    void toggleFilterBar();
    void typeFilter();
    void chooseInFilter();
    void clear();
    void chooseDevices();
    void closeView();
    void openView();
    void tile();
    void resizeWindow();
    void stopChannel();
    void startChannel();
    void convertLog();

    TzRawViewWindow *anyView();
    TzRawViewWindow *freeView();
    TzRawViewWindow *unrecordedView();
    bool open(const Channel &channel);
    void convertIn(QDialog &dialog, const TextForm &form);
    int between(int least, int most);
    void fail(const std::string &text);

    Workbench &m_workbench;
    const FaultPlayer &m_faults;
    const std::vector<const Recorder *> m_recorders;
    std::mt19937 &m_random;
    tztest::MessageBoxDriver m_boxes;
    QTimer m_timer;
    std::vector<Channel> m_stopped;
    std::uint64_t m_count = 0;
    bool m_running = false;
    bool m_settled = true; ///< no dialog since the last look
    std::string m_failure;
};

} // namespace tzsoak
