// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QPointer>
#include <QString>
#include <QStringList>
#include <QTimer>

#include <deque>
#include <functional>
#include <vector>

class QAbstractButton;
class QDialog;
class QMessageBox;

namespace tztest {

/// Answers modal windows while a test runs code that shows them: each modal window that appears is met by the next
/// expectation, its title and text are recorded. A window that nobody expected is recorded too and closed, so that a
/// test never hangs. Lives on the UI thread.
class MessageBoxDriver : public QObject
{
    Q_OBJECT
public:
    struct Seen
    {
        QString title;
        QString text;
        int icon = 0; ///< QMessageBox::Icon
        Qt::TextFormat textFormat = Qt::AutoText;
        QStringList buttons{}; ///< of a message box, in no order
        QString defaultButton{};
    };

    explicit MessageBoxDriver(QObject *parent = nullptr);

    /// The next modal window is a message box; press this QMessageBox::StandardButton.
    void expectBox(int standardButton);
    /// The same for a button that is known by its text alone.
    void expectBox(const QString &buttonText);
    /// The next modal window is a message box that whoever shows it is to close.
    void expectBoxToGo();
    /// The next modal window is a dialog; hand it to @p action, which must end it.
    void expectDialog(std::function<void(QDialog *)> action);
    /// The next modal window is a file dialog of the toolkit's own; choose @p nameFilter in it, type @p path and press
    /// its button. An empty path cancels. Recorded with all its filters, parted by ";;", as text.
    void expectFileDialog(const QString &nameFilter, const QString &path);

    const std::vector<Seen> &seen() const { return m_seen; } ///< message and file boxes so far, in order
    bool allMet() const { return m_expected.empty(); }
    int unexpected() const { return m_unexpected; }

private:
    struct Expectation
    {
        int standardButton = 0;
        std::function<void(QDialog *)> action{}; // empty for a message box
        QString buttonText{};                    // in place of a standard button
        bool isLeftAlone = false;
    };

    void look();
    void answer(QMessageBox *box);
    void note(const QMessageBox &box);
    static QAbstractButton *buttonOf(const QMessageBox &box, const Expectation &expected);
    void chooseFile(QDialog *dialog, const QString &nameFilter, const QString &path);

    QTimer m_timer;
    std::deque<Expectation> m_expected;
    std::vector<Seen> m_seen;
    std::vector<QPointer<QWidget>> m_met; // windows being answered: each is met once for each time it shows
    int m_unexpected = 0;
};

} // namespace tztest
