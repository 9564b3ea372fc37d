// SPDX-License-Identifier: GPL-3.0-or-later
#include "common/ui/WorkbenchStyle.h"

#include "common/Log.h"
#include "common/ui/WorkbenchProxyStyle.h"
#include "resource/Resources.h"

#include <QApplication>
#include <QFile>
#include <QFont>
#include <QPalette>

namespace Common {
namespace {

constexpr int fontPointSize = 9;
constexpr auto styleSheetPath = ":/resource/style.qss";

QPalette workbenchPalette()
{
    QPalette palette;
    const auto set = [&palette](QPalette::ColorRole role, QRgb colour) { palette.setColor(role, QColor(colour)); };
    set(QPalette::Window, WorkbenchColor::background);
    set(QPalette::WindowText, WorkbenchColor::text);
    set(QPalette::Base, WorkbenchColor::base);
    set(QPalette::AlternateBase, 0xfff7f8f9);
    set(QPalette::Text, WorkbenchColor::text);
    set(QPalette::Button, 0xfff7f8f9);
    set(QPalette::ButtonText, WorkbenchColor::text);
    set(QPalette::BrightText, 0xffffffff);
    set(QPalette::ToolTipBase, WorkbenchColor::base);
    set(QPalette::ToolTipText, WorkbenchColor::text);
    set(QPalette::PlaceholderText, WorkbenchColor::mutedText);
    set(QPalette::Highlight, WorkbenchColor::accent);
    set(QPalette::HighlightedText, 0xffffffff);
    set(QPalette::Link, WorkbenchColor::accent);
    set(QPalette::LinkVisited, WorkbenchColor::accent);
    set(QPalette::Light, 0xffffffff);
    set(QPalette::Midlight, 0xffe6e8ea);
    set(QPalette::Mid, WorkbenchColor::border);
    set(QPalette::Dark, 0xffa8b0b7);
    set(QPalette::Shadow, 0xff6b7680);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, role, QColor(WorkbenchColor::mutedText));
    palette.setColor(QPalette::Disabled, QPalette::Highlight, QColor(WorkbenchColor::border));
    return palette;
}

QString styleSheet()
{
    QFile file(QString::fromLatin1(styleSheetPath));
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        logWarning("Style sheet {} cannot be read", styleSheetPath);
        return {};
    }
    return QString::fromUtf8(file.readAll());
}

} // namespace

void applyWorkbenchStyle(QApplication &application)
{
    tzInitResources();
    QCoreApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
    QApplication::setStyle(new WorkbenchProxyStyle); // which the application owns
    QApplication::setPalette(workbenchPalette());
    QFont font = QApplication::font();
    font.setPointSize(fontPointSize);
    QApplication::setFont(font);
    application.setStyleSheet(styleSheet());
}

} // namespace Common
