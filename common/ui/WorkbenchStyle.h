// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QColor>

class QApplication;

namespace Common {

/// Colours that the style sheet uses and that a window drawing by itself shares.
namespace WorkbenchColor {
inline constexpr QRgb background = 0xfff0f0f0; ///< windows and dialogs
inline constexpr QRgb border = 0xffcccccc;
inline constexpr QRgb base = 0xffffffff; ///< tables and input fields
inline constexpr QRgb text = 0xff1f2933;
inline constexpr QRgb symbol = 0xff3a4652;    ///< lines of icons and arrows
inline constexpr QRgb mutedText = 0xff8a949e; ///< disabled texts, place-holders
inline constexpr QRgb accent = 0xff1f78d1;
inline constexpr QRgb accentLight = 0xffd3e6f9; ///< selected rows, pressed buttons
} // namespace WorkbenchColor

/// Gives the program its look, the same on every desktop: WorkbenchProxyStyle with a light palette, 9-point texts, the
/// style sheet ":/resource/style.qss" and icons in the display's full resolution. Also registers the resources.
///
/// To be called on the UI thread before the first window is made.
void applyWorkbenchStyle(QApplication &application);

} // namespace Common
