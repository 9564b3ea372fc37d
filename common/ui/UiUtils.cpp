// SPDX-License-Identifier: GPL-3.0-or-later
#include "common/ui/UiUtils.h"

#include "common/Log.h"

#include <QDesktopServices>
#include <QDialogButtonBox>
#include <QDir>
#include <QFileInfo>
#include <QIcon>
#include <QInputDialog>
#include <QLineEdit>
#include <QPushButton>
#include <QTextCodec>
#include <QToolButton>
#include <QUrl>

#include <algorithm>
#include <vector>

namespace Common {

namespace {

constexpr int defaultIconSize = 16;

// A comment keeps the lines in which it was written.
const QString tooltipStyle = QStringLiteral(".label { font-weight: bold; }"
                                            ".indent { margin-left: 12px; }"
                                            ".comment { color: #4d7a4d; white-space: pre-wrap; }");

// Sets the marks of every occurrence; false if there is none.
bool markOccurrences(const QString &text, const QString &keyword, std::vector<bool> &marks)
{
    bool found = false;
    for (int at = text.indexOf(keyword); at >= 0; at = text.indexOf(keyword, at + 1)) {
        std::fill_n(marks.begin() + at, keyword.size(), true);
        found = true;
    }
    return found;
}

// The text, escaped, with its marked stretches in bold.
QString emphasisedHtml(const QString &text, const std::vector<bool> &marks)
{
    QString html;
    for (auto run = marks.begin(); run != marks.end();) {
        const auto end = std::find(run, marks.end(), !*run);
        const QString part =
            text.mid(static_cast<int>(run - marks.begin()), static_cast<int>(end - run)).toHtmlEscaped();
        html += *run ? QStringLiteral("<b>%1</b>").arg(part) : part;
        run = end;
    }
    return html;
}

// OK is enabled only while the line holds more than blanks.
void requireText(QInputDialog &dialog)
{
    dialog.sizeHint(); // the dialog makes its parts only when it has to
    auto *line = dialog.findChild<QLineEdit *>();
    auto *buttons = dialog.findChild<QDialogButtonBox *>();
    if (!line || !buttons)
        return;
    QPushButton *ok = buttons->button(QDialogButtonBox::Ok);
    const auto update = [ok](const QString &text) { ok->setEnabled(!text.trimmed().isEmpty()); };
    QObject::connect(line, &QLineEdit::textChanged, ok, update);
    update(line->text());
}

// Where a document that is named by a relative path may lie: below the working directory, in the tree that the program
// was built in, or where an installation puts it. Empty if it is in none of them.
QString findDocument(const QString &path)
{
    const QDir programDir(QCoreApplication::applicationDirPath());
    const QString places[] = {path, programDir.filePath(QStringLiteral("../") + path),
                              programDir.filePath(QStringLiteral("../share/tzbench/") + path)};
    for (const QString &place : places) {
        const QFileInfo file(place);
        if (file.isFile())
            return file.absoluteFilePath();
        if (QDir::isAbsolutePath(path))
            break;
    }
    return {};
}

} // namespace

QString UiUtils::formatToHtml(const QString &text, const QStringList &keywords)
{
    std::vector<bool> emphasised(static_cast<std::size_t>(text.size()), false);
    QString lines;
    for (const QString &keyword : keywords) {
        if (!keyword.isEmpty() && !markOccurrences(text, keyword, emphasised))
            lines += QStringLiteral("<div>%1</div>").arg(keyword);
    }
    // Lines below make the whole text their title.
    if (!lines.isEmpty())
        emphasised.assign(emphasised.size(), true);
    return QStringLiteral("<html><head><style>%1</style></head><body><div>%2</div>%3</body></html>")
        .arg(tooltipStyle, emphasisedHtml(text, emphasised), lines);
}

QStringList UiUtils::getFileEncodings()
{
    static const QStringList candidates{
        QStringLiteral("UTF-8"),        QStringLiteral("GB18030"),    QStringLiteral("GBK"),
        QStringLiteral("GB2312"),       QStringLiteral("Big5"),       QStringLiteral("Shift_JIS"),
        QStringLiteral("EUC-KR"),       QStringLiteral("ISO-8859-1"), QStringLiteral("windows-1252"),
        QStringLiteral("windows-1251"), QStringLiteral("UTF-16")};
    QStringList encodings;
    for (const QString &name : candidates) {
        if (QTextCodec::codecForName(name.toLatin1()))
            encodings.append(name);
    }
    return encodings;
}

QToolButton *UiUtils::createToolButton(const QString &iconPath, const QString &text, const QString &toolTip,
                                       int iconSize, QWidget *parent)
{
    auto *button = new QToolButton(parent);
    const int edge = iconSize > 0 ? iconSize : defaultIconSize;
    button->setIcon(QIcon(iconPath));
    button->setIconSize(QSize(edge, edge));
    button->setText(text);
    button->setToolTip(toolTip);
    button->setAutoRaise(true);
    button->setToolButtonStyle(text.isEmpty() ? Qt::ToolButtonIconOnly : Qt::ToolButtonTextBesideIcon);
    return button;
}

QString UiUtils::getInputText(QWidget *parent, const QString &title, const QString &label, const QString &text,
                              bool allowEmpty)
{
    QInputDialog dialog(parent);
    dialog.setInputMode(QInputDialog::TextInput);
    dialog.setWindowTitle(title);
    dialog.setLabelText(label);
    dialog.setTextValue(text);
    if (!allowEmpty)
        requireText(dialog);
    return dialog.exec() == QDialog::Accepted ? dialog.textValue() : QString();
}

bool UiUtils::openHelpFile(const QString &path, QString *error)
{
    const auto fail = [&](const QString &text) {
        logWarning("Failed to open the document {}: {}", path.toStdString(), text.toStdString());
        if (error)
            *error = text;
        return false;
    };
    const QString file = findDocument(path);
    if (file.isEmpty())
        return fail(tr("The document %1 does not exist.").arg(path));
    if (!QDesktopServices::openUrl(QUrl::fromLocalFile(file)))
        return fail(tr("No program was found that shows %1.").arg(path));
    return true;
}

bool UiUtils::checkForUpdates(bool silent)
{
    logDebug("No update service is configured (silent: {})", silent);
    return false;
}

} // namespace Common
