// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "vci/TzVciMessage.h"

#include <QMainWindow>
#include <QMessageBox>
#include <QPointer>

#include <atomic>
#include <initializer_list>
#include <span>
#include <string>

class QCheckBox;
class QComboBox;
class QFileDialog;
class QFormLayout;
class QGroupBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QSpinBox;

namespace Common {

class FrameLogger;

/// The small window in which a recording is set up, started and stopped: what CANLoggerWindow and LINLoggerWindow
/// share. Closing hides it; it lives as long as its owner, and a recording under way ends with it.
///
/// Threads: isRecording() is for any thread, addMessages() for the one that delivers frames; all else belongs to the UI
/// thread. Who delivers must have ended that before the window is destroyed.
/// It never waits in an event loop of its own, so that it may be destroyed while a message or a dialog of it shows.
class LoggerWindow : public QMainWindow
{
    Q_OBJECT
public:
    ~LoggerWindow() override;

    bool isRecording() const noexcept { return m_recording.load(std::memory_order_acquire); }
    /// Hands frames to the recorder while recording; else they are not taken. Never waits.
    /// @return whether they were taken
    bool addMessages(std::span<const TzVciMessage> messages);

public Q_SLOTS:
    void startRecording();
    void stopRecording(); ///< does nothing when not recording

private Q_SLOTS:
    void onBrowseClicked();
    void onOpenFileClicked();
    void onFormatChanged(int index);
    void onPreviewClicked();
    void onResetClicked();
    void onStartStopClicked();
    void onCloseClicked();
    void onFilePathChanged(const QString &path);
    void updateUI();
    void updateStatusMessage();

protected:
    /// What the two windows say differently; texts to be translated in the context "Common::LoggerWindow".
    struct Texts
    {
        const char *family = nullptr; ///< "CAN" or "LIN", for the log
        const char *title = nullptr;
        const char *startPath = nullptr; ///< of the path box, in UTF-8; never translated
        const char *openButton = nullptr;
        const char *formatLabel = nullptr;
        const char *formats[2] = {};      ///< items of the format box
        const char *descriptions[2] = {}; ///< of the formats
        const char *sizeLabel = nullptr;
        const char *readyStatus = nullptr;
    };

    /// What both recorders take from the window.
    struct Settings
    {
        std::string filePath; ///< in the local 8-bit encoding
        int format = 0;       ///< 0 ASC, 1 CSV
        int sizeLimitMb = 0;
    };

    /// A derived constructor adds its options, then calls showState(). @param texts must outlive the window
    LoggerWindow(const Texts &texts, QWidget *parent);

    /// Adds a row of options below the description of the format; the label may be empty.
    void addOptions(const QString &label, std::initializer_list<QWidget *> options);
    QCheckBox *createCheckBox(const QString &name, const QString &text, const QString &toolTip);
    void showState();

    virtual FrameLogger &logger() = 0; ///< also on the delivering thread
    virtual void configureLogger(const Settings &settings) = 0;
    virtual QString previewText(int format) const = 0;
    virtual void resetOptions() = 0;

    void closeEvent(QCloseEvent *event) override;

private:
    void buildFileGroup();
    void buildRecordingGroup();
    void buildControlGroup();
    void buildStatusBar();
    QPushButton *createButton(const QString &name, const QString &text, const QString &toolTip,
                              void (LoggerWindow::*onClicked)());
    void reserveStartButtonWidth();
    QFileDialog *openBrowseDialog();
    void tell(QMessageBox::Icon icon, const QString &title, const QString &text);
    void ask(const QString &title, const QString &text, void (LoggerWindow::*onYes)());
    void resetSettings();
    void stopAndHide();
    QString startFailureText(int code) const;

    static constexpr int maxSizeLimitMb = 100;
    static constexpr int defaultSizeLimitMb = 10;

    const Texts &m_texts;
    std::atomic<bool> m_recording{false};
    // Children of this window.
    QLineEdit *m_pathEdit = nullptr;
    QPushButton *m_browseButton = nullptr;
    QGroupBox *m_recordingGroup = nullptr;
    QFormLayout *m_optionsLayout = nullptr; // of the recording group
    QComboBox *m_formatCombo = nullptr;
    QSpinBox *m_sizeSpin = nullptr;
    QWidget *m_lastSetting = nullptr; // in the order of the Tab key
    QLabel *m_descriptionLabel = nullptr;
    QLabel *m_previewLabel = nullptr;
    QPushButton *m_resetButton = nullptr;
    QPushButton *m_startStopButton = nullptr;
    QLabel *m_statusLabel = nullptr;
    QPointer<QMessageBox> m_question; // one at a time
    QPointer<QFileDialog> m_browseDialog;
};

} // namespace Common
