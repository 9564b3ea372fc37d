// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/support/MessageBoxDriver.h"

#include <QAbstractButton>
#include <QApplication>
#include <QComboBox>
#include <QDialog>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>

#include <algorithm>

namespace tztest {

MessageBoxDriver::MessageBoxDriver(QObject *parent)
    : QObject(parent)
{
    m_timer.setInterval(5);
    connect(&m_timer, &QTimer::timeout, this, &MessageBoxDriver::look);
    m_timer.start();
}

void MessageBoxDriver::expectBox(int standardButton)
{
    m_expected.push_back({.standardButton = standardButton});
}

void MessageBoxDriver::expectBox(const QString &buttonText)
{
    m_expected.push_back({.buttonText = buttonText});
}

void MessageBoxDriver::expectBoxToGo()
{
    m_expected.push_back({.isLeftAlone = true});
}

void MessageBoxDriver::expectDialog(std::function<void(QDialog *)> action)
{
    m_expected.push_back({.action = std::move(action)});
}

void MessageBoxDriver::expectFileDialog(const QString &nameFilter, const QString &path)
{
    expectDialog([this, nameFilter, path](QDialog *dialog) { chooseFile(dialog, nameFilter, path); });
}

// By the dialog's own controls, as its user does: what they bring about is part of the test.
void MessageBoxDriver::chooseFile(QDialog *dialog, const QString &nameFilter, const QString &path)
{
    const auto *files = qobject_cast<QFileDialog *>(dialog);
    auto *filters = dialog->findChild<QComboBox *>(QStringLiteral("fileTypeCombo"));
    auto *name = dialog->findChild<QLineEdit *>(QStringLiteral("fileNameEdit"));
    const auto *buttons = dialog->findChild<QDialogButtonBox *>();
    if (files)
        m_seen.push_back({dialog->windowTitle(), files->nameFilters().join(QStringLiteral(";;"))});
    const int filter = filters ? filters->findText(nameFilter) : -1;
    if (files && name && buttons && filter >= 0 && !path.isEmpty()) {
        filters->setCurrentIndex(filter);
        Q_EMIT filters->activated(filter);
        name->setText(path);
        const bool saves = files->acceptMode() == QFileDialog::AcceptSave;
        buttons->button(saves ? QDialogButtonBox::Save : QDialogButtonBox::Open)->click();
    }
    if (!dialog->isVisible())
        return;
    if (!path.isEmpty()) {
        ++m_unexpected;
        qWarning("\"%s\" takes no file \"%s\"", qPrintable(dialog->windowTitle()), qPrintable(path));
    }
    dialog->reject();
}

void MessageBoxDriver::look()
{
    m_met.erase(std::remove_if(m_met.begin(), m_met.end(),
                               [](const QPointer<QWidget> &met) { return !met || !met->isVisible(); }),
                m_met.end());
    QWidget *window = QApplication::activeModalWidget();
    if (!window || !window->isVisible() || std::find(m_met.begin(), m_met.end(), window) != m_met.end())
        return;
    m_met.push_back(window);
    if (auto *box = qobject_cast<QMessageBox *>(window)) {
        answer(box);
        return;
    }
    auto *dialog = qobject_cast<QDialog *>(window);
    if (!m_expected.empty() && m_expected.front().action && dialog) {
        const auto action = m_expected.front().action;
        m_expected.pop_front();
        action(dialog); // may show further windows, which the timer meets while this call waits
        return;
    }
    ++m_unexpected;
    qWarning("unexpected modal window \"%s\"", qPrintable(window->windowTitle()));
    window->close();
}

void MessageBoxDriver::note(const QMessageBox &box)
{
    Seen seen{box.windowTitle(), box.text(), static_cast<int>(box.icon()), box.textFormat()};
    for (const QAbstractButton *button : box.buttons())
        seen.buttons.append(button->text());
    if (const QPushButton *button = box.defaultButton())
        seen.defaultButton = button->text();
    m_seen.push_back(seen);
}

QAbstractButton *MessageBoxDriver::buttonOf(const QMessageBox &box, const Expectation &expected)
{
    if (expected.buttonText.isEmpty())
        return box.button(static_cast<QMessageBox::StandardButton>(expected.standardButton));
    const QList<QAbstractButton *> buttons = box.buttons();
    const auto found = std::find_if(buttons.begin(), buttons.end(), [&](const QAbstractButton *button) {
        return button->text() == expected.buttonText;
    });
    return found == buttons.end() ? nullptr : *found;
}

void MessageBoxDriver::answer(QMessageBox *box)
{
    note(*box);
    if (!m_expected.empty() && !m_expected.front().action) {
        const Expectation expected = m_expected.front();
        m_expected.pop_front();
        if (expected.isLeftAlone)
            return;
        if (QAbstractButton *pressed = buttonOf(*box, expected)) {
            pressed->click();
            return;
        }
    }
    ++m_unexpected;
    qWarning("unexpected message box \"%s\": %s", qPrintable(box->windowTitle()), qPrintable(box->text()));
    box->close();
    if (box->isVisible())
        box->done(0);
}

} // namespace tztest
